// Scans a macro for risky patterns and reports a level and a list of findings. Pure functions; any thread. They fail
// only with std::bad_alloc.
#pragma once

#include "model/event.h"

#include <string>
#include <vector>

namespace MacroScan {

struct ScanMatch {
    std::string id;        // of the scenario
    std::string severity;  // "DANGER" or "CAUTION"
    std::string message;   // one sentence or two for the user
    std::string title;
    double atSec = 0.0;  // time of the pattern's first press, seconds into the macro
};

struct ScanReport {
    std::string level = "none";  // "none", "caution" or "danger"
    // "DANGER" first, then the earliest, then by id. Empty exactly when the level is "none".
    std::vector<ScanMatch> matches;
};

// Scans for all scenarios. A finding that another one includes is left out. No findings does not prove a macro safe.
ScanReport ScanMacro(const std::vector<UnifiedEvent>& events);
// Returns {"level":...,"matches":[{"id":...,"severity":...,"atSec":...}]} without spaces. A time that is not finite is
// written as a stream writes it, "inf" or "nan", which is not JSON.
std::string ScanReportJson(const ScanReport& report);

}  // namespace MacroScan
