// Reads and writes .vrlmacro files, and the event line that the session file shares with them. Any thread.
#pragma once

#include "model/event.h"
#include "model/profile.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

struct ParsedMacro {
    std::string name;
    std::string settings;  // profile settings text; empty: the file has no settings line
    std::vector<UnifiedEvent> events;
    size_t skippedLines = 0;  // lines with text that are no event
};

// The sentences for a file whose text cannot be read.
inline constexpr std::string_view kMacroFileNotOpened = "Couldn't open that macro file.";
inline constexpr std::string_view kMacroFileTooLarge = "That macro file is too large.";

// Reads a macro file. Returns an empty string, or the sentence for the user with *out unchanged. Malformed event lines
// are skipped.
std::string ReadMacroFile(const std::string& path, ParsedMacro* out);
// Reads the content of a macro file, as ReadMacroFile does.
std::string ParseMacroText(std::string_view bytes, ParsedMacro* out);
// Writes name, live settings and events. A file that cannot be opened is not reported. Throws std::ios_base::failure if
// the bytes cannot all be written.
void WriteMacroFile(const std::string& path, const Profile& profile);

// As WriteMacroFile, but returns whether the file was written.
bool TryWriteMacroFile(const std::string& path, const Profile& profile);

// Appends one event as its eight comma-separated fields, without a line end.
void AppendEventLine(std::string& out, const UnifiedEvent& event);
// Appends a line for each event, with the line end of the system.
void AppendEventLines(std::string& out, const std::vector<UnifiedEvent>& events);
// Reads a line of a macro file. A missing field repeats the last one present; a missing eighth is 0. Returns false, with
// *event unchanged, for a line without a field or with a malformed number.
bool ParseEventLine(std::string_view line, UnifiedEvent* event);
// Reads a line of a session file: as ParseEventLine, but a missing eighth field repeats the last one too.
bool ParseSessionEventLine(std::string_view line, UnifiedEvent* event);
