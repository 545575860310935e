// The input thread: it sees all keyboard and mouse input of the session before the applications do, hands each piece
// to plain functions as a small record, and obeys their answer. It also carries raw mouse reports and session changes.
//
// All sinks are called on the input thread, one at a time. They must answer at once: all input waits for them.
#pragma once

#include <cstdint>

// The window messages that name what happened, with their Win32 values.
constexpr uint32_t kKeyDownMessage = 0x0100;
constexpr uint32_t kKeyUpMessage = 0x0101;
constexpr uint32_t kSysKeyDownMessage = 0x0104;
constexpr uint32_t kSysKeyUpMessage = 0x0105;
constexpr uint32_t kMouseMoveMessage = 0x0200;
constexpr uint32_t kLeftDownMessage = 0x0201;
constexpr uint32_t kLeftUpMessage = 0x0202;
constexpr uint32_t kRightDownMessage = 0x0204;
constexpr uint32_t kRightUpMessage = 0x0205;
constexpr uint32_t kMiddleDownMessage = 0x0207;
constexpr uint32_t kMiddleUpMessage = 0x0208;
constexpr uint32_t kWheelMessage = 0x020A;
constexpr uint32_t kSideDownMessage = 0x020B;  // WM_XBUTTONDOWN: the button is the high word of mouseData
constexpr uint32_t kSideUpMessage = 0x020C;
constexpr uint32_t kHorizontalWheelMessage = 0x020E;

struct KeyHookRecord {
    uint32_t message = 0;
    uint32_t virtualKey = 0;  // left- and right-hand modifiers apart (160 to 165)
    bool injected = false;    // made by a program, ours or another
    int64_t counter = 0;      // ReadPerformanceCounter when the system handed the event over
};

struct MouseHookRecord {
    uint32_t message = 0;
    int32_t x = 0;  // physical pixels
    int32_t y = 0;
    uint32_t mouseData = 0;  // high word: wheel delta as a signed 16-bit value, or which side button (1, 2)
    bool injected = false;
    int64_t counter = 0;
};

// One relative report of a mouse, in device counts before pointer acceleration. Absolute devices are not reported.
struct RawMouseRecord {
    int32_t dx = 0;
    int32_t dy = 0;
    int64_t counter = 0;
};

enum class HookAnswer { Pass, Consume };

// Session changes that the sink hears of, with their Win32 values (WTS_*).
constexpr uint32_t kSessionConsoleDisconnect = 2;
constexpr uint32_t kSessionRemoteDisconnect = 4;
constexpr uint32_t kSessionLock = 7;

// What the sinks might consume at this moment. A home that must reserve a press with the system beforehand (X11 grabs)
// reads it; others ignore it. A code in the list may still be answered with Pass.
struct HookInterest {
    uint32_t codes[8] = {};  // keys, and button codes 1, 2, 4, 5, 6
    int codeCount = 0;
    bool anyKey = false;      // the next key press is captured, whatever it is
    uint32_t buttons = 0;     // further buttons wanted, one bit a button code (1 << code)
    bool rawMotion = false;   // raw mouse reports are wanted
    bool everyEvent = false;  // passed events matter too (a recording runs)

    bool operator==(const HookInterest&) const = default;
};

struct HookSinks {
    HookAnswer (*onKey)(const KeyHookRecord& record) = nullptr;
    HookAnswer (*onMouse)(const MouseHookRecord& record) = nullptr;
    void (*onRawMouse)(const RawMouseRecord& record) = nullptr;
    void (*onSessionChange)(uint32_t change) = nullptr;
    void (*readInterest)(HookInterest* interest) = nullptr;
};

// The input thread's whole life: installs, calls the sinks, removes. Returns after StopInputThread, or at once if the
// system refuses everything; a hook that cannot be had is quietly done without.
void RunInputThread(const HookSinks& sinks);

// Any thread. Ends a running RunInputThread; without effect before it has begun.
void StopInputThread();

// Any thread. What readInterest would say may have changed since it was last asked.
void HookInterestChanged();
