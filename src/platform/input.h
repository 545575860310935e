// Sending input, and what the system knows of screens, keys and the pointer. Any thread may call any function.
#pragma once

#include <cstdint>
#include <string>

// One INPUT record of Win32, field by field. Fields that an action does not use are zero.
struct InputRecord {
    uint32_t type = 0;         // kInputMouse or kInputKeyboard
    int32_t dx = 0;            // mouse: absolute (0..65535 over the primary screen) or relative
    int32_t dy = 0;            // mouse
    uint32_t mouseData = 0;    // mouse: wheel delta
    uint16_t wVk = 0;          // keyboard: always 0, keys go by scan code
    uint16_t wScan = 0;        // keyboard: set-1 scan code without its E0 prefix
    uint32_t dwFlags = 0;      // MOUSEEVENTF_* or KEYEVENTF_*
    uint32_t time = 0;         // always 0: the system stamps it
    uint64_t dwExtraInfo = 0;  // always 0: own input carries no mark of ours

    bool operator==(const InputRecord&) const = default;
};

constexpr uint32_t kInputMouse = 0;
constexpr uint32_t kInputKeyboard = 1;

constexpr uint32_t kMouseMove = 0x0001;
constexpr uint32_t kMouseLeftDown = 0x0002;
constexpr uint32_t kMouseLeftUp = 0x0004;
constexpr uint32_t kMouseRightDown = 0x0008;
constexpr uint32_t kMouseRightUp = 0x0010;
constexpr uint32_t kMouseMiddleDown = 0x0020;
constexpr uint32_t kMouseMiddleUp = 0x0040;
constexpr uint32_t kMouseSideDown = 0x0080;  // MOUSEEVENTF_XDOWN
constexpr uint32_t kMouseWheel = 0x0800;
constexpr uint32_t kMouseAbsolute = 0x8000;
constexpr uint32_t kKeyExtended = 0x0001;
constexpr uint32_t kKeyUp = 0x0002;
constexpr uint32_t kKeyScanCode = 0x0008;

// Queues one record. Whether the system took it is not reported.
void SendInputRecord(const InputRecord& record);

// The primary screen in physical pixels, read anew at each call.
int32_t PrimaryScreenWidth();
int32_t PrimaryScreenHeight();

// The pointer in physical pixels; false if the system will not tell.
bool ReadPointerPosition(int32_t* x, int32_t* y);

// Set-1 scan code of a virtual key (MAPVK_VK_TO_VSC), 0 if it has none. A home whose system names and takes keys with
// their prefix leaves its mark above the low 8 bits of those that the sender does not mark as extended itself.
uint32_t ScanCodeOfKey(uint32_t virtualKey);

// The system's name of a key (GetKeyNameTextA): scan code shifted left 16 bits, bit 24 for an extended key. Empty if
// the system has no name for it.
std::string SystemKeyName(int32_t keyParameter);

// The longest time between the presses of a double click, in milliseconds.
uint32_t DoubleClickMilliseconds();
