// The session file: all profiles and the live settings between runs.
#pragma once

#include <string_view>

// Any thread. Gives up at once if macroMutex is held; holds it only for a copy of the store.
void SaveSession();
// Before the threads start. False: no session was read and the store is untouched.
bool LoadSession();
// The same on bytes already in memory.
bool LoadSessionText(std::string_view bytes);
