// Grabs, which hold an event back until the sink has decided. Input thread only.
#pragma once

#include "platform/linux/input_thread.h"

#include <X11/extensions/XInput2.h>

// Reserves with the server what the sinks may want to swallow now, and frees what they no longer want. Call AdjustHold
// for both gates afterwards.
void ApplyInterest(InputThread& thread);
void OnGrabbedEvent(InputThread& thread, const XIDeviceEvent& event);
// Grabs or releases the whole device, as its swallowed presses and the capture require.
void AdjustHold(InputThread& thread, Gate& gate);
void ReleaseGrabs(InputThread& thread);
// Releases a held device for a moment. AdjustHold grabs it again.
void PauseHold(InputThread& thread, Gate& gate);
// Returns whether another program has the device that should be held.
bool HoldIsMissing(const Gate& gate);
