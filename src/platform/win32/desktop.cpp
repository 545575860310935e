#include "platform/desktop.h"

#include <windows.h>

// Numbers of the icons in varnelle.rc.
constexpr WORD kBigIcon = 107;
constexpr WORD kSmallIcon = 108;

static HWND HandleOf(WindowRef window) {
    return reinterpret_cast<HWND>(window);
}

WindowRef FindWindowByTitle(const char* title) {
    return reinterpret_cast<WindowRef>(FindWindowA(nullptr, title));
}

static BOOL CALLBACK AddTitledWindow(HWND window, LPARAM listAddress) {
    char title[256];
    int length = GetWindowTextA(window, title, sizeof title);
    if (length > 0) {
        try {
            auto* list = reinterpret_cast<std::vector<TitledWindow>*>(listAddress);
            list->push_back(
                {reinterpret_cast<WindowRef>(window), std::string(title, static_cast<size_t>(length))});
        } catch (...) {
            return FALSE;  // no memory: the list ends here
        }
    }
    return TRUE;
}

std::vector<TitledWindow> ListTopLevelWindows() {
    std::vector<TitledWindow> list;
    EnumWindows(AddTitledWindow, reinterpret_cast<LPARAM>(&list));
    return list;
}

bool IsWindowMinimised(WindowRef window) {
    return IsIconic(HandleOf(window)) != FALSE;
}

void RestoreWindow(WindowRef window) {
    ShowWindow(HandleOf(window), SW_RESTORE);
}

static void RaiseAndFocus(HWND window) {
    BringWindowToTop(window);
    SetForegroundWindow(window);
    SetFocus(window);
}

void ForceForeground(WindowRef window) {
    if (!window) {
        return;
    }
    HWND foreground = GetForegroundWindow();
    if (!foreground) {
        RaiseAndFocus(HandleOf(window));
        return;
    }
    // NOTE: a background process may not take the foreground.
    // HACK: it may if it shares the input queue of the thread that has the foreground.
    DWORD current = GetCurrentThreadId();
    DWORD foregroundThread = GetWindowThreadProcessId(foreground, nullptr);
    bool attached = false;
    if (foregroundThread != 0 && foregroundThread != current) {
        attached = AttachThreadInput(current, foregroundThread, TRUE) != FALSE;
    }
    RaiseAndFocus(HandleOf(window));
    if (attached) {
        AttachThreadInput(current, foregroundThread, FALSE);
    }
}

void SetWindowOnTop(WindowRef window, bool onTop) {
    if (!window) {
        return;
    }
    SetWindowPos(HandleOf(window), onTop ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
                 SWP_NOSIZE | SWP_NOMOVE);
}

// The system loads a shared icon once for the process and frees it with it.
static void SetIcon(HWND window, WORD resource, int widthMetric, int heightMetric, WPARAM kind) {
    HANDLE icon = LoadImageW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(resource), IMAGE_ICON,
                             GetSystemMetrics(widthMetric), GetSystemMetrics(heightMetric),
                             LR_DEFAULTCOLOR | LR_SHARED);
    if (icon) {
        SendMessageW(window, WM_SETICON, kind, reinterpret_cast<LPARAM>(icon));
    }
}

void SetWindowIcons(WindowRef window) {
    if (!window) {
        return;
    }
    SetIcon(HandleOf(window), kBigIcon, SM_CXICON, SM_CYICON, ICON_BIG);
    SetIcon(HandleOf(window), kSmallIcon, SM_CXSMICON, SM_CYSMICON, ICON_SMALL);
}

void ShowErrorMessage(const std::string& title, const std::string& text) {
    MessageBoxA(nullptr, text.c_str(), title.c_str(), 0);
}

bool ProcessAtPoint(int32_t x, int32_t y, uint32_t* processId) {
    HWND window = GetAncestor(WindowFromPoint(POINT{x, y}), GA_ROOT);
    if (!window) {
        return false;
    }
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    *processId = owner;
    return owner != 0;
}
