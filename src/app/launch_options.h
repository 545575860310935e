// Parses the command line, in its settled order.
#pragma once

#include "platform/process.h"

#include <string>

enum class LaunchMode {
    SelfTestUpdate,  // console modes: print and end
    ValidateTheme,
    ValidateMacro,
    ScanMacro,
    SelfTest,
    Child,  // roles
    Timeline,
    MainProcess,
};

struct LaunchOptions {
    LaunchMode mode = LaunchMode::MainProcess;

    // The console modes that were given, and their values.
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

// Always reads the line as one string, and the split arguments only if the line could be split.
LaunchOptions ParseCommandLine(const ProcessArguments& arguments);
