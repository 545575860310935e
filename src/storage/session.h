// The session file: all profiles and the live settings between runs.
#pragma once

#include <string_view>

// Any thread, and the crash handler. Writes the session file; a failure is not reported. Never waits: if macroMutex is
// held it writes nothing, and if another save is running that one saves once more. Holds macroMutex for a copy only.
void SaveSession();
// Before the threads start. Reads the session file. Returns false, with the profiles unchanged, if there is none or it
// has no profile; its settings line may have been stored then.
bool LoadSession();
// Reads the content of a session file, as LoadSession does.
bool LoadSessionText(std::string_view bytes);
