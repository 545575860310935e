#include "platform/input.h"

#include "platform/win32/input_record.h"

#include <windows.h>

void SendInputAction(const InputAction& action) {
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
    char name[128];
    const LONG parameter = static_cast<LONG>((scanCode << 16) | (extended ? 1U << 24 : 0U));
    int length = GetKeyNameTextA(parameter, name, sizeof name);
    return length > 0 ? std::string(name, static_cast<size_t>(length)) : std::string();
}

uint32_t DoubleClickMilliseconds() {
    return GetDoubleClickTime();
}
