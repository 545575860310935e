// The table of keys that all backends and the hotkeys share, and the codes of the mouse buttons. Constant; any thread.
#pragma once

#include <cstdint>
#include <span>

// Mouse buttons by their virtual keys. 3 is no button.
constexpr uint32_t kNoButton = 0;
constexpr uint32_t kLeftButton = 1;
constexpr uint32_t kRightButton = 2;
constexpr uint32_t kMiddleButton = 4;
constexpr uint32_t kFirstSideButton = 5;
constexpr uint32_t kSecondSideButton = 6;
// Only sent: a side button without saying which, as macros store it. No system acts on it.
constexpr uint32_t kUnnamedSideButton = 7;

// Marks in a scan code for the prefix that the key sends before it.
constexpr uint32_t kPrefixE0 = 0x100;
constexpr uint32_t kPrefixE1 = 0x200;

struct KeyInfo {
    uint8_t virtualKey;     // US layout, separate codes for left and right modifiers
    uint8_t padVirtualKey;  // number pad with Num Lock off; 0: the same as virtualKey
    uint16_t scanCode;      // set 1, with its prefix mark
    uint8_t evdevCode;      // Linux: the X keycode less 8
    const char* name;       // the English name on Windows
};

// Each returns null for a code that the table does not have.
const KeyInfo* FindKeyByVirtualKey(uint32_t virtualKey);
// X keycode of a server with evdev numbering.
const KeyInfo* FindKeyByKeycode(uint32_t keycode);
// A code without prefix that no key has finds the key that has it with prefix E0.
const KeyInfo* FindKeyByScanCode(uint32_t scanCode);
std::span<const KeyInfo> AllKeys();

constexpr uint32_t KeycodeOf(const KeyInfo& key) {
    return key.evdevCode + 8U;
}

// True for Page Up to Down (33 to 40), Insert and Delete (45, 46): only these are sent and named as extended keys.
constexpr bool IsExtendedKey(uint32_t virtualKey) {
    return (virtualKey >= 33 && virtualKey <= 40) || virtualKey == 45 || virtualKey == 46;
}

// Returns the display name of a code that has the same name on every system (mouse buttons, grave accent), else null.
const char* FixedCodeName(uint32_t code);
