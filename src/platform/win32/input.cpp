#include "platform/input.h"

#include "platform/win32/input_record.h"
#include "platform/win32/text_encoding.h"

#include <windows.h>

// One record holds a whole turn of the wheel, so there is nothing to stop in the middle.
void SendInputAction(const InputAction& action, StopCondition /*stop*/) {
    INPUT input = InputRecordOf(action);
    SendInput(1, &input, sizeof input);
}

int32_t PrimaryScreenWidth() {
    return GetSystemMetrics(SM_CXSCREEN);
}

int32_t PrimaryScreenHeight() {
    return GetSystemMetrics(SM_CYSCREEN);
}

bool ReadPointerPosition(int32_t* x, int32_t* y) {
    POINT point;
    if (!GetCursorPos(&point)) {
        return false;
    }
    *x = point.x;
    *y = point.y;
    return true;
}

uint32_t ScanCodeOfKey(uint32_t virtualKey) {
    return MapVirtualKeyW(virtualKey, MAPVK_VK_TO_VSC);
}

std::string SystemKeyName(uint32_t scanCode, bool extended) {
    constexpr int kLongestName = 128;
    wchar_t name[kLongestName];
    const LONG parameter = static_cast<LONG>((scanCode << 16) | (extended ? 1U << 24 : 0U));
    return GetKeyNameTextW(parameter, name, kLongestName) > 0 ? Utf8OfWide(name) : std::string();
}

uint32_t DoubleClickMilliseconds() {
    return GetDoubleClickTime();
}
