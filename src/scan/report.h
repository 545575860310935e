// What a macro from outside could do, as one level and a list of findings. Reads its argument only; any thread. The
// one failure is std::bad_alloc.
#pragma once

#include "model/event.h"

#include <string>
#include <vector>

namespace MacroScan {

struct ScanMatch {
    std::string id;
    std::string severity;  // "DANGER" or "CAUTION"
    std::string message;   // the sentence for the person
    std::string title;
    double atSec = 0.0;  // where the pattern begins, seconds into the macro
};

struct ScanReport {
    std::string level = "none";  // "none", "caution" or "danger"
    // "DANGER" first, then the earliest, then by id. Empty exactly when the level is "none".
    std::vector<ScanMatch> matches;
};

ScanReport ScanMacro(const std::vector<UnifiedEvent>& events);
// {"level":...,"matches":[{"id":...,"severity":...,"atSec":...}]}, without blanks. A time that is no finite number stands
// there as a stream writes it, "inf" or "nan".
std::string ScanReportJson(const ScanReport& report);

}  // namespace MacroScan
