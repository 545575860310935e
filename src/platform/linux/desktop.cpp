#include "platform/desktop.h"

#include "platform/linux/frame_watch.h"
#include "platform/linux/window_icon.h"
#include "platform/linux/x11_display.h"
#include "platform/linux/x11_frame.h"
#include "platform/linux/x11_windows.h"

#include <X11/Xatom.h>
#include <cstdio>

namespace {

constexpr size_t kLongestTitle = 255;

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

bool ProcessOfWindow(Display* display, Window window, uint32_t* processId) {
    Property process;
    if (!ReadProperty(display, window, "_NET_WM_PID", &process) || process.format != 32 ||
        process.count == 0) {
        return false;
    }
    *processId = static_cast<uint32_t>(process.Long(0));
    return true;
}

// Adds an atom to a window's _NET_WM_STATE or removes it, without the window manager.
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

// Returns the application's window inside a frame of the window manager, at most `depth` levels down, or None.
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
    return display != nullptr && window != 0 && IsIconic(display, window);
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
    if (window == 0) {
        return;
    }
    RunWhenManaged(window, [window](Display* display) {
        if (HasWindowManager(display)) {
            SendRootMessage(display, window, "_NET_ACTIVE_WINDOW",
                            {kAskedByPager, static_cast<long>(ServerTime(display)), 0});
        } else {
            XRaiseWindow(display, window);
            XSetInputFocus(display, window, RevertToParent, CurrentTime);
        }
    });
}

void SetWindowOnTop(WindowRef window, bool onTop) {
    if (window == 0) {
        return;
    }
    RunWhenManaged(window, [window, onTop](Display* display) {
        const Atom above = XInternAtom(display, "_NET_WM_STATE_ABOVE", False);
        if (!IsManaged(display, window)) {
            // The window manager reads the property when it starts to manage the window.
            WriteWindowState(display, window, above, onTop);
        }
        // Sent in any case: the window manager may have just started to manage the window. It ignores the message for a
        // window that it does not manage.
        constexpr long kRemove = 0;
        constexpr long kAdd = 1;
        SendRootMessage(display, window, "_NET_WM_STATE",
                        {onTop ? kAdd : kRemove, static_cast<long>(above), 0, kAskedByApplication});
    });
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
    // Menus and similar windows have no frame and carry the process themselves.
    return ProcessOfWindow(display, client != None ? client : topLevel, processId);
}
