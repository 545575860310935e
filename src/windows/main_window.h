// Finding the master's window. Any process.
#pragma once

#include "platform/desktop.h"

#include <string_view>

constexpr const char* kMainWindowTitle = "Varnelle (Plus Version 1.0.1)";

// Whether a window of this title is a master's, of this or another version.
bool IsMainWindowTitle(std::string_view title);
// The topmost window with such a title, 0 if none.
WindowRef FindMainWindow();
