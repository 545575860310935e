// The C interface of the web-view library, resolved at run time. One table a process, filled by CreatePageHost.
#pragma once

// A library's own error code; 0 is success.
using WebViewError = int;
using WebView = void*;

struct WebViewLibrary {
    WebView (*create)(int debug, void* parent) = nullptr;  // null: no display, no browser runtime
    WebViewError (*destroy)(WebView) = nullptr;
    WebViewError (*run)(WebView) = nullptr;
    WebViewError (*terminate)(WebView) = nullptr;  // UI thread only: elsewhere it does nothing on Windows
    WebViewError (*dispatch)(WebView, void (*work)(WebView, void* context),
                             void* context) = nullptr;  // any thread
    void* (*getWindow)(WebView) = nullptr;              // HWND or GtkWindow*
    void* (*getNativeHandle)(WebView, int kind) = nullptr;
    WebViewError (*setTitle)(WebView, const char* title) = nullptr;
    WebViewError (*setSize)(WebView, int width, int height, int hint) = nullptr;
    WebViewError (*setHtml)(WebView, const char* html) = nullptr;
    WebViewError (*eval)(WebView, const char* script) = nullptr;
    WebViewError (*bind)(WebView, const char* name,
                         void (*function)(const char* id, const char* request, void* context),
                         void* context) = nullptr;
    WebViewError (*answer)(WebView, const char* id, int status,
                           const char* json) = nullptr;  // status 0 resolves
};

constexpr int kWebViewSizeHintNone = 0;
constexpr int kWebViewHandleBrowserController = 2;

// Fills every field from the loaded library; `find` gives the address of an exported name or null. The name of the
// first function that is not there, or null if all are.
const char* ResolveWebViewLibrary(WebViewLibrary* library, void* (*find)(void* module, const char* name),
                                  void* module);
