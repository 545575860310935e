// The frame of the program's own windows: where one stands, on which monitor, and what the person does to it. Best
// effort: a failure leaves the window as it is and shows nothing. UI thread.
//
// Rectangles are outer ones, frame included, in physical pixels counted from the corner of the primary monitor.
#pragma once

#include "platform/page_host.h"

#include <cstdint>
#include <string>
#include <vector>

struct ScreenRectangle {
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;  // right and bottom are outside
    int32_t bottom = 0;
};

// Where a window stands when it is neither minimised nor maximised, and whether it is maximised now. A window that is
// minimised is not maximised.
struct WindowPlacement {
    ScreenRectangle normal;
    bool maximised = false;
};

// What a monitor leaves to windows beside panels and task bars: the monitor that holds most of the window or is nearest
// to it, and with no window the primary one.
ScreenRectangle MonitorWorkArea(WindowRef window);
// The work area of the monitor that holds a point; false if none does.
bool WorkAreaAtPoint(int32_t x, int32_t y, ScreenRectangle* area);

// The outer rectangle that the page's window has at the size last asked for by SetPageSize: an X11 window takes that up
// only a moment later. False, with *outer untouched, if there is no window.
bool ReadPageWindowRectangle(PageHost* host, ScreenRectangle* outer);

// These keep their order and may come before the window is on the screen.
void MoveWindowTo(WindowRef window, int32_t left, int32_t top);
// A size below what the system allows becomes the smallest one.
void PlaceWindow(WindowRef window, int32_t left, int32_t top, int32_t width, int32_t height);
void MaximiseWindow(WindowRef window);
void MinimiseWindow(WindowRef window);

// Called on the UI thread. Null ones are not called.
struct WindowHandlers {
    // The person has moved, resized or maximised the window, or it is about to go. Where the system does not tell who
    // did it, a change by the program is told too.
    void (*placementChanged)(const WindowPlacement& placement) = nullptr;
    // Files were dropped on the window, in the order of the drop. Without it nothing can be dropped.
    void (*filesDropped)(const std::vector<std::string>& paths) = nullptr;
};

// Watches the page's window until EndWindowWatch. One window a process.
void WatchPageWindow(PageHost* host, const WindowHandlers& handlers);
// After the main loop: tells the last placement where the window's end has not told it. Nothing if there is no watch.
void EndWindowWatch(PageHost* host);
