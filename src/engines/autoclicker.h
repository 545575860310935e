#pragma once

#include <cstdint>

// Thread body, from start to shutdown.
void AutoclickThreadMain();

// Milliseconds of a tool's interval: ceil(max(1, sum)), in double precision.
double ToolIntervalMilliseconds(int32_t hours, int32_t minutes, int32_t seconds, int32_t milliseconds);
// The same as a wait limit: truncated to 32 bits, so 4294967295 is no limit at all.
uint32_t ToolIntervalLimit(double intervalMilliseconds);
