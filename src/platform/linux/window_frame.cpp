#include "platform/window_frame.h"

#include "platform/linux/frame_watch.h"
#include "platform/linux/x11_display.h"
#include "platform/linux/x11_frame.h"
#include "platform/linux/x11_windows.h"
#include "platform/shared/page_host_state.h"

#include <X11/Xutil.h>
#include <algorithm>
#include <dlfcn.h>

namespace {

ScreenRectangle FromPrimary(Display* display, const ScreenRectangle& rectangle) {
    const ScreenArea screen = QueryPrimaryScreen(display);
    return Moved(rectangle, -screen.x, -screen.y);
}

// Moves the frame's corner to a position, and resizes the window inside it unless `width` is 0.
void MoveFrame(Display* display, Window window, int32_t x, int32_t y, int32_t width, int32_t height) {
    if (HasAtom(display, DefaultRootWindow(display), "_NET_SUPPORTED", "_NET_MOVERESIZE_WINDOW")) {
        // NOTE: with static gravity, where the numbers mean the window itself, openbox moves the window by its frame once
        // more at the next resize.
        // HACK: north-west gravity, where the numbers mean the frame with every window manager.
        constexpr long kPlace = 1L << 8 | 1L << 9;
        constexpr long kSize = 1L << 10 | 1L << 11;
        const long flags = NorthWestGravity | kPlace | (width > 0 ? kSize : 0) | kAskedByPager << 12;
        SendRootMessage(display, window, "_NET_MOVERESIZE_WINDOW", {flags, x, y, width, height});
    } else if (width > 0) {
        XMoveResizeWindow(display, window, x, y, static_cast<unsigned>(width), static_cast<unsigned>(height));
    } else {
        XMoveWindow(display, window, x, y);
    }
}

int ScaleOf(PageHost* host) {
    auto* getSurface = reinterpret_cast<void* (*)(void*)>(dlsym(host->module, "gtk_native_get_surface"));
    auto* getScale = reinterpret_cast<int (*)(void*)>(dlsym(host->module, "gdk_surface_get_scale_factor"));
    void* window = host->library.getWindow(host->view);
    void* surface = getSurface && getScale && window ? getSurface(window) : nullptr;
    return surface ? getScale(surface) : 1;
}

}  // namespace

ScreenRectangle MonitorWorkArea(WindowRef window) {
    Display* display = ThreadDisplay();
    if (display == nullptr) {
        return ScreenRectangle{0, 0, 1, 1};
    }
    const ScreenArea screen = QueryPrimaryScreen(display);
    ScreenRectangle place{screen.x, screen.y, screen.x + 1, screen.y + 1};
    if (window != 0) {
        ReadOuterRectangle(display, window, &place);
    }
    const std::vector<ScreenRectangle> monitors = ReadMonitors(display);
    return FromPrimary(display, ReadWorkArea(display, monitors, NearestMonitor(monitors, place)));
}

bool WorkAreaAtPoint(int32_t x, int32_t y, ScreenRectangle* area) {
    Display* display = ThreadDisplay();
    if (display == nullptr) {
        return false;
    }
    const std::vector<ScreenRectangle> monitors = ReadMonitors(display);
    for (size_t index = 0; index < monitors.size(); ++index) {
        const ScreenRectangle monitor = FromPrimary(display, monitors[index]);
        if (x >= monitor.left && x < monitor.right && y >= monitor.top && y < monitor.bottom) {
            *area = FromPrimary(display, ReadWorkArea(display, monitors, index));
            return true;
        }
    }
    return false;
}

bool ReadPageWindowRectangle(PageHost* host, ScreenRectangle* outer) {
    Display* display = ThreadDisplay();
    const WindowRef window = PageHostWindow(host);
    ScreenRectangle rectangle;
    if (display == nullptr || window == 0 || !ReadOuterRectangle(display, window, &rectangle)) {
        return false;
    }
    // NOTE: GTK applies a new size in its next frame, and the window manager after that.
    // HACK: the requested size counts as if it were applied. A maximised window keeps its size.
    if (host->askedWidth > 0 && !IsMaximised(display, window)) {
        const FrameExtents frame = ReadFrameExtents(display, window);
        const int scale = ScaleOf(host);
        rectangle.right = rectangle.left + frame.left + host->askedWidth * scale + frame.right;
        rectangle.bottom = rectangle.top + frame.top + host->askedHeight * scale + frame.bottom;
    }
    *outer = FromPrimary(display, rectangle);
    return true;
}

void MoveWindowTo(WindowRef window, int32_t left, int32_t top) {
    RunWhenManaged(window, [window, left, top](Display* display) {
        const ScreenArea screen = QueryPrimaryScreen(display);
        MoveFrame(display, window, screen.x + left, screen.y + top, 0, 0);
    });
}

void PlaceWindow(WindowRef window, int32_t left, int32_t top, int32_t width, int32_t height) {
    if (Display* display = ThreadDisplay()) {
        const ScreenArea screen = QueryPrimaryScreen(display);
        SetRequestedRectangle(window, Moved({left, top, left + std::max(width, 1), top + std::max(height, 1)},
                                            screen.x, screen.y));
    }
    RunWhenManaged(window, [window, left, top, width, height](Display* display) {
        const ScreenArea screen = QueryPrimaryScreen(display);
        const FrameExtents frame = ReadFrameExtents(display, window);
        MoveFrame(display, window, screen.x + left, screen.y + top,
                  std::max(width - frame.left - frame.right, 1),
                  std::max(height - frame.top - frame.bottom, 1));
    });
}

void MaximiseWindow(WindowRef window) {
    RunWhenManaged(window, [window](Display* display) {
        constexpr long kAdd = 1;
        const auto vertically =
            static_cast<long>(XInternAtom(display, "_NET_WM_STATE_MAXIMIZED_VERT", False));
        const auto horizontally =
            static_cast<long>(XInternAtom(display, "_NET_WM_STATE_MAXIMIZED_HORZ", False));
        SendRootMessage(display, window, "_NET_WM_STATE",
                        {kAdd, vertically, horizontally, kAskedByApplication});
    });
}

void MinimiseWindow(WindowRef window) {
    RunWhenManaged(window, [window](Display* display) {
        XIconifyWindow(display, window, DefaultScreen(display));  // by WM_CHANGE_STATE
    });
}

void WatchPageWindow(PageHost* host, const WindowHandlers& handlers) {
    StartFrameThread(host, PageHostWindow(host));
    SetPlacementCallback(handlers.placementChanged);
}

void EndWindowWatch(PageHost* /*host*/) {
    EndFrameThread();
}
