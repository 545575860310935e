// Sends input and reads what the system knows of screens, keys and the pointer. Any thread may call any function.
#pragma once

#include <cstdint>
#include <string>

enum class InputKind : uint8_t {
    MoveTo,       // x, y: 65536ths of the primary screen's width and height
    MoveBy,       // x, y: device counts
    Button,       // button, down
    ButtonFlags,  // buttonFlags
    Wheel,        // wheelDelta
    Key,          // scanCode, extended, down
};

// One action that this program sends. Fields that its kind does not use are zero.
struct InputAction {
    InputKind kind = InputKind::MoveTo;
    bool down = false;
    bool extended = false;  // sent with the mark of an extended key
    uint16_t scanCode = 0;  // as ScanCodeOfKey returns it
    uint32_t button = 0;    // a button code of key_table.h; kNoButton sends an action without a button
    uint32_t buttonFlags =
        0;  // a stored value that names no single button: passed on as stored where the system
            // has such flags, ignored elsewhere
    int32_t x = 0;
    int32_t y = 0;
    int32_t wheelDelta = 0;  // 120 per notch

    bool operator==(const InputAction&) const = default;
};

// Returns true once the sender should stop. Called on the sending thread; must not throw.
using StopCondition = bool (*)();

// Queues one action, as one record of the system. Does not report whether the system accepted it. Where the system knows
// whole notches only, a wheel action is sent notch by notch and ends early when `stop` returns true; null: never.
void SendInputAction(const InputAction& action, StopCondition stop = nullptr);

// The primary screen in physical pixels, read at each call.
int32_t PrimaryScreenWidth();
int32_t PrimaryScreenHeight();

// Reads the pointer position in physical pixels. Returns false if the system refuses.
bool ReadPointerPosition(int32_t* x, int32_t* y);

// Returns the set-1 scan code of a virtual key, or 0 if it has none. A backend whose system distinguishes keys by their
// prefix sets a mark above the low 8 bits for prefixed keys that IsExtendedKey does not list.
uint32_t ScanCodeOfKey(uint32_t virtualKey);

// Returns the system's name, in UTF-8, of the key that ScanCodeOfKey and IsExtendedKey describe, empty if it has none.
std::string SystemKeyName(uint32_t scanCode, bool extended);

// Returns the longest time between the presses of a double click, in milliseconds.
uint32_t DoubleClickMilliseconds();
