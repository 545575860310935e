// Clicks a mouse button repeatedly. Controlled only by engineState.autoClicking.
#pragma once

#include <cstdint>

// Thread body, from start to shutdown.
void AutoclickerThreadMain();

// Runs one round of the thread's loop, up to its wait. Returns true to wait *limitMilliseconds (kNoLimit: until woken)
// before the next round, false to continue at once.
bool AutoclickerRound(uint32_t* limitMilliseconds);

// Returns the milliseconds of a tool's interval: ceil(max(1, sum)), in double precision.
double ToolIntervalMilliseconds(int32_t hours, int32_t minutes, int32_t seconds, int32_t milliseconds);
// Converts a whole number of milliseconds to a wait limit: its low 32 bits. So 4294967295 and -1 mean no limit, and
// 4294967296 does not wait. The magnitude must be below 2^63.
uint32_t ToolIntervalLimit(double intervalMilliseconds);
