// The table of risky patterns that the scanner looks for, in scan order.
#pragma once

#include "scan/matchers.h"

#include <functional>
#include <string>
#include <vector>

namespace MacroScan {

struct Scenario {
    std::string id;        // stable; used in reports and for suppression
    std::string severity;  // "DANGER" or "CAUTION"
    std::string title;
    std::string message;  // one sentence or two for the user
    std::function<SeqResult(const std::vector<KeyEv>& keys)> match;
};

// Returns the table. Built at the first call and constant from then on; any thread.
const std::vector<Scenario>& Scenarios();

}  // namespace MacroScan
