// The last step of starting another program. Linux home only.
#pragma once

// In the new process, between fork and exec: system calls only, since other threads' locks may be held. Becomes the
// program `file`, which is looked for in PATH if its name has no slash; `arguments` end with a null. Its standard output
// is `output`, or nowhere if that is -1; the other two streams lead nowhere, and nothing else of ours stays open or
// ignored in it. Where that fails the process ends with kNotStarted.
constexpr int kNotStarted = 127;
[[noreturn]] void BecomeProgram(const char* file, char* const* arguments, int output);
