// The command line as the entry point receives it.
#pragma once

#include "platform/process.h"

// `narrowLine` is WinMain's lpCmdLine, the string after the program's name, and is kept unchanged. The arguments come from
// the wide command line of the process, each code unit reduced to its low byte.
ProcessArguments ReadProcessArguments(const char* narrowLine);
