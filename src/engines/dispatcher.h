// The dispatcher: the only place that starts and stops engines. Dispatcher thread only.
#pragma once

#include <cstdint>

// Runs all pending requests once, in fixed order, with guards, clean-up input and wakes. Throws std::bad_alloc if a copy
// of the macro does not fit into memory.
void DispatchRequests();
// Appends a tool's change (kToolAutoclicker or kToolKeySpammer) to the running recording.
void RecordToolState(uint32_t toolCode, bool on);
// Thread body: runs the requests after each wake, until running is false.
void DispatcherThreadMain();
