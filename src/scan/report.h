// Reports the risks of an imported macro as one level and a list of findings. Only reads its argument; any thread. The
// one failure is std::bad_alloc.
#pragma once

#include "model/event.h"

#include <string>
#include <vector>

namespace MacroScan {

struct ScanMatch {
    std::string id;
    std::string severity;  // "DANGER" or "CAUTION"
    std::string message;   // the sentence for the user
    std::string title;
    double atSec = 0.0;  // start of the pattern, seconds into the macro
};

struct ScanReport {
    std::string level = "none";  // "none", "caution" or "danger"
    // "DANGER" first, then the earliest, then by id. Empty exactly when the level is "none".
    std::vector<ScanMatch> matches;
};

ScanReport ScanMacro(const std::vector<UnifiedEvent>& events);
// Returns {"level":...,"matches":[{"id":...,"severity":...,"atSec":...}]}, without spaces. A time that is not finite is
// written as a stream writes it: inf or nan.
std::string ScanReportJson(const ScanReport& report);

}  // namespace MacroScan
