// The thread that looks after the one window of this process from the moment at which it is to be shown. Linux home
// only. The window manager takes a window over only some time after that, and drops what is asked of it before.
#pragma once

#include "platform/window_frame.h"

#include <X11/Xlib.h>
#include <functional>

// Starts the thread, unless it runs already. UI thread, as all of these but WhenManaged.
void StartFrameThread(PageHost* host, Window window);
// Ends it. What has not been asked of the window manager by then is dropped.
void EndFrameThread();

// Any thread. Asks something of the window manager about a window: at once, on the calling thread, or where the
// window is the watched one and not taken over yet, as soon as it is, on the watching thread. The order is kept.
void WhenManaged(Window window, std::function<void(Display*)> request);
// The window was asked to stand here: its place when it is not maximised, whatever it looks like before. In
// coordinates of the root window.
void NoteAskedPlace(Window window, const ScreenRectangle& outer);

// From now on every change of the window's place, size or being maximised is told, through the page's queue, once it has
// come to rest. X11 does not say who wanted it: the program's own changes are told too.
void TellPlacements(void (*placementChanged)(const WindowPlacement& placement));
