#include "engines/injection.h"

#include "model/button_flags.h"
#include "platform/key_table.h"

#include <optional>

namespace {

// Returns (position << 16) / size in signed 32-bit arithmetic: the shift drops high bits, the division truncates.
int32_t ScaledToScreen(int32_t position, int32_t size) {
    const auto shifted = static_cast<int32_t>(static_cast<uint32_t>(position) << 16);
    return shifted / size;
}

}  // namespace

InputAction AbsoluteMoveAction(int32_t x, int32_t y, int32_t screenWidth, int32_t screenHeight) {
    return {
        .kind = InputKind::MoveTo, .x = ScaledToScreen(x, screenWidth), .y = ScaledToScreen(y, screenHeight)};
}

InputAction KeyAction(uint32_t scanCode, bool extended, bool down) {
    return {.kind = InputKind::Key,
            .down = down,
            .extended = extended,
            .scanCode = static_cast<uint16_t>(scanCode)};
}

InputAction MouseFlagsAction(uint32_t flags) {
    if (const std::optional<ButtonAction> action = ButtonActionOf(flags)) {
        return {.kind = InputKind::Button, .down = action->down, .button = action->button};
    }
    return {.kind = InputKind::ButtonFlags, .buttonFlags = flags};
}

void MoveMouseAbsolute(int32_t x, int32_t y) {
    SendInputAction(AbsoluteMoveAction(x, y, PrimaryScreenWidth(), PrimaryScreenHeight()));
}

void MoveMouseRelative(int32_t dx, int32_t dy) {
    SendInputAction({.kind = InputKind::MoveBy, .x = dx, .y = dy});
}

void SendButton(uint32_t button, bool down) {
    SendInputAction({.kind = InputKind::Button, .down = down, .button = button});
}

void SendMouseFlags(uint32_t flags) {
    SendInputAction(MouseFlagsAction(flags));
}

void SendWheel(int32_t delta, StopCondition stop) {
    SendInputAction({.kind = InputKind::Wheel, .wheelDelta = delta}, stop);
}

void SendKey(uint32_t virtualKey, bool down) {
    SendInputAction(KeyAction(ScanCodeOfKey(virtualKey), IsExtendedKey(virtualKey), down));
}
