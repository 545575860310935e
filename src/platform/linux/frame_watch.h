// The thread that watches the one window of this process from the moment at which it is to be shown. The window manager
// starts to manage a window only some time later, and ignores requests before that.
#pragma once

#include "platform/window_frame.h"

#include <X11/Xlib.h>
#include <functional>

// UI thread, as all functions here except RunWhenManaged. Starts the thread unless it runs already.
void StartFrameThread(PageHost* host, Window window);
// Ends the thread and drops the requests that have not run.
void EndFrameThread();

// Any thread. Runs a request to the window manager about a window, in the order of the calls: at once on the calling
// thread, or on the watching thread as soon as the watched window is managed.
void RunWhenManaged(Window window, std::function<void(Display*)> request);
// Stores the requested rectangle of the window, in coordinates of the root window. It counts as the window's normal
// rectangle until the window settles.
void SetRequestedRectangle(Window window, const ScreenRectangle& outer);

// Calls `placementChanged` through the page's queue whenever the window has settled at another position or size, or has
// been maximised or restored. X11 does not report who made the change, so the program's own changes are reported too.
void SetPlacementCallback(void (*placementChanged)(const WindowPlacement& placement));
