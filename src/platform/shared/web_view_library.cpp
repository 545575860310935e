#include "platform/shared/web_view_library.h"

namespace {

template <typename Function>
bool Resolve(Function** slot, void* (*find)(void*, const char*), void* module, const char* name) {
    *slot = reinterpret_cast<Function*>(find(module, name));
    return *slot != nullptr;
}

}  // namespace

const char* ResolveWebViewLibrary(WebViewLibrary* library, void* (*find)(void*, const char*), void* module) {
    const char* name = nullptr;
    auto resolve = [&](auto slot, const char* exported) {
        name = exported;
        return Resolve(slot, find, module, exported);
    };
    const bool complete =
        resolve(&library->create, "webview_create") && resolve(&library->destroy, "webview_destroy") &&
        resolve(&library->run, "webview_run") && resolve(&library->terminate, "webview_terminate") &&
        resolve(&library->dispatch, "webview_dispatch") &&
        resolve(&library->getWindow, "webview_get_window") &&
        resolve(&library->getNativeHandle, "webview_get_native_handle") &&
        resolve(&library->setTitle, "webview_set_title") && resolve(&library->setSize, "webview_set_size") &&
        resolve(&library->setHtml, "webview_set_html") && resolve(&library->eval, "webview_eval") &&
        resolve(&library->bind, "webview_bind") && resolve(&library->answer, "webview_return");
    return complete ? nullptr : name;
}
