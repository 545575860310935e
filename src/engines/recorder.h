// Real input becomes events of the macro; a finished take is joined behind what was there.
#pragma once

#include "base/mutex.h"
#include "engines/engine_state.h"
#include "platform/hooks.h"

#include <cstddef>
#include <vector>

// The input thread's body: runs the platform's hook thread with the hook procedures below.
void HookThreadMain();

// Hook thread. Hotkeys first, then the recorder; the answer says whether the applications may see the event.
HookAnswer KeyboardHook(const KeyHookRecord& record);
HookAnswer MouseHook(const MouseHookRecord& record);
void RawMouseReport(const RawMouseRecord& record);

// Dispatcher thread, after `recording` was cleared. Takes macroMutex.
void FinishRecording();
// Both begin under macroMutex and end with `recording` set.
void BeginFreshRecording();
void BeginContinuedRecording();
bool CanUndoContinue() REQUIRES(macroMutex);
// Puts the macro back if CanUndoContinue; otherwise does nothing.
void UndoContinuedRecording();

// Shifts the events from keepCount on: to 0 for a fresh take, else minGap seconds behind the kept ones, or later so
// that two presses of one button across the seam are at least clickGap seconds apart. Linear.
void JoinContinuedRecording(std::vector<UnifiedEvent>& events, size_t keepCount, double minGap, double clickGap);

// Hook thread, and tests: forgets what is held and swallowed.
void ClearHeldInput();
