// The check of the macro import that a person can run.
#pragma once

#include <string>

// Reads sample files that it writes to `tempPath` and deletes again. Appends one line a check to *log, "PASS " or
// "FAIL " and its name; true if all pass. Changes nothing of the live setup.
bool ImportSelfCheck(const std::string& tempPath, std::string* log);
