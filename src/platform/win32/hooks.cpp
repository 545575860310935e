#include "platform/hooks.h"

#include "platform/clock.h"

#include <windows.h>

#include <wtsapi32.h>

#include <atomic>

static_assert(kKeyDownMessage == WM_KEYDOWN && kSysKeyUpMessage == WM_SYSKEYUP);
static_assert(kMouseMoveMessage == WM_MOUSEMOVE && kHorizontalWheelMessage == WM_MOUSEHWHEEL);
static_assert(kSessionConsoleDisconnect == WTS_CONSOLE_DISCONNECT && kSessionLock == WTS_SESSION_LOCK);
static_assert(kSessionRemoteDisconnect == WTS_REMOTE_DISCONNECT);

static const wchar_t kWindowClass[] = L"RawInputHiddenWindow";

// Written by RunInputThread, read by StopInputThread: the running input thread, 0 while there is none.
static std::atomic<DWORD> hookThreadId = 0;

// The input thread's own: what its procedures call.
static HookSinks activeSinks;

// An exception must not reach the system that called us; input that could not be judged passes.
template <typename Ask> static HookAnswer AnswerOf(Ask ask) {
    try {
        return ask();
    } catch (...) {
        return HookAnswer::Pass;
    }
}

template <typename Tell> static void TellGuarded(Tell tell) {
    try {
        tell();
    } catch (...) {
        // One lost report.
    }
}

static LRESULT CALLBACK MouseHookProcedure(int code, WPARAM message, LPARAM data) {
    int64_t counter = ReadPerformanceCounter();
    if (code >= 0 && activeSinks.onMouse) {
        const auto& event = *reinterpret_cast<const MSLLHOOKSTRUCT*>(data);
        MouseHookRecord record;
        record.message = static_cast<uint32_t>(message);
        record.x = event.pt.x;
        record.y = event.pt.y;
        record.mouseData = event.mouseData;
        record.injected = (event.flags & LLMHF_INJECTED) != 0;
        record.counter = counter;
        if (AnswerOf([&] { return activeSinks.onMouse(record); }) == HookAnswer::Consume) {
            return 1;
        }
    }
    return CallNextHookEx(nullptr, code, message, data);
}

static LRESULT CALLBACK KeyboardHookProcedure(int code, WPARAM message, LPARAM data) {
    int64_t counter = ReadPerformanceCounter();
    if (code >= 0 && activeSinks.onKey) {
        const auto& event = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(data);
        KeyHookRecord record;
        record.message = static_cast<uint32_t>(message);
        record.virtualKey = event.vkCode;
        record.injected = (event.flags & LLKHF_INJECTED) != 0;
        record.counter = counter;
        if (AnswerOf([&] { return activeSinks.onKey(record); }) == HookAnswer::Consume) {
            return 1;
        }
    }
    return CallNextHookEx(nullptr, code, message, data);
}

static void ReportRawInput(HRAWINPUT report, int64_t counter) {
    RAWINPUT input;
    UINT size = sizeof input;
    if (GetRawInputData(report, RID_INPUT, &input, &size, sizeof(RAWINPUTHEADER)) == static_cast<UINT>(-1)) {
        return;
    }
    if (input.header.dwType != RIM_TYPEMOUSE || (input.data.mouse.usFlags & MOUSE_MOVE_ABSOLUTE) != 0) {
        return;
    }
    RawMouseRecord record;
    record.dx = input.data.mouse.lLastX;
    record.dy = input.data.mouse.lLastY;
    record.counter = counter;
    TellGuarded([&] { activeSinks.onRawMouse(record); });
}

static LRESULT CALLBACK HiddenWindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INPUT && activeSinks.onRawMouse) {
        ReportRawInput(reinterpret_cast<HRAWINPUT>(lParam), ReadPerformanceCounter());
    } else if (message == WM_WTSSESSION_CHANGE && activeSinks.onSessionChange) {
        auto change = static_cast<uint32_t>(wParam);
        if (change == kSessionConsoleDisconnect || change == kSessionRemoteDisconnect ||
            change == kSessionLock) {
            TellGuarded([&] { activeSinks.onSessionChange(change); });
        }
    }
    // DefWindowProcW also frees the raw input report.
    return DefWindowProcW(window, message, wParam, lParam);
}

static void RegisterHiddenWindowClass(HINSTANCE module) {
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = HiddenWindowProcedure;
    windowClass.hInstance = module;
    windowClass.lpszClassName = kWindowClass;
    RegisterClassExW(&windowClass);
}

static void RegisterRawMouse(HWND window) {
    RAWINPUTDEVICE device = {};
    device.usUsagePage = 1;  // generic desktop
    device.usUsage = 2;      // mouse
    device.dwFlags = RIDEV_INPUTSINK;
    device.hwndTarget = window;
    RegisterRawInputDevices(&device, 1, sizeof device);
}

static void PumpMessages() {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

void RunInputThread(const HookSinks& sinks) {
    activeSinks = sinks;
    // A thread has no message queue before its first message call, and WM_QUIT posted before that is lost.
    MSG ignored;
    PeekMessageW(&ignored, nullptr, WM_USER, WM_USER, PM_NOREMOVE);
    hookThreadId = GetCurrentThreadId();

    HINSTANCE module = GetModuleHandleW(nullptr);
    RegisterHiddenWindowClass(module);
    HWND window =
        CreateWindowExW(0, kWindowClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, module, nullptr);
    RegisterRawMouse(window);
    WTSRegisterSessionNotification(window, NOTIFY_FOR_THIS_SESSION);
    HHOOK mouseHook = SetWindowsHookExW(WH_MOUSE_LL, MouseHookProcedure, nullptr, 0);
    HHOOK keyboardHook = SetWindowsHookExW(WH_KEYBOARD_LL, KeyboardHookProcedure, nullptr, 0);

    PumpMessages();

    hookThreadId = 0;
    UnhookWindowsHookEx(mouseHook);
    UnhookWindowsHookEx(keyboardHook);
    WTSUnRegisterSessionNotification(window);
    DestroyWindow(window);
    UnregisterClassW(kWindowClass, module);
    activeSinks = HookSinks();
}

void StopInputThread() {
    if (DWORD thread = hookThreadId) {
        PostThreadMessageW(thread, WM_QUIT, 0, 0);
    }
}

// Hooks see everything here anyway, whatever the sinks want.
void HookInterestChanged() {}
