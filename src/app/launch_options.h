// The parsed command line. Any thread.
#pragma once

#include "platform/process.h"

#include <string>

enum class LaunchMode {
    SelfTestUpdate,  // console modes: print a result and end
    ValidateTheme,
    ValidateMacro,
    ScanMacro,
    SelfTest,
    Child,  // processes with a window
    Timeline,
    MainProcess,
};

struct LaunchOptions {
    LaunchMode mode = LaunchMode::MainProcess;

    // The console modes that the line names, and their arguments.
    bool selftestUpdate = false;
    bool validateTheme = false;
    bool validateMacro = false;
    bool scanMacro = false;
    std::string selftestUpdateArg;
    std::string validateThemePath;
    std::string validateMacroPath;
    std::string scanMacroPath;

    std::string updateManifestOverride;  // selects no mode
    std::string openThemePath;           // file to open; at most one of the two is set
    std::string openMacroPath;
    std::string childLine;  // the whole line of a panel process
};

// Returns the mode and values of a command line. The split arguments are read only if the line could be split; the line
// as one string is always read.
LaunchOptions ParseCommandLine(const ProcessArguments& arguments);
