#include "app/launch_options.h"

#include "base/text.h"

#include <algorithm>
#include <string_view>

namespace {

struct ValueOption {
    std::string_view prefix;
    std::string LaunchOptions::*value;
    bool LaunchOptions::*given;  // null for a modifier, which selects no mode
};

constexpr ValueOption kValueOptions[] = {
    {"--selftest-update=", &LaunchOptions::selftestUpdateArg, &LaunchOptions::selftestUpdate},
    {"--update-manifest=", &LaunchOptions::updateManifestOverride, nullptr},
    {"--validate-theme=", &LaunchOptions::validateThemePath, &LaunchOptions::validateTheme},
    {"--validate-macro=", &LaunchOptions::validateMacroPath, &LaunchOptions::validateMacro},
    {"--scan-macro=", &LaunchOptions::scanMacroPath, &LaunchOptions::scanMacro},
};

// Returns whether an argument begins with these ASCII characters. Compared as it came: an argument that only looks so
// after it was narrowed is not an option.
bool BeginsWith(std::u16string_view argument, std::string_view prefix) {
    return argument.size() >= prefix.size() && std::equal(prefix.begin(), prefix.end(), argument.begin());
}

void ReadValueOptions(const ProcessArguments& arguments, LaunchOptions* options) {
    if (!arguments.wideViewValid) {
        return;
    }
    for (const std::u16string& argument : arguments.arguments) {
        for (const ValueOption& option : kValueOptions) {
            if (BeginsWith(argument, option.prefix)) {
                options->*option.value = NarrowToLowBytes(argument.substr(option.prefix.size()));
                if (option.given != nullptr) {
                    options->*option.given = true;
                }
                break;
            }
        }
    }
}

// Selects the first of these modes that the line names, at any position. Returns false if it names none.
bool ChooseConsoleMode(LaunchOptions* options) {
    if (options->selftestUpdate) {
        options->mode = LaunchMode::SelfTestUpdate;
    } else if (options->validateTheme) {
        options->mode = LaunchMode::ValidateTheme;
    } else if (options->validateMacro) {
        options->mode = LaunchMode::ValidateMacro;
    } else if (options->scanMacro) {
        options->mode = LaunchMode::ScanMacro;
    } else {
        return false;
    }
    return true;
}

// The whole line is one path, spaces included.
void ReadOpenPath(std::string_view line, LaunchOptions* options) {
    std::string_view path = TrimSpaces(line);
    if (path.size() >= 2 && path.front() == '"' && path.back() == '"') {
        path = path.substr(1, path.size() - 2);
    }
    if (EndsWithNoCase(path, ".vrltheme")) {
        options->openThemePath = path;
    } else if (EndsWithNoCase(path, ".vrlmacro")) {
        options->openMacroPath = path;
    }
}

}  // namespace

LaunchOptions ParseCommandLine(const ProcessArguments& arguments) {
    LaunchOptions options;
    ReadValueOptions(arguments, &options);
    if (ChooseConsoleMode(&options)) {
        return options;
    }

    // From here on the line is one string: a path that contains the word of a mode selects that mode.
    const std::string& line = arguments.line;
    if (line.find("--selftest") != std::string::npos) {
        options.mode = LaunchMode::SelfTest;
        return options;
    }
    if (line.find("--child") != std::string::npos) {
        options.mode = LaunchMode::Child;
        options.childLine = line;
        return options;
    }
    if (TrimSpaces(line) == "--timeline") {
        options.mode = LaunchMode::Timeline;
    }
    ReadOpenPath(line, &options);
    return options;
}
