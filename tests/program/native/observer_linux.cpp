// A window that tells what reaches it: observer TITLE X Y WIDTH HEIGHT. One JSON object a line on standard output, with
// `t` in microseconds of the monotonic clock; keys by the kernel's code. A line "focus" on standard input asks for the
// keyboard; the end of standard input ends it.
#ifndef _WIN32
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <poll.h>
#include <unistd.h>

#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace {

int64_t Microseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000000 + now.tv_nsec / 1000;
}

void AskForFocus(Display* display, Window window) {
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, "_NET_ACTIVE_WINDOW", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = 2;  // as a pager, which may
    XSendEvent(display, DefaultRootWindow(display), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
    XFlush(display);
}

void PrintPlace(Display* display, Window window) {
    XWindowAttributes attributes;
    XGetWindowAttributes(display, window, &attributes);
    int x = 0;
    int y = 0;
    Window child = 0;
    XTranslateCoordinates(display, window, attributes.root, 0, 0, &x, &y, &child);
    printf("{\"type\":\"place\",\"x\":%d,\"y\":%d,\"width\":%d,\"height\":%d}\n", x, y, attributes.width,
           attributes.height);
}

void PrintEvent(Display* display, const XEvent& event) {
    const int64_t now = Microseconds();
    switch (event.type) {
    case KeyPress:
    case KeyRelease:
        printf("{\"type\":\"key\",\"t\":%" PRId64 ",\"code\":%u,\"down\":%s}\n", now, event.xkey.keycode - 8,
               event.type == KeyPress ? "true" : "false");
        break;
    case ButtonPress:
    case ButtonRelease:
        if (event.xbutton.button >= 4 && event.xbutton.button <= 7) {
            if (event.type == ButtonPress) {
                printf("{\"type\":\"wheel\",\"t\":%" PRId64 ",\"button\":%u}\n", now, event.xbutton.button);
            }
            break;
        }
        printf("{\"type\":\"button\",\"t\":%" PRId64 ",\"button\":%u,\"down\":%s,\"x\":%d,\"y\":%d}\n", now,
               event.xbutton.button, event.type == ButtonPress ? "true" : "false", event.xbutton.x_root,
               event.xbutton.y_root);
        break;
    case MotionNotify:
        printf("{\"type\":\"move\",\"t\":%" PRId64 ",\"x\":%d,\"y\":%d}\n", now, event.xmotion.x_root,
               event.xmotion.y_root);
        break;
    case FocusIn:
    case FocusOut:
        // A grab of somebody takes the focus for a moment and is no change of the focused window.
        if (event.xfocus.mode == NotifyNormal || event.xfocus.mode == NotifyWhileGrabbed) {
            printf("{\"type\":\"focus\",\"in\":%s}\n", event.type == FocusIn ? "true" : "false");
        }
        break;
    case ConfigureNotify:
        PrintPlace(display, event.xconfigure.window);
        break;
    default:
        break;
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    Display* display = XOpenDisplay(nullptr);
    if (argumentCount != 6 || !display) {
        fprintf(stderr, "usage: observer TITLE X Y WIDTH HEIGHT, on an X display\n");
        return 2;
    }
    setvbuf(stdout, nullptr, _IOLBF, 0);
    XkbSetDetectableAutoRepeat(display, True, nullptr);
    const int x = atoi(arguments[2]);
    const int y = atoi(arguments[3]);
    const int width = atoi(arguments[4]);
    const int height = atoi(arguments[5]);
    Window window =
        XCreateSimpleWindow(display, DefaultRootWindow(display), x, y, static_cast<unsigned>(width),
                            static_cast<unsigned>(height), 0, 0, 0x204060);
    XStoreName(display, window, arguments[1]);
    XSizeHints* hints = XAllocSizeHints();
    hints->flags = USPosition | USSize | PWinGravity;
    hints->win_gravity = StaticGravity;
    hints->x = x;
    hints->y = y;
    XSetWMNormalHints(display, window, hints);
    XFree(hints);
    XSelectInput(display, window,
                 KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask | PointerMotionMask |
                     FocusChangeMask | StructureNotifyMask);
    XMapWindow(display, window);
    for (;;) {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == MapNotify) {
                AskForFocus(display, window);
                PrintPlace(display, window);
            }
            PrintEvent(display, event);
        }
        pollfd entries[] = {{ConnectionNumber(display), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        poll(entries, 2, -1);
        if (entries[1].revents != 0) {
            char line[64] = {};
            if (read(STDIN_FILENO, line, sizeof line - 1) <= 0) {
                break;
            }
            if (strncmp(line, "focus", 5) == 0) {
                AskForFocus(display, window);
            }
        }
    }
    XCloseDisplay(display);
    return 0;
}
#endif
