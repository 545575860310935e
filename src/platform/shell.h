// What the desktop does for the program outside its own windows. A function that fails changes nothing and shows
// nothing. UI thread.
#pragma once

#include <string>

// Opens a web address, in UTF-8, with the user's default program for it. Does not wait.
void OpenTarget(const std::string& target);

// Sets whether this program file starts when the user logs in. Called again at each start, so that a moved program folder
// is found at the next log-in.
void SetLaunchAtStartup(bool enabled);
