// The page's profile commands. UI thread. All but GetProfiles and SyncProfileSettings refuse while a recording runs.
#pragma once

#include <string>
#include <string_view>

void AddProfile(std::string_view name);
void DeleteProfile();
void SwitchProfile(std::string_view index);
void ClearProfile();
std::string GetProfiles();  // JSON
// Any thread. Copies the live tool setup into the current profile.
void SyncProfileSettings();
