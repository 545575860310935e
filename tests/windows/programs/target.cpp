// A window that logs the input it receives, one line per event, as a stand-in for "another application":
//
//   target.exe LOG [TITLE [X Y WIDTH HEIGHT]]
//
//   ready <window handle>
//   <ns> key <down|up> <virtual key> <scan code> <extended 0|1> <repeat 0|1>
//   <ns> button <down|up> <left|right|middle|side1|side2> <x> <y>       x and y in pixels of the screen
//   <ns> wheel <delta> <x> <y>      <ns> hwheel <delta> <x> <y>         <ns> move <x> <y>
//   <ns> focus <0|1>
//
// The times come from the performance counter, in nanoseconds since its start. The window closes on WM_CLOSE.
#include "line_log.h"

#include <windows.h>

#include <windowsx.h>

#include <cstdio>
#include <cstdlib>

namespace {

long long NowNanoseconds() {
    LARGE_INTEGER counter;
    LARGE_INTEGER frequency;
    QueryPerformanceCounter(&counter);
    QueryPerformanceFrequency(&frequency);
    return counter.QuadPart / frequency.QuadPart * 1000000000 +
           counter.QuadPart % frequency.QuadPart * 1000000000 / frequency.QuadPart;
}

void WriteKey(const char* direction, WPARAM key, LPARAM data) {
    LogLine("%lld key %s %u %u %d %d", NowNanoseconds(), direction, static_cast<unsigned>(key),
            static_cast<unsigned>(data >> 16) & 0xFF, (data >> 24 & 1) != 0, (data >> 30 & 1) != 0);
}

void WriteButton(const char* direction, const char* button, HWND window, LPARAM position) {
    POINT point = {GET_X_LPARAM(position), GET_Y_LPARAM(position)};
    ClientToScreen(window, &point);
    LogLine("%lld button %s %s %ld %ld", NowNanoseconds(), direction, button, point.x, point.y);
}

void WriteSideButton(const char* direction, WPARAM keys, HWND window, LPARAM position) {
    WriteButton(direction, GET_XBUTTON_WPARAM(keys) == XBUTTON1 ? "side1" : "side2", window, position);
}

void WriteWheel(const char* name, WPARAM keys, LPARAM position) {
    LogLine("%lld %s %d %d %d", NowNanoseconds(), name, GET_WHEEL_DELTA_WPARAM(keys), GET_X_LPARAM(position),
            GET_Y_LPARAM(position));
}

void WriteMove(HWND window, LPARAM position) {
    POINT point = {GET_X_LPARAM(position), GET_Y_LPARAM(position)};
    ClientToScreen(window, &point);
    LogLine("%lld move %ld %ld", NowNanoseconds(), point.x, point.y);
}

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
        WriteKey("down", wParam, lParam);
        return 0;  // system keys must not open a menu
    case WM_KEYUP:
    case WM_SYSKEYUP:
        WriteKey("up", wParam, lParam);
        return 0;
    case WM_LBUTTONDOWN:
        WriteButton("down", "left", window, lParam);
        return 0;
    case WM_LBUTTONUP:
        WriteButton("up", "left", window, lParam);
        return 0;
    case WM_RBUTTONDOWN:
        WriteButton("down", "right", window, lParam);
        return 0;
    case WM_RBUTTONUP:
        WriteButton("up", "right", window, lParam);
        return 0;
    case WM_MBUTTONDOWN:
        WriteButton("down", "middle", window, lParam);
        return 0;
    case WM_MBUTTONUP:
        WriteButton("up", "middle", window, lParam);
        return 0;
    case WM_XBUTTONDOWN:
        WriteSideButton("down", wParam, window, lParam);
        return TRUE;
    case WM_XBUTTONUP:
        WriteSideButton("up", wParam, window, lParam);
        return TRUE;
    case WM_MOUSEWHEEL:
        WriteWheel("wheel", wParam, lParam);
        return 0;
    case WM_MOUSEHWHEEL:
        WriteWheel("hwheel", wParam, lParam);
        return 0;
    case WM_MOUSEMOVE:
        WriteMove(window, lParam);
        return 0;
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
        LogLine("%lld focus %d", NowNanoseconds(), message == WM_SETFOCUS);
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcA(window, message, wParam, lParam);
    }
}

int ArgumentOr(int argc, char** argv, int index, int otherwise) {
    return index < argc ? atoi(argv[index]) : otherwise;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: target LOG [TITLE [X Y WIDTH HEIGHT]]\n");
        return 2;
    }
    if (!OpenLineLog(argv[1])) {
        fprintf(stderr, "target: cannot write %s\n", argv[1]);
        return 1;
    }
    SetProcessDPIAware();

    WNDCLASSEXA windowClass = {};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = WindowProcedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_WINDOW + 1);
    windowClass.lpszClassName = "VarnelleTestTarget";
    RegisterClassExA(&windowClass);
    HWND window = CreateWindowExA(
        0, windowClass.lpszClassName, argc > 2 ? argv[2] : "Target", WS_POPUP | WS_VISIBLE,
        ArgumentOr(argc, argv, 3, 100), ArgumentOr(argc, argv, 4, 100), ArgumentOr(argc, argv, 5, 400),
        ArgumentOr(argc, argv, 6, 300), nullptr, nullptr, windowClass.hInstance, nullptr);
    if (!window) {
        fprintf(stderr, "target: no window\n");
        return 1;
    }
    SetForegroundWindow(window);
    SetFocus(window);
    LogLine("ready %llu", reinterpret_cast<unsigned long long>(window));
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    fclose(lineLogFile);
    return 0;
}
