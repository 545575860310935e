// The keys of a keyboard by position: the Windows virtual key and set-1 scan code of each, and its keycode on an X
// server with the usual evdev numbering. Linux home only; constant, any thread.
#pragma once

#include <cstdint>

// Marks in a scan code for the prefix that the key sends before it.
constexpr uint32_t kPrefixE0 = 0x100;
constexpr uint32_t kPrefixE1 = 0x200;

struct KeyPlace {
    uint8_t virtualKey;     // US layout, left- and right-hand modifiers apart
    uint8_t padVirtualKey;  // what it is while Num Lock is off, 0 for the same
    uint16_t scanCode;      // with its prefix mark
    uint8_t evdevCode;      // X keycode less 8
    const char* name;       // what Windows calls it in English
};

// Null for a key that the table does not know.
const KeyPlace* KeyPlaceOfKeycode(uint32_t keycode);
const KeyPlace* KeyPlaceOfVirtualKey(uint32_t virtualKey);
// For a code without prefix that no key has, the key that has it with one.
const KeyPlace* KeyPlaceOfScanCode(uint32_t scanCode);

inline uint32_t KeycodeOf(const KeyPlace& place) {
    return place.evdevCode + 8U;
}
