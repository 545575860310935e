// What the desktop does for the program outside its own windows. A function that fails changes nothing and shows
// nothing. UI thread.
#pragma once

#include <string>

// Opens a web address, in UTF-8, with the user's default program for it. Does not wait.
void OpenTarget(const std::string& target);

// Shows a folder of this system's paths in the user's file manager. Does not wait.
void OpenFolder(const std::string& path);

// The kind of session that the program runs in. Constant; any thread.
enum class SessionKind {
    Windows,
    X11,
    Wayland,  // the program itself runs on the X server of that session
};
SessionKind ReadSessionKind();

// Sets whether this program file starts when the user logs in. Called again at each start, so that a moved program folder
// is found at the next log-in.
void SetLaunchAtStartup(bool enabled);
