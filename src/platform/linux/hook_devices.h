// The pointer devices of the server. Input thread only.
#pragma once

#include "platform/linux/input_thread.h"

// Reads the devices into the record, and keeps what is known of those that are already there.
void ReadDevices(InputThread& thread);
// Returns whether a program sent the event, since it comes from an XTEST device.
bool IsInjected(const InputThread& thread, int sourceDevice);
