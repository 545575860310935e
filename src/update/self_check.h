// Checks the update rules of this build with a file of signed cases, one JSON object per line, and a fixed list of
// download addresses. Any thread.
#pragma once

#include <string>

// Appends one line per check to *report, each with "PASS " or "FAIL " in front. Returns whether all checks passed.
bool RunUpdateSelfCheck(const std::string& vectorsPath, std::string* report);
