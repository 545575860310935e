// A log file of whole lines, for the test programs. Any thread may write.
#pragma once

#include <cstdarg>
#include <cstdio>

inline FILE* lineLogFile = nullptr;

inline bool OpenLineLog(const char* path) {
    lineLogFile = fopen(path, "wb");
    return lineLogFile != nullptr;
}

// Writes one printf-formatted line of at most 511 bytes at once, so that a reader never sees half of it.
__attribute__((format(gnu_printf, 1, 2))) inline void LogLine(const char* format, ...) {
    char line[512];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof line - 1, format, arguments);
    va_end(arguments);
    fprintf(lineLogFile, "%s\n", line);
    fflush(lineLogFile);
}
