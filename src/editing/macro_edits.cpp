#include "editing/macro_edits.h"

#include "base/numbers.h"
#include "base/text.h"
#include "editing/event_list.h"
#include "editing/macro_history.h"
#include "model/engine_state.h"

namespace {

// Squared pixels within which a move adds nothing to the path: up to 10 pixels.
constexpr int32_t kNearSquared = 101;

// Returns the event at an index of the current macro, or null.
UnifiedEvent* EventAt(int32_t index) REQUIRES(macroMutex) {
    Profile* profile = CurrentProfile();
    if (profile == nullptr || index < 0 || static_cast<size_t>(index) >= profile->events.size()) {
        return nullptr;
    }
    return &profile->events[static_cast<size_t>(index)];
}

// Returns whether two points are within 10 pixels, in 32-bit arithmetic that wraps around.
bool IsNear(const UnifiedEvent& a, const UnifiedEvent& b) {
    const uint32_t dx = static_cast<uint32_t>(a.x) - static_cast<uint32_t>(b.x);
    const uint32_t dy = static_cast<uint32_t>(a.y) - static_cast<uint32_t>(b.y);
    return static_cast<int32_t>(dx * dx + dy * dy) < kNearSquared;
}

}  // namespace

void DeleteEvent(std::string_view indexText) {
    const int32_t index = ReadInt(indexText);
    {
        SingleEditHistory history;
        MutexLock lock(macroMutex);
        if (EventAt(index) != nullptr) {
            history.KeepBefore();
            const uint64_t before = macroState.revision;
            std::vector<UnifiedEvent>& events = CurrentProfile()->events;
            events.erase(events.begin() + index);
            MarkMacroChanged();
            history.EndEdit(before);
        }
    }
    RewriteEventMirror();
}

void UpdateEventTime(std::string_view arguments) {
    const std::vector<std::string_view> fields = SplitParts(arguments, ',');
    if (fields.size() == 2) {
        const int32_t index = ReadInt(fields[0]);
        const double time = ReadDouble(fields[1]);
        SingleEditHistory history;
        MutexLock lock(macroMutex);
        if (UnifiedEvent* event = EventAt(index)) {
            history.KeepBefore();
            const uint64_t before = macroState.revision;
            event->time = time;
            MarkMacroChanged();
            history.EndEdit(before);
        }
    }
    RewriteEventMirror();
}

void OptimizeMacro() {
    {
        std::vector<UnifiedEvent> events;  // in the end the old ones, if the history does not keep them
        DroppedSteps dropped;
        MutexLock lock(macroMutex);
        if (Profile* profile = CurrentProfile()) {
            events = OptimizedEvents(profile->events);
            if (!engineState.recording && events.size() < profile->events.size()) {
                KeepMacro(*profile, HistoryReason::Optimise, &dropped);
            }
            profile->events.swap(events);
            MarkMacroChanged();
        }
    }
    RewriteEventMirror();
}

std::vector<UnifiedEvent> OptimizedEvents(const std::vector<UnifiedEvent>& events) {
    std::vector<UnifiedEvent> kept;
    kept.reserve(events.size());
    for (size_t i = 0; i < events.size(); ++i) {
        const bool betweenMoves = i > 0 && i + 1 < events.size() && events[i].type == EvAbsMove &&
                                  events[i + 1].type == EvAbsMove && kept.back().type == EvAbsMove;
        if (!betweenMoves || !IsNear(events[i], kept.back())) {
            kept.push_back(events[i]);
        }
    }
    return kept;
}
