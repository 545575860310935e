// The live settings as text: the 36 comma fields of the settings line and the 20 of the profile settings text. Their
// fields are those of storage/settings_table.h. Any thread; a reader of the settings may see one update half done.
#pragma once

#include <string>
#include <string_view>

// Returns the live settings as a settings line, without prefix and line end.
std::string BuildSettingsLine();
// Stores the settings of a line. Fewer than 23 fields change nothing. A malformed number ends its group of fields: the
// fields before it are stored, and the next group is still read.
void ApplySettingsLine(std::string_view text);

// Returns the live tool settings as a profile settings text.
std::string BuildProfileSettings();
// Stores the tool settings of a profile. Fewer than 18 fields change nothing. A malformed number ends the update with
// the earlier fields stored and targets and chord unchanged.
void ApplyProfileSettings(std::string_view text);

// Stores the tool settings of a profile that may never have stored them: then the text is empty and stands for the defaults.
void ApplyStoredSettings(std::string_view text);

// Returns the profile settings text of a macro file's settings line. Groups that the line lacks, or that hold a
// malformed number, come from the live settings. Stores nothing.
std::string ProfileSettingsFromLine(std::string_view line);

// Sets autoclicker and key spammer to their defaults. Hotkeys and macro settings stay.
void ResetToolSettings();
