// Builds the exact input records and sends them, one record a call. Stateless; any thread.
#pragma once

#include "platform/input.h"

#include <cstdint>

// The record builders, apart from sending so that they can be checked.
InputRecord AbsoluteMoveRecord(int32_t x, int32_t y, int32_t screenWidth, int32_t screenHeight);
InputRecord RelativeMoveRecord(int32_t dx, int32_t dy);
InputRecord MouseFlagsRecord(uint32_t flags);
InputRecord WheelRecord(int32_t delta);
InputRecord KeyRecord(uint32_t scanCode, bool extended, bool down);

// x, y in physical pixels of the primary screen.
void MoveMouseAbsolute(int32_t x, int32_t y);
void MoveMouseRelative(int32_t dx, int32_t dy);
// One button action where the pointer is.
void SendMouseFlags(uint32_t flags);
void SendWheel(int32_t delta);
void SendKey(uint32_t virtualKey, bool down);
// Page up to down arrow (33 to 40), insert and delete (45, 46): nothing else goes out extended.
bool IsExtendedKey(uint32_t virtualKey);
