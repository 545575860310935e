// The page's profile commands. UI thread unless said otherwise. AddProfile, DeleteProfile, SwitchProfile and
// ClearProfile refuse while a recording runs.
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
// "name (999)". The live setup stays, but for a macro without settings, which brings the defaults.
void AppendProfile(ParsedMacro macro) REQUIRES(macroMutex);
// Any thread. Copies the live tool setup into the current profile.
void SyncProfileSettings();
// A profile named DefaultProfileName exists afterwards.
void EnsureDefaultProfile();
