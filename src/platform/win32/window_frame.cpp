#include "platform/window_frame.h"

#include <windows.h>
// windows.h comes first.
#include <shellapi.h>

namespace {

HWND HandleOf(WindowRef window) {
    return reinterpret_cast<HWND>(window);
}

ScreenRectangle RectangleOf(const RECT& rectangle) {
    return {rectangle.left, rectangle.top, rectangle.right, rectangle.bottom};
}

bool WorkAreaOfMonitor(HMONITOR monitor, ScreenRectangle* area) {
    MONITORINFO information = {};
    information.cbSize = sizeof information;
    if (!monitor || !GetMonitorInfoW(monitor, &information)) {
        return false;
    }
    *area = RectangleOf(information.rcWork);
    return true;
}

// ---- The watched window, UI thread ----

WNDPROC oldProcedure = nullptr;  // of the web view library's window; null without a watch
HWND watchedWindow = nullptr;
WindowHandlers watchHandlers;

void ReportPlacement(HWND window) {
    WINDOWPLACEMENT placement = {};
    placement.length = sizeof placement;
    if (!watchHandlers.placementChanged || !GetWindowPlacement(window, &placement)) {
        return;
    }
    watchHandlers.placementChanged(
        {RectangleOf(placement.rcNormalPosition), placement.showCmd == SW_SHOWMAXIMIZED});
}

void ReportDrop(HDROP drop) {
    constexpr UINT kAll = 0xFFFFFFFF;
    std::vector<std::string> paths;
    const UINT count = DragQueryFileA(drop, kAll, nullptr, 0);
    for (UINT i = 0; i < count; ++i) {
        char path[260] = {};
        if (DragQueryFileA(drop, i, path, sizeof path) > 0) {
            paths.emplace_back(path);
        }
    }
    if (watchHandlers.filesDropped) {
        watchHandlers.filesDropped(paths);
    }
}

LRESULT CALLBACK MainFrameWndProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    try {
        const bool sessionEnds = message == WM_ENDSESSION && wParam != FALSE;
        if (message == WM_EXITSIZEMOVE || message == WM_DESTROY || sessionEnds) {
            ReportPlacement(window);
        }
        if (sessionEnds && watchHandlers.sessionEnding) {
            watchHandlers.sessionEnding();
        }
        if (message == WM_DROPFILES) {
            ReportDrop(reinterpret_cast<HDROP>(wParam));
        }
    } catch (...) {
        // No exception may cross the system's message loop. The report is lost.
    }
    if (message == WM_DROPFILES) {
        DragFinish(reinterpret_cast<HDROP>(wParam));
        return 0;
    }
    if (message == WM_NCDESTROY) {
        watchedWindow = nullptr;  // another window may get its handle from now on
    }
    return CallWindowProcW(oldProcedure, window, message, wParam, lParam);
}

// The program runs as administrator. Lets the messages of a drop from the ordinary shell through.
void AcceptDrops(HWND window) {
    constexpr UINT kCopyGlobalData = 0x49;
    DragAcceptFiles(window, TRUE);
    for (const UINT message : {UINT{WM_DROPFILES}, UINT{WM_COPYDATA}, kCopyGlobalData}) {
        ChangeWindowMessageFilterEx(window, message, MSGFLT_ALLOW, nullptr);
    }
}

}  // namespace

ScreenRectangle MonitorWorkArea(WindowRef window) {
    const HMONITOR monitor = window ? MonitorFromWindow(HandleOf(window), MONITOR_DEFAULTTONEAREST)
                                    : MonitorFromPoint(POINT{0, 0}, MONITOR_DEFAULTTOPRIMARY);
    ScreenRectangle area;
    if (!WorkAreaOfMonitor(monitor, &area)) {
        area = {0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
    }
    return area;
}

bool WorkAreaAtPoint(int32_t x, int32_t y, ScreenRectangle* area) {
    return WorkAreaOfMonitor(MonitorFromPoint(POINT{x, y}, MONITOR_DEFAULTTONULL), area);
}

bool ReadPageWindowRectangle(PageHost* host, ScreenRectangle* outer) {
    RECT rectangle;
    if (!GetWindowRect(HandleOf(PageHostWindow(host)), &rectangle)) {
        return false;
    }
    *outer = RectangleOf(rectangle);
    return true;
}

void MoveWindowTo(WindowRef window, int32_t left, int32_t top) {
    SetWindowPos(HandleOf(window), nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}

void PlaceWindow(WindowRef window, int32_t left, int32_t top, int32_t width, int32_t height) {
    SetWindowPos(HandleOf(window), nullptr, left, top, width, height, SWP_NOZORDER);
}

void MaximiseWindow(WindowRef window) {
    ShowWindow(HandleOf(window), SW_MAXIMIZE);
}

void MinimiseWindow(WindowRef window) {
    ShowWindow(HandleOf(window), SW_MINIMIZE);
}

void WatchPageWindow(PageHost* host, const WindowHandlers& handlers) {
    HWND window = HandleOf(PageHostWindow(host));
    if (!window || oldProcedure) {
        return;
    }
    watchHandlers = handlers;
    // Set before the new procedure, which SetWindowLongPtrW may already call.
    oldProcedure = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
    if (!SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(MainFrameWndProc))) {
        oldProcedure = nullptr;
        return;
    }
    watchedWindow = window;
    if (handlers.filesDropped) {
        AcceptDrops(window);
    }
}

void EndWindowWatch(PageHost* /*host*/) {
    if (watchedWindow) {
        // The loop ended by a request from outside: the window closes only with the web view.
        try {
            ReportPlacement(watchedWindow);
        } catch (...) {
            // As in the window procedure.
        }
        SetWindowLongPtrW(watchedWindow, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(oldProcedure));
    }
    watchedWindow = nullptr;
    oldProcedure = nullptr;
    watchHandlers = {};
}
