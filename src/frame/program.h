// The program behind the platform's entry point.
#pragma once

#include "platform/process.h"

// Runs a console mode or a role to its end and gives the exit code. UI thread. Never throws.
int RunProgram(const ProcessArguments& arguments);
