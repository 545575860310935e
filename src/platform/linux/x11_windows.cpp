#include "platform/linux/x11_windows.h"

#include <X11/Xatom.h>
#include <algorithm>
#include <cstring>

constexpr long kMostWords = 256 * 1024;  // longest property that is read, in 32-bit words

unsigned long Property::Long(unsigned long index) const {
    unsigned long value = 0;
    std::memcpy(&value, data + index * sizeof(value), sizeof(value));
    return value;
}

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

std::vector<int32_t> ReadNumbers(Display* display, Window window, const char* name) {
    Property property;
    std::vector<int32_t> numbers;
    if (ReadProperty(display, window, name, &property) && property.format == 32) {
        for (unsigned long index = 0; index < property.count; ++index) {
            numbers.push_back(static_cast<int32_t>(property.Long(index)));
        }
    }
    return numbers;
}

bool HasAtom(Display* display, Window window, const char* property, const char* atom) {
    const Atom wanted = XInternAtom(display, atom, False);
    Property list;
    if (!ReadProperty(display, window, property, &list) || list.format != 32) {
        return false;
    }
    for (unsigned long index = 0; index < list.count; ++index) {
        if (list.Long(index) == wanted) {
            return true;
        }
    }
    return false;
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

bool HasWindowManager(Display* display) {
    return HasProperty(display, DefaultRootWindow(display), "_NET_SUPPORTING_WM_CHECK");
}

void SendRootMessage(Display* display, Window window, const char* message,
                     std::initializer_list<long> numbers) {
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window;
    event.xclient.message_type = XInternAtom(display, message, False);
    event.xclient.format = 32;
    std::copy(numbers.begin(), numbers.end(), event.xclient.data.l);
    XSendEvent(display, DefaultRootWindow(display), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
}

Time ServerTime(Display* display) {
    // The event of a changed property carries the time.
    const Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), -1, -1, 1, 1, 0, 0, 0);
    XSelectInput(display, window, PropertyChangeMask);
    const unsigned char nothing = 0;
    XChangeProperty(display, window, XA_WM_NAME, XA_STRING, 8, PropModeReplace, &nothing, 0);
    XSync(display, False);
    XEvent event;
    Time time = CurrentTime;
    if (XCheckTypedWindowEvent(display, window, PropertyNotify, &event) != 0) {
        time = event.xproperty.time;
    }
    XDestroyWindow(display, window);
    return time;
}
