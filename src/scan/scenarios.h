// The risky patterns of key presses that the scanner knows, in the order in which it looks for them.
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
    std::string message;  // the sentence for the user
    std::function<SeqResult(const std::vector<KeyEv>& keys)> match;
};

// Returns the list, which the first call builds and no call changes. Any thread.
const std::vector<Scenario>& Scenarios();

}  // namespace MacroScan
