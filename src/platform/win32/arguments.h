// The command line of this process.
#pragma once

#include "platform/process.h"

// `line` is the text of the system's code page after the program's name, unchanged. The arguments come from the wide
// command line.
ProcessArguments ReadProcessArguments();
