// The master's window: finding it, fitting it to its page, where it stood last time. UI thread; FindMainWindow in any
// process.
#pragma once

#include "platform/page_host.h"

#include <cstdint>
#include <string_view>

constexpr const char* kMainWindowTitle = "Varnelle (Plus Version 1.0.1)";

// Whether a window of this title is a master's, of this or another version.
bool IsMainWindowTitle(std::string_view title);
// The topmost window with such a title, 0 if none.
WindowRef FindMainWindow();

// Gives the page a client size of width by height, and the window no more height than its monitor has beside panels.
// A window whose bottom would then be below the work area moves up. Nothing for a size below 1.
void FitWindowToContent(PageHost* host, int32_t width, int32_t height);
// The page's command, "width,height": FitWindowToContent on the master's window. A text that is no number does nothing.
void ResizeMainWindow(std::string_view sizeText);

// Puts the window where appSettings say it stood, no larger than the work area there. Nothing while no position is
// known, or when no monitor holds the corner any more.
void RestoreMainWindowPlacement(PageHost* host);
// The last steps before the main loop: placement, watch, maximised, on top, then minimised or to the front.
void SetUpMainWindow(PageHost* host);
