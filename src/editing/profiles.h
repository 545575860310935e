// Profile operations. UI thread, unless a function says otherwise.
#pragma once

#include "base/mutex.h"
#include "editing/refusal.h"
#include "model/engine_state.h"
#include "storage/macro_file.h"

#include <string>
#include <string_view>

// Page commands. These four do nothing while a recording runs.
// Adds an empty profile with the live tool settings and makes it current. An empty name adds nothing.
void AddProfile(std::string_view name);
// Deletes the current profile and makes its neighbour current. The default profile is cleared instead; the last profile
// stays.
void DeleteProfile();
// Makes the profile at a decimal index current and applies its settings. Another text changes nothing.
void SwitchProfile(std::string_view index);
// Removes all events of the current profile and resets the tool settings.
void ClearProfile();

// Page commands. Indexes are positions in the list of profiles.
// Renames a profile. Refuses an empty name, and to give or take the name of the default profile.
Refusal RenameProfile(int32_t index, std::string_view name);
// Puts a copy under a free name behind the profile and makes the copy current. Not while a recording runs.
Refusal DuplicateProfile(int32_t index);
// Moves a profile to another position. The same profile stays current. Not while a recording runs.
Refusal MoveProfile(int32_t from, int32_t to);

// Page command. Returns the list of profiles as JSON.
std::string GetProfiles();

// Any thread. Adds an imported macro and makes it current, under its own name or the first free one of "name (2)" to
// "name (999)". A macro without settings resets the live tool settings; otherwise they stay.
void AppendProfile(ParsedMacro macro) REQUIRES(macroMutex);
// Any thread. Copies the live tool settings to the current profile.
void SyncProfileSettings();
// Adds a profile named DefaultProfileName at the front, unless one exists.
void EnsureDefaultProfile();
