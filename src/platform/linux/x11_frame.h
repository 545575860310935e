// Where windows and monitors lie on the root window, frames included. Linux home only; everything is asked of the
// server, on the connection given. All coordinates are the root window's.
#pragma once

#include "platform/window_frame.h"

#include <X11/Xlib.h>
#include <vector>

struct FrameExtents {
    int32_t left = 0;
    int32_t right = 0;
    int32_t top = 0;
    int32_t bottom = 0;
};

// What the window manager has put around the window; nothing where there is none.
FrameExtents ReadFrameExtents(Display* display, Window window);
// The window without its frame, and with it. False, with *rectangle untouched, if there is no such window.
bool ReadClientRectangle(Display* display, Window window, ScreenRectangle* rectangle);
bool ReadOuterRectangle(Display* display, Window window, ScreenRectangle* rectangle);

bool IsMaximised(Display* display, Window window);  // in both directions
bool IsFullscreen(Display* display, Window window);
bool IsIconic(Display* display, Window window);
// Whether the window manager has taken the window over and put its frame around it.
bool IsManaged(Display* display, Window window);

// Never empty: without monitors it is the whole root window.
std::vector<ScreenRectangle> ReadMonitors(Display* display);
// What the monitor leaves beside docks.
ScreenRectangle ReadWorkArea(Display* display, const std::vector<ScreenRectangle>& monitors, size_t which);
// The monitor that holds most of the rectangle, or is nearest to it.
size_t NearestMonitor(const std::vector<ScreenRectangle>& monitors, const ScreenRectangle& rectangle);

ScreenRectangle Moved(const ScreenRectangle& rectangle, int32_t dx, int32_t dy);
