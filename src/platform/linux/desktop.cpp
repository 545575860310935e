#include "platform/desktop.h"

#include "platform/linux/window_icon.h"
#include "platform/linux/x11_display.h"

#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <cstdio>
#include <cstring>

namespace {

constexpr size_t kLongestTitle = 255;
constexpr long kMostWords = 256 * 1024;  // longest property that is read, in 32-bit words

// A property's bytes, freed with it.
struct Property {
    Property() = default;
    ~Property() {
        if (data != nullptr) {
            XFree(data);
        }
    }
    Property(const Property&) = delete;
    Property& operator=(const Property&) = delete;

    // Items of format 32 arrive as longs, whatever their width.
    unsigned long Long(unsigned long index) const {
        unsigned long value = 0;
        std::memcpy(&value, data + index * sizeof(value), sizeof(value));
        return value;
    }

    Atom type = None;
    int format = 0;
    unsigned long count = 0;  // items of `format` bits
    unsigned char* data = nullptr;
};

bool ReadProperty(Display* display, Window window, const char* name, Property* property) {
    const Atom atom = XInternAtom(display, name, True);
    unsigned long left = 0;
    return atom != None &&
           XGetWindowProperty(display, window, atom, 0, kMostWords, False, AnyPropertyType, &property->type,
                              &property->format, &property->count, &left, &property->data) == Success &&
           property->type != None && property->data != nullptr;
}

bool HasProperty(Display* display, Window window, const char* name) {
    Property property;
    return ReadProperty(display, window, name, &property);
}

std::string WindowTitle(Display* display, Window window) {
    for (const char* name : {"_NET_WM_NAME", "WM_NAME"}) {
        Property title;
        if (ReadProperty(display, window, name, &title) && title.format == 8 && title.count > 0) {
            const size_t length = title.count < kLongestTitle ? title.count : kLongestTitle;
            return std::string(reinterpret_cast<const char*>(title.data), length);
        }
    }
    return "";
}

std::vector<Window> ChildrenOf(Display* display, Window window) {
    Window root = None;
    Window parent = None;
    Window* children = nullptr;
    unsigned count = 0;
    std::vector<Window> result;
    if (XQueryTree(display, window, &root, &parent, &children, &count) != 0 && children != nullptr) {
        result.assign(children, children + count);
        XFree(children);
    }
    return result;
}

// Bottom to top: as the window manager lists them, or all windows below the root without one.
std::vector<Window> TopLevelWindows(Display* display) {
    const Window root = DefaultRootWindow(display);
    for (const char* name : {"_NET_CLIENT_LIST_STACKING", "_NET_CLIENT_LIST"}) {
        Property list;
        if (ReadProperty(display, root, name, &list) && list.format == 32) {
            std::vector<Window> windows;
            for (unsigned long index = 0; index < list.count; ++index) {
                windows.push_back(list.Long(index));
            }
            return windows;
        }
    }
    return ChildrenOf(display, root);
}

void SendRootMessage(Display* display, Window window, const char* message, long first, long second,
                     long fourth = 0) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, message, False);
    event.xclient.format = 32;
    event.xclient.data.l[0] = first;
    event.xclient.data.l[1] = second;
    event.xclient.data.l[3] = fourth;
    XSendEvent(display, DefaultRootWindow(display), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
}

bool ProcessOfWindow(Display* display, Window window, uint32_t* processId) {
    Property process;
    if (!ReadProperty(display, window, "_NET_WM_PID", &process) || process.format != 32 ||
        process.count == 0) {
        return false;
    }
    *processId = static_cast<uint32_t>(process.Long(0));
    return true;
}

// Whether a window manager looks after the window, shown or minimised.
bool IsManaged(Display* display, Window window) {
    Property state;
    return ReadProperty(display, window, "WM_STATE", &state) && state.format == 32 && state.count > 0 &&
           state.Long(0) != WithdrawnState;
}

// Puts an atom into a window's _NET_WM_STATE, or takes it out, itself.
void WriteWindowState(Display* display, Window window, Atom which, bool present) {
    std::vector<unsigned long> states;
    Property property;
    if (ReadProperty(display, window, "_NET_WM_STATE", &property) && property.format == 32) {
        for (unsigned long index = 0; index < property.count; ++index) {
            if (property.Long(index) != which) {
                states.push_back(property.Long(index));
            }
        }
    }
    if (present) {
        states.push_back(which);
    }
    XChangeProperty(display, window, XInternAtom(display, "_NET_WM_STATE", False), XA_ATOM, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(states.data()),
                    static_cast<int>(states.size()));
}

// The application's window in a frame of the window manager, `depth` levels down at most; None if there is none.
Window ClientWindowIn(Display* display, Window window, int depth) {
    if (HasProperty(display, window, "WM_STATE")) {
        return window;
    }
    if (depth > 0) {
        for (const Window child : ChildrenOf(display, window)) {
            if (const Window found = ClientWindowIn(display, child, depth - 1); found != None) {
                return found;
            }
        }
    }
    return None;
}

}  // namespace

WindowRef FindWindowByTitle(const char* title) {
    for (const TitledWindow& each : ListTopLevelWindows()) {
        if (each.title == title) {
            return each.window;
        }
    }
    return 0;
}

std::vector<TitledWindow> ListTopLevelWindows() {
    std::vector<TitledWindow> titled;
    Display* display = ThreadDisplay();
    if (display == nullptr) {
        return titled;
    }
    const std::vector<Window> windows = TopLevelWindows(display);
    for (auto window = windows.rbegin(); window != windows.rend(); ++window) {
        std::string title = WindowTitle(display, *window);
        if (!title.empty()) {
            titled.push_back(TitledWindow{*window, std::move(title)});
        }
    }
    return titled;
}

bool IsWindowMinimised(WindowRef window) {
    Display* display = ThreadDisplay();
    if (display == nullptr || window == 0) {
        return false;
    }
    Property state;
    return ReadProperty(display, window, "WM_STATE", &state) && state.format == 32 && state.count > 0 &&
           state.Long(0) == IconicState;
}

void RestoreWindow(WindowRef window) {
    Display* display = ThreadDisplay();
    if (display == nullptr || window == 0) {
        return;
    }
    XMapWindow(display, window);
    XFlush(display);
}

void ForceForeground(WindowRef window) {
    Display* display = ThreadDisplay();
    if (display == nullptr || window == 0) {
        return;
    }
    if (HasProperty(display, DefaultRootWindow(display), "_NET_SUPPORTING_WM_CHECK")) {
        // Source 2, a pager: the one that window managers obey also when the person is busy elsewhere.
        constexpr long kPager = 2;
        SendRootMessage(display, window, "_NET_ACTIVE_WINDOW", kPager, CurrentTime);
    } else {
        XRaiseWindow(display, window);
        XSetInputFocus(display, window, RevertToParent, CurrentTime);
    }
    XFlush(display);
}

void SetWindowOnTop(WindowRef window, bool onTop) {
    Display* display = ThreadDisplay();
    if (display == nullptr || window == 0) {
        return;
    }
    const Atom above = XInternAtom(display, "_NET_WM_STATE_ABOVE", False);
    if (!IsManaged(display, window)) {
        // The window manager reads the property when it takes the window over.
        WriteWindowState(display, window, above, onTop);
    }
    // Asked for in any case: the window may have been taken over this very moment. One without a manager is not there
    // for whoever gets the message.
    constexpr long kRemove = 0;
    constexpr long kAdd = 1;
    constexpr long kApplication = 1;  // who asks
    SendRootMessage(display, window, "_NET_WM_STATE", onTop ? kAdd : kRemove, static_cast<long>(above),
                    kApplication);
    XFlush(display);
}

void SetWindowIcons(WindowRef window) {
    Display* display = ThreadDisplay();
    if (display == nullptr || window == 0) {
        return;
    }
    std::vector<unsigned long> icons;
    for (const int size : {16, 32, 48, 128}) {
        AppendWindowIcon(size, icons);
    }
    XChangeProperty(display, window, XInternAtom(display, "_NET_WM_ICON", False), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(icons.data()),
                    static_cast<int>(icons.size()));
    XFlush(display);
}

void ShowErrorMessage(const std::string& title, const std::string& text) {
    std::fprintf(stderr, "%s: %s\n", title.c_str(), text.c_str());
}

bool ProcessAtPoint(int32_t x, int32_t y, uint32_t* processId) {
    Display* display = ThreadDisplay();
    if (display == nullptr) {
        return false;
    }
    const ScreenArea screen = PrimaryScreen();
    const Window root = DefaultRootWindow(display);
    Window topLevel = None;
    int inWindowX = 0;
    int inWindowY = 0;
    if (XTranslateCoordinates(display, root, root, screen.x + x, screen.y + y, &inWindowX, &inWindowY,
                              &topLevel) == 0 ||
        topLevel == None) {
        return false;
    }
    constexpr int kFrameDepth = 3;
    const Window client = ClientWindowIn(display, topLevel, kFrameDepth);
    // Menus and the like are shown without a frame and bear the process themselves.
    return ProcessOfWindow(display, client != None ? client : topLevel, processId);
}
