// The autoclicker: clicks a mouse button while engineState.autoClicking is set, at the interval of autoclickerSettings.
#pragma once

#include <cstdint>

// Thread body, from start to shutdown.
void AutoclickerThreadMain();

// Autoclicker thread. One round of the thread's loop, up to its wait. Returns true to wait *limitMilliseconds before the
// next round (kNoLimit: until woken), false to start the next round at once.
bool AutoclickerRound(uint32_t* limitMilliseconds);

// Any thread. Returns a tool's interval in milliseconds: ceil(max(1, sum)), in double precision.
double ToolIntervalMilliseconds(int32_t hours, int32_t minutes, int32_t seconds, int32_t milliseconds);
// Any thread. Returns a whole number of milliseconds as a wait limit: its low 32 bits. So 4294967295 and -1 are
// kNoLimit, and 4294967296 does not wait. The magnitude must be below 2^63.
uint32_t ToolIntervalLimit(double intervalMilliseconds);
