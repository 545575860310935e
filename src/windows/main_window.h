// The main window: finds it, fits it to its page, restores its position. UI thread; FindMainWindow in any process.
#pragma once

#include "platform/page_host.h"

#include <cstdint>
#include <string_view>

constexpr const char* kMainWindowTitle = "Varnelle (Plus Version 1.0.1)";

// Returns true if this is the title of a main window, of this or another version.
bool IsMainWindowTitle(std::string_view title);
// Returns the topmost window with such a title, or 0.
WindowRef FindMainWindow();

// Sets the client size of the page to width by height, but makes the window no higher than the work area of its
// monitor. Moves the window up if its bottom would be below the work area. Ignores a size below 1.
void FitWindowToContent(PageHost* host, int32_t width, int32_t height);
// The page's command, "width,height": FitWindowToContent on the main window. Ignores a malformed number.
void ResizeMainWindow(std::string_view sizeText);

// Moves the window to its position in appSettings, no larger than the work area there. Does nothing if no position is
// known, or if the corner is on no monitor any more.
void RestoreMainWindowPlacement(PageHost* host);
// The last steps before the main loop: placement, watch, maximised, on top, then minimised or to the front.
void SetUpMainWindow(PageHost* host);
