#include "editing/macro_edits.h"

#include "base/numbers.h"
#include "base/text.h"
#include "editing/macro_history.h"
#include "model/engine_state.h"
#include "storage/data_folder.h"

#include <cstring>

namespace {

// Holds the longest single event: a time of 309 digits before the point, and some 110 other characters.
constexpr size_t kLongestEventJson = 512;
// The usual length of an event, so that the text grows only once.
constexpr size_t kUsualEventJson = 72;
// Squared pixels within which a move adds nothing to the path: up to 10 pixels.
constexpr int32_t kNearSquared = 101;

// Writes the event list by hand in place of JsonWriter: measured 7.5 times as fast on a million events (storage_bench,
// "event list JSON, beside JsonWriter"). The page polls the list. The caller's buffer holds kLongestEventJson bytes.
struct Writer {
    char* at;

    template <size_t Size> void Text(const char (&literal)[Size]) {
        std::memcpy(at, literal, Size - 1);
        at += Size - 1;
    }
    template <typename Integer> void Int(Integer value) { at = WriteInt(at, value); }
    void FixedDouble(double value) { at = WriteFixedDouble(at, value); }
};

void WriteDescription(Writer& out, const UnifiedEvent& event) {
    switch (event.type) {
    case EvAbsMove:
        out.Text("Abs Move to X:");
        out.Int(event.x);
        out.Text(" Y:");
        out.Int(event.y);
        break;
    case EvRelMove:
        out.Text("Rel Move dX:");
        out.Int(event.x);
        out.Text(" dY:");
        out.Int(event.y);
        break;
    case EvMouseButton:
        out.Text("Mouse Click at X:");
        out.Int(event.x);
        out.Text(" Y:");
        out.Int(event.y);
        break;
    case EvKey:
        out.Text("Keyboard VK: ");
        out.Int(event.virtualKey);
        event.down ? out.Text(" (DOWN)") : out.Text(" (UP)");
        break;
    case EvScroll:
        out.Text("Mouse Scroll Delta: ");
        out.Int(event.wheel);
        break;
    case EvToolState:
        event.virtualKey == kToolKeySpammer ? out.Text("Key Spammer ") : out.Text("Autoclicker ");
        event.down ? out.Text("ON") : out.Text("OFF");
        break;
    default:
        break;
    }
}

void MirrorEvents() {
    WriteEventsMirror(CurrentMacroEventsJson());
}

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

std::string MacroEventsJson(const std::vector<UnifiedEvent>& events) {
    std::string json;
    BuildMacroEventsJson(events, json);
    return json;
}

void BuildMacroEventsJson(const std::vector<UnifiedEvent>& events, std::string& json) {
    json.clear();
    json.reserve(events.size() * kUsualEventJson + 2);
    json += '[';
    char buffer[kLongestEventJson];
    for (size_t i = 0; i < events.size(); ++i) {
        Writer out{buffer};
        i == 0 ? out.Text("{\"id\":") : out.Text(",{\"id\":");
        out.Int(i);
        out.Text(",\"time\":");
        out.FixedDouble(events[i].time);
        out.Text(",\"desc\":\"");
        WriteDescription(out, events[i]);
        out.Text("\"}");
        json.append(buffer, out.at);
    }
    json += ']';
}

std::string CurrentMacroEventsJson() {
    std::vector<UnifiedEvent> events;
    {
        MutexLock lock(macroMutex);
        if (const Profile* profile = CurrentProfile()) {
            events = profile->events;
        }
    }
    return MacroEventsJson(events);
}

std::string EventDescription(const UnifiedEvent& event) {
    char buffer[kLongestEventJson];
    Writer out{buffer};
    WriteDescription(out, event);
    return std::string(buffer, out.at);
}

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
    MirrorEvents();
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
    MirrorEvents();
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
    MirrorEvents();
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
