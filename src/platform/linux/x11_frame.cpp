#include "platform/linux/x11_frame.h"

#include "platform/linux/x11_windows.h"

#include <X11/Xutil.h>
#include <X11/extensions/Xrandr.h>
#include <algorithm>

namespace {

int64_t Overlap(const ScreenRectangle& a, const ScreenRectangle& b) {
    const int64_t width = std::min(a.right, b.right) - std::max(a.left, b.left);
    const int64_t height = std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
    return width > 0 && height > 0 ? width * height : 0;
}

// Returns the squared distance between two rectangles that do not overlap.
int64_t Distance(const ScreenRectangle& a, const ScreenRectangle& b) {
    const int64_t dx = std::max({a.left - b.right, b.left - a.right, 0});
    const int64_t dy = std::max({a.top - b.bottom, b.top - a.bottom, 0});
    return dx * dx + dy * dy;
}

bool RangesMeet(int32_t firstA, int32_t lastA, int32_t beginB, int32_t endB) {
    return firstA < endB && lastA >= beginB;
}

// A dock reserves a strip along one edge of the root window: so many pixels deep, along part of the edge.
struct Strut {
    int32_t left = 0, right = 0, top = 0, bottom = 0;
    int32_t leftFirst = 0, leftLast = INT32_MAX;
    int32_t rightFirst = 0, rightLast = INT32_MAX;
    int32_t topFirst = 0, topLast = INT32_MAX;
    int32_t bottomFirst = 0, bottomLast = INT32_MAX;
};

bool ReadStrut(Display* display, Window window, Strut* strut) {
    constexpr size_t kWhole = 4;
    constexpr size_t kPartial = 12;
    const std::vector<int32_t> partial = ReadNumbers(display, window, "_NET_WM_STRUT_PARTIAL");
    if (partial.size() >= kPartial) {
        *strut = Strut{partial[0], partial[1], partial[2], partial[3], partial[4],  partial[5],
                       partial[6], partial[7], partial[8], partial[9], partial[10], partial[11]};
        return true;
    }
    const std::vector<int32_t> whole = ReadNumbers(display, window, "_NET_WM_STRUT");
    if (whole.size() >= kWhole) {
        *strut = Strut{};
        strut->left = whole[0];
        strut->right = whole[1];
        strut->top = whole[2];
        strut->bottom = whole[3];
        return true;
    }
    return false;
}

// A strip counts for a monitor if it ends inside it. One that covers a whole monitor belongs to the monitor behind.
void TakeStrutOff(const Strut& strut, const ScreenRectangle& monitor, int32_t rootWidth, int32_t rootHeight,
                  ScreenRectangle* area) {
    if (strut.left > monitor.left && strut.left < monitor.right &&
        RangesMeet(strut.leftFirst, strut.leftLast, monitor.top, monitor.bottom)) {
        area->left = std::max(area->left, strut.left);
    }
    const int32_t right = rootWidth - strut.right;
    if (strut.right > 0 && right > monitor.left && right < monitor.right &&
        RangesMeet(strut.rightFirst, strut.rightLast, monitor.top, monitor.bottom)) {
        area->right = std::min(area->right, right);
    }
    if (strut.top > monitor.top && strut.top < monitor.bottom &&
        RangesMeet(strut.topFirst, strut.topLast, monitor.left, monitor.right)) {
        area->top = std::max(area->top, strut.top);
    }
    const int32_t bottom = rootHeight - strut.bottom;
    if (strut.bottom > 0 && bottom > monitor.top && bottom < monitor.bottom &&
        RangesMeet(strut.bottomFirst, strut.bottomLast, monitor.left, monitor.right)) {
        area->bottom = std::min(area->bottom, bottom);
    }
}

// The window manager's own work area of the current desktop, one rectangle around all monitors.
bool ReadManagersWorkArea(Display* display, ScreenRectangle* area) {
    const Window root = DefaultRootWindow(display);
    const std::vector<int32_t> areas = ReadNumbers(display, root, "_NET_WORKAREA");
    const std::vector<int32_t> desktop = ReadNumbers(display, root, "_NET_CURRENT_DESKTOP");
    constexpr size_t kNumbers = 4;  // of each desktop's area
    if (areas.size() < kNumbers) {
        return false;
    }
    const bool known =
        !desktop.empty() && desktop[0] >= 0 && static_cast<size_t>(desktop[0]) < areas.size() / kNumbers;
    const size_t first = known ? static_cast<size_t>(desktop[0]) * kNumbers : 0;
    *area = ScreenRectangle{areas[first], areas[first + 1], areas[first] + areas[first + 2],
                            areas[first + 1] + areas[first + 3]};
    return true;
}

}  // namespace

ScreenRectangle Moved(const ScreenRectangle& rectangle, int32_t dx, int32_t dy) {
    return {rectangle.left + dx, rectangle.top + dy, rectangle.right + dx, rectangle.bottom + dy};
}

FrameExtents ReadFrameExtents(Display* display, Window window) {
    const std::vector<int32_t> extents = ReadNumbers(display, window, "_NET_FRAME_EXTENTS");
    if (extents.size() < 4) {
        return FrameExtents{};
    }
    return FrameExtents{extents[0], extents[1], extents[2], extents[3]};
}

bool ReadClientRectangle(Display* display, Window window, ScreenRectangle* rectangle) {
    Window root = None;
    Window child = None;
    int x = 0;
    int y = 0;
    unsigned width = 0;
    unsigned height = 0;
    unsigned border = 0;
    unsigned depth = 0;
    if (XGetGeometry(display, window, &root, &x, &y, &width, &height, &border, &depth) == 0 ||
        XTranslateCoordinates(display, window, root, 0, 0, &x, &y, &child) == 0) {
        return false;
    }
    *rectangle = ScreenRectangle{x, y, x + static_cast<int32_t>(width), y + static_cast<int32_t>(height)};
    return true;
}

bool ReadOuterRectangle(Display* display, Window window, ScreenRectangle* rectangle) {
    ScreenRectangle client;
    if (!ReadClientRectangle(display, window, &client)) {
        return false;
    }
    const FrameExtents frame = ReadFrameExtents(display, window);
    *rectangle = ScreenRectangle{client.left - frame.left, client.top - frame.top, client.right + frame.right,
                                 client.bottom + frame.bottom};
    return true;
}

bool IsMaximised(Display* display, Window window) {
    return HasAtom(display, window, "_NET_WM_STATE", "_NET_WM_STATE_MAXIMIZED_VERT") &&
           HasAtom(display, window, "_NET_WM_STATE", "_NET_WM_STATE_MAXIMIZED_HORZ");
}

bool IsFullscreen(Display* display, Window window) {
    return HasAtom(display, window, "_NET_WM_STATE", "_NET_WM_STATE_FULLSCREEN");
}

bool IsIconic(Display* display, Window window) {
    const std::vector<int32_t> state = ReadNumbers(display, window, "WM_STATE");
    return !state.empty() && state[0] == IconicState;
}

bool IsMapped(Display* display, Window window) {
    XWindowAttributes attributes;
    return XGetWindowAttributes(display, window, &attributes) != 0 && attributes.map_state != IsUnmapped;
}

bool IsManaged(Display* display, Window window) {
    const std::vector<int32_t> state = ReadNumbers(display, window, "WM_STATE");
    if (state.empty() || state[0] == WithdrawnState) {
        return false;
    }
    return HasProperty(display, window, "_NET_FRAME_EXTENTS") ||
           !HasAtom(display, DefaultRootWindow(display), "_NET_SUPPORTED", "_NET_FRAME_EXTENTS");
}

std::vector<ScreenRectangle> ReadMonitors(Display* display) {
    const int screen = DefaultScreen(display);
    std::vector<ScreenRectangle> monitors;
    int major = 0;
    int minor = 0;
    if (XRRQueryVersion(display, &major, &minor) != 0 && (major > 1 || minor >= 5)) {
        int count = 0;
        XRRMonitorInfo* list = XRRGetMonitors(display, RootWindow(display, screen), True, &count);
        for (int index = 0; list != nullptr && index < count; ++index) {
            const XRRMonitorInfo& monitor = list[index];
            if (monitor.width > 0 && monitor.height > 0) {
                monitors.push_back(
                    {monitor.x, monitor.y, monitor.x + monitor.width, monitor.y + monitor.height});
            }
        }
        if (list != nullptr) {
            XRRFreeMonitors(list);
        }
    }
    if (monitors.empty()) {
        monitors.push_back({0, 0, DisplayWidth(display, screen), DisplayHeight(display, screen)});
    }
    return monitors;
}

ScreenRectangle ReadWorkArea(Display* display, const std::vector<ScreenRectangle>& monitors, size_t which) {
    const ScreenRectangle& monitor = monitors[which];
    ScreenRectangle area = monitor;
    ScreenRectangle root;
    if (!ReadClientRectangle(display, DefaultRootWindow(display), &root)) {
        return area;
    }
    for (const Window window : TopLevelWindows(display)) {
        Strut strut;
        if (ReadStrut(display, window, &strut)) {
            TakeStrutOff(strut, monitor, root.right, root.bottom, &area);
        }
    }
    // NOTE: _NET_WORKAREA is one rectangle around all monitors.
    // HACK: it counts only where there is one monitor, for what a window manager reserves without a dock.
    ScreenRectangle managers;
    if (monitors.size() == 1 && ReadManagersWorkArea(display, &managers) && Overlap(managers, area) > 0) {
        area = ScreenRectangle{std::max(area.left, managers.left), std::max(area.top, managers.top),
                               std::min(area.right, managers.right), std::min(area.bottom, managers.bottom)};
    }
    return area;
}

size_t NearestMonitor(const std::vector<ScreenRectangle>& monitors, const ScreenRectangle& rectangle) {
    size_t best = 0;
    for (size_t index = 1; index < monitors.size(); ++index) {
        const int64_t held = Overlap(monitors[index], rectangle);
        const int64_t bestHeld = Overlap(monitors[best], rectangle);
        if (held > bestHeld ||
            (bestHeld == 0 && Distance(monitors[index], rectangle) < Distance(monitors[best], rectangle))) {
            best = index;
        }
    }
    return best;
}
