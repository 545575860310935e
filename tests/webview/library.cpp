// The seventeen functions of the C interface.
#include "view.h"

#ifdef _WIN32
#include <process.h>
#define EXPORTED extern "C" __declspec(dllexport)
#define ProcessId _getpid
#else
#include <unistd.h>
#define EXPORTED extern "C" __attribute__((visibility("default")))
#define ProcessId getpid
#endif

namespace {

constexpr int kOk = 0;
constexpr int kDuplicate = 1;
constexpr int kNotFound = 2;
constexpr int kBrowserControllerHandle = 2;

View* ViewOf(void* handle) {
    return static_cast<View*>(handle);
}

int SendText(void* handle, const char* type, const char* text) {
    SendMessageLine(ViewOf(handle),
                    std::string(R"({"type":")") + type + R"(","text":)" + JsonString(text) + "}");
    return kOk;
}

}  // namespace

EXPORTED void* webview_create(int /*debug*/, void* /*parent*/) {
    auto* view = new View;
    if (!ConnectToHarness(view)) {
        delete view;
        return nullptr;
    }
    view->window = OpenNativeWindow(view);
    if (!view->window) {
        Disconnect(view);
        delete view;
        return nullptr;
    }
    SendMessageLine(view, R"({"type":"create","pid":)" + std::to_string(ProcessId()) + "}");
    return view;
}

EXPORTED int webview_destroy(void* handle) {
    DestroyNativeWindow(ViewOf(handle)->window);
    Disconnect(ViewOf(handle));
    delete ViewOf(handle);
    return kOk;
}

EXPORTED int webview_run(void* handle) {
    RunNativeLoop(ViewOf(handle)->window);
    SendMessageLine(ViewOf(handle), R"({"type":"closed"})");
    return kOk;
}

EXPORTED int webview_terminate(void* handle) {
    QuitNativeLoop(ViewOf(handle)->window);
    return kOk;
}

EXPORTED int webview_dispatch(void* handle, DispatchFunction function, void* context) {
    {
        std::lock_guard<std::mutex> lock(ViewOf(handle)->mutex);
        ViewOf(handle)->work.push_back({function, context});
    }
    WakeNativeLoop(ViewOf(handle)->window);
    return kOk;
}

EXPORTED void* webview_get_window(void* handle) {
    return NativeWindowHandle(ViewOf(handle)->window);
}

EXPORTED void* webview_get_native_handle(void* handle, int kind) {
    return kind == kBrowserControllerHandle ? nullptr : webview_get_window(handle);
}

EXPORTED int webview_set_title(void* handle, const char* title) {
    SetNativeTitle(ViewOf(handle)->window, title);
    return SendText(handle, "title", title);
}

EXPORTED int webview_set_size(void* handle, int width, int height, int /*hint*/) {
    SetNativeSize(ViewOf(handle)->window, width, height);
    SendMessageLine(ViewOf(handle), R"({"type":"size","width":)" + std::to_string(width) + R"(,"height":)" +
                                        std::to_string(height) + "}");
    return kOk;
}

EXPORTED int webview_navigate(void* handle, const char* url) {
    return SendText(handle, "navigate", url);
}

EXPORTED int webview_set_html(void* handle, const char* html) {
    return SendText(handle, "html", html);
}

EXPORTED int webview_init(void* handle, const char* script) {
    return SendText(handle, "init", script);
}

EXPORTED int webview_eval(void* handle, const char* script) {
    return SendText(handle, "eval", script);
}

EXPORTED int webview_bind(void* handle, const char* name, BoundFunction function, void* context) {
    if (!ViewOf(handle)->bindings.emplace(name, View::Binding{function, context}).second) {
        return kDuplicate;
    }
    return SendText(handle, "bind", name);
}

EXPORTED int webview_unbind(void* handle, const char* name) {
    if (ViewOf(handle)->bindings.erase(name) == 0) {
        return kNotFound;
    }
    return SendText(handle, "unbind", name);
}

EXPORTED int webview_return(void* handle, const char* id, int status, const char* result) {
    SendMessageLine(ViewOf(handle), R"({"type":"return","id":)" + JsonString(id) + R"(,"status":)" +
                                        std::to_string(status) + R"(,"result":)" + JsonString(result) + "}");
    return kOk;
}

EXPORTED const void* webview_version() {
    return nullptr;
}
