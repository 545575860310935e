// The page's profile commands. UI thread unless noted. AddProfile, DeleteProfile, SwitchProfile and ClearProfile do
// nothing while a recording runs.
#pragma once

#include "base/mutex.h"
#include "model/engine_state.h"
#include "storage/macro_file.h"

#include <string>
#include <string_view>

void AddProfile(std::string_view name);
void DeleteProfile();
void SwitchProfile(std::string_view index);
void ClearProfile();
std::string GetProfiles();  // JSON
// Any thread. Adds an imported macro and makes it current, under its own name or the first free "name (2)" to
// "name (999)". The live settings stay, unless the macro has no settings: then they become the defaults.
void AppendProfile(ParsedMacro macro) REQUIRES(macroMutex);
// Any thread. Copies the live tool settings into the current profile.
void SyncProfileSettings();
// Adds a profile named DefaultProfileName if there is none.
void EnsureDefaultProfile();
