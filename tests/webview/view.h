// The web-view library of the tests: the C interface of the real one, an empty native window, and the page in a
// browser that the test harness drives. This library and the harness talk over one loopback connection:
//
//   library -> harness   one JSON object a line: create, title, size, init, html, navigate, eval, bind, unbind,
//                        return, closed
//   harness -> library   one call a line: "call", id, name and the JSON array of the arguments, separated by tabs
//
// The harness listens on the port named by VARNELLE_TEST_WEBVIEW_PORT.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

struct NativeWindow;

struct View;

using DispatchFunction = void (*)(void* view, void* context);
using BoundFunction = void (*)(const char* id, const char* request, void* context);

struct View {
    // UI thread only.
    NativeWindow* window = nullptr;
    std::string received;  // of the connection, up to the last unfinished line
    struct Binding {
        BoundFunction function;
        void* context;
    };
    std::map<std::string, Binding> bindings;

    // Any thread.
    struct Work {
        DispatchFunction function;
        void* context;
    };
    std::mutex mutex;  // guards the queue
    std::deque<Work> work;
    std::mutex sendMutex;  // one message at a time, in the order of the calls
    uintptr_t socket = 0;  // constant once connected
};

// The connection. False or 0 bytes: it is gone, which ends nothing but the traffic.
bool ConnectToHarness(View* view);
void Disconnect(View* view);
void SendMessageLine(View* view, const std::string& json);
std::string JsonString(std::string_view text);

// Called by the native loop on the UI thread.
void ReadFromHarness(View* view);  // something may have arrived
void RunDispatched(View* view);    // something may have been dispatched

// The native half. UI thread, except Wake.
NativeWindow* OpenNativeWindow(View* view);  // null without a display
void DestroyNativeWindow(NativeWindow* window);
void SetNativeTitle(NativeWindow* window, const char* title);
void SetNativeSize(NativeWindow* window, int width, int height);  // client size; shows the window
void* NativeWindowHandle(NativeWindow* window);
void RunNativeLoop(NativeWindow* window);  // until the window was closed or Quit was called
void QuitNativeLoop(NativeWindow* window);
void WakeNativeLoop(NativeWindow* window);
