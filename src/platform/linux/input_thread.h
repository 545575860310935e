// The input thread's record. Only the input thread uses it.
//
//   hooks.cpp              life of the thread, its loop
//   hook_injection.cpp     sends input of this program while a device is held
//   hook_gate.cpp          grabs, which hold an event back until the sink has decided
//   hook_events.cpp        raw events of the server become records for the sinks: the only source of reports
//   hook_devices.cpp       the pointer devices, and which of them programs send through
//   raw_motion.cpp         device counts from the raw reports of a mouse
//   session_watch.cpp      lock and disconnect of the log-on session
//   grab_watch.cpp         a process that releases the grabs if this thread does not answer
//   input_thread_wake.cpp  wakes the thread from its poll
//
// Each file calls only files below it in this list.
#pragma once

#include "platform/hooks.h"
#include "platform/linux/grab_watch.h"
#include "platform/linux/raw_motion.h"
#include "platform/linux/x11_display.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <bitset>
#include <cstdint>
#include <map>
#include <vector>

constexpr int kCodeLimit = 256;  // X keycodes and button numbers are below it

// The sinks' last decisions on one keycode or button.
struct GateDecisions {
    HookDecision press = HookDecision::Pass;
    HookDecision release = HookDecision::Pass;
};

// One master device and its grabs. A grabbed event stops the device until the decision: then the event is either
// swallowed or replayed to the client that would have received it without us.
struct Gate {
    int device = 0;
    bool isKeyboard = false;
    std::bitset<kCodeLimit> reserved;  // passive grabs that we have at the server
    // Held down, and the press was swallowed. The device is held until all of them are up.
    std::bitset<kCodeLimit> swallowed;
    // Those of `swallowed` that are up, but whose grabbed release has not arrived.
    std::bitset<kCodeLimit> released;
    bool captureAll = false;         // the next press is wanted, whatever it is
    bool held = false;               // the whole device is grabbed
    GateDecisions real[kCodeLimit];  // by keycode or button
    GateDecisions injected[kCodeLimit];
};

// The auto-repeat of a key. Raw events have none, so it is generated while a recording runs.
struct KeyRepeat {
    uint32_t keycode = 0;  // 0: none
    uint32_t virtualKey = 0;
    int64_t nextAt = 0;    // counter
    int64_t interval = 0;  // counter ticks
};

// A pointer device of the server.
struct PointerDevice {
    bool injects = false;  // the one through which programs send
    RawMotion motion;
};

struct InputThread {
    HookSinks sinks;
    HookInterest interest;

    Display* display = nullptr;
    bool displayLost = false;
    GrabWatch watch;
    Window root = None;
    int inputOpcode = 0;   // of the X Input extension
    int randrEvents = -1;  // first event of the RandR extension, -1 without it
    ScreenArea screen;
    std::map<int, PointerDevice> devices;  // slaves, by X device id

    Gate keyboard;
    Gate pointer;

    uint32_t pressedAs[kCodeLimit] = {};  // virtual key that the last press of a keycode was reported as
    KeyRepeat repeat;
    int64_t lastCounter = 0;   // of the last record that a sink received
    bool movePending = false;  // the pointer has moved and the sink has no record of it
    bool moveInjected = false;
    int moveDevice = 0;  // the device that moved it
    int pointerX = 0;    // on the root window, at the last query
    int pointerY = 0;
};
