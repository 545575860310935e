// The main process: start-up, main loop and shutdown, each in a fixed order. UI thread.
#pragma once

#include "app/launch_options.h"

constexpr const char* kSingleInstanceName = "Local\\VarnelleUI_SingleInstance";

// Runs the main process until its window closes or it is asked to end. Returns the exit code: 1 if there is no page. A
// second instance activates the window of the first and returns 0.
int RunMainProcess(const LaunchOptions& options);
