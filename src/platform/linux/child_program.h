// The last step of starting another program.
#pragma once

// In the new process, between fork and exec: system calls only, since other threads may hold locks. Becomes the program
// `file`, which is looked up in PATH if its name has no slash. `arguments` end with a null. Its standard output is
// `output`, or /dev/null for -1. The other two streams are /dev/null. No other file of ours stays open and no signal stays
// ignored. Ends the process with kNotStarted if the program cannot be started.
constexpr int kNotStarted = 127;
[[noreturn]] void BecomeProgram(const char* file, char* const* arguments, int output);
