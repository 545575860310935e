#include "platform/simulated/window_frame.h"

#include "platform/simulated/desktop.h"

#include <algorithm>

namespace {

SimWindow* Find(WindowRef window) {
    auto& windows = SimGetDesktop().windows;
    const auto found = std::find_if(windows.begin(), windows.end(),
                                    [window](const SimWindow& each) { return each.window == window; });
    return found == windows.end() ? nullptr : &*found;
}

bool Holds(const ScreenRectangle& area, int32_t x, int32_t y) {
    return x >= area.left && x < area.right && y >= area.top && y < area.bottom;
}

void Note(std::string call) {
    SimGetDesktop().frameCalls.push_back(std::move(call));
}

std::string Numbers(std::initializer_list<int32_t> numbers) {
    std::string text;
    for (const int32_t number : numbers) {
        text += " " + std::to_string(number);
    }
    return text;
}

void ReportPlacement() {
    const SimDesktop& desktop = SimGetDesktop();
    const SimWindow* window = Find(desktop.watched);
    if (window != nullptr && desktop.handlers.placementChanged != nullptr) {
        desktop.handlers.placementChanged({{window->left, window->top, window->right, window->bottom},
                                           window->maximised && !window->minimised});
    }
}

}  // namespace

ScreenRectangle MonitorWorkArea(WindowRef window) {
    const std::vector<SimMonitor>& monitors = SimGetDesktop().monitors;
    if (const SimWindow* found = Find(window)) {
        for (const SimMonitor& monitor : monitors) {
            if (Holds(monitor.bounds, (found->left + found->right) / 2, (found->top + found->bottom) / 2)) {
                return monitor.work;
            }
        }
    }
    return monitors.front().work;
}

bool WorkAreaAtPoint(int32_t x, int32_t y, ScreenRectangle* area) {
    for (const SimMonitor& monitor : SimGetDesktop().monitors) {
        if (Holds(monitor.bounds, x, y)) {
            *area = monitor.work;
            return true;
        }
    }
    return false;
}

bool ReadPageWindowRectangle(PageHost* host, ScreenRectangle* outer) {
    const SimWindow* window = Find(PageHostWindow(host));
    if (window == nullptr) {
        return false;
    }
    *outer = {window->left, window->top, window->right, window->bottom};
    return true;
}

void MoveWindowTo(WindowRef window, int32_t left, int32_t top) {
    if (SimWindow* found = Find(window)) {
        Note("move" + Numbers({left, top}));
        found->right += left - found->left;
        found->bottom += top - found->top;
        found->left = left;
        found->top = top;
    }
}

void PlaceWindow(WindowRef window, int32_t left, int32_t top, int32_t width, int32_t height) {
    if (SimWindow* found = Find(window)) {
        Note("place" + Numbers({left, top, width, height}));
        found->left = left;
        found->top = top;
        found->right = left + std::max(width, 1);
        found->bottom = top + std::max(height, 1);
    }
}

void MaximiseWindow(WindowRef window) {
    if (SimWindow* found = Find(window)) {
        Note("maximise");
        found->maximised = true;
    }
}

void MinimiseWindow(WindowRef window) {
    if (SimWindow* found = Find(window)) {
        Note("minimise");
        found->minimised = true;
    }
}

void WatchPageWindow(PageHost* host, const WindowHandlers& handlers) {
    Note("watch");
    SimGetDesktop().watched = PageHostWindow(host);
    SimGetDesktop().handlers = handlers;
}

void EndWindowWatch(PageHost* /*host*/) {
    ReportPlacement();
    SimGetDesktop().watched = 0;
    SimGetDesktop().handlers = {};
}

void SimMovePageWindow(const ScreenRectangle& outer) {
    if (SimWindow* window = Find(SimGetDesktop().watched)) {
        window->left = outer.left;
        window->top = outer.top;
        window->right = outer.right;
        window->bottom = outer.bottom;
        ReportPlacement();
    }
}

void SimMaximisePageWindow(bool maximised) {
    if (SimWindow* window = Find(SimGetDesktop().watched)) {
        window->maximised = maximised;
    }
}

void SimDropFiles(const std::vector<std::string>& paths) {
    if (SimGetDesktop().handlers.filesDropped != nullptr) {
        SimGetDesktop().handlers.filesDropped(paths);
    }
}

void SimEndSession() {
    if (SimGetDesktop().handlers.sessionEnding != nullptr) {
        SimGetDesktop().handlers.sessionEnding();
    }
}
