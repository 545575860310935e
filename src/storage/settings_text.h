// The live settings as the 36-field settings line and the 20-field profile settings text, and back.
#pragma once

#include <string>
#include <string_view>

std::string BuildSettingsLine();
void ApplySettingsLine(std::string_view text);  // fewer than 23 fields change nothing
std::string BuildProfileSettings();
void ApplyProfileSettings(std::string_view text);  // fewer than 18 fields change nothing
// A file's settings line merged over the live setup into a profile settings text.
std::string ProfileSettingsFromLine(std::string_view line);
void ResetToolSettings();
void ParseKeyTargets(std::string_view text);  // "65|66"; bad pieces are skipped; never throws
