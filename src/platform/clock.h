// The high-resolution clock, sleeping, and the timer resolution. Every function may be called from any thread.
#pragma once

#include <cstdint>

// Ticks of a monotonic counter, and ticks per second. The frequency is constant from the start of the program.
int64_t ReadPerformanceCounter();
int64_t ReadPerformanceFrequency();

// Sleeps at least `milliseconds`, accurate to the timer period.
void SleepMilliseconds(uint32_t milliseconds);

// One turn of a loop that polls the counter for a deadline. Costs almost nothing. Exists so that a simulated clock can
// advance.
void SpinOnce();

// A timer period of 1 millisecond, in force from the first Begin to the matching End. Calls nest.
void BeginTimerPeriod();
void EndTimerPeriod();

// Asks the system not to coarsen this process's timers while its window is hidden. Returns false where that is not
// available; nothing depends on the result.
bool KeepTimerResolutionWhenHidden();
