// This process, its program file and its surroundings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

constexpr char kPathSeparator =
#ifdef VARNELLE_BACKSLASH_PATHS
    '\\';
#else
    '/';
#endif

// The command line in the two forms that the entry point examines.
struct ProcessArguments {
    bool wideViewValid = false;  // the line could be split into arguments
    // From index 1 on, in UTF-16 code units. Where the system has bytes, each byte is one unit.
    std::vector<std::u16string> arguments;
    std::string line;  // everything after the program's name, as one string of bytes
};

// Sets up the whole process before anything is read: library search, the web view's environment, the UI thread's COM
// apartment, DPI awareness. EndProcess reverts what needs reverting.
void PrepareProcess();
void EndProcess();

// Ends the process without waiting for any thread and without any clean-up. Returns only in the simulated backend.
void EndProcessAtOnce(int exitCode);

// Lets printed lines reach the console that started us, if standard output leads nowhere.
void EnsureConsole();

std::string ProgramPath();       // full path of the running program file
std::string ProgramDirectory();  // the same up to its last separator, which is left out

uint32_t OwnProcessId();
// Any thread. Returns whether a process runs from this same program file, false on any failure.
bool IsOwnImage(uint32_t processId);

enum class InstanceResult { First, AlreadyRunning };
// Claims the name and the data folder for this process's life. AlreadyRunning if another process has either of them. A
// failure of the system counts as First.
InstanceResult ClaimSingleInstance(const char* name);
// The process that holds the claim on the data folder, for a message to the user; 0 if it is not known.
uint32_t RunningInstanceProcessId();
void ReleaseSingleInstance();

// `save` runs when the process is about to die of an unhandled fault, or because its window has lost the X server. The
// process then ends in the usual way.
void SetCrashHandler(void (*save)());
