// The simulated desktop: windows and monitors. Newer windows lie on top of older ones.
#pragma once

#include "platform/desktop.h"
#include "platform/window_frame.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

struct SimWindow {
    WindowRef window = 0;
    std::string title;
    uint32_t processId = 0;
    int32_t left = 0, top = 0, right = 0, bottom = 0;  // right and bottom are outside
    bool minimised = false;
    bool maximised = false;
    bool hidden = false;
    bool onTop = false;  // stored only; does not change the order
};
struct SimMonitor {
    ScreenRectangle bounds;
    ScreenRectangle work;
};
struct SimDesktop {
    std::vector<SimWindow> windows;  // bottom first
    WindowRef foreground = 0;
    std::vector<WindowRef> icons;  // windows that were given icons, in order
    struct Message {
        std::string title;
        std::string text;
    };
    std::vector<Message> messages;    // ShowErrorMessage, in order
    std::function<void()> onMessage;  // called while the message is shown
    // The first one is the primary one.
    std::vector<SimMonitor> monitors = {{{0, 0, 1920, 1080}, {0, 0, 1920, 1040}}};
    int32_t frameWidth = 0;   // what a frame adds to a page's width
    int32_t frameHeight = 0;  // and to its height
    int32_t pageScale = 1;    // screen pixels per page pixel, in each direction
    // Calls that changed page windows or brought them to the front, in order: "size 420 560", "place 10 20 300 400",
    // "move 10 20", "watch", "maximise", "top 1", "minimise", "front".
    std::vector<std::string> frameCalls;
    WindowHandlers handlers;  // of the watched window
    WindowRef watched = 0;
};
SimDesktop& SimGetDesktop();
WindowRef SimAddWindow(const std::string& title, uint32_t processId, int32_t left, int32_t top, int32_t right,
                       int32_t bottom);
void SimResetDesktop();
