// A window that reports the input that reaches it: observer TITLE X Y WIDTH HEIGHT. Prints one JSON object a line, with
// `t` in microseconds of the performance counter; keys by the kernel's code and buttons by X11's numbers, as on Linux.
// Lines on standard input:
//   focus            ask for the keyboard
//   window TITLE     describe another program's window: found, bounds, whether it is minimised, has the keyboard, is on top
//   close TITLE      ask it to close, as its frame's button does
//   mute             from now on read input without a report
//   endsession TITLE tell it that the user's session ends
//   minimise TITLE
// The end of standard input ends it.
#ifdef _WIN32
#include <windows.h>
#include <windowsx.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

constexpr UINT kFocusMessage = WM_APP + 1;
constexpr UINT kEndMessage = WM_APP + 2;

int64_t Microseconds() {
    LARGE_INTEGER counter;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&counter);
    QueryPerformanceFrequency(&frequency);
    return static_cast<int64_t>(static_cast<double>(counter.QuadPart) * 1e6 /
                                static_cast<double>(frequency.QuadPart));
}

// Below 0x59 a set-1 scan code is the kernel's code; the extended keys have their own.
unsigned KernelCode(unsigned scanCode, bool extended) {
    static constexpr struct {
        unsigned scanCode;
        unsigned code;
    } kExtended[] = {{0x1C, 96},  {0x1D, 97},  {0x35, 98},  {0x37, 99},  {0x38, 100}, {0x47, 102},
                     {0x48, 103}, {0x49, 104}, {0x4B, 105}, {0x4D, 106}, {0x4F, 107}, {0x50, 108},
                     {0x51, 109}, {0x52, 110}, {0x53, 111}, {0x5B, 125}, {0x5C, 126}, {0x5D, 127}};
    if (extended) {
        for (const auto& entry : kExtended) {
            if (entry.scanCode == scanCode) {
                return entry.code;
            }
        }
    }
    return scanCode;
}

void PrintLine(const char* text) {
    printf("%s\n", text);
    fflush(stdout);
}

void PrintKey(LPARAM lParam, bool down) {
    const unsigned scanCode = (static_cast<unsigned>(lParam) >> 16) & 0xFF;
    const bool extended = (static_cast<unsigned>(lParam) & (1U << 24)) != 0;
    char line[128];
    snprintf(line, sizeof line, "{\"type\":\"key\",\"t\":%lld,\"code\":%u,\"down\":%s}",
             static_cast<long long>(Microseconds()), KernelCode(scanCode, extended), down ? "true" : "false");
    PrintLine(line);
}

void PrintButton(HWND window, LPARAM lParam, int button, bool down) {
    POINT point = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    ClientToScreen(window, &point);
    char line[160];
    snprintf(line, sizeof line,
             "{\"type\":\"button\",\"t\":%lld,\"button\":%d,\"down\":%s,\"x\":%ld,\"y\":%ld}",
             static_cast<long long>(Microseconds()), button, down ? "true" : "false", point.x, point.y);
    PrintLine(line);
}

void PrintPlace(HWND window) {
    RECT client = {};
    POINT origin = {};
    GetClientRect(window, &client);
    ClientToScreen(window, &origin);
    char line[160];
    snprintf(line, sizeof line, "{\"type\":\"place\",\"x\":%ld,\"y\":%ld,\"width\":%ld,\"height\":%ld}",
             origin.x, origin.y, client.right, client.bottom);
    PrintLine(line);
}

std::atomic<bool> muted{false};

bool IsInput(UINT message) {
    return (message >= WM_KEYFIRST && message <= WM_KEYLAST) ||
           (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST);
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (muted && IsInput(message)) {
        return 0;
    }
    char line[160];
    switch (message) {
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
        PrintKey(lParam, true);
        return 0;
    case WM_KEYUP:
    case WM_SYSKEYUP:
        PrintKey(lParam, false);
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
        PrintButton(window, lParam, 1, message == WM_LBUTTONDOWN);
        return 0;
    case WM_MBUTTONDOWN:
    case WM_MBUTTONUP:
        PrintButton(window, lParam, 2, message == WM_MBUTTONDOWN);
        return 0;
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
        PrintButton(window, lParam, 3, message == WM_RBUTTONDOWN);
        return 0;
    case WM_XBUTTONDOWN:
    case WM_XBUTTONUP:
        PrintButton(window, lParam, GET_XBUTTON_WPARAM(wParam) == XBUTTON1 ? 8 : 9,
                    message == WM_XBUTTONDOWN);
        return TRUE;
    case WM_MOUSEWHEEL:
        snprintf(line, sizeof line, "{\"type\":\"wheel\",\"t\":%lld,\"button\":%d}",
                 static_cast<long long>(Microseconds()), GET_WHEEL_DELTA_WPARAM(wParam) > 0 ? 4 : 5);
        PrintLine(line);
        return 0;
    case WM_MOUSEMOVE: {
        POINT point = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
        ClientToScreen(window, &point);
        snprintf(line, sizeof line, "{\"type\":\"move\",\"t\":%lld,\"x\":%ld,\"y\":%ld}",
                 static_cast<long long>(Microseconds()), point.x, point.y);
        PrintLine(line);
        return 0;
    }
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        PrintLine(message == WM_SETFOCUS ? R"({"type":"focus","in":true})"
                                         : R"({"type":"focus","in":false})");
        return 0;
    case WM_WINDOWPOSCHANGED:
        PrintPlace(window);
        return 0;
    case kFocusMessage:
        ShowWindow(window, SW_RESTORE);
        BringWindowToTop(window);
        SetForegroundWindow(window);
        SetFocus(window);
        return 0;
    case kEndMessage:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

void PrintOtherWindow(HWND window) {
    if (!window) {
        PrintLine(R"({"type":"window","found":false})");
        return;
    }
    RECT client = {};
    POINT origin = {};
    GetClientRect(window, &client);
    ClientToScreen(window, &origin);
    RECT outer = {};
    GetWindowRect(window, &outer);
    const auto word = [](bool value) { return value ? "true" : "false"; };
    char line[400];
    snprintf(line, sizeof line,
             "{\"type\":\"window\",\"found\":true,\"x\":%ld,\"y\":%ld,\"width\":%ld,\"height\":%ld,"
             "\"outer\":{\"left\":%ld,\"top\":%ld,\"width\":%ld,\"height\":%ld},"
             "\"minimised\":%s,\"maximised\":%s,\"active\":%s,\"onTop\":%s}",
             origin.x, origin.y, client.right, client.bottom, outer.left, outer.top, outer.right - outer.left,
             outer.bottom - outer.top, word(IsIconic(window)), word(IsZoomed(window)),
             word(GetForegroundWindow() == window),
             word((GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0));
    PrintLine(line);
}

DWORD WINAPI ReadCommands(void* context) {
    auto* own = static_cast<HWND>(context);
    char bytes[1024];
    while (fgets(bytes, sizeof bytes, stdin)) {
        std::string line = bytes;
        line.erase(line.find_last_not_of("\r\n") + 1);
        const size_t space = line.find(' ');
        const std::string verb = line.substr(0, space);
        const std::string title = space == std::string::npos ? "" : line.substr(space + 1);
        if (verb == "focus") {
            PostMessageW(own, kFocusMessage, 0, 0);
            continue;
        }
        if (verb == "mute") {
            muted = true;
            continue;
        }
        HWND window = FindWindowA(nullptr, title.c_str());
        if (verb == "window") {
            PrintOtherWindow(window);
        } else if (window && verb == "close") {
            PostMessageW(window, WM_CLOSE, 0, 0);
        } else if (window && verb == "endsession") {
            // As the system sends it when the user logs off.
            if (SendMessageW(window, WM_QUERYENDSESSION, 0, 0)) {
                SendMessageW(window, WM_ENDSESSION, TRUE, 0);
            }
        } else if (window && verb == "minimise") {
            PostMessageW(window, WM_SYSCOMMAND, SC_MINIMIZE, 0);
        } else if (window && verb == "maximise") {
            PostMessageW(window, WM_SYSCOMMAND, SC_MAXIMIZE, 0);
        } else if (window && verb == "unmaximise") {
            PostMessageW(window, WM_SYSCOMMAND, SC_RESTORE, 0);
        }
    }
    PostMessageW(own, kEndMessage, 0, 0);
    return 0;
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 6) {
        fprintf(stderr, "usage: observer TITLE X Y WIDTH HEIGHT\n");
        return 2;
    }
    SetProcessDPIAware();
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = WindowProcedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH));
    windowClass.lpszClassName = L"Observer";
    RegisterClassW(&windowClass);
    RECT frame = {0, 0, atoi(arguments[4]), atoi(arguments[5])};
    AdjustWindowRect(&frame, WS_OVERLAPPEDWINDOW, FALSE);
    wchar_t title[256] = {};
    MultiByteToWideChar(CP_UTF8, 0, arguments[1], -1, title, 255);
    HWND window = CreateWindowExW(0, L"Observer", title, WS_OVERLAPPEDWINDOW, atoi(arguments[2]) + frame.left,
                                  atoi(arguments[3]) + frame.top, frame.right - frame.left,
                                  frame.bottom - frame.top, nullptr, nullptr, windowClass.hInstance, nullptr);
    if (!window) {
        return 1;
    }
    ShowWindow(window, SW_SHOW);
    SetForegroundWindow(window);
    PrintPlace(window);
    CloseHandle(CreateThread(nullptr, 0, ReadCommands, window, 0, nullptr));
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message);
    }
    return 0;
}
#endif
