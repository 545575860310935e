// Builds and sends input actions, one per call. Stateless; any thread.
#pragma once

#include "platform/input.h"

#include <cstdint>

// The actions by themselves, for tests and for callers that keep one.
InputAction AbsoluteMoveAction(int32_t x, int32_t y, int32_t screenWidth, int32_t screenHeight);
InputAction KeyAction(uint32_t scanCode, bool extended, bool down);
// `flags`: a value of UnifiedEvent::flags, which may be any number.
InputAction MouseFlagsAction(uint32_t flags);

// x, y in physical pixels of the primary screen.
void MoveMouseAbsolute(int32_t x, int32_t y);
void MoveMouseRelative(int32_t dx, int32_t dy);
// Presses or releases a button (a code of key_table.h) at the pointer.
void SendButton(uint32_t button, bool down);
// Performs the button action that a macro event stores.
void SendMouseFlags(uint32_t flags);
// Ends in the middle of a long turn when `stop` returns true, where the system can (platform/input.h).
void SendWheel(int32_t delta, StopCondition stop = nullptr);
void SendKey(uint32_t virtualKey, bool down);
