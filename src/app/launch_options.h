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
    Child,  // roles
    Timeline,
    Master,
};

struct LaunchOptions {
    LaunchMode mode = LaunchMode::Master;

    // Which console modes were asked for, and with what.
    bool selftestUpdate = false;
    bool validateTheme = false;
    bool validateMacro = false;
    bool scanMacro = false;
    std::string selftestUpdateArg;
    std::string validateThemePath;
    std::string validateMacroPath;
    std::string scanMacroPath;

    std::string updateManifestOverride;  // selects no mode
    std::string openThemePath;           // a file to open; at most one of the two
    std::string openMacroPath;
    std::string childLine;  // the whole line of a child panel
};

// The line as one text always counts, the split arguments only where the line could be split.
LaunchOptions ParseCommandLine(const ProcessArguments& arguments);
