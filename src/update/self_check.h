// Proof that the update rules hold in this build: a file of signed cases, one JSON object a line, and a fixed list of
// download addresses.
#pragma once

#include <string>

// Appends one line for each thing tried to *report, "PASS " or "FAIL " in front. True only if every line passed.
bool RunUpdateSelfCheck(const std::string& vectorsPath, std::string* report);
