// The session file: all profiles and the live settings between runs.
#pragma once

#include <string_view>

// Any thread. Gives up at once if macroMutex is held; holds it only for a copy of the store.
void SaveSession();
// Before the threads start. Returns false if no session was read; the store is then unchanged.
bool LoadSession();
// The same for bytes in memory.
bool LoadSessionText(std::string_view bytes);
