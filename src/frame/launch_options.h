// The command line, taken apart in its settled order.
#pragma once

#include "platform/process.h"

#include <string>

enum class LaunchMode {
    SelfTestUpdate,  // console modes: print, end
    ValidateTheme,
    ValidateMacro,
    ScanMacro,
    SelfTest,
    Child,           // roles
    Timeline,
    Master,
};

struct LaunchOptions {
    bool selftestUpdate = false;
    std::string selftestUpdateArg;
    bool validateTheme = false;
    std::string validateThemePath;
    bool validateMacro = false;
    std::string validateMacroPath;
    bool scanMacro = false;
    std::string scanMacroPath;
    std::string updateManifestOverride;
    std::string openThemePath;
    std::string openMacroPath;
    std::string childLine;  // the whole line of a child panel
    LaunchMode mode = LaunchMode::Master;
};

LaunchOptions ParseCommandLine(const ProcessArguments& arguments);
