#include "platform/win32/arguments.h"

#include <windows.h>

#include <shellapi.h>

// Without a code page: a character above 255 is altered.
static std::string NarrowByLowByte(const wchar_t* text) {
    std::string narrow;
    for (; *text; ++text) {
        narrow.push_back(static_cast<char>(*text & 0xFF));
    }
    return narrow;
}

ProcessArguments ReadProcessArguments(const char* narrowLine) {
    ProcessArguments result;
    result.line = narrowLine ? narrowLine : "";
    int count = 0;
    LPWSTR* arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!arguments) {
        return result;
    }
    result.wideViewValid = true;
    for (int i = 1; i < count; ++i) {
        result.arguments.push_back(NarrowByLowByte(arguments[i]));
    }
    LocalFree(arguments);
    return result;
}
