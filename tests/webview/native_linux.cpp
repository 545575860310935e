#ifndef _WIN32
#include "view.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstring>

struct NativeWindow {
    View* view = nullptr;
    Display* display = nullptr;
    Window window = 0;
    Atom deleteWindow = 0;
    int wakePipe[2] = {-1, -1};
    bool shown = false;
    bool quit = false;
};

NativeWindow* OpenNativeWindow(View* view) {
    auto* native = new NativeWindow;
    native->view = view;
    native->display = XOpenDisplay(nullptr);
    if (!native->display || pipe2(native->wakePipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        DestroyNativeWindow(native);
        return nullptr;
    }
    Display* display = native->display;
    native->window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 1, 1, 0, 0,
                                         BlackPixel(display, DefaultScreen(display)));
    native->deleteWindow = XInternAtom(display, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(display, native->window, &native->deleteWindow, 1);
    const long processId = getpid();
    XChangeProperty(display, native->window, XInternAtom(display, "_NET_WM_PID", False), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&processId), 1);
    char host[256] = {};
    gethostname(host, sizeof host - 1);
    XTextProperty machine;
    char* hostList = host;
    if (XStringListToTextProperty(&hostList, 1, &machine)) {
        XSetWMClientMachine(display, native->window, &machine);
        XFree(machine.value);
    }
    char name[] = "varnelle";
    XClassHint classHint = {name, name};
    XSetClassHint(display, native->window, &classHint);
    XFlush(display);
    return native;
}

void DestroyNativeWindow(NativeWindow* native) {
    if (native->display) {
        XCloseDisplay(native->display);
    }
    for (const int end : native->wakePipe) {
        if (end >= 0) {
            close(end);
        }
    }
    delete native;
}

void SetNativeTitle(NativeWindow* native, const char* title) {
    XStoreName(native->display, native->window, title);
    XChangeProperty(native->display, native->window, XInternAtom(native->display, "_NET_WM_NAME", False),
                    XInternAtom(native->display, "UTF8_STRING", False), 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(title), static_cast<int>(std::strlen(title)));
    XFlush(native->display);
}

void SetNativeSize(NativeWindow* native, int width, int height) {
    XResizeWindow(native->display, native->window, static_cast<unsigned>(width),
                  static_cast<unsigned>(height));
    if (!native->shown) {
        native->shown = true;
        XMapWindow(native->display, native->window);
    }
    XFlush(native->display);
}

void* NativeWindowHandle(NativeWindow* native) {
    return reinterpret_cast<void*>(native->window);
}

void RunNativeLoop(NativeWindow* native) {
    while (!native->quit) {
        while (XPending(native->display) > 0) {
            XEvent event;
            XNextEvent(native->display, &event);
            if (event.type == ClientMessage &&
                static_cast<Atom>(event.xclient.data.l[0]) == native->deleteWindow) {
                native->quit = true;
            }
        }
        if (native->quit) {
            return;
        }
        pollfd entries[] = {{ConnectionNumber(native->display), POLLIN, 0},
                            {native->wakePipe[0], POLLIN, 0},
                            {static_cast<int>(native->view->socket), POLLIN, 0}};
        if (poll(entries, 3, -1) < 0) {
            continue;
        }
        if (entries[2].revents & (POLLHUP | POLLERR)) {
            return;  // the harness is gone: a window that nobody drives must not stay
        }
        char bytes[256];
        while (read(native->wakePipe[0], bytes, sizeof bytes) > 0) {
        }
        RunDispatched(native->view);
        ReadFromHarness(native->view);
    }
}

void QuitNativeLoop(NativeWindow* native) {
    native->quit = true;
}

void WakeNativeLoop(NativeWindow* native) {
    const char byte = 0;
    // A full pipe already wakes the loop.
    if (write(native->wakePipe[1], &byte, 1) < 0) {
        return;
    }
}

// The two functions of GTK through which a program gets from the library's window to the X11 window.
extern "C" __attribute__((visibility("default"))) void* gtk_native_get_surface(void* window) {
    return window;
}
extern "C" __attribute__((visibility("default"))) unsigned long gdk_x11_surface_get_xid(void* surface) {
    return reinterpret_cast<unsigned long>(surface);
}
#endif
