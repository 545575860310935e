#include "platform/key_table.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace {

constexpr uint32_t kGraveAccentKey = 192;

constexpr uint16_t E0(uint16_t code) {
    return static_cast<uint16_t>(kPrefixE0 | code);
}
constexpr uint16_t E1(uint16_t code) {
    return static_cast<uint16_t>(kPrefixE1 | code);
}

constexpr KeyInfo kKeys[] = {
    {27, 0, 0x01, 1, "Esc"},
    {49, 0, 0x02, 2, "1"},
    {50, 0, 0x03, 3, "2"},
    {51, 0, 0x04, 4, "3"},
    {52, 0, 0x05, 5, "4"},
    {53, 0, 0x06, 6, "5"},
    {54, 0, 0x07, 7, "6"},
    {55, 0, 0x08, 8, "7"},
    {56, 0, 0x09, 9, "8"},
    {57, 0, 0x0A, 10, "9"},
    {48, 0, 0x0B, 11, "0"},
    {189, 0, 0x0C, 12, "-"},
    {187, 0, 0x0D, 13, "="},
    {8, 0, 0x0E, 14, "Backspace"},
    {9, 0, 0x0F, 15, "Tab"},
    {81, 0, 0x10, 16, "Q"},
    {87, 0, 0x11, 17, "W"},
    {69, 0, 0x12, 18, "E"},
    {82, 0, 0x13, 19, "R"},
    {84, 0, 0x14, 20, "T"},
    {89, 0, 0x15, 21, "Y"},
    {85, 0, 0x16, 22, "U"},
    {73, 0, 0x17, 23, "I"},
    {79, 0, 0x18, 24, "O"},
    {80, 0, 0x19, 25, "P"},
    {219, 0, 0x1A, 26, "["},
    {221, 0, 0x1B, 27, "]"},
    {13, 0, 0x1C, 28, "Enter"},
    {162, 0, 0x1D, 29, "Ctrl"},
    {65, 0, 0x1E, 30, "A"},
    {83, 0, 0x1F, 31, "S"},
    {68, 0, 0x20, 32, "D"},
    {70, 0, 0x21, 33, "F"},
    {71, 0, 0x22, 34, "G"},
    {72, 0, 0x23, 35, "H"},
    {74, 0, 0x24, 36, "J"},
    {75, 0, 0x25, 37, "K"},
    {76, 0, 0x26, 38, "L"},
    {186, 0, 0x27, 39, ";"},
    {222, 0, 0x28, 40, "'"},
    {192, 0, 0x29, 41, "`"},
    {160, 0, 0x2A, 42, "Left Shift"},
    {220, 0, 0x2B, 43, "\\"},
    {90, 0, 0x2C, 44, "Z"},
    {88, 0, 0x2D, 45, "X"},
    {67, 0, 0x2E, 46, "C"},
    {86, 0, 0x2F, 47, "V"},
    {66, 0, 0x30, 48, "B"},
    {78, 0, 0x31, 49, "N"},
    {77, 0, 0x32, 50, "M"},
    {188, 0, 0x33, 51, ","},
    {190, 0, 0x34, 52, "."},
    {191, 0, 0x35, 53, "/"},
    {161, 0, 0x36, 54, "Right Shift"},
    {106, 0, 0x37, 55, "Num *"},
    {164, 0, 0x38, 56, "Alt"},
    {32, 0, 0x39, 57, "Space"},
    {20, 0, 0x3A, 58, "Caps Lock"},
    {112, 0, 0x3B, 59, "F1"},
    {113, 0, 0x3C, 60, "F2"},
    {114, 0, 0x3D, 61, "F3"},
    {115, 0, 0x3E, 62, "F4"},
    {116, 0, 0x3F, 63, "F5"},
    {117, 0, 0x40, 64, "F6"},
    {118, 0, 0x41, 65, "F7"},
    {119, 0, 0x42, 66, "F8"},
    {120, 0, 0x43, 67, "F9"},
    {121, 0, 0x44, 68, "F10"},
    {144, 0, 0x45, 69, "Num Lock"},
    {145, 0, 0x46, 70, "Scroll Lock"},
    {103, 36, 0x47, 71, "Num 7"},
    {104, 38, 0x48, 72, "Num 8"},
    {105, 33, 0x49, 73, "Num 9"},
    {109, 0, 0x4A, 74, "Num -"},
    {100, 37, 0x4B, 75, "Num 4"},
    {101, 12, 0x4C, 76, "Num 5"},
    {102, 39, 0x4D, 77, "Num 6"},
    {107, 0, 0x4E, 78, "Num +"},
    {97, 35, 0x4F, 79, "Num 1"},
    {98, 40, 0x50, 80, "Num 2"},
    {99, 34, 0x51, 81, "Num 3"},
    {96, 45, 0x52, 82, "Num 0"},
    {110, 46, 0x53, 83, "Num Del"},
    {226, 0, 0x56, 86, "\\"},
    {122, 0, 0x57, 87, "F11"},
    {123, 0, 0x58, 88, "F12"},
    {124, 0, 0x64, 183, "F13"},
    {125, 0, 0x65, 184, "F14"},
    {126, 0, 0x66, 185, "F15"},
    {127, 0, 0x67, 186, "F16"},
    {128, 0, 0x68, 187, "F17"},
    {129, 0, 0x69, 188, "F18"},
    {130, 0, 0x6A, 189, "F19"},
    {131, 0, 0x6B, 190, "F20"},
    {132, 0, 0x6C, 191, "F21"},
    {133, 0, 0x6D, 192, "F22"},
    {134, 0, 0x6E, 193, "F23"},
    {135, 0, 0x76, 194, "F24"},
    {193, 0, 0x73, 89, "ABNT C1"},
    {28, 0, 0x79, 92, "Convert"},
    {29, 0, 0x7B, 94, "Nonconvert"},
    {177, 0, E0(0x10), 165, "Prev Track"},
    {176, 0, E0(0x19), 163, "Next Track"},
    {13, 0, E0(0x1C), 96, "Num Enter"},
    {163, 0, E0(0x1D), 97, "Right Ctrl"},
    {173, 0, E0(0x20), 113, "Mute"},
    {183, 0, E0(0x21), 140, "Calculator"},
    {179, 0, E0(0x22), 164, "Play/Pause"},
    {178, 0, E0(0x24), 166, "Stop"},
    {174, 0, E0(0x2E), 114, "Volume Down"},
    {175, 0, E0(0x30), 115, "Volume Up"},
    {172, 0, E0(0x32), 172, "Web/Home"},
    {111, 0, E0(0x35), 98, "Num /"},
    {44, 0, E0(0x37), 99, "Prnt Scrn"},
    {165, 0, E0(0x38), 100, "Right Alt"},
    {36, 0, E0(0x47), 102, "Home"},
    {38, 0, E0(0x48), 103, "Up"},
    {33, 0, E0(0x49), 104, "Page Up"},
    {37, 0, E0(0x4B), 105, "Left"},
    {39, 0, E0(0x4D), 106, "Right"},
    {35, 0, E0(0x4F), 107, "End"},
    {40, 0, E0(0x50), 108, "Down"},
    {34, 0, E0(0x51), 109, "Page Down"},
    {45, 0, E0(0x52), 110, "Insert"},
    {46, 0, E0(0x53), 111, "Delete"},
    {91, 0, E0(0x5B), 125, "Left Windows"},
    {92, 0, E0(0x5C), 126, "Right Windows"},
    {93, 0, E0(0x5D), 127, "Application"},
    {95, 0, E0(0x5F), 142, "Sleep"},
    {170, 0, E0(0x65), 217, "Search"},
    {171, 0, E0(0x66), 156, "Favorites"},
    {168, 0, E0(0x67), 173, "Refresh"},
    {169, 0, E0(0x68), 128, "Stop Web"},
    {167, 0, E0(0x69), 159, "Forward"},
    {166, 0, E0(0x6A), 158, "Back"},
    {182, 0, E0(0x6B), 157, "My Computer"},
    {180, 0, E0(0x6C), 155, "Mail"},
    {181, 0, E0(0x6D), 171, "Media Select"},
    {19, 0, E1(0x1D), 119, "Pause"},
};

constexpr size_t kKeyCount = std::size(kKeys);
constexpr uint8_t kNoKey = 0xFF;
static_assert(kKeyCount < kNoKey);

// Positions in kKeys by code: the input thread looks up every key that is pressed.
struct KeyIndex {
    uint8_t byKeycode[256] = {};
    uint8_t byVirtualKey[256] = {};
    uint8_t byScanCode[0x300] = {};
};

constexpr KeyIndex BuildIndex() {
    KeyIndex index;
    std::ranges::fill(index.byKeycode, kNoKey);
    std::ranges::fill(index.byVirtualKey, kNoKey);
    std::ranges::fill(index.byScanCode, kNoKey);
    for (size_t position = 0; position < kKeyCount; ++position) {
        const KeyInfo& key = kKeys[position];
        const uint8_t stored = static_cast<uint8_t>(position);
        index.byKeycode[KeycodeOf(key)] = stored;
        index.byScanCode[key.scanCode] = stored;
        // A virtual key of two keys means the first one: the main Enter, not that of the number pad.
        if (index.byVirtualKey[key.virtualKey] == kNoKey) {
            index.byVirtualKey[key.virtualKey] = stored;
        }
    }
    for (uint32_t code = 0; code < kPrefixE0; ++code) {
        const uint8_t prefixed = index.byScanCode[kPrefixE0 | code];
        if (index.byScanCode[code] == kNoKey) {
            index.byScanCode[code] = prefixed;
        }
    }
    // Shift, Ctrl and Alt without a side mean the left one.
    index.byVirtualKey[16] = index.byVirtualKey[160];
    index.byVirtualKey[17] = index.byVirtualKey[162];
    index.byVirtualKey[18] = index.byVirtualKey[164];
    // The middle of the number pad without Num Lock.
    index.byVirtualKey[12] = index.byVirtualKey[101];
    return index;
}

constexpr KeyIndex kIndex = BuildIndex();

const KeyInfo* KeyAt(uint8_t position) {
    return position == kNoKey ? nullptr : &kKeys[position];
}

}  // namespace

std::span<const KeyInfo> AllKeys() {
    return kKeys;
}

const KeyInfo* FindKeyByVirtualKey(uint32_t virtualKey) {
    return virtualKey < std::size(kIndex.byVirtualKey) ? KeyAt(kIndex.byVirtualKey[virtualKey]) : nullptr;
}

const KeyInfo* FindKeyByKeycode(uint32_t keycode) {
    return keycode < std::size(kIndex.byKeycode) ? KeyAt(kIndex.byKeycode[keycode]) : nullptr;
}

const KeyInfo* FindKeyByScanCode(uint32_t scanCode) {
    return scanCode < std::size(kIndex.byScanCode) ? KeyAt(kIndex.byScanCode[scanCode]) : nullptr;
}

const char* FixedCodeName(uint32_t code) {
    switch (code) {
    case kLeftButton:
        return "Left Mouse";
    case kRightButton:
        return "Right Mouse";
    case kMiddleButton:
        return "Middle Mouse";
    case kFirstSideButton:
        return "Mouse 4 (Side)";
    case kSecondSideButton:
        return "Mouse 5 (Side)";
    case kGraveAccentKey:
        return "`";
    default:
        return nullptr;
    }
}
