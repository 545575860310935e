// How fake input goes out. While the input thread holds a device because a consumed key or button is still down, fake
// input of that device has to go through the input thread, or it would end there (see hooks.cpp). Linux home only.
#pragma once

#include <X11/Xlib.h>
#include <cstdint>

// Each sends at once on the calling thread's connection `display`, or by way of the input thread. Any thread.
void SendFakeKey(Display* display, uint32_t keycode, bool press);
void SendFakeButton(Display* display, uint32_t button, bool press);
void SendFakePosition(Display* display, int32_t rootX, int32_t rootY);
void SendFakeMotion(Display* display, int32_t dx, int32_t dy);
