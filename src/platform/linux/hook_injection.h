// Sends fake input. While the input thread holds a device because a consumed key or button is still down, fake input of
// that device goes through the input thread, or it would end there (see hook_gate.cpp).
#pragma once

#include "platform/linux/input_thread.h"

#include <X11/Xlib.h>
#include <cstdint>

// Any thread. Each sends at once on the calling thread's connection `display`, or through the input thread.
// Waits a little if many of its keys and buttons have not been reported to the input thread, so that a stop takes effect
// before much is queued anywhere.
void SendFakeKey(Display* display, uint32_t keycode, bool press);
void SendFakeButton(Display* display, uint32_t button, bool press);
void SendFakePosition(Display* display, int32_t rootX, int32_t rootY);
void SendFakeMotion(Display* display, int32_t dx, int32_t dy);

// Input thread. A sent key or button was reported. `serving`: whether reports come at all.
void CountReport();
void SetReporting(bool serving);

// Input thread. Publishes which devices are held, so that senders know which way to go.
void PublishHolds(const InputThread& thread);
bool HasHandedOverInput();
// Sends the input that other threads have passed. Handle all events up to now before.
void SendHandedOver(InputThread& thread);
