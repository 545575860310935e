#ifdef _WIN32
#include "view.h"

#include <winsock2.h>
// winsock2.h comes first.
#include <windows.h>

namespace {

constexpr UINT kSocketMessage = WM_APP + 1;
constexpr UINT kDispatchMessage = WM_APP + 2;
constexpr const wchar_t* kWindowClass = L"VarnelleTestWebView";
constexpr const wchar_t* kMessageClass = L"VarnelleTestWebViewMessages";

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CLOSE) {
        DestroyWindow(window);
        return 0;
    }
    if (message == WM_DESTROY) {
        PostQuitMessage(0);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

LRESULT CALLBACK MessageProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* view = reinterpret_cast<View*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == kSocketMessage && view) {
        ReadFromHarness(view);
        if (WSAGETSELECTEVENT(lParam) == FD_CLOSE) {
            PostQuitMessage(0);  // the harness is gone: a window that nobody drives must not stay
        }
        return 0;
    }
    if (message == kDispatchMessage && view) {
        RunDispatched(view);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void RegisterWindowClass(const wchar_t* name, WNDPROC procedure, HBRUSH background) {
    WNDCLASSEXW windowClass = {};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    windowClass.hbrBackground = background;
    windowClass.lpszClassName = name;
    RegisterClassExW(&windowClass);
}

}  // namespace

struct NativeWindow {
    View* view = nullptr;
    HWND window = nullptr;
    HWND messages =
        nullptr;  // gets the connection's and the dispatched work's turn, whichever loop is running
};

NativeWindow* OpenNativeWindow(View* view) {
    RegisterWindowClass(kWindowClass, WindowProcedure, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    RegisterWindowClass(kMessageClass, MessageProcedure, nullptr);
    auto* native = new NativeWindow;
    native->view = view;
    HINSTANCE module = GetModuleHandleW(nullptr);
    native->window = CreateWindowExW(0, kWindowClass, L"", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                                     640, 480, nullptr, nullptr, module, nullptr);
    native->messages =
        CreateWindowExW(0, kMessageClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, module, nullptr);
    if (!native->window || !native->messages) {
        DestroyNativeWindow(native);
        return nullptr;
    }
    SetWindowLongPtrW(native->messages, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(view));
    WSAAsyncSelect(static_cast<SOCKET>(view->socket), native->messages, kSocketMessage, FD_READ | FD_CLOSE);
    return native;
}

void DestroyNativeWindow(NativeWindow* native) {
    if (native->messages) {
        SetWindowLongPtrW(native->messages, GWLP_USERDATA, 0);
        DestroyWindow(native->messages);
    }
    if (native->window && IsWindow(native->window)) {
        DestroyWindow(native->window);
    }
    delete native;
}

void SetNativeTitle(NativeWindow* native, const char* title) {
    wchar_t wide[512] = {};
    MultiByteToWideChar(CP_UTF8, 0, title, -1, wide, 511);
    SetWindowTextW(native->window, wide);
}

void SetNativeSize(NativeWindow* native, int width, int height) {
    RECT frame = {0, 0, width, height};
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongPtrW(native->window, GWL_STYLE)), FALSE, 0);
    SetWindowPos(native->window, nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
                 SWP_NOZORDER | SWP_NOACTIVATE | SWP_NOMOVE | SWP_FRAMECHANGED);
    if (!IsWindowVisible(native->window)) {
        ShowWindow(native->window, SW_SHOW);
        UpdateWindow(native->window);
    }
}

void* NativeWindowHandle(NativeWindow* native) {
    return native->window;
}

void RunNativeLoop(NativeWindow* /*native*/) {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

// As the real library: the message goes to the calling thread, so it works on the UI thread only.
void QuitNativeLoop(NativeWindow* /*native*/) {
    PostQuitMessage(0);
}

void WakeNativeLoop(NativeWindow* native) {
    PostMessageW(native->messages, kDispatchMessage, 0, 0);
}
#endif
