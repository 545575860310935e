// Checks that the update rules hold in this build: a file of signed cases, one JSON object per line, and a fixed list
// of download addresses.
#pragma once

#include <string>

// Appends one line for each case to *report, beginning with "PASS " or "FAIL ". Returns true only if every case passes.
bool RunUpdateSelfCheck(const std::string& vectorsPath, std::string* report);
