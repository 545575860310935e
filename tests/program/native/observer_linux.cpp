// A window that reports the input that reaches it: observer TITLE X Y WIDTH HEIGHT. Prints one JSON object a line, with
// `t` in microseconds of the monotonic clock; keys by the kernel's code. Lines on standard input:
//   focus            ask for the keyboard
//   window TITLE     describe another program's window: found, bounds without and with its frame, whether it is
//                    minimised, maximised, has the keyboard, is on top
//   close TITLE      ask it to close, as its frame's button does
//   mute             from now on read input without a report
//   minimise TITLE, maximise TITLE, unmaximise TITLE
//   grabbed INPUT    whether another program has reserved "keyboard" (all of it), "key CODE" or "button NUMBER"
// The end of standard input ends it.
#ifndef _WIN32
#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XInput2.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {

bool muted = false;

int64_t Microseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1000000 + now.tv_nsec / 1000;
}

void SendToRoot(Display* display, Window window, const char* message, long first) {
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, message, False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = first;
    event.xclient.data.l[1] = message == std::string("_NET_CLOSE_WINDOW") ? 2 : 0;
    XSendEvent(display, DefaultRootWindow(display), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
    XFlush(display);
}

void AskForFocus(Display* display, Window window) {
    SendToRoot(display, window, "_NET_ACTIVE_WINDOW", 2);  // as a pager, which may
}

// A property of any length, as raw bytes; longs for 32-bit items.
std::vector<unsigned char> Property(Display* display, Window window, const char* name) {
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(display, window, XInternAtom(display, name, False), 0, 4096, False,
                           AnyPropertyType, &type, &format, &count, &rest, &data) != Success ||
        !data) {
        return {};
    }
    const size_t size = count * (format == 32 ? sizeof(long) : static_cast<size_t>(format) / 8);
    std::vector<unsigned char> bytes(data, data + size);
    XFree(data);
    return bytes;
}

std::vector<long> LongProperty(Display* display, Window window, const char* name) {
    const std::vector<unsigned char> bytes = Property(display, window, name);
    std::vector<long> items(bytes.size() / sizeof(long));
    if (!items.empty()) {
        memcpy(items.data(), bytes.data(), items.size() * sizeof(long));
    }
    return items;
}

Window FindByTitle(Display* display, const std::string& title) {
    for (const long window : LongProperty(display, DefaultRootWindow(display), "_NET_CLIENT_LIST")) {
        const std::vector<unsigned char> name =
            Property(display, static_cast<Window>(window), "_NET_WM_NAME");
        if (title == std::string(name.begin(), name.end())) {
            return static_cast<Window>(window);
        }
    }
    return 0;
}

bool HasState(Display* display, Window window, const char* state) {
    const std::vector<long> states = LongProperty(display, window, "_NET_WM_STATE");
    const auto wanted = static_cast<long>(XInternAtom(display, state, False));
    return std::find(states.begin(), states.end(), wanted) != states.end();
}

void AskForMaximised(Display* display, Window window, bool on) {
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, "_NET_WM_STATE", False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = on ? 1 : 0;
    event.xclient.data.l[1] = static_cast<long>(XInternAtom(display, "_NET_WM_STATE_MAXIMIZED_VERT", False));
    event.xclient.data.l[2] = static_cast<long>(XInternAtom(display, "_NET_WM_STATE_MAXIMIZED_HORZ", False));
    event.xclient.data.l[3] = 2;
    XSendEvent(display, DefaultRootWindow(display), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
    XFlush(display);
}

void PrintWindow(Display* display, const std::string& title) {
    const Window window = FindByTitle(display, title);
    XWindowAttributes attributes = {};
    int x = 0;
    int y = 0;
    Window child = 0;
    if (!window || !XGetWindowAttributes(display, window, &attributes)) {
        printf("{\"type\":\"window\",\"found\":false}\n");
        return;
    }
    XTranslateCoordinates(display, window, attributes.root, 0, 0, &x, &y, &child);
    const std::vector<long> state = LongProperty(display, window, "WM_STATE");
    std::vector<long> frame = LongProperty(display, window, "_NET_FRAME_EXTENTS");
    frame.resize(4);
    const std::vector<long> active = LongProperty(display, DefaultRootWindow(display), "_NET_ACTIVE_WINDOW");
    const auto word = [](bool value) { return value ? "true" : "false"; };
    printf("{\"type\":\"window\",\"found\":true,\"x\":%d,\"y\":%d,\"width\":%d,\"height\":%d,", x, y,
           attributes.width, attributes.height);
    printf("\"outer\":{\"left\":%ld,\"top\":%ld,\"width\":%ld,\"height\":%ld},", x - frame[0], y - frame[2],
           attributes.width + frame[0] + frame[1], attributes.height + frame[2] + frame[3]);
    printf("\"minimised\":%s,\"maximised\":%s,\"active\":%s,\"onTop\":%s}\n",
           word(!state.empty() && state[0] == IconicState),
           word(HasState(display, window, "_NET_WM_STATE_MAXIMIZED_VERT")),
           word(!active.empty() && static_cast<Window>(active[0]) == window),
           word(HasState(display, window, "_NET_WM_STATE_ABOVE")));
}

// Whether another program has reserved the input: tries the same grab. The server serves only us meanwhile, so that the
// attempt cannot make the other program's own grab fail.
bool IsGrabbed(Display* display, const std::string& input) {
    const size_t space = input.find(' ');
    const std::string kind = input.substr(0, space);
    const int number = space == std::string::npos ? 0 : atoi(input.c_str() + space);
    const Window root = DefaultRootWindow(display);
    int pointer = 0;
    XIGetClientPointer(display, None, &pointer);
    int count = 0;
    XIDeviceInfo* info = XIQueryDevice(display, pointer, &count);
    const int keyboard = info->attachment;
    XIFreeDeviceInfo(info);
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XIEventMask mask = {kind == "button" ? pointer : keyboard, sizeof bits, bits};
    XIGrabModifiers any = {static_cast<int>(XIAnyModifier), 0};
    bool grabbed = false;
    XGrabServer(display);
    if (kind == "keyboard") {
        grabbed = XIGrabDevice(display, keyboard, root, CurrentTime, None, XIGrabModeAsync, XIGrabModeAsync,
                               False, &mask) != XIGrabSuccess;
        if (!grabbed) {
            XIUngrabDevice(display, keyboard, CurrentTime);
        }
    } else if (kind == "key") {
        const int keycode = number + 8;
        grabbed = XIGrabKeycode(display, keyboard, keycode, root, XIGrabModeAsync, XIGrabModeAsync, False,
                                &mask, 1, &any) != 0;
        if (!grabbed) {
            XIUngrabKeycode(display, keyboard, keycode, root, 1, &any);
        }
    } else {
        grabbed = XIGrabButton(display, pointer, number, root, None, XIGrabModeAsync, XIGrabModeAsync, False,
                               &mask, 1, &any) != 0;
        if (!grabbed) {
            XIUngrabButton(display, pointer, number, root, 1, &any);
        }
    }
    XUngrabServer(display);
    XFlush(display);
    return grabbed;
}

void Obey(Display* display, Window own, const std::string& line) {
    const size_t space = line.find(' ');
    const std::string verb = line.substr(0, space);
    const std::string title = space == std::string::npos ? "" : line.substr(space + 1);
    if (verb == "mute") {
        muted = true;
    } else if (verb == "focus") {
        AskForFocus(display, own);
    } else if (verb == "window") {
        PrintWindow(display, title);
    } else if (verb == "grabbed") {
        printf("{\"type\":\"grabbed\",\"value\":%s}\n", IsGrabbed(display, title) ? "true" : "false");
    } else if (const Window window = FindByTitle(display, title)) {
        if (verb == "close") {
            SendToRoot(display, window, "_NET_CLOSE_WINDOW", CurrentTime);
        } else if (verb == "minimise") {
            XIconifyWindow(display, window, DefaultScreen(display));
            XFlush(display);
        } else if (verb == "maximise" || verb == "unmaximise") {
            AskForMaximised(display, window, verb == "maximise");
        }
    }
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
    if (muted) {
        return;
    }
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
        // A grab takes the focus for a moment; the focused window does not change.
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
    // Other programs' windows may close while we ask about them.
    XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    int majorVersion = 2;
    int minorVersion = 0;
    XIQueryVersion(display, &majorVersion, &minorVersion);
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
    std::string commands;
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
            char bytes[1024];
            const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
            if (count <= 0) {
                break;
            }
            commands.append(bytes, static_cast<size_t>(count));
            for (size_t end = commands.find('\n'); end != std::string::npos; end = commands.find('\n')) {
                Obey(display, window, commands.substr(0, end));
                commands.erase(0, end + 1);
            }
        }
    }
    XCloseDisplay(display);
    return 0;
}
#endif
