#include "platform/win32/hook_records.h"

#include "platform/key_table.h"

#include <wtsapi32.h>

namespace {

struct MessageRow {
    WPARAM message;
    PointerEvent kind;
    uint32_t button;  // the side buttons share a message: see SideButtonOf
};

constexpr MessageRow kMessages[] = {
    {WM_MOUSEMOVE, PointerEvent::Move, kNoButton},
    {WM_LBUTTONDOWN, PointerEvent::Press, kLeftButton},
    {WM_LBUTTONUP, PointerEvent::Release, kLeftButton},
    {WM_RBUTTONDOWN, PointerEvent::Press, kRightButton},
    {WM_RBUTTONUP, PointerEvent::Release, kRightButton},
    {WM_MBUTTONDOWN, PointerEvent::Press, kMiddleButton},
    {WM_MBUTTONUP, PointerEvent::Release, kMiddleButton},
    {WM_MOUSEWHEEL, PointerEvent::Wheel, kNoButton},
    {WM_XBUTTONDOWN, PointerEvent::Press, kUnnamedSideButton},
    {WM_XBUTTONUP, PointerEvent::Release, kUnnamedSideButton},
    {WM_MOUSEHWHEEL, PointerEvent::HorizontalWheel, kNoButton},
};

uint32_t SideButtonOf(DWORD mouseData) {
    return HIWORD(mouseData) == XBUTTON1 ? kFirstSideButton : kSecondSideButton;
}

}  // namespace

KeyHookRecord KeyHookRecordOf(WPARAM message, const KBDLLHOOKSTRUCT& event, int64_t counter) {
    return {.virtualKey = event.vkCode,
            .down = message == WM_KEYDOWN || message == WM_SYSKEYDOWN,
            .injected = (event.flags & LLKHF_INJECTED) != 0,
            .counter = counter};
}

std::optional<MouseHookRecord> MouseHookRecordOf(WPARAM message, const MSLLHOOKSTRUCT& event,
                                                 int64_t counter) {
    for (const MessageRow& row : kMessages) {
        if (row.message != message) {
            continue;
        }
        MouseHookRecord record;
        record.kind = row.kind;
        record.injected = (event.flags & LLMHF_INJECTED) != 0;
        record.button = row.button == kUnnamedSideButton ? SideButtonOf(event.mouseData) : row.button;
        record.x = event.pt.x;
        record.y = event.pt.y;
        if (row.kind == PointerEvent::Wheel || row.kind == PointerEvent::HorizontalWheel) {
            record.wheelDelta = static_cast<int16_t>(HIWORD(event.mouseData));
        }
        record.counter = counter;
        return record;
    }
    return std::nullopt;
}

std::optional<SessionChange> SessionChangeOf(WPARAM change) {
    switch (change) {
    case WTS_CONSOLE_DISCONNECT:
        return SessionChange::ConsoleDisconnect;
    case WTS_REMOTE_DISCONNECT:
        return SessionChange::RemoteDisconnect;
    case WTS_SESSION_LOCK:
        return SessionChange::Lock;
    default:
        return std::nullopt;
    }
}
