// The session file: all profiles and the live settings between runs.
#pragma once

#include <string>
#include <string_view>

// Any thread. Skips the save if macroMutex is held; holds it only for a copy of the store. A save that meets another one
// makes that one save once more.
void SaveSession();
// For the crash handler. Waits up to 2 seconds for a save of another thread to end, then saves.
void SaveSessionAfterCrash();

enum class SaveProblem { None, DiskFull, Failed };
// Any thread. What kept the last save from writing; None after a save that succeeded.
SaveProblem LastSaveProblem();

struct SessionLoad {
    bool loaded = false;   // the store and the settings come from a session
    bool damaged = false;  // the session file could not be read whole; what could be read was loaded
    // Where the damaged file was moved. Empty if it is still in its place; then the next save moves it first, and writes
    // nothing if that fails.
    std::string keptAs;
};
// Before the threads start. Reads the session file, or the recovery file where that holds the newer whole text.
SessionLoad LoadSession();
// Loads a session from bytes in memory. False: it holds no profile, and the store is untouched.
bool LoadSessionText(std::string_view bytes);
