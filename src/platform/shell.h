// What the person's desktop does for us outside our own windows. Best effort: a failure leaves things as they are and
// shows nothing. UI thread.
#pragma once

#include <string>

// Opens a web address, in UTF-8, with the program that the person has chosen for such. Does not wait for it.
void OpenTarget(const std::string& target);

// Whether this program file, where it lies now, starts when the person logs in. Said again at each start, so that a
// program folder that was moved is found at the log-in after that.
void SetLaunchAtStartup(bool enabled);
