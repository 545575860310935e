// Clicks a mouse button again and again. Driven by engineState.autoClicking alone.
#pragma once

#include <cstdint>

// Thread body, from start to shutdown.
void AutoclickerThreadMain();

// One way round the thread's loop, up to its wait. True: wait *limitMilliseconds (kNoLimit: until woken) before the
// next round. False: go round at once.
bool AutoclickerRound(uint32_t* limitMilliseconds);

// Milliseconds of a tool's interval: ceil(max(1, sum)), in double precision.
double ToolIntervalMilliseconds(int32_t hours, int32_t minutes, int32_t seconds, int32_t milliseconds);
// A whole number of milliseconds as a wait limit: its low 32 bits. So 4294967295 is no limit at all, 4294967296 does
// not wait, and -1 is no limit either. The magnitude must be below 2^63.
uint32_t ToolIntervalLimit(double intervalMilliseconds);
