// The single writer of the engines' state. Dispatcher thread only, unless noted.
#pragma once

#include <cstdint>

// Makes one pass over all requests, in fixed order, with guards, clean-up input and wakes.
void DispatchRequests();
// Appends the tool change to the running recording.
void RecordToolState(uint32_t toolCode, bool on);
// Thread body: a pass, a wait, a pass, until running is false.
void DispatcherThreadMain();
