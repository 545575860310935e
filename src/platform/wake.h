// Events that threads wait on. Any thread may call any function; an event must not be closed while a thread waits on
// it.
#pragma once

#include <cstdint>

struct WakeEvent;  // owned by the caller of CreateWakeEvent

enum class WakeReset { Automatic, Manual };

constexpr uint32_t kNoLimit = 0xFFFFFFFF;  // INFINITE: wait for as long as it takes

// Unnamed and unset. Null if the system has none left; every function here takes null as "no such event".
WakeEvent* CreateWakeEvent(WakeReset reset);
void CloseWakeEvent(WakeEvent* event);
void SignalWake(WakeEvent* event);

// Waits until one of `count` (1 to 4) events is set, and takes its signal if it resets itself. Gives the index of the
// lowest event that was set, or -1 when `limitMilliseconds` have passed. Null events are never set.
int WaitForAny(WakeEvent* const* events, int count, uint32_t limitMilliseconds);
