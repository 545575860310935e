// The input thread's record, shared by the files that its work is spread over. Linux home only; all of it belongs to
// the input thread.
//
//   hooks.cpp          life of the thread, its loop, what it wakes up for
//   hook_events.cpp    raw events of the server become records for the sinks: the one source of what is reported
//   hook_gate.cpp      grabs, which hold an event back until the sink's answer is known
//   hook_injection.cpp fake input of this program while a grab is held
//   raw_motion.cpp     device counts from the raw reports of a mouse
//   session_watch.cpp  lock and disconnect of the log-on session
#pragma once

#include "platform/hooks.h"
#include "platform/linux/raw_motion.h"
#include "platform/linux/x11_display.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <bitset>
#include <cstdint>
#include <map>
#include <vector>

constexpr int kCodeLimit = 256;  // X keycodes and button numbers are below it

// The sinks' last answers for one keycode or button.
struct GateAnswers {
    HookAnswer press = HookAnswer::Pass;
    HookAnswer release = HookAnswer::Pass;
};

// One master device, with what is grabbed of it. A grabbed event stops the device until we answer: then it is either
// swallowed, or replayed to whom it would have reached without us.
struct Gate {
    int device = 0;
    bool isKeyboard = false;
    std::bitset<kCodeLimit> reserved;  // passive grabs that the server has of us
    std::bitset<kCodeLimit>
        swallowed;  // held down, and the press was swallowed: the device is held until all are up
    std::bitset<kCodeLimit> released;  // of the swallowed ones: let go of, the grabbed release not yet seen
    bool captureAll = false;           // the next press is wanted, whatever it is
    bool held = false;                 // the whole device is grabbed
    GateAnswers real[kCodeLimit];      // by keycode or button; real and injected ones do not meet
    GateAnswers injected[kCodeLimit];
};

// The auto-repeat that raw events do not have, made up while a recording runs.
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

struct HookThread {
    HookSinks sinks;
    HookInterest interest;

    Display* display = nullptr;
    bool displayLost = false;
    Window root = None;
    int inputOpcode = 0;   // of the X Input extension
    int randrEvents = -1;  // first event of the RandR extension, -1 without it
    ScreenArea screen;
    std::map<int, PointerDevice> devices;  // slaves, by X device id

    Gate keyboard;
    Gate pointer;

    uint32_t pressedAs[kCodeLimit] = {};  // virtual key that the last press of a keycode was reported as
    KeyRepeat repeat;
    int64_t lastCounter = 0;  // of the last record that a sink was told
    bool moveWaits = false;   // the pointer moved and the sink has not heard of it
    bool moveInjected = false;
    int moveDevice = 0;  // the device that moved it
    int pointerX = 0;    // on the root window, when it was last asked for
    int pointerY = 0;
};

// hook_events.cpp
void ReadDevices(HookThread& thread);
void OnRawKey(HookThread& thread, const XIRawEvent& event, bool press);
void OnRawButton(HookThread& thread, const XIRawEvent& event, bool press);
void OnRawMotion(HookThread& thread, const XIRawEvent& event);
// Tells the sink of a move that waits; to be called before anything that happened after it.
void ReportMove(HookThread& thread);
// Takes down where the pointer is, before the first report of a motion.
void RememberPointer(HookThread& thread);
// Reports repeats that are due.
void ReportRepeats(HookThread& thread);
bool IsInjected(const HookThread& thread, int sourceDevice);

// hook_gate.cpp
// Reserves with the server what the sinks may want to swallow now, and frees what they no longer want. AdjustHold of
// both gates has to follow.
void ApplyInterest(HookThread& thread);
void OnGrabbedEvent(HookThread& thread, const XIDeviceEvent& event);
// Takes hold of a device, or lets go of it, as its swallowed presses and the capture ask for.
void AdjustHold(HookThread& thread, Gate& gate);
void ReleaseGrabs(HookThread& thread);
// Lets go of a held device for a moment; AdjustHold takes hold of it again.
void PauseHold(HookThread& thread, Gate& gate);
// Another program has the device that should be held.
bool HoldIsMissing(const Gate& gate);

// hook_injection.cpp
// Tells the senders whether they have to come this way.
void PublishHolds(const HookThread& thread);
bool HandOverWaits();
// Sends what waits. All events up to now must have been answered.
void SendHandedOver(HookThread& thread);
