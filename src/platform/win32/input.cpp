#include "platform/input.h"

#include <windows.h>

void SendInputRecord(const InputRecord& record) {
    INPUT input = {};
    input.type = record.type;
    if (record.type == INPUT_MOUSE) {
        input.mi.dx = record.dx;
        input.mi.dy = record.dy;
        input.mi.mouseData = record.mouseData;
        input.mi.dwFlags = record.dwFlags;
        input.mi.time = record.time;
        input.mi.dwExtraInfo = record.dwExtraInfo;
    } else {
        input.ki.wVk = record.wVk;
        input.ki.wScan = record.wScan;
        input.ki.dwFlags = record.dwFlags;
        input.ki.time = record.time;
        input.ki.dwExtraInfo = record.dwExtraInfo;
    }
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

std::string SystemKeyName(int32_t keyParameter) {
    char name[128];
    int length = GetKeyNameTextA(keyParameter, name, sizeof name);
    return length > 0 ? std::string(name, static_cast<size_t>(length)) : std::string();
}

uint32_t DoubleClickMilliseconds() {
    return GetDoubleClickTime();
}
