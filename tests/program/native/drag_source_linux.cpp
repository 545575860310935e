// A window that can be dragged from: drag_source X Y TEXT. Each drag of a real pointer that begins in it offers TEXT as a
// list of addresses and as plain text, by the drag-and-drop protocol of X11 (version 5). Prints "ready", and at the end
// of each drag one line: "dropped" after the target took the drop and reported its end, "refused" if the target wanted
// nothing, "nobody" if there was no target.
#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

Display* display = nullptr;
Window window = None;
std::string text;

Window target = None;
bool positionSent = false;   // a position whose answer has not come
bool positionStale = false;  // the pointer has moved since then
bool accepted = false;
bool released = false;

Atom Name(const char* name) {
    return XInternAtom(display, name, False);
}

void Send(const char* type, long a, long b, long c, long d) {
    XEvent event = {};
    event.xclient.type = ClientMessage;
    event.xclient.window = target;
    event.xclient.message_type = Name(type);
    event.xclient.format = 32;
    const long data[] = {static_cast<long>(window), a, b, c, d};
    std::memcpy(event.xclient.data.l, data, sizeof data);
    XSendEvent(display, target, False, NoEventMask, &event);
}

// The window under the pointer that takes drops, or None.
Window FindTarget() {
    Window root = DefaultRootWindow(display);
    Window inside = root;
    for (;;) {
        Window child = None;
        int rootX = 0, rootY = 0, x = 0, y = 0;
        unsigned mask = 0;
        XQueryPointer(display, inside, &root, &child, &rootX, &rootY, &x, &y, &mask);
        if (child == None || child == window) {
            return None;
        }
        Atom type = None;
        int format = 0;
        unsigned long count = 0, rest = 0;
        unsigned char* data = nullptr;
        XGetWindowProperty(display, child, Name("XdndAware"), 0, 1, False, AnyPropertyType, &type, &format,
                           &count, &rest, &data);
        if (data) {
            XFree(data);
        }
        if (type != None) {
            return child;
        }
        inside = child;
    }
}

void SendPosition(int x, int y, Time time) {
    positionSent = true;
    positionStale = false;
    Send("XdndPosition", 0, (static_cast<long>(x) << 16) | y, static_cast<long>(time),
         static_cast<long>(Name("XdndActionCopy")));
}

void End(const char* result) {
    printf("%s\n", result);
    target = None;
    positionSent = positionStale = accepted = released = false;
}

void Move(const XMotionEvent& motion) {
    const Window found = FindTarget();
    if (found != target) {
        if (target != None) {
            Send("XdndLeave", 0, 0, 0, 0);
        }
        target = found;
        positionSent = accepted = false;
        if (target != None) {
            Send("XdndEnter", 5L << 24, static_cast<long>(Name("text/uri-list")),
                 static_cast<long>(Name("UTF8_STRING")), static_cast<long>(Name("text/plain")));
        }
    }
    if (target == None) {
        return;
    }
    if (positionSent) {
        positionStale = true;
    } else {
        SendPosition(motion.x_root, motion.y_root, motion.time);
    }
}

// The drop, or its refusal, once the button is up and the target has answered for where the pointer now is.
void Finish() {
    if (!released || positionSent || positionStale) {
        return;
    }
    if (target == None) {
        End("nobody");
    } else if (accepted) {
        Send("XdndDrop", 0, static_cast<long>(CurrentTime), 0, 0);
        released = false;
    } else {
        Send("XdndLeave", 0, 0, 0, 0);
        End("refused");
    }
}

void HandleMessage(const XClientMessageEvent& message) {
    if (message.message_type == Name("XdndStatus")) {
        accepted = (message.data.l[1] & 1) != 0;
        positionSent = false;
        if (positionStale) {
            Window root = None, child = None;
            int rootX = 0, rootY = 0, x = 0, y = 0;
            unsigned mask = 0;
            XQueryPointer(display, window, &root, &child, &rootX, &rootY, &x, &y, &mask);
            SendPosition(rootX, rootY, CurrentTime);
        }
        Finish();
    } else if (message.message_type == Name("XdndFinished")) {
        End("dropped");
    }
}

void HandOver(const XSelectionRequestEvent& request) {
    XEvent event = {};
    event.xselection.type = SelectionNotify;
    event.xselection.requestor = request.requestor;
    event.xselection.selection = request.selection;
    event.xselection.target = request.target;
    event.xselection.time = request.time;
    event.xselection.property = request.property;
    XChangeProperty(display, request.requestor, request.property, request.target, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
    XSendEvent(display, request.requestor, False, NoEventMask, &event);
}

}  // namespace

int main(int argc, char** argv) {
    setvbuf(stdout, nullptr, _IOLBF, 0);
    display = XOpenDisplay(nullptr);
    if (argc != 4 || !display) {
        return 1;
    }
    text = std::string(argv[3]) + "\r\n";
    XSetWindowAttributes attributes = {};
    attributes.override_redirect = True;
    attributes.background_pixel = WhitePixel(display, DefaultScreen(display));
    attributes.event_mask = ButtonPressMask | ButtonReleaseMask | ButtonMotionMask | ExposureMask;
    window = XCreateWindow(display, DefaultRootWindow(display), atoi(argv[1]), atoi(argv[2]), 40, 40, 0,
                           CopyFromParent, InputOutput, nullptr,
                           CWOverrideRedirect | CWBackPixel | CWEventMask, &attributes);
    XMapRaised(display, window);
    for (;;) {
        XEvent event;
        XNextEvent(display, &event);
        switch (event.type) {
        case Expose:
            printf("ready\n");
            break;
        case ButtonPress:
            XSetSelectionOwner(display, Name("XdndSelection"), window, event.xbutton.time);
            break;
        case MotionNotify:
            Move(event.xmotion);
            break;
        case ButtonRelease:
            released = true;
            Finish();
            break;
        case ClientMessage:
            HandleMessage(event.xclient);
            break;
        case SelectionRequest:
            HandOver(event.xselectionrequest);
            break;
        default:
            break;
        }
    }
}
