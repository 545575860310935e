#include "editing/macro_batch_edits.h"

#include "base/numbers.h"
#include "base/text.h"
#include "editing/macro_history.h"
#include "model/button_flags.h"
#include "model/engine_state.h"
#include "platform/key_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

using Events = std::vector<UnifiedEvent>;
using Fields = std::span<const std::string_view>;

// Events `first` up to, but not including, `end`.
struct Range {
    size_t first;
    size_t end;
};

template <typename Number> bool ReadWhole(std::string_view text, Number* value) {
    const char* end = text.data() + text.size();
    const auto [read, error] = std::from_chars(text.data(), end, *value);
    return error == std::errc() && read == end;
}

// Reads a finite number.
bool ReadSeconds(std::string_view text, double* seconds) {
    const char* end = text.data() + text.size();
    return ScanDouble(text.data(), end, seconds) == end && std::isfinite(*seconds);
}

bool ReadRange(std::string_view text, Range* range) {
    const size_t dash = text.find('-');
    size_t last = 0;
    if (!ReadWhole(text.substr(0, dash), &range->first) ||
        !ReadWhole(dash == std::string_view::npos ? text : text.substr(dash + 1), &last) ||
        last < range->first || last == SIZE_MAX) {
        return false;
    }
    range->end = last + 1;
    return true;
}

// Returns no range if one is malformed or not behind the one before.
std::vector<Range> ReadRanges(Fields fields) {
    std::vector<Range> ranges(fields.size());
    for (size_t i = 0; i < fields.size(); ++i) {
        if (!ReadRange(fields[i], &ranges[i]) || (i > 0 && ranges[i].first < ranges[i - 1].end)) {
            return {};
        }
    }
    return ranges;
}

size_t CountEvents(const std::vector<Range>& ranges) {
    size_t count = 0;
    for (const Range& range : ranges) {
        count += range.end - range.first;
    }
    return count;
}

// The memory of a new macro, allocated without the lock.
Events MemoryForMacro() {
    size_t needed = 0;
    {
        MutexLock lock(macroMutex);
        if (const Profile* profile = CurrentProfile()) {
            needed = profile->events.size();
        }
    }
    Events memory;
    memory.reserve(needed);
    return memory;
}

// Replaces the macro by what `build` makes of it: a function that gets the old macro and an empty list to fill, and returns
// the number of changed events, or Refusal::Argument for invalid indexes. The lock may be held this long because no
// recording waits for it. Nothing is changed if there is nothing to change.
template <typename Build>
EditResult ReplaceMacro(std::string_view revisionText, HistoryReason reason, const Build& build) {
    EditResult result;
    uint64_t revision = 0;
    if (!ReadWhole(revisionText, &revision)) {
        result.refusal = Refusal::Argument;
        return result;
    }
    Events edited = MemoryForMacro();
    DroppedSteps dropped;
    MutexLock lock(macroMutex);
    result.revision = macroState.revision;
    Profile* profile = CurrentProfile();
    if (engineState.recording) {
        result.refusal = Refusal::Recording;
    } else if (engineState.playing) {
        result.refusal = Refusal::Playing;
    } else if (profile == nullptr || revision != macroState.revision) {
        result.refusal = Refusal::Revision;
    } else if (!build(profile->events, edited, &result.changed)) {
        result.refusal = Refusal::Argument;
    } else if (result.changed > 0) {
        KeepMacro(*profile, reason, &dropped);
        profile->events = std::move(edited);
        MarkMacroChanged();
        result.revision = macroState.revision;
    }
    return result;
}

EditResult Refused(Refusal refusal) {
    EditResult result;
    result.refusal = refusal;
    return result;
}

double LastTime(const Events& events) {
    double last = 0;
    for (const UnifiedEvent& event : events) {
        if (std::isfinite(event.time)) {
            last = std::max(last, event.time);
        }
    }
    return last;
}

// Returns the releases that are missing at the end of the macro, in the order of the presses.
Events MissingReleases(const Events& events) {
    std::unordered_map<uint32_t, size_t> heldKeys;     // index of the press, by virtual key
    std::unordered_map<uint32_t, size_t> heldButtons;  // by button code
    UnifiedEvent place;                                // the last event with a position
    for (size_t i = 0; i < events.size(); ++i) {
        const UnifiedEvent& event = events[i];
        if (event.type == EvKey) {
            event.down ? void(heldKeys.try_emplace(event.virtualKey, i))
                       : void(heldKeys.erase(event.virtualKey));
        } else if (event.type == EvMouseButton) {
            const std::optional<ButtonAction> action = ButtonActionOf(event.flags);
            if (action && action->down && ButtonFlagsOf({action->button, false}) != 0) {
                heldButtons.try_emplace(action->button, i);
            } else if (action && !action->down) {
                heldButtons.erase(action->button);
            }
        }
        if (event.type == EvAbsMove || event.type == EvMouseButton) {
            place = event;
        }
    }
    const double time = LastTime(events);
    std::vector<std::pair<size_t, UnifiedEvent>> found;
    found.reserve(heldKeys.size() + heldButtons.size());
    for (const auto& [key, index] : heldKeys) {
        found.push_back({index, {.type = EvKey, .time = time, .virtualKey = key}});
    }
    for (const auto& [button, index] : heldButtons) {
        // Playing a button event moves the pointer to its place.
        found.push_back({index,
                         {.type = EvMouseButton,
                          .time = time,
                          .x = place.x,
                          .y = place.y,
                          .flags = ButtonFlagsOf({button, false})}});
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    Events releases;
    for (const auto& [index, release] : found) {
        releases.push_back(release);
    }
    return releases;
}

}  // namespace

EditResult DeleteMacroEvents(std::string_view arguments) {
    const std::vector<std::string_view> fields = SplitParts(arguments, ',');
    if (fields.size() < 2) {
        return Refused(Refusal::Argument);
    }
    const std::vector<Range> ranges = ReadRanges(Fields(fields).subspan(1));
    return ReplaceMacro(
        fields[0], HistoryReason::Edit, [&](const Events& old, Events& edited, size_t* changed) {
            if (ranges.empty() || ranges.back().end > old.size()) {
                return false;
            }
            auto from = old.begin();
            for (const Range& range : ranges) {
                edited.insert(edited.end(), from, old.begin() + static_cast<std::ptrdiff_t>(range.first));
                from = old.begin() + static_cast<std::ptrdiff_t>(range.end);
            }
            edited.insert(edited.end(), from, old.end());
            *changed = CountEvents(ranges);
            return true;
        });
}

EditResult ShiftMacroEvents(std::string_view arguments) {
    const std::vector<std::string_view> fields = SplitParts(arguments, ',');
    double seconds = 0;
    if (fields.size() < 3 || !ReadSeconds(fields[1], &seconds)) {
        return Refused(Refusal::Argument);
    }
    const std::vector<Range> ranges = ReadRanges(Fields(fields).subspan(2));
    return ReplaceMacro(
        fields[0], HistoryReason::Edit, [&](const Events& old, Events& edited, size_t* changed) {
            if (ranges.empty() || ranges.back().end > old.size()) {
                return false;
            }
            edited.assign(old.begin(), old.end());
            for (const Range& range : ranges) {
                for (size_t i = range.first; i < range.end; ++i) {
                    const double time = edited[i].time + seconds;
                    edited[i].time = time < 0 ? 0 : time;  // a time that is not a number stays one
                }
            }
            *changed = CountEvents(ranges);
            return true;
        });
}

EditResult RetimeMacroEvents(std::string_view arguments) {
    const std::vector<std::string_view> fields = SplitParts(arguments, ',');
    if (fields.size() < 3 || fields.size() % 2 == 0) {
        return Refused(Refusal::Argument);
    }
    return ReplaceMacro(fields[0], HistoryReason::Edit,
                        [&](const Events& old, Events& edited, size_t* changed) {
                            edited.assign(old.begin(), old.end());
                            for (size_t i = 1; i < fields.size(); i += 2) {
                                size_t index = 0;
                                double seconds = 0;
                                if (!ReadWhole(fields[i], &index) || index >= old.size() ||
                                    !ReadSeconds(fields[i + 1], &seconds) || seconds < 0) {
                                    return false;
                                }
                                edited[index].time = seconds;
                            }
                            *changed = fields.size() / 2;
                            return true;
                        });
}

EditResult AddMissingReleases(std::string_view arguments) {
    return ReplaceMacro(arguments, HistoryReason::AddReleases,
                        [](const Events& old, Events& edited, size_t* changed) {
                            const Events releases = MissingReleases(old);
                            edited.reserve(old.size() + releases.size());
                            edited.assign(old.begin(), old.end());
                            edited.insert(edited.end(), releases.begin(), releases.end());
                            *changed = releases.size();
                            return true;
                        });
}
