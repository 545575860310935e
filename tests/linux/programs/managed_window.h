// A window that the window manager manages. See start_servers.sh.
#pragma once

#include "test_desktop.h"

#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <algorithm>
#include <array>
#include <string>

// An ordinary window of another application, shown unless `shown` is false.
class ManagedWindow {
  public:
    ManagedWindow(const std::string& title, int x, int y, uint32_t processId, bool shown = true)
        : display_(OpenTestDisplay(nullptr)) {
        window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), x, y, 300, 200, 0, 0, 0);
        XStoreName(display_, window_, "an older name");
        XChangeProperty(display_, window_, Atom_("_NET_WM_NAME"), Atom_("UTF8_STRING"), 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(title.data()), static_cast<int>(title.size()));
        const unsigned long process = processId;
        XChangeProperty(display_, window_, Atom_("_NET_WM_PID"), XA_CARDINAL, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(&process), 1);
        XSizeHints hints{};
        hints.flags = USPosition | PPosition;
        hints.x = x;
        hints.y = y;
        XSetWMNormalHints(display_, window_, &hints);
        if (shown) {
            Show();
        }
        XSync(display_, False);
    }
    ~ManagedWindow() { XCloseDisplay(display_); }
    ManagedWindow(const ManagedWindow&) = delete;
    ManagedWindow& operator=(const ManagedWindow&) = delete;

    void Show() {
        XMapWindow(display_, window_);
        XSync(display_, False);
    }
    bool IsOnTop() {
        Atom type = None;
        int format = 0;
        unsigned long count = 0;
        unsigned long left = 0;
        unsigned char* data = nullptr;
        if (XGetWindowProperty(display_, window_, Atom_("_NET_WM_STATE"), 0, 100, False, XA_ATOM, &type,
                               &format, &count, &left, &data) != Success ||
            data == nullptr) {
            return false;
        }
        const Atom* states = reinterpret_cast<const Atom*>(data);
        const bool onTop = std::count(states, states + count, Atom_("_NET_WM_STATE_ABOVE")) == 1;
        XFree(data);
        return onTop;
    }
    // Returns the corner on the screen and the size.
    std::array<int, 4> Place() {
        XWindowAttributes attributes;
        XGetWindowAttributes(display_, window_, &attributes);
        int x = 0;
        int y = 0;
        Window child = None;
        XTranslateCoordinates(display_, window_, DefaultRootWindow(display_), 0, 0, &x, &y, &child);
        return {x, y, attributes.width, attributes.height};
    }
    // Returns whether a client listens to its properties. The window itself selects no events.
    bool IsWatched() {
        XWindowAttributes attributes;
        XGetWindowAttributes(display_, window_, &attributes);
        return (attributes.all_event_masks & PropertyChangeMask) != 0;
    }
    void Minimise() {
        XIconifyWindow(display_, window_, DefaultScreen(display_));
        XSync(display_, False);
    }
    Window Id() const { return window_; }
    Display* Connection() { return display_; }
    bool HasFocus() {
        Window focus = None;
        int revert = 0;
        XGetInputFocus(display_, &focus, &revert);
        return focus == window_;
    }

  private:
    Atom Atom_(const char* name) { return XInternAtom(display_, name, False); }

    Display* display_;
    Window window_;
};
