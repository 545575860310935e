#include "platform/win32/arguments.h"

#include "platform/shared/command_line.h"

#include <windows.h>

#include <shellapi.h>

ProcessArguments ReadProcessArguments() {
    ProcessArguments result;
    // NOTE: the C start-up code compares signed bytes, so that it ends an unquoted program name at its first byte above
    // 0x7F, and the rest of the name becomes the begin of WinMain's line.
    // HACK: cut the line here.
    result.line = SkipProgramName(GetCommandLineA());
    int count = 0;
    LPWSTR* arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!arguments) {
        return result;
    }
    result.wideViewValid = true;
    for (int i = 1; i < count; ++i) {
        const std::wstring_view argument = arguments[i];
        result.arguments.emplace_back(argument.begin(), argument.end());
    }
    LocalFree(arguments);
    return result;
}
