#include "platform/program.h"

#include "app/launch_options.h"
#include "app/main_process.h"
#include "imports/self_check.h"
#include "platform/files.h"
#include "scan/report.h"
#include "storage/macro_file.h"
#include "themes/validator.h"
#include "update/self_check.h"

#include <cstdio>
#include <exception>

namespace {

int SelfTestUpdate(const LaunchOptions& options) {
    EnsureConsole();
    std::string report;
    const bool passed = RunUpdateSelfCheck(options.selftestUpdateArg, &report);
    std::printf("%s", report.c_str());
    std::printf(passed ? "SELFTEST-UPDATE: ALL PASS\n" : "SELFTEST-UPDATE: FAILURES ABOVE\n");
    return passed ? 0 : 1;
}

int ValidateMacro(const LaunchOptions& options) {
    EnsureConsole();
    ParsedMacro macro;
    const std::string error = ReadMacroFile(options.validateMacroPath, &macro);
    if (!error.empty()) {
        std::printf("REJECT %s\n", error.c_str());
        return 1;
    }
    std::printf("OK %d events\n", static_cast<int>(macro.events.size()));
    return 0;
}

int ScanMacroFile(const LaunchOptions& options) {
    EnsureConsole();
    ParsedMacro macro;
    const std::string error = ReadMacroFile(options.scanMacroPath, &macro);
    if (!error.empty()) {
        std::printf("REJECT %s\n", error.c_str());
        return 1;
    }
    std::printf("%s\n", MacroScan::ScanReportJson(MacroScan::ScanMacro(macro.events)).c_str());
    return 0;
}

int ValidateTheme(const LaunchOptions& options) {
    EnsureConsole();
    ThemeRecord theme;
    ThemeReport report;
    if (!ValidateThemeFile(options.validateThemePath, &theme, &report, nullptr)) {
        std::printf("REJECT %s\n", report.message.c_str());
        return 1;
    }
    if (theme.hasSkin) {
        std::printf("OK skin %d pieces%s\n", static_cast<int>(report.pieceCount),
                    report.hasFont ? " +font" : "");
    } else {
        std::printf("OK colours\n");
    }
    return 0;
}

int SelfTest(const LaunchOptions&) {
    EnsureConsole();
    std::string report;
    const bool passed = ImportSelfCheck(SystemTempFolder() + "vrl-selftest-import.vrlmacro", &report);
    std::printf("%s", report.c_str());
    std::printf(passed ? "SELFTEST: ALL PASS\n" : "SELFTEST: FAILURES ABOVE\n");
    return passed ? 0 : 1;
}

struct ModeRow {
    LaunchMode mode;
    int (*run)(const LaunchOptions& options);  // returns the exit code
};

// The modes of this program. A mode of the command line without a row ends with a message.
constexpr ModeRow kModes[] = {
    {LaunchMode::SelfTestUpdate, SelfTestUpdate},
    {LaunchMode::ValidateTheme, ValidateTheme},
    {LaunchMode::ValidateMacro, ValidateMacro},
    {LaunchMode::ScanMacro, ScanMacroFile},
    {LaunchMode::SelfTest, SelfTest},
    {LaunchMode::MainProcess, RunMainProcess},
};

int RunMode(const LaunchOptions& options) {
    for (const ModeRow& row : kModes) {
        if (row.mode == options.mode) {
            return row.run(options);
        }
    }
    EnsureConsole();
    std::fprintf(stderr, "Varnelle: this version does not have what the command line asks for.\n");
    return 1;
}

}  // namespace

int RunProgram(const ProcessArguments& arguments) {
    int exitCode = 1;
    try {
        exitCode = RunMode(ParseCommandLine(arguments));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "Varnelle: %s\n", error.what());
    }
    std::fflush(stdout);
    return exitCode;
}
