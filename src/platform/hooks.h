// The input thread: sees all keyboard and mouse input of the session before the applications do, passes each event to
// plain functions as a small record, and follows their decision. It also reports raw mouse motion and session changes.
//
// The input thread calls all sinks, one at a time. A sink must return at once, because all input waits for it.
#pragma once

#include <cstdint>

struct KeyHookRecord {
    uint32_t virtualKey = 0;  // separate codes for left and right modifiers (160 to 165)
    bool down = false;        // a held key repeats: several presses, one release
    bool injected = false;    // sent by a program, this one or another
    int64_t counter = 0;      // ReadPerformanceCounter when the system delivered the event
};

enum class PointerEvent : uint8_t { Move, Press, Release, Wheel, HorizontalWheel };

struct MouseHookRecord {
    PointerEvent kind = PointerEvent::Move;
    bool injected = false;
    uint32_t button = 0;  // Press and Release: a button code of key_table.h
    int32_t x = 0;        // physical pixels
    int32_t y = 0;
    int32_t wheelDelta = 0;  // Wheel and HorizontalWheel: 120 per notch
    int64_t counter = 0;
};

// One relative report of a mouse, in device counts before pointer acceleration. Absolute devices are not reported.
struct RawMouseRecord {
    int32_t dx = 0;
    int32_t dy = 0;
    int64_t counter = 0;
};

enum class HookDecision { Pass, Consume };

enum class SessionChange { ConsoleDisconnect, RemoteDisconnect, Lock };

// What the sinks want now. A backend that must reserve a press with the system beforehand (X11 grabs) reads the codes and
// buttons; others ignore them. The sink may still pass an event whose code is in the list. Raw mouse reports arrive only
// while rawMotion is set.
struct HookInterest {
    uint32_t codes[8] = {};  // virtual keys and button codes
    int codeCount = 0;
    bool anyKey = false;         // the next key press is captured, whatever it is
    uint32_t buttons = 0;        // further buttons, one bit per button code (1 << code)
    bool rawMotion = false;      // raw mouse reports are wanted
    bool everyEvent = false;     // passed events matter too (a recording runs)
    bool injectedCodes = false;  // key, button and wheel events of programs matter too

    bool operator==(const HookInterest&) const = default;
};

struct HookSinks {
    HookDecision (*onKey)(const KeyHookRecord& record) = nullptr;
    HookDecision (*onMouse)(const MouseHookRecord& record) = nullptr;
    void (*onRawMouse)(const RawMouseRecord& record) = nullptr;
    void (*onSessionChange)(SessionChange change) = nullptr;
    void (*readInterest)(HookInterest* interest) = nullptr;
};

// Runs the input thread: installs the hooks, calls the sinks, removes the hooks. Returns after StopInputThread, or at
// once if the system refuses everything. A single hook that the system refuses is left out without an error.
void RunInputThread(const HookSinks& sinks);

// Any thread. Ends a running RunInputThread. Has no effect before RunInputThread has begun.
void StopInputThread();

// Any thread. Notifies the input thread that readInterest may now return something else.
void HookInterestChanged();
