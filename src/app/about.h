// What the program says about itself, for the page. UI thread.
#pragma once

#include <string>

// Returns version, data folder, system and the licences of the parts in the program folder, as JSON.
std::string AboutReport();
// Shows the data folder in the user's file manager.
void OpenDataFolder();
