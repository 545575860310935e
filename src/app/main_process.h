// The life of the main process: start-up, main loop, shutdown, each in its fixed order. UI thread.
#pragma once

#include "app/launch_options.h"

constexpr const char* kSingleInstanceName = "Local\\VarnelleUI_SingleInstance";

int RunMainProcess(const LaunchOptions& options);
