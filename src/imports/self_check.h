// The self-check of the macro import, run by --selftest.
#pragma once

#include <string>

// Reads sample files that it writes to `tempPath` and deletes again. Appends one line for each check to *log, "PASS "
// or "FAIL " and its name. Returns true if all pass. Does not change the live settings.
bool ImportSelfCheck(const std::string& tempPath, std::string* log);
