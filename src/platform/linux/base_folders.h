// The person's base folders for data and settings. Any thread.
#pragma once

#include <string>

// What the variable names, or `inHome` in the home folder; empty where neither is set. A relative path in the variable
// is to be ignored.
std::string BaseFolder(const char* variable, const char* inHome);

// The base directory rules ask whoever writes to make a missing base directory, for its owner only.
void CreateFolderWithParents(const std::string& path);

// The variable's value, empty where it is not set.
std::string EnvironmentText(const char* name);
