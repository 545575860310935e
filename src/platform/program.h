// What a home's entry point calls when the process is prepared. The body is the frame's: src/frame/program.cpp.
#pragma once

#include "platform/process.h"

// Runs a console mode or a role to its end and gives the exit code. UI thread. Never throws.
int RunProgram(const ProcessArguments& arguments);
