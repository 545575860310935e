// The window of the main process: finds it, fits it to its page, restores its placement. UI thread. FindMainWindow may be
// called in any process.
#pragma once

#include "platform/page_host.h"

#include <cstdint>
#include <string_view>

constexpr const char* kMainWindowTitle = "Varnelle (Plus Version 1.0.1)";

// Returns whether `title` is the title of a main window, of this or another version.
bool IsMainWindowTitle(std::string_view title);
// Returns the topmost window with such a title, or 0.
WindowRef FindMainWindow();

// Sets the page's client size, in pixels of the page. Limits the window's height to the work area of its monitor, and
// moves up a window whose bottom would be below it. Does nothing for a size below 1.
void FitWindowToContent(PageHost* host, int32_t width, int32_t height);
// The page's command with the argument "width,height": calls FitWindowToContent on the main window. Does nothing if an
// argument is not a number.
void ResizeMainWindow(std::string_view sizeText);

// Places the window as appSettings say, no larger than the work area there. Does nothing without a saved position, or if
// no monitor contains its corner any more.
void RestoreMainWindowPlacement(PageHost* host);
// Does the last steps before the main loop: restores the placement, starts watching the window, maximises it, keeps it on
// top, and minimises it or brings it to the front, all as appSettings say. `sessionEnding`: as in WindowHandlers.
void SetUpMainWindow(PageHost* host, void (*sessionEnding)());
