#include "platform/hooks.h"

#include "platform/clock.h"
#include "platform/win32/hook_records.h"
#include "platform/win32/system_library.h"

#include <windows.h>

// windows.h comes first.
#include <hidusage.h>
#include <wtsapi32.h>

#include <atomic>
#include <optional>

static const wchar_t kWindowClass[] = L"RawInputHiddenWindow";

// Written by RunInputThread, read by StopInputThread. The id of the running input thread, 0 if there is none.
static std::atomic<DWORD> inputThreadId = 0;

// Input thread only: the functions that its procedures call.
static HookSinks activeSinks;

// Whether readInterest may return something else than at its last call.
static std::atomic<bool> interestChanged = true;
// Input thread only, as of that call.
static bool rawMotionWanted = false;

// Returns the sink's decision. An exception must not reach the system that called us: the input then passes.
template <typename Sink> static HookDecision CallSink(Sink sink) {
    try {
        return sink();
    } catch (...) {
        return HookDecision::Pass;
    }
}

template <typename Report> static void CallGuarded(Report report) {
    try {
        report();
    } catch (...) {
        // One report is lost.
    }
}

static LRESULT CALLBACK MouseHookProcedure(int code, WPARAM message, LPARAM data) {
    const int64_t counter = ReadPerformanceCounter();
    if (code >= 0 && activeSinks.onMouse) {
        const auto& event = *reinterpret_cast<const MSLLHOOKSTRUCT*>(data);
        const std::optional<MouseHookRecord> record = MouseHookRecordOf(message, event, counter);
        if (record && CallSink([&] { return activeSinks.onMouse(*record); }) == HookDecision::Consume) {
            return 1;
        }
    }
    return CallNextHookEx(nullptr, code, message, data);
}

static LRESULT CALLBACK KeyboardHookProcedure(int code, WPARAM message, LPARAM data) {
    const int64_t counter = ReadPerformanceCounter();
    if (code >= 0 && activeSinks.onKey) {
        const auto& event = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(data);
        const KeyHookRecord record = KeyHookRecordOf(message, event, counter);
        if (CallSink([&] { return activeSinks.onKey(record); }) == HookDecision::Consume) {
            return 1;
        }
    }
    return CallNextHookEx(nullptr, code, message, data);
}

// Whether a report of the mouse is wanted now. A mouse sends up to eight thousand a second, and nothing else is done for
// one that nobody wants. Without readInterest all are wanted.
static bool WantsRawMotion() {
    if (!activeSinks.onRawMouse || !activeSinks.readInterest) {
        return activeSinks.onRawMouse != nullptr;
    }
    if (interestChanged && interestChanged.exchange(false)) {
        HookInterest interest;
        CallGuarded([&] { activeSinks.readInterest(&interest); });
        rawMotionWanted = interest.rawMotion;
    }
    return rawMotionWanted;
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
    CallGuarded([&] { activeSinks.onRawMouse(record); });
}

static LRESULT CALLBACK HiddenWindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INPUT) {
        if (WantsRawMotion()) {
            ReportRawInput(reinterpret_cast<HRAWINPUT>(lParam), ReadPerformanceCounter());
        }
    } else if (message == WM_WTSSESSION_CHANGE && activeSinks.onSessionChange) {
        if (const std::optional<SessionChange> change = SessionChangeOf(wParam)) {
            CallGuarded([&] { activeSinks.onSessionChange(*change); });
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
    device.usUsagePage = HID_USAGE_PAGE_GENERIC;
    device.usUsage = HID_USAGE_GENERIC_MOUSE;
    device.dwFlags = RIDEV_INPUTSINK;
    device.hwndTarget = window;
    RegisterRawInputDevices(&device, 1, sizeof device);
}

struct SessionNotices {
    SystemLibrary library{L"wtsapi32.dll"};
    decltype(&WTSRegisterSessionNotification) begin = library.Find("WTSRegisterSessionNotification");
    decltype(&WTSUnRegisterSessionNotification) end = library.Find("WTSUnRegisterSessionNotification");
};

// NOTE: Wine takes a thread for hung that is awake and has asked for no message for five seconds, and then passes input by
// its hooks. After a quiet time a button's own raw input report wakes this thread before Wine asks the mouse hook, so that
// the press was lost.
// HACK: a timer makes this thread ask for a message well within that time.
static void KeepHooksCalled(HWND window) {
    constexpr UINT kMilliseconds = 2000;
    const HMODULE library = GetModuleHandleW(L"ntdll.dll");
    if (library && GetProcAddress(library, "wine_get_version")) {
        SetTimer(window, 1, kMilliseconds, nullptr);  // ends with its window
    }
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
    interestChanged = true;
    // A thread has no message queue before its first message call. WM_QUIT posted earlier is lost.
    MSG ignored;
    PeekMessageW(&ignored, nullptr, WM_USER, WM_USER, PM_NOREMOVE);
    inputThreadId = GetCurrentThreadId();

    HINSTANCE module = GetModuleHandleW(nullptr);
    RegisterHiddenWindowClass(module);
    HWND window =
        CreateWindowExW(0, kWindowClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, module, nullptr);
    RegisterRawMouse(window);
    const SessionNotices sessionNotices;
    if (sessionNotices.begin) {
        sessionNotices.begin(window, NOTIFY_FOR_THIS_SESSION);
    }
    HHOOK mouseHook = SetWindowsHookExW(WH_MOUSE_LL, MouseHookProcedure, nullptr, 0);
    HHOOK keyboardHook = SetWindowsHookExW(WH_KEYBOARD_LL, KeyboardHookProcedure, nullptr, 0);
    KeepHooksCalled(window);

    PumpMessages();

    inputThreadId = 0;
    UnhookWindowsHookEx(mouseHook);
    UnhookWindowsHookEx(keyboardHook);
    if (sessionNotices.end) {
        sessionNotices.end(window);
    }
    DestroyWindow(window);
    UnregisterClassW(kWindowClass, module);
    activeSinks = HookSinks();
}

void StopInputThread() {
    if (DWORD thread = inputThreadId) {
        PostThreadMessageW(thread, WM_QUIT, 0, 0);
    }
}

// The hooks receive everything, whatever the sinks want. Only raw reports are left unread.
void HookInterestChanged() {
    interestChanged = true;
}
