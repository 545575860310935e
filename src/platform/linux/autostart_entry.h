// The text of the desktop entry by which a session starts this program. Linux home only; any thread.
#pragma once

#include <string>
#include <string_view>

// An entry that starts the program file at this path, without arguments.
std::string AutostartEntryText(std::string_view programPath);

// Whether an entry that is there may stay as it is: it starts just that program, or the person has switched it off
// with the tools of the desktop.
bool AutostartEntryStands(std::string_view entry, std::string_view programPath);
