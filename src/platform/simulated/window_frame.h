// The user moves or resizes the page's window, or drops files on it. On the UI thread.
#pragma once

#include "platform/window_frame.h"

#include <string>
#include <vector>

void SimMovePageWindow(const ScreenRectangle& outer);
void SimMaximisePageWindow(bool maximised);
void SimEndSession();  // the user logs off
void SimDropFiles(const std::vector<std::string>& paths);
