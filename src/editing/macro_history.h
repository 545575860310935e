// Keeps what a change of a macro replaces, up to 20 steps and 256 MB, the oldest dropped first. Any thread, with
// macroMutex held unless a function says otherwise.
//
// Steps that are dropped go to the caller's list, which must be declared before the lock: freeing a large macro takes long,
// and a recording waits for the lock.
#pragma once

#include "base/mutex.h"
#include "editing/refusal.h"
#include "model/engine_state.h"
#include "model/macro_history.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

constexpr size_t kMostHistorySteps = 20;
constexpr size_t kMostHistoryBytes = 256 * 1024 * 1024;

using DroppedSteps = std::vector<MacroStep>;

// Returns the id of a profile, which it gets at the first call.
uint64_t ProfileId(Profile& profile) REQUIRES(macroMutex);

// Call each of them before the change. They throw std::bad_alloc with nothing changed. An empty macro leaves no step,
// except where settings or a profile come back. The redo steps of the profile are dropped.

// Moves the macro of the profile to the history, which leaves the profile's list empty.
void KeepMacro(Profile& profile, HistoryReason reason, DroppedSteps* dropped) REQUIRES(macroMutex);
// The same for Clear, after the tool settings were reset. `settings` are the ones to come back. Without a macro, and with
// the same settings, there is nothing to keep.
void KeepClearedProfile(Profile& profile, std::string settings, DroppedSteps* dropped) REQUIRES(macroMutex);
// Moves the current profile's name, settings and macro to the history. The caller removes the profile.
void KeepDeletedProfile(std::string settings, DroppedSteps* dropped) REQUIRES(macroMutex);
// Drops the redo steps of a profile that changes without a step of its own.
void DropRedo(Profile& profile, DroppedSteps* dropped) REQUIRES(macroMutex);

// Without macroMutex. Call it around an edit of a single event: edits within a second of each other, with no other change
// of the macro between them, are one step.
class SingleEditHistory {
  public:
    // Reserves memory for a copy of the macro, if the edit begins a batch.
    SingleEditHistory() EXCLUDES(macroMutex);
    // Copies the macro to the history if the edit begins a batch. Not during a recording, and not for a macro that the
    // history cannot hold.
    void KeepBefore() REQUIRES(macroMutex);
    // Call after the edit, with the revision from before it. The batch goes on.
    void EndEdit(uint64_t revisionBefore) REQUIRES(macroMutex);

  private:
    DroppedSteps dropped_;
    std::vector<UnifiedEvent> memory_;
};

// Page commands. UI thread.
// Returns the steps as JSON: {"undo":[{"id":N,"reason":WORD,"profile":NAME,"current":B,"events":N},...],"redo":[...]},
// in the order in which they would be taken.
std::string MacroHistoryReport() EXCLUDES(macroMutex);
// Undoes or redoes up to the step with this id. Steps of other profiles stay. The profile becomes current. Not while a
// recording or playback runs. An id that the history does not have is refused.
Refusal RestoreMacro(uint64_t id) EXCLUDES(macroMutex);
