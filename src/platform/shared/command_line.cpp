#include "platform/shared/command_line.h"

namespace {

// Bytes from 0x80 on are letters of a name, whatever the sign of char is.
bool IsWhiteSpace(char byte) {
    return byte != '\0' && static_cast<unsigned char>(byte) <= ' ';
}

}  // namespace

const char* SkipProgramName(const char* line) {
    bool quoted = false;
    while (*line != '\0' && (quoted || !IsWhiteSpace(*line))) {
        if (*line == '"') {
            quoted = !quoted;
        }
        ++line;
    }
    while (IsWhiteSpace(*line)) {
        ++line;
    }
    return line;
}
