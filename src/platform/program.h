// What a backend's entry point calls once the process is set up. Defined in app/program.cpp.
#pragma once

#include "platform/process.h"

// Runs a console mode or a role to its end and returns the exit code. UI thread. Never throws.
int RunProgram(const ProcessArguments& arguments);
