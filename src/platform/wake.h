// Events that threads wait on. Any thread may call any function. Do not close an event while a thread waits on it.
#pragma once

#include <cstdint>

struct WakeEvent;  // owned by the caller of CreateWakeEvent

enum class WakeReset { Automatic, Manual };

constexpr uint32_t kNoLimit = 0xFFFFFFFF;  // wait without a limit

// Creates an unset event. Returns null if the system has none left. Every function accepts null as "no event".
WakeEvent* CreateWakeEvent(WakeReset reset);
void CloseWakeEvent(WakeEvent* event);
void SignalWake(WakeEvent* event);

// Waits until one of `count` (1 to 4) events is set, and resets it if it is automatic. Returns the index of the lowest
// event that was set, or -1 after `limitMilliseconds`. Null events are never set.
int WaitForAny(WakeEvent* const* events, int count, uint32_t limitMilliseconds);
