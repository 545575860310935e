// Real input becomes events of the macro; a finished take is joined behind what was there.
#pragma once

#include "base/mutex.h"
#include "engines/hotkeys.h"
#include "model/engine_state.h"
#include "platform/hooks.h"

#include <cstddef>
#include <vector>

// The input thread's body: runs the platform's input thread with the hook procedures below. Starts with nothing held.
void InputThreadMain();

// Input thread. Hotkeys first, then the recorder; the answer says whether the applications may see the event.
HookDecision KeyboardHook(const KeyHookRecord& record);
HookDecision MouseHook(const MouseHookRecord& record);
void RawMouseReport(const RawMouseRecord& record);

// Input thread, and tests: forgets the pointer's last place, the presses on own windows, and what is held.
void ResetInputState();

// Any thread. Appends to the running recording; an event that comes too late for it, or does not fit into memory, is
// lost.
void AppendRecordedEvent(const UnifiedEvent& event) EXCLUDES(macroMutex);
// Seconds from the start of the recording to a counter value.
double RecordingSeconds(int64_t counter);

// Dispatcher thread, after `recording` was cleared. Takes macroMutex.
void FinishRecording() EXCLUDES(macroMutex);
// Before another profile becomes current, with macroMutex held until it is: what a running recording has appended is
// joined to its macro as at the recording's end, and what it appends from now on belongs behind the `keepCount` events
// that the other profile has. Nothing without a recording. `clickGap` is that of ClickGapSeconds.
void MoveRecording(size_t keepCount, double clickGap) REQUIRES(macroMutex);
// The least time between two presses of one button that the system does not take for a double click. Any thread; asks
// the system.
double ClickGapSeconds();
// Both begin under macroMutex and end with `recording` set.
void BeginFreshRecording() EXCLUDES(macroMutex);
void BeginContinuedRecording() EXCLUDES(macroMutex);
bool CanUndoContinue() REQUIRES(macroMutex);
// Puts the macro back if CanUndoContinue; otherwise does nothing.
void UndoContinuedRecording() EXCLUDES(macroMutex);

// Shifts the events from keepCount on: to 0 for a fresh take, else minGap seconds behind the kept ones, or later so
// that two presses of one button across the seam are at least clickGap seconds apart. Linear. A time that is not a
// number counts for nothing here.
void JoinContinuedRecording(std::vector<UnifiedEvent>& events, size_t keepCount, double minGap,
                            double clickGap);
