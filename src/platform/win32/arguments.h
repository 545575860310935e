// The command line as the entry point hands it over.
#pragma once

#include "platform/process.h"

// `narrowLine` is WinMain's lpCmdLine, the text behind the program's name; it is taken over as it stands. The split
// arguments come from the wide command line of the process, each code unit cut to its low byte.
ProcessArguments ReadProcessArguments(const char* narrowLine);
