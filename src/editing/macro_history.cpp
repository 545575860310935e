#include "editing/macro_history.h"

#include "base/json_writer.h"
#include "platform/clock.h"
#include "storage/settings_text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr int64_t kBatchSeconds = 1;  // single edits within this time are one step

// Indexed by HistoryReason.
constexpr const char* kReasonWords[] = {"recording", "undoContinue", "clear",      "deleteProfile",
                                        "optimise",  "edit",         "addReleases"};

size_t BytesOf(const std::vector<UnifiedEvent>& events) {
    return events.capacity() * sizeof(UnifiedEvent);
}

// Returns the index of a profile, or -1.
int32_t IndexOfProfile(uint64_t id) REQUIRES(macroMutex) {
    const auto& profiles = macroState.profiles;
    const auto found = std::find_if(profiles.begin(), profiles.end(),
                                    [id](const Profile& profile) { return profile.id == id; });
    return found == profiles.end() ? -1 : static_cast<int32_t>(found - profiles.begin());
}

// Reserves memory, so that no step below needs any.
void ReserveSteps(DroppedSteps* dropped) REQUIRES(macroMutex) {
    MacroHistory& history = macroState.history;
    history.undo.reserve(kMostHistorySteps + 1);
    history.redo.reserve(kMostHistorySteps + 1);
    dropped->reserve(dropped->size() + history.undo.size() + history.redo.size() + 1);
}

// Drops the steps of a profile.
void DropStepsOf(uint64_t profileId, std::vector<MacroStep>& steps, DroppedSteps* dropped) {
    const auto kept = std::stable_partition(steps.begin(), steps.end(), [profileId](const MacroStep& step) {
        return step.profileId != profileId;
    });
    std::move(kept, steps.end(), std::back_inserter(*dropped));
    steps.erase(kept, steps.end());
}

void DropOldest(DroppedSteps* dropped) REQUIRES(macroMutex) {
    MacroHistory& history = macroState.history;
    const auto older = [](const MacroStep& a, const MacroStep& b) { return a.id < b.id; };
    const auto undo = std::min_element(history.undo.begin(), history.undo.end(), older);
    const auto redo = std::min_element(history.redo.begin(), history.redo.end(), older);
    const bool fromUndo = undo != history.undo.end() && (redo == history.redo.end() || undo->id < redo->id);
    std::vector<MacroStep>& steps = fromUndo ? history.undo : history.redo;
    const auto oldest = fromUndo ? undo : redo;
    dropped->push_back(std::move(*oldest));
    steps.erase(oldest);
    if (const MacroStep& step = dropped->back(); fromUndo && step.reason == HistoryReason::DeleteProfile) {
        DropStepsOf(step.profileId, history.undo, dropped);  // their profile will not come back
    }
}

void EnforceLimits(DroppedSteps* dropped) REQUIRES(macroMutex) {
    const MacroHistory& history = macroState.history;
    for (;;) {
        size_t bytes = 0;
        for (const std::vector<MacroStep>* steps : {&history.undo, &history.redo}) {
            for (const MacroStep& step : *steps) {
                bytes += BytesOf(step.events);
            }
        }
        if (history.undo.size() + history.redo.size() <= kMostHistorySteps && bytes <= kMostHistoryBytes) {
            return;
        }
        DropOldest(dropped);
    }
}

// Adds a new step. Needs the memory of ReserveSteps.
void Push(MacroStep step, DroppedSteps* dropped) REQUIRES(macroMutex) {
    MacroHistory& history = macroState.history;
    history.batchRevision = 0;
    DropStepsOf(step.profileId, history.redo, dropped);
    if (BytesOf(step.events) > kMostHistoryBytes) {
        if (step.reason == HistoryReason::DeleteProfile) {
            DropStepsOf(step.profileId, history.undo, dropped);
        }
        dropped->push_back(std::move(step));
        return;
    }
    step.id = ++history.lastId;
    history.undo.push_back(std::move(step));
    EnforceLimits(dropped);
}

bool JoinsBatch() REQUIRES(macroMutex) {
    const MacroHistory& history = macroState.history;
    const int64_t ticks = ReadPerformanceCounter() - history.batchCounter;
    return history.batchRevision == macroState.revision &&
           ticks < kBatchSeconds * engineState.counterFrequency.load();
}

// Returns whether a single edit now needs a copy of the macro.
bool NeedsCopy() REQUIRES(macroMutex) {
    const Profile* profile = CurrentProfile();
    return profile != nullptr && !engineState.recording && !JoinsBatch() && !profile->events.empty() &&
           profile->events.size() * sizeof(UnifiedEvent) <= kMostHistoryBytes;
}

void InsertDeletedProfile(MacroStep& step) REQUIRES(macroMutex) {
    const auto last = static_cast<int32_t>(macroState.profiles.size());
    const int32_t index = std::min(step.position, last);
    macroState.profiles.insert(macroState.profiles.begin() + index,
                               Profile{std::exchange(step.name, {}), std::exchange(step.settings, {}),
                                       std::exchange(step.events, {}), step.profileId});
    macroState.currentProfile = index;
    if (macroState.continueProfile >= index) {
        ++macroState.continueProfile;
    }
}

void RemoveProfileAgain(int32_t index, MacroStep& step) REQUIRES(macroMutex) {
    Profile& profile = macroState.profiles[static_cast<size_t>(index)];
    step.name = std::move(profile.name);
    step.settings = std::move(profile.settings);
    step.events = std::move(profile.events);
    step.position = index;
    macroState.profiles.erase(macroState.profiles.begin() + index);
    const auto last = static_cast<int32_t>(macroState.profiles.size()) - 1;
    macroState.currentProfile = std::min(index, last);
    if (macroState.continueProfile == index) {
        macroState.continueProfile = -1;
    } else if (macroState.continueProfile > index) {
        --macroState.continueProfile;
    }
}

// Exchanges what the step holds with what its profile has. Returns whether the tool settings are exchanged too.
bool TakeStep(MacroStep& step, bool undoing) REQUIRES(macroMutex) {
    if (step.reason == HistoryReason::DeleteProfile && undoing) {
        InsertDeletedProfile(step);
        return true;
    }
    const int32_t index = IndexOfProfile(step.profileId);
    if (index < 0) {
        return false;
    }
    if (step.reason == HistoryReason::DeleteProfile) {
        RemoveProfileAgain(index, step);
        return true;
    }
    Profile& profile = macroState.profiles[static_cast<size_t>(index)];
    profile.events.swap(step.events);
    if (step.reason == HistoryReason::Clear) {
        profile.settings.swap(step.settings);
    }
    const bool switched = index != macroState.currentProfile;
    macroState.currentProfile = index;
    return switched || step.reason == HistoryReason::Clear;
}

// Takes the newest steps of one profile, up to the one with this id. Returns whether the tool settings must be applied.
bool TakeSteps(uint64_t id, std::vector<MacroStep>& from, std::vector<MacroStep>& to, bool undoing)
    REQUIRES(macroMutex) {
    const auto wanted =
        std::find_if(from.begin(), from.end(), [id](const MacroStep& step) { return step.id == id; });
    const uint64_t profileId = wanted->profileId;
    bool applies = false;
    for (size_t i = from.size(); i-- > 0;) {
        if (from[i].profileId != profileId) {
            continue;
        }
        MacroStep step = std::move(from[i]);
        from.erase(from.begin() + static_cast<std::ptrdiff_t>(i));
        applies = TakeStep(step, undoing) || applies;
        const bool reached = step.id == id;
        to.push_back(std::move(step));
        if (reached) {
            break;
        }
    }
    return applies;
}

bool HasStep(const std::vector<MacroStep>& steps, uint64_t id) {
    return std::any_of(steps.begin(), steps.end(), [id](const MacroStep& step) { return step.id == id; });
}

std::string_view NameOf(uint64_t profileId) REQUIRES(macroMutex) {
    if (const int32_t index = IndexOfProfile(profileId); index >= 0) {
        return macroState.profiles[static_cast<size_t>(index)].name;
    }
    for (const MacroStep& step : macroState.history.undo) {
        if (step.profileId == profileId && step.reason == HistoryReason::DeleteProfile) {
            return step.name;
        }
    }
    return {};
}

void WriteSteps(JsonWriter& json, std::string_view key, const std::vector<MacroStep>& steps)
    REQUIRES(macroMutex) {
    const Profile* current = CurrentProfile();
    json.BeginArrayField(key);
    for (size_t i = steps.size(); i-- > 0;) {
        const MacroStep& step = steps[i];
        json.BeginObject();
        json.IntField("id", static_cast<int64_t>(step.id));
        json.PlainTextField("reason", kReasonWords[static_cast<size_t>(step.reason)]);
        json.TextField("profile", NameOf(step.profileId));
        json.BoolField("current", current != nullptr && current->id == step.profileId);
        json.IntField("events", static_cast<int64_t>(step.events.size()));
        json.EndObject();
    }
    json.EndArray();
}

}  // namespace

uint64_t ProfileId(Profile& profile) {
    if (profile.id == 0) {
        profile.id = ++macroState.lastProfileId;
    }
    return profile.id;
}

void KeepMacro(Profile& profile, HistoryReason reason, DroppedSteps* dropped) {
    ReserveSteps(dropped);
    if (profile.events.empty()) {
        DropStepsOf(ProfileId(profile), macroState.history.redo, dropped);
        return;
    }
    MacroStep step;
    step.reason = reason;
    step.profileId = ProfileId(profile);
    step.events = std::exchange(profile.events, {});
    Push(std::move(step), dropped);
}

void KeepClearedProfile(Profile& profile, std::string settings, DroppedSteps* dropped) {
    if (profile.events.empty() && settings == BuildProfileSettings()) {
        return;
    }
    ReserveSteps(dropped);
    MacroStep step;
    step.reason = HistoryReason::Clear;
    step.profileId = ProfileId(profile);
    step.settings = std::move(settings);
    step.events = std::exchange(profile.events, {});
    Push(std::move(step), dropped);
}

void KeepDeletedProfile(std::string settings, DroppedSteps* dropped) {
    ReserveSteps(dropped);
    Profile& profile = *CurrentProfile();
    MacroStep step;
    step.reason = HistoryReason::DeleteProfile;
    step.profileId = ProfileId(profile);
    step.settings = std::move(settings);
    step.name = std::move(profile.name);
    step.events = std::exchange(profile.events, {});
    step.position = macroState.currentProfile;
    Push(std::move(step), dropped);
}

void DropRedo(Profile& profile, DroppedSteps* dropped) {
    ReserveSteps(dropped);
    DropStepsOf(ProfileId(profile), macroState.history.redo, dropped);
}

SingleEditHistory::SingleEditHistory() {
    size_t needed = 0;
    {
        MutexLock lock(macroMutex);
        if (NeedsCopy()) {
            needed = CurrentProfile()->events.size();
        }
    }
    memory_.resize(needed);  // touches the memory, which takes longer than the copy
}

void SingleEditHistory::KeepBefore() {
    if (!NeedsCopy()) {
        return;
    }
    Profile& profile = *CurrentProfile();
    memory_ = profile.events;
    ReserveSteps(&dropped_);
    MacroStep step;
    step.reason = HistoryReason::Edit;
    step.profileId = ProfileId(profile);
    step.events = std::move(memory_);
    Push(std::move(step), &dropped_);
    macroState.history.batchRevision = macroState.revision;
    macroState.history.batchCounter = ReadPerformanceCounter();
}

void SingleEditHistory::EndEdit(uint64_t revisionBefore) {
    MacroHistory& history = macroState.history;
    if (history.batchRevision == revisionBefore) {
        history.batchRevision = macroState.revision;
        history.batchCounter = ReadPerformanceCounter();
    }
}

std::string MacroHistoryReport() {
    std::string report;
    JsonWriter json(report);
    MutexLock lock(macroMutex);
    json.BeginObject();
    WriteSteps(json, "undo", macroState.history.undo);
    WriteSteps(json, "redo", macroState.history.redo);
    json.EndObject();
    return report;
}

Refusal RestoreMacro(uint64_t id) {
    bool applies = false;
    std::string settings;
    DroppedSteps dropped;
    {
        MutexLock lock(macroMutex);
        if (engineState.recording) {
            return Refusal::Recording;
        }
        if (engineState.playing) {
            return Refusal::Playing;
        }
        MacroHistory& history = macroState.history;
        const bool undoing = HasStep(history.undo, id);
        if (!undoing && !HasStep(history.redo, id)) {
            return Refusal::Unknown;
        }
        ReserveSteps(&dropped);
        macroState.profiles.reserve(macroState.profiles.size() + 1);
        applies = TakeSteps(id, undoing ? history.undo : history.redo, undoing ? history.redo : history.undo,
                            undoing);
        history.batchRevision = 0;
        MarkMacroChanged();
        EnforceLimits(&dropped);
        settings = CurrentProfile()->settings;
    }
    if (applies) {
        ApplyStoredSettings(settings);
    }
    return Refusal::None;
}
