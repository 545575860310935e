// Edits of many events of the current macro at once: all or none, in linear time, one step of the history. Page commands;
// UI thread. Each begins with the revision that the page has seen and is refused if the macro has changed since, and while
// a recording or playback runs.
#pragma once

#include "editing/refusal.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

struct EditResult {
    Refusal refusal = Refusal::None;
    uint64_t revision = 0;  // of the macro after the edit
    size_t changed = 0;     // number of events that were deleted, changed or added
};

// "revision,range,...": deletes events. A range is an index, or "first-last" with both included. The ranges ascend and do
// not overlap.
EditResult DeleteMacroEvents(std::string_view arguments);
// "revision,seconds,range,...": adds seconds to the times. A time below 0 becomes 0. The order of the list stays.
EditResult ShiftMacroEvents(std::string_view arguments);
// "revision,index,seconds,index,seconds,...": sets times, from 0 on. The order of the list stays.
EditResult RetimeMacroEvents(std::string_view arguments);
// "revision": appends the releases of the keys and buttons that the macro leaves pressed, at its last time. Without any, the
// macro stays. A side button has no release.
EditResult AddMissingReleases(std::string_view arguments);
