// The life of the master: start-up, main loop, shutdown, each in its fixed order. UI thread.
#pragma once

#include "frame/launch_options.h"

#include <string>

constexpr const char* kMainWindowTitle = "Varnelle (Plus Version 1.0.1)";
constexpr const char* kSingleInstanceName = "Local\\VarnelleUI_SingleInstance";

int RunMaster(const LaunchOptions& options);

// Any thread, once the web view exists: runs a script in the main page. Does nothing before and after.
void PageEval(const std::string& script);
