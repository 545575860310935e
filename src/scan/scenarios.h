// What the scanner knows: the risks that key presses can be, in the order in which they are looked for.
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
    std::string message;  // the sentence for the person
    std::function<SeqResult(const std::vector<KeyEv>& keys)> match;
};

// Built at first use, by whichever thread comes first, and constant from then on.
const std::vector<Scenario>& Scenarios();

}  // namespace MacroScan
