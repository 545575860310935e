// The text of the desktop entry by which a session starts this program. Any thread.
#pragma once

#include <string>
#include <string_view>

// Returns an entry that starts the program file at this path without arguments.
std::string AutostartEntryText(std::string_view programPath);

// Returns whether an existing entry may stay: it starts that program, or the user has switched it off with the tools of
// the desktop.
bool AutostartEntryStands(std::string_view entry, std::string_view programPath);
