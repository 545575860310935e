#include "platform/linux/x11_display.h"

#include "platform/clock.h"
#include "platform/linux/last_save.h"

#include <X11/Xresource.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xrandr.h>
#include <atomic>

namespace {

// The handlers of another library, for its own connections. Any thread.
std::atomic<XErrorHandler> olderErrorHandler{nullptr};
std::atomic<XIOErrorHandler> olderLossHandler{nullptr};

// Marks our connections for the error handler, in a property that Xlib leaves to the program.
XContext OwnDisplayMark() {
    static const XContext mark = XUniqueContext();
    return mark;
}

bool IsOwn(Display* display) {
    XPointer found = nullptr;
    return XFindContext(display, None, OwnDisplayMark(), &found) == 0;
}

int OnProtocolError(Display* display, XErrorEvent* event) {
    const XErrorHandler older = olderErrorHandler.load();
    return IsOwn(display) || older == nullptr ? 0 : older(display, event);
}

// For our connections, returning calls the connection's own handler, below. The handler of any other connection, which
// is that of the window, ends the process at once.
int OnLoss(Display* display) {
    if (IsOwn(display)) {
        return 0;
    }
    RunLastSave();
    const XIOErrorHandler older = olderLossHandler.load();
    return older == nullptr ? 0 : older(display);
}

// Another library may have set its handlers since. Ours call them for connections that are not ours.
void SetHandlers() {
    const XErrorHandler error = XSetErrorHandler(OnProtocolError);
    if (error != OnProtocolError) {
        olderErrorHandler.store(error);
    }
    const XIOErrorHandler loss = XSetIOErrorHandler(OnLoss);
    if (loss != OnLoss) {
        olderLossHandler.store(loss);
    }
}

void OnConnectionLost(Display* /*display*/, void* lost) {
    *static_cast<bool*>(lost) = true;
}

// One thread's connection. `screen` is valid until the server reports a change.
class OwnConnection {
  public:
    OwnConnection() = default;
    ~OwnConnection() { Close(); }
    OwnConnection(const OwnConnection&) = delete;
    OwnConnection& operator=(const OwnConnection&) = delete;

    Display* Get() {
        if (lost_) {
            return nullptr;
        }
        if (display_ == nullptr) {
            const int64_t now = ReadPerformanceCounter();
            if (now < nextTry_) {
                return nullptr;
            }
            nextTry_ = now + ReadPerformanceFrequency();
            display_ = OpenDisplay(&lost_);
            if (display_ != nullptr) {
                WatchScreen();
            }
        }
        return display_;
    }

    ScreenArea Screen() {
        Display* display = Get();
        if (display == nullptr) {
            return ScreenArea{};
        }
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            XRRUpdateConfiguration(&event);
            screenKnown_ = false;
        }
        if (!screenKnown_) {
            screen_ = QueryPrimaryScreen(display);
            screenKnown_ = watching_;
        }
        return screen_;
    }

  private:
    void WatchScreen() {
        int errorBase = 0;
        int eventBase = 0;
        watching_ = XRRQueryExtension(display_, &eventBase, &errorBase) != 0;
        if (watching_) {
            XRRSelectInput(display_, DefaultRootWindow(display_),
                           RRScreenChangeNotifyMask | RRCrtcChangeNotifyMask | RROutputChangeNotifyMask);
        }
    }

    void Close() {
        if (display_ != nullptr) {
            CloseDisplay(display_);
            display_ = nullptr;
        }
    }

    Display* display_ = nullptr;
    bool lost_ = false;
    int64_t nextTry_ = INT64_MIN;
    bool watching_ = false;
    bool screenKnown_ = false;
    ScreenArea screen_;
};

OwnConnection& ThreadConnection() {
    thread_local OwnConnection connection;
    return connection;
}

}  // namespace

Display* OpenDisplay(bool* lost) {
    SetHandlers();
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return nullptr;
    }
    static char mark = 0;
    XSaveContext(display, None, OwnDisplayMark(), &mark);
    XSetIOErrorExitHandler(display, OnConnectionLost, lost);
    return display;
}

void CloseDisplay(Display* display) {
    XDeleteContext(display, None, OwnDisplayMark());
    XCloseDisplay(display);
}

Display* ThreadDisplay() {
    return ThreadConnection().Get();
}

ScreenArea QueryPrimaryScreen(Display* display) {
    ScreenArea area;
    const int screen = DefaultScreen(display);
    area.width = DisplayWidth(display, screen);
    area.height = DisplayHeight(display, screen);
    int major = 0;
    int minor = 0;
    if (XRRQueryVersion(display, &major, &minor) == 0 || (major == 1 && minor < 5)) {
        return area;
    }
    int count = 0;
    XRRMonitorInfo* monitors = XRRGetMonitors(display, RootWindow(display, screen), True, &count);
    if (monitors == nullptr) {
        return area;
    }
    const XRRMonitorInfo* chosen = nullptr;
    for (int index = 0; index < count; ++index) {
        const XRRMonitorInfo& monitor = monitors[index];
        if (monitor.width > 0 && monitor.height > 0 &&
            (chosen == nullptr || (monitor.primary && !chosen->primary))) {
            chosen = &monitor;
        }
    }
    if (chosen != nullptr) {
        area = ScreenArea{chosen->x, chosen->y, chosen->width, chosen->height};
    }
    XRRFreeMonitors(monitors);
    return area;
}

ScreenArea PrimaryScreen() {
    return ThreadConnection().Screen();
}
