// Earlier macros of this run, so that a change can be undone.
#pragma once

#include "model/event.h"

#include <cstdint>
#include <string>
#include <vector>

enum class HistoryReason {
    Recording,      // a new recording replaced the macro
    UndoContinue,   // the continued segment was removed
    Clear,          // the profile was cleared
    DeleteProfile,  // the profile was deleted
    Optimise,       // pointer paths were thinned out
    Edit,           // events were deleted or got another time
    AddReleases,    // missing releases were added
};

// One change of one profile: what it replaced or, once it is undone, what the undo replaced.
struct MacroStep {
    uint64_t id = 0;
    HistoryReason reason = HistoryReason::Edit;
    uint64_t profileId = 0;
    std::vector<UnifiedEvent> events;
    std::string settings;  // Clear, DeleteProfile: profile settings text
    std::string name;      // DeleteProfile, to undo: the profile's name
    int32_t position = 0;  // DeleteProfile, to undo: its index
};

struct MacroHistory {
    std::vector<MacroStep> undo;  // the newest is the last
    std::vector<MacroStep> redo;  // the next one is the last
    uint64_t lastId = 0;
    // The batch of single edits that the newest step was kept for. It goes on while the macro has this revision.
    uint64_t batchRevision = 0;
    int64_t batchCounter = 0;  // counter of the latest edit
};
