// Turns real input into events of the macro, and joins a finished recording to the end of the macro.
#pragma once

#include "base/mutex.h"
#include "engines/hotkeys.h"
#include "model/engine_state.h"
#include "platform/hooks.h"

#include <cstddef>
#include <vector>

// The body of the input thread: runs the platform's input thread with the hook procedures below. Starts with no key
// held.
void InputThreadMain();

// Input thread. Pass an event to the hotkeys, then to the recorder. Return whether the applications may see it.
HookDecision KeyboardHook(const KeyHookRecord& record);
HookDecision MouseHook(const MouseHookRecord& record);
void RawMouseReport(const RawMouseRecord& record);

// Input thread, and tests: clears the last position of the pointer, the presses on own windows and the held keys.
void ResetInputState();

// Any thread. Appends to the running recording. An event that comes too late, or for which there is no memory, is lost.
void AppendRecordedEvent(const UnifiedEvent& event) EXCLUDES(macroMutex);
// Returns the seconds from the start of the recording to a counter value.
double RecordingSeconds(int64_t counter);

// Autosave thread, ten times a second: gives a running recording more room before its list is full, so that the input
// thread does not have to. Locks macroMutex, briefly each time. Without memory the list grows at the next full one.
void GrowEventRoom() EXCLUDES(macroMutex);

// Dispatcher thread, after `recording` was cleared. Locks macroMutex. Without memory for its undo the segment stays, and
// the undo is lost.
void FinishRecording() EXCLUDES(macroMutex);
// Call when another profile has become current, before macroMutex is released. Joins the events that a running recording
// has appended to the macro of profile `from`, as at the end of the recording. Later events go after the `keepCount`
// events of the current profile. Does nothing without a recording. `clickGap` is that of ClickGapSeconds.
void MoveRecording(int32_t from, size_t keepCount, double clickGap) REQUIRES(macroMutex);
// Returns the shortest time between two presses of one button that is not a double click. Any thread; asks the system.
double ClickGapSeconds();
// Both lock macroMutex and set `recording`. The second one throws std::bad_alloc, with nothing changed, if there is no
// memory for a copy of the macro.
void BeginFreshRecording() EXCLUDES(macroMutex);
void BeginContinuedRecording() EXCLUDES(macroMutex);
bool CanUndoContinue() REQUIRES(macroMutex);
// Restores the macro if CanUndoContinue; otherwise does nothing.
void UndoContinuedRecording() EXCLUDES(macroMutex);

// Shifts the events from keepCount on: to 0 for a new recording, else to minGap seconds after the kept ones, or later
// so that two presses of one button across the join are at least clickGap seconds apart. Linear. Ignores times that are
// not numbers.
void JoinContinuedRecording(std::vector<UnifiedEvent>& events, size_t keepCount, double minGap,
                            double clickGap);
