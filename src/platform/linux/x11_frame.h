// Positions of windows and monitors on the root window, frames included. Each function queries the server on the given
// connection. All coordinates are those of the root window.
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

// Returns the frame that the window manager has put around the window, all zero without one.
FrameExtents ReadFrameExtents(Display* display, Window window);
// Reads the rectangle of the window without and with its frame. Returns false, with *rectangle untouched, if there is no
// such window.
bool ReadClientRectangle(Display* display, Window window, ScreenRectangle* rectangle);
bool ReadOuterRectangle(Display* display, Window window, ScreenRectangle* rectangle);

bool IsMaximised(Display* display, Window window);  // in both directions
bool IsFullscreen(Display* display, Window window);
bool IsIconic(Display* display, Window window);
// False for a hidden window, minimised windows included, and if there is no such window.
bool IsMapped(Display* display, Window window);
// Returns whether the window manager manages the window and has put its frame around it.
bool IsManaged(Display* display, Window window);

// Never returns an empty list: without monitors it holds the whole root window.
std::vector<ScreenRectangle> ReadMonitors(Display* display);
// Returns the area of a monitor without docks.
ScreenRectangle ReadWorkArea(Display* display, const std::vector<ScreenRectangle>& monitors, size_t which);
// Returns the index of the monitor that holds most of the rectangle or is nearest to it.
size_t NearestMonitor(const std::vector<ScreenRectangle>& monitors, const ScreenRectangle& rectangle);

ScreenRectangle Moved(const ScreenRectangle& rectangle, int32_t dx, int32_t dy);
