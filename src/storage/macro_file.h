// Reads and writes .vrlmacro files, and the event line that the session file also uses.
#pragma once

#include "model/event.h"
#include "model/profile.h"

#include <string>
#include <string_view>
#include <vector>

struct ParsedMacro {
    std::string name;
    std::string settings;  // profile settings text; empty if the file has no settings line
    std::vector<UnifiedEvent> events;
};

// Returns an empty string, or the sentence for the user with *out unchanged. A malformed line loses only itself.
std::string ReadMacroFile(const std::string& path, ParsedMacro* out);
// The same for bytes in memory (never "Couldn't open...").
std::string ParseMacroText(std::string_view bytes, ParsedMacro* out);
// Writes name, live settings and events. Does nothing if the file cannot be opened; throws std::ios_base::failure if
// not all bytes can be written.
void WriteMacroFile(const std::string& path, const Profile& profile);

// Appends one event as its eight comma-separated fields, without a line end.
void AppendEventLine(std::string& out, const UnifiedEvent& event);
// Appends all events, each with the line end of this backend.
void AppendEventLines(std::string& out, const std::vector<UnifiedEvent>& events);
// Reads a line of a macro file. Missing fields repeat the last field; a missing eighth is 0. Returns false for a line
// to drop.
bool ParseEventLine(std::string_view line, UnifiedEvent* event);
// Reads a line of a session file, in which a missing eighth field repeats the last field too.
bool ParseSessionEventLine(std::string_view line, UnifiedEvent* event);
