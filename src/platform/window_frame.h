// The frame of the program's own windows: position, monitor, and what the user does to it. A function that fails leaves
// the window as it is and shows nothing. UI thread.
//
// Rectangles include the frame and are in physical pixels from the corner of the primary monitor.
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

// The rectangle of a window when it is neither minimised nor maximised, and whether it is maximised now. A minimised
// window is not maximised.
struct WindowPlacement {
    ScreenRectangle normal;
    bool maximised = false;
};

// Returns the area of a monitor without panels and task bars: of the monitor that holds most of the window or is nearest
// to it, and without a window of the primary one.
ScreenRectangle MonitorWorkArea(WindowRef window);
// Reads the work area of the monitor that holds a point. Returns false if none does.
bool WorkAreaAtPoint(int32_t x, int32_t y, ScreenRectangle* area);

// Reads the outer rectangle that the page's window has at the size last set by SetPageSize, which an X11 window takes on
// a moment later. Returns false, with *outer untouched, if there is no window.
bool ReadPageWindowRectangle(PageHost* host, ScreenRectangle* outer);

// These take effect in the order of the calls. They may be called before the window is on the screen.
void MoveWindowTo(WindowRef window, int32_t left, int32_t top);
// A size below what the system allows becomes the smallest one.
void PlaceWindow(WindowRef window, int32_t left, int32_t top, int32_t width, int32_t height);
void MaximiseWindow(WindowRef window);
void MinimiseWindow(WindowRef window);

// Called on the UI thread. Null ones are not called.
struct WindowHandlers {
    // The user has moved, resized or maximised the window, or it is about to close. Where the system does not report who
    // did it, changes by the program are reported too.
    void (*placementChanged)(const WindowPlacement& placement) = nullptr;
    // Files were dropped on the window, in the order of the drop. Null: the window accepts no drop.
    void (*filesDropped)(const std::vector<std::string>& paths) = nullptr;
    // The session of the user ends, and the system may end the process as soon as this returns. Not called where such an
    // end is a request from outside (end_request.h).
    void (*sessionEnding)() = nullptr;
};

// Watches the page's window until EndWindowWatch. One window per process.
void WatchPageWindow(PageHost* host, const WindowHandlers& handlers);
// After the main loop: reports the last placement unless the end of the window has reported it. Does nothing without a
// watch.
void EndWindowWatch(PageHost* host);
