#include "platform/linux/autostart_entry.h"

#include "base/text.h"

namespace {

constexpr std::string_view kGroup = "[Desktop Entry]";

// Returns the command of an Exec line before the escapes of the file format: the path in quotes, with `%` doubled because
// a single one is a field code.
std::string QuotedCommand(std::string_view path) {
    // NOTE: GLib looks for the program before it replaces a doubled percent sign, does not find it and ignores the entry.
    // HACK: for a path with a percent sign the command is another program that only starts ours.
    std::string command = path.find('%') == std::string_view::npos ? "\"" : "nice -n 0 \"";
    for (const char c : path) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') {
            command += '\\';
        } else if (c == '%') {
            command += '%';
        }
        command += c;
    }
    return command + '"';
}

// Returns a value as the file stores it: each backslash of the command is escaped once more.
std::string EscapedValue(std::string_view text) {
    std::string value;
    for (const char c : text) {
        switch (c) {
        case '\\':
            value += "\\\\";
            break;
        case '\n':
            value += "\\n";
            break;
        case '\t':
            value += "\\t";
            break;
        case '\r':
            value += "\\r";
            break;
        default:
            value += c;
        }
    }
    return value;
}

std::string ExecValue(std::string_view programPath) {
    return EscapedValue(QuotedCommand(programPath));
}

}  // namespace

std::string AutostartEntryText(std::string_view programPath) {
    std::string text(kGroup);
    text += "\nType=Application\nName=Varnelle\nComment=Input automation\nExec=";
    text += ExecValue(programPath);
    text += "\nTerminal=false\n";
    return text;
}

bool AutostartEntryStands(std::string_view entry, std::string_view programPath) {
    bool inGroup = false;
    bool isApplication = false;
    bool isSame = false;
    TextLines lines(entry);
    std::string_view line;
    while (lines.Next(&line)) {
        line = TrimSpaces(line);
        if (StartsWith(line, "[")) {
            inGroup = line == kGroup;
            continue;
        }
        const size_t equals = line.find('=');
        if (!inGroup || equals == std::string_view::npos) {
            continue;
        }
        const std::string_view key = TrimSpaces(line.substr(0, equals));
        const std::string_view value = TrimSpaces(line.substr(equals + 1));
        if ((key == "Hidden" && value == "true") ||
            (key == "X-GNOME-Autostart-enabled" && value == "false")) {
            return true;
        }
        if (key == "Type") {
            isApplication = value == "Application";
        } else if (key == "Exec") {
            isSame = value == ExecValue(programPath);
        }
    }
    return isApplication && isSame;
}
