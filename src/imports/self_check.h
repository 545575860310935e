// The check of the macro import that a user can run. Main thread of a process without engines.
#pragma once

#include <string>

// Writes sample files to `tempPath`, reads them and deletes them. Appends one line per check to *log: "PASS " or "FAIL "
// and the check's name. Returns whether all checks passed. Leaves the live settings unchanged.
bool ImportSelfCheck(const std::string& tempPath, std::string* log);
