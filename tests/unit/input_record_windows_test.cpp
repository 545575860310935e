// What SendInput receives for each action, and what the low-level hooks deliver for each message.
#ifdef _WIN32
#include "engines/injection.h"
#include "platform/key_table.h"
#include "platform/win32/hook_records.h"
#include "platform/win32/input_record.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

InputAction Button(uint32_t button, bool down) {
    return {.kind = InputKind::Button, .down = down, .button = button};
}

// Expects a mouse record whose other fields are zero, byte for byte.
void ExpectMouse(const InputAction& action, LONG dx, LONG dy, DWORD mouseData, DWORD flags) {
    INPUT expected;
    std::memset(&expected, 0, sizeof expected);
    expected.type = 0;
    expected.mi.dx = dx;
    expected.mi.dy = dy;
    expected.mi.mouseData = mouseData;
    expected.mi.dwFlags = flags;
    const INPUT record = InputRecordOf(action);
    EXPECT_EQ(std::memcmp(&record, &expected, sizeof expected), 0)
        << record.mi.dx << " " << record.mi.dy << " " << record.mi.mouseData << " " << record.mi.dwFlags;
}

void ExpectKey(const InputAction& action, WORD scanCode, DWORD flags) {
    const INPUT record = InputRecordOf(action);
    EXPECT_EQ(record.type, 1U);
    EXPECT_EQ(record.ki.wVk, 0);
    EXPECT_EQ(record.ki.wScan, scanCode);
    EXPECT_EQ(record.ki.dwFlags, flags);
    EXPECT_EQ(record.ki.time, 0U);
    EXPECT_EQ(record.ki.dwExtraInfo, 0U);
}

MouseHookRecord MouseOf(WPARAM message, WORD highWord = 0) {
    MSLLHOOKSTRUCT event = {};
    event.pt = {-7, 9};
    event.mouseData = static_cast<DWORD>(highWord) << 16;
    return MouseHookRecordOf(message, event, 55).value();
}

}  // namespace

TEST(InputRecordTest, Moves) {
    ExpectMouse(AbsoluteMoveAction(1919, 1079, 1920, 1080), 65501, 65475, 0, 32769);
    ExpectMouse({.kind = InputKind::MoveBy, .x = -7, .y = 9}, -7, 9, 0, 1);
}

TEST(InputRecordTest, ButtonsHaveTheirFlagOnly) {
    ExpectMouse(Button(kLeftButton, true), 0, 0, 0, 2);
    ExpectMouse(Button(kLeftButton, false), 0, 0, 0, 4);
    ExpectMouse(Button(kRightButton, true), 0, 0, 0, 8);
    ExpectMouse(Button(kRightButton, false), 0, 0, 0, 16);
    ExpectMouse(Button(kMiddleButton, true), 0, 0, 0, 32);
    ExpectMouse(Button(kMiddleButton, false), 0, 0, 0, 64);
    ExpectMouse(Button(kNoButton, true), 0, 0, 0, 0);
    ExpectMouse(Button(kNoButton, false), 0, 0, 0, 0);
    ExpectMouse(Button(kFirstSideButton, true), 0, 0, 1, 128);
    ExpectMouse(Button(kSecondSideButton, false), 0, 0, 2, 256);
}

// Whatever number a macro stores reaches SendInput unchanged.
TEST(InputRecordTest, StoredFlagsAreSentAsTheyAre) {
    for (const DWORD flags :
         {0UL, 1UL, 2UL, 3UL, 4UL, 6UL, 8UL, 16UL, 32UL, 64UL, 128UL, 256UL, 2048UL, 32769UL, 0xFFFFFFFFUL}) {
        ExpectMouse(MouseFlagsAction(flags), 0, 0, 0, flags);
    }
}

TEST(InputRecordTest, WheelDeltasAreSigned) {
    ExpectMouse({.kind = InputKind::Wheel, .wheelDelta = 120}, 0, 0, 120, 2048);
    ExpectMouse({.kind = InputKind::Wheel, .wheelDelta = -120}, 0, 0, 0xFFFFFF88, 2048);
}

TEST(InputRecordTest, KeysAreScanCodes) {
    ExpectKey(KeyAction(30, false, true), 30, 8);
    ExpectKey(KeyAction(30, false, false), 30, 10);
    ExpectKey(KeyAction(83, true, true), 83, 9);
    ExpectKey(KeyAction(83, true, false), 83, 11);
    ExpectKey(KeyAction(0, false, true), 0, 8);
}

TEST(HookRecordTest, KeyMessages) {
    KBDLLHOOKSTRUCT event = {};
    event.vkCode = 164;
    for (const WPARAM message : {WM_KEYDOWN, WM_SYSKEYDOWN, WM_KEYUP, WM_SYSKEYUP}) {
        const KeyHookRecord record = KeyHookRecordOf(message, event, 77);
        EXPECT_EQ(record.virtualKey, 164U);
        EXPECT_EQ(record.down, message == WM_KEYDOWN || message == WM_SYSKEYDOWN);
        EXPECT_FALSE(record.injected);
        EXPECT_EQ(record.counter, 77);
    }
    event.flags = LLKHF_INJECTED;
    EXPECT_TRUE(KeyHookRecordOf(WM_KEYDOWN, event, 0).injected);
}

TEST(HookRecordTest, ButtonMessages) {
    const struct {
        WPARAM message;
        WORD highWord;
        PointerEvent kind;
        uint32_t button;
    } rows[] = {
        {WM_LBUTTONDOWN, 0, PointerEvent::Press, kLeftButton},
        {WM_LBUTTONUP, 0, PointerEvent::Release, kLeftButton},
        {WM_RBUTTONDOWN, 0, PointerEvent::Press, kRightButton},
        {WM_RBUTTONUP, 0, PointerEvent::Release, kRightButton},
        {WM_MBUTTONDOWN, 0, PointerEvent::Press, kMiddleButton},
        {WM_MBUTTONUP, 0, PointerEvent::Release, kMiddleButton},
        {WM_XBUTTONDOWN, 1, PointerEvent::Press, kFirstSideButton},
        {WM_XBUTTONUP, 1, PointerEvent::Release, kFirstSideButton},
        {WM_XBUTTONDOWN, 2, PointerEvent::Press, kSecondSideButton},
        {WM_XBUTTONUP, 2, PointerEvent::Release, kSecondSideButton},
        {WM_XBUTTONDOWN, 3, PointerEvent::Press, kSecondSideButton},
    };
    for (const auto& row : rows) {
        const MouseHookRecord record = MouseOf(row.message, row.highWord);
        EXPECT_EQ(record.kind, row.kind) << row.message;
        EXPECT_EQ(record.button, row.button) << row.message;
        EXPECT_EQ(record.x, -7);
        EXPECT_EQ(record.y, 9);
        EXPECT_EQ(record.wheelDelta, 0);
        EXPECT_EQ(record.counter, 55);
        EXPECT_FALSE(record.injected);
    }
}

TEST(HookRecordTest, MovesAndWheels) {
    EXPECT_EQ(MouseOf(WM_MOUSEMOVE).kind, PointerEvent::Move);
    EXPECT_EQ(MouseOf(WM_MOUSEMOVE).button, kNoButton);
    EXPECT_EQ(MouseOf(WM_MOUSEWHEEL, 120).kind, PointerEvent::Wheel);
    EXPECT_EQ(MouseOf(WM_MOUSEWHEEL, 120).wheelDelta, 120);
    EXPECT_EQ(MouseOf(WM_MOUSEWHEEL, 0xFF88).wheelDelta, -120);
    EXPECT_EQ(MouseOf(WM_MOUSEHWHEEL, 0x8000).kind, PointerEvent::HorizontalWheel);
    EXPECT_EQ(MouseOf(WM_MOUSEHWHEEL, 0x8000).wheelDelta, -32768);
}

TEST(HookRecordTest, OtherMessagesAreNotReported) {
    for (const WPARAM message : {WM_LBUTTONDBLCLK, WM_NCMOUSEMOVE, WM_NULL}) {
        EXPECT_FALSE(MouseHookRecordOf(message, MSLLHOOKSTRUCT{}, 0)) << message;
    }
}

TEST(HookRecordTest, InjectedMouseEventsAreMarked) {
    MSLLHOOKSTRUCT event = {};
    event.flags = LLMHF_INJECTED;
    EXPECT_TRUE(MouseHookRecordOf(WM_MOUSEMOVE, event, 0)->injected);
}

TEST(HookRecordTest, OnlyLockAndDisconnectsAreReported) {
    EXPECT_EQ(SessionChangeOf(2), SessionChange::ConsoleDisconnect);
    EXPECT_EQ(SessionChangeOf(4), SessionChange::RemoteDisconnect);
    EXPECT_EQ(SessionChangeOf(7), SessionChange::Lock);
    for (const WPARAM change : {0, 1, 3, 5, 6, 8, 9}) {
        EXPECT_FALSE(SessionChangeOf(change)) << change;
    }
}
#endif
