#include "platform/win32/input_record.h"

#include "platform/key_table.h"

namespace {

// The first side button does not differ from the second in its flags but in mouseData.
struct ButtonRow {
    uint32_t button;
    DWORD press;
    DWORD release;
    DWORD mouseData;
};

constexpr ButtonRow kButtons[] = {
    {kLeftButton, MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP, 0},
    {kRightButton, MOUSEEVENTF_RIGHTDOWN, MOUSEEVENTF_RIGHTUP, 0},
    {kMiddleButton, MOUSEEVENTF_MIDDLEDOWN, MOUSEEVENTF_MIDDLEUP, 0},
    {kFirstSideButton, MOUSEEVENTF_XDOWN, MOUSEEVENTF_XUP, XBUTTON1},
    {kSecondSideButton, MOUSEEVENTF_XDOWN, MOUSEEVENTF_XUP, XBUTTON2},
    {kUnnamedSideButton, MOUSEEVENTF_XDOWN, MOUSEEVENTF_XUP, 0},
};

// Leaves the record without an action for a button that the table does not have.
void SetButton(MOUSEINPUT& mouse, uint32_t button, bool down) {
    for (const ButtonRow& row : kButtons) {
        if (row.button == button) {
            mouse.dwFlags = down ? row.press : row.release;
            mouse.mouseData = row.mouseData;
            return;
        }
    }
}

}  // namespace

INPUT InputRecordOf(const InputAction& action) {
    INPUT input = {};
    input.type = INPUT_MOUSE;
    switch (action.kind) {
    case InputKind::MoveTo:
        input.mi.dx = action.x;
        input.mi.dy = action.y;
        input.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
        break;
    case InputKind::MoveBy:
        input.mi.dx = action.x;
        input.mi.dy = action.y;
        input.mi.dwFlags = MOUSEEVENTF_MOVE;
        break;
    case InputKind::Button:
        SetButton(input.mi, action.button, action.down);
        break;
    case InputKind::ButtonFlags:
        // Macros store these very flags.
        input.mi.dwFlags = action.buttonFlags;
        break;
    case InputKind::Wheel:
        input.mi.mouseData = static_cast<DWORD>(action.wheelDelta);
        input.mi.dwFlags = MOUSEEVENTF_WHEEL;
        break;
    case InputKind::Key:
        input.type = INPUT_KEYBOARD;
        input.ki.wScan = action.scanCode;
        input.ki.dwFlags = KEYEVENTF_SCANCODE | (action.extended ? KEYEVENTF_EXTENDEDKEY : 0U) |
                           (action.down ? 0U : KEYEVENTF_KEYUP);
        break;
    }
    return input;
}
