#include "engines/injection.h"

namespace {

// (position << 16) / size in signed 32-bit arithmetic: the shift drops what does not fit, the division truncates.
int32_t ScaledToScreen(int32_t position, int32_t size) {
    const auto shifted = static_cast<int32_t>(static_cast<uint32_t>(position) << 16);
    return shifted / size;
}

}  // namespace

InputRecord AbsoluteMoveRecord(int32_t x, int32_t y, int32_t screenWidth, int32_t screenHeight) {
    InputRecord record;
    record.type = kInputMouse;
    record.dx = ScaledToScreen(x, screenWidth);
    record.dy = ScaledToScreen(y, screenHeight);
    record.dwFlags = kMouseMove | kMouseAbsolute;
    return record;
}

InputRecord RelativeMoveRecord(int32_t dx, int32_t dy) {
    InputRecord record;
    record.type = kInputMouse;
    record.dx = dx;
    record.dy = dy;
    record.dwFlags = kMouseMove;
    return record;
}

InputRecord MouseFlagsRecord(uint32_t flags) {
    InputRecord record;
    record.type = kInputMouse;
    record.dwFlags = flags;
    return record;
}

InputRecord WheelRecord(int32_t delta) {
    InputRecord record;
    record.type = kInputMouse;
    record.mouseData = static_cast<uint32_t>(delta);
    record.dwFlags = kMouseWheel;
    return record;
}

InputRecord KeyRecord(uint32_t scanCode, bool extended, bool down) {
    InputRecord record;
    record.type = kInputKeyboard;
    record.wScan = static_cast<uint16_t>(scanCode);
    record.dwFlags = kKeyScanCode | (extended ? kKeyExtended : 0) | (down ? 0 : kKeyUp);
    return record;
}

void MoveMouseAbsolute(int32_t x, int32_t y) {
    SendInputRecord(AbsoluteMoveRecord(x, y, PrimaryScreenWidth(), PrimaryScreenHeight()));
}

void MoveMouseRelative(int32_t dx, int32_t dy) {
    SendInputRecord(RelativeMoveRecord(dx, dy));
}

void SendMouseFlags(uint32_t flags) {
    SendInputRecord(MouseFlagsRecord(flags));
}

void SendWheel(int32_t delta) {
    SendInputRecord(WheelRecord(delta));
}

void SendKey(uint32_t virtualKey, bool down) {
    SendInputRecord(KeyRecord(ScanCodeOfKey(virtualKey), IsExtendedKey(virtualKey), down));
}

bool IsExtendedKey(uint32_t virtualKey) {
    return (virtualKey >= 33 && virtualKey <= 40) || virtualKey == 45 || virtualKey == 46;
}
