#include "platform/simulated/keys.h"

#include "platform/input.h"
#include "platform/simulated/simulation.h"

#include <charconv>

namespace {

struct Key {
    uint32_t virtualKey;
    uint32_t scanCode;
    bool extended;
    const char* name;
};

constexpr Key kKeys[] = {
    {27, 0x01, false, "Esc"},         {49, 0x02, false, "1"},
    {50, 0x03, false, "2"},           {51, 0x04, false, "3"},
    {52, 0x05, false, "4"},           {53, 0x06, false, "5"},
    {54, 0x07, false, "6"},           {55, 0x08, false, "7"},
    {56, 0x09, false, "8"},           {57, 0x0A, false, "9"},
    {48, 0x0B, false, "0"},           {189, 0x0C, false, "-"},
    {187, 0x0D, false, "="},          {8, 0x0E, false, "Backspace"},
    {9, 0x0F, false, "Tab"},          {81, 0x10, false, "Q"},
    {87, 0x11, false, "W"},           {69, 0x12, false, "E"},
    {82, 0x13, false, "R"},           {84, 0x14, false, "T"},
    {89, 0x15, false, "Y"},           {85, 0x16, false, "U"},
    {73, 0x17, false, "I"},           {79, 0x18, false, "O"},
    {80, 0x19, false, "P"},           {219, 0x1A, false, "["},
    {221, 0x1B, false, "]"},          {13, 0x1C, false, "Enter"},
    {162, 0x1D, false, "Left Ctrl"},  {65, 0x1E, false, "A"},
    {83, 0x1F, false, "S"},           {68, 0x20, false, "D"},
    {70, 0x21, false, "F"},           {71, 0x22, false, "G"},
    {72, 0x23, false, "H"},           {74, 0x24, false, "J"},
    {75, 0x25, false, "K"},           {76, 0x26, false, "L"},
    {186, 0x27, false, ";"},          {222, 0x28, false, "'"},
    {192, 0x29, false, "`"},          {160, 0x2A, false, "Left Shift"},
    {220, 0x2B, false, "\\"},         {90, 0x2C, false, "Z"},
    {88, 0x2D, false, "X"},           {67, 0x2E, false, "C"},
    {86, 0x2F, false, "V"},           {66, 0x30, false, "B"},
    {78, 0x31, false, "N"},           {77, 0x32, false, "M"},
    {188, 0x33, false, ","},          {190, 0x34, false, "."},
    {191, 0x35, false, "/"},          {161, 0x36, false, "Right Shift"},
    {106, 0x37, false, "Num *"},      {164, 0x38, false, "Left Alt"},
    {32, 0x39, false, "Space"},       {20, 0x3A, false, "Caps Lock"},
    {112, 0x3B, false, "F1"},         {113, 0x3C, false, "F2"},
    {114, 0x3D, false, "F3"},         {115, 0x3E, false, "F4"},
    {116, 0x3F, false, "F5"},         {117, 0x40, false, "F6"},
    {118, 0x41, false, "F7"},         {119, 0x42, false, "F8"},
    {120, 0x43, false, "F9"},         {121, 0x44, false, "F10"},
    {144, 0x45, false, "Num Lock"},   {145, 0x46, false, "Scroll Lock"},
    {103, 0x47, false, "Num 7"},      {104, 0x48, false, "Num 8"},
    {105, 0x49, false, "Num 9"},      {100, 0x4B, false, "Num 4"},
    {101, 0x4C, false, "Num 5"},      {102, 0x4D, false, "Num 6"},
    {97, 0x4F, false, "Num 1"},       {98, 0x50, false, "Num 2"},
    {99, 0x51, false, "Num 3"},       {96, 0x52, false, "Num 0"},
    {109, 0x4A, false, "Num -"},      {107, 0x4E, false, "Num +"},
    {110, 0x53, false, "Num Del"},    {122, 0x57, false, "F11"},
    {123, 0x58, false, "F12"},        {36, 0x47, true, "Home"},
    {38, 0x48, true, "Up"},           {33, 0x49, true, "Page Up"},
    {37, 0x4B, true, "Left"},         {39, 0x4D, true, "Right"},
    {35, 0x4F, true, "End"},          {40, 0x50, true, "Down"},
    {34, 0x51, true, "Page Down"},    {45, 0x52, true, "Insert"},
    {46, 0x53, true, "Delete"},       {163, 0x1D, true, "Right Ctrl"},
    {165, 0x38, true, "Right Alt"},   {111, 0x35, true, "Num /"},
    {91, 0x5B, true, "Left Windows"}, {92, 0x5C, true, "Right Windows"},
    {93, 0x5D, true, "Application"},
};

// The keys that stand for either hand have the scan code of the left one.
uint32_t OneHanded(uint32_t virtualKey) {
    return virtualKey >= 16 && virtualKey <= 18 ? 160 + (virtualKey - 16) * 2 : virtualKey;
}

std::string WithoutBlanks(const char* name) {
    std::string text;
    for (; *name != '\0'; ++name) {
        if (*name != ' ') {
            text += *name;
        }
    }
    return text;
}

}  // namespace

uint32_t ScanCodeOfKey(uint32_t virtualKey) {
    for (const Key& key : kKeys) {
        if (key.virtualKey == OneHanded(virtualKey)) {
            return key.scanCode;
        }
    }
    return 0;
}

std::string SystemKeyName(int32_t keyParameter) {
    const uint32_t parameter = static_cast<uint32_t>(keyParameter);
    const uint32_t scanCode = (parameter >> 16) & 0xFF;
    const bool extended = (parameter & (1U << 24)) != 0;
    for (const Key& key : kKeys) {
        if (key.scanCode == scanCode && key.extended == extended) {
            return key.name;
        }
    }
    return "";
}

uint32_t SimKeyOfScanCode(uint32_t scanCode, bool extended) {
    for (const Key& key : kKeys) {
        if (key.scanCode == scanCode && key.extended == extended) {
            return key.virtualKey;
        }
    }
    return 0;
}

uint32_t SimKeyFromName(std::string_view name) {
    for (const Key& key : kKeys) {
        if (WithoutBlanks(key.name) == name) {
            return key.virtualKey;
        }
    }
    uint32_t code = 0;
    if (name.size() > 1 && name[0] == '#' &&
        std::from_chars(name.data() + 1, name.data() + name.size(), code).ec == std::errc()) {
        return code;
    }
    return 0;
}

std::string SimNameOfKey(uint32_t virtualKey) {
    for (const Key& key : kKeys) {
        if (key.virtualKey == virtualKey) {
            return WithoutBlanks(key.name);
        }
    }
    return "#" + std::to_string(virtualKey);
}
