// Reading and writing .vrlmacro files, and the event line that the session file shares with them.
#pragma once

#include "model/event.h"
#include "model/profile.h"

#include <string>
#include <string_view>
#include <vector>

struct ParsedMacro {
    std::string name;
    std::string settings;  // profile settings text; empty when the file has no settings line
    std::vector<UnifiedEvent> events;
};

// Empty on success; otherwise the sentence for the person, and *out is untouched. Bad lines cost only themselves.
std::string ReadMacroFile(const std::string& path, ParsedMacro* out);
// The same on bytes already in memory (never "Couldn't open...").
std::string ParseMacroText(std::string_view bytes, ParsedMacro* out);
// Name, live settings, events. Silent if the file cannot be opened; throws std::ios_base::failure if the bytes cannot
// all be written.
void WriteMacroFile(const std::string& path, const Profile& profile);

// One event as its eight comma-separated fields, without a line end. Appends.
void AppendEventLine(std::string& out, const UnifiedEvent& event);
// All of them, each with this home's line end. Appends.
void AppendEventLines(std::string& out, const std::vector<UnifiedEvent>& events);
// A line of a macro file: missing positions repeat the last field present; a missing eighth is 0. False drops it.
bool ParseEventLine(std::string_view line, UnifiedEvent* event);
// A line of a session file: all eight positions are converted from what is there.
bool ParseSessionEventLine(std::string_view line, UnifiedEvent* event);
