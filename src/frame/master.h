// The life of the master: start-up, main loop, shutdown, each in its fixed order. UI thread.
#pragma once

#include "frame/launch_options.h"

constexpr const char* kSingleInstanceName = "Local\\VarnelleUI_SingleInstance";

int RunMaster(const LaunchOptions& options);
