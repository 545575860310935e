// The user's base folders for data and settings. Any thread.
#pragma once

#include <string>

// Returns the folder that the variable names, or `inHome` in the home folder, or an empty path if neither is set. Ignores
// a relative path in the variable.
std::string BaseFolder(const char* variable, const char* inHome);

// Creates a missing base directory, readable for its owner only, as the base directory rules ask.
void CreateFolderWithParents(const std::string& path);

// Returns the variable's value, empty if it is not set.
std::string EnvironmentText(const char* name);
