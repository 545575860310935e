#include "platform/simulated/desktop.h"

#include "platform/desktop.h"

#include <algorithm>

namespace {

SimDesktop desktop;
WindowRef nextWindow = 1;

SimWindow* Find(WindowRef window) {
    for (SimWindow& entry : desktop.windows) {
        if (entry.window == window) {
            return &entry;
        }
    }
    return nullptr;
}

}  // namespace

SimDesktop& SimGetDesktop() {
    return desktop;
}

WindowRef SimAddWindow(const std::string& title, uint32_t processId, int32_t left, int32_t top, int32_t right,
                       int32_t bottom) {
    SimWindow window;
    window.window = nextWindow++;
    window.title = title;
    window.processId = processId;
    window.left = left;
    window.top = top;
    window.right = right;
    window.bottom = bottom;
    desktop.windows.push_back(window);
    return window.window;
}

WindowRef FindWindowByTitle(const char* title) {
    for (auto window = desktop.windows.rbegin(); window != desktop.windows.rend(); ++window) {
        if (window->title == title) {
            return window->window;
        }
    }
    return 0;
}

std::vector<TitledWindow> ListTopLevelWindows() {
    std::vector<TitledWindow> list;
    for (auto window = desktop.windows.rbegin(); window != desktop.windows.rend(); ++window) {
        if (!window->title.empty()) {
            list.push_back({window->window, window->title.substr(0, 255)});
        }
    }
    return list;
}

bool IsWindowMinimised(WindowRef window) {
    const SimWindow* found = Find(window);
    return found != nullptr && found->minimised;
}

void RestoreWindow(WindowRef window) {
    if (SimWindow* found = Find(window)) {
        found->minimised = false;
    }
}

void ForceForeground(WindowRef window) {
    const auto found = std::find_if(desktop.windows.begin(), desktop.windows.end(),
                                    [window](const SimWindow& entry) { return entry.window == window; });
    if (found != desktop.windows.end()) {
        desktop.frameCalls.emplace_back("front");
        desktop.foreground = window;
        std::rotate(found, found + 1, desktop.windows.end());
    }
}

void SetWindowOnTop(WindowRef window, bool onTop) {
    if (SimWindow* found = Find(window)) {
        desktop.frameCalls.emplace_back(onTop ? "top 1" : "top 0");
        found->onTop = onTop;
    }
}

void SetWindowIcons(WindowRef window) {
    desktop.icons.push_back(window);
}

void ShowErrorMessage(const std::string& title, const std::string& text) {
    desktop.messages.push_back({title, text});
    if (desktop.onMessage) {
        desktop.onMessage();
    }
}

bool ProcessAtPoint(int32_t x, int32_t y, uint32_t* processId) {
    for (auto window = desktop.windows.rbegin(); window != desktop.windows.rend(); ++window) {
        if (!window->minimised && !window->hidden && x >= window->left && x < window->right &&
            y >= window->top && y < window->bottom) {
            *processId = window->processId;
            return true;
        }
    }
    return false;
}

void SimResetDesktop() {
    desktop = SimDesktop();
    nextWindow = 1;
}
