// The scanner written the plain way, key by key from every start, for comparison with the one that is quick. Shares
// only the records with it.
#pragma once

#include "scan/matchers.h"
#include "scan/report.h"

#include <functional>
#include <string>
#include <vector>

namespace LiteralScan {

// A normalised press, its event copied.
struct Key {
    UnifiedEvent event;
    MacroScan::HeldMods held;
};

struct Trigger {
    std::string id;
    std::string severity;
    std::function<MacroScan::SeqResult(const std::vector<Key>& keys)> match;
};

std::vector<Key> Normalise(const std::vector<UnifiedEvent>& events);
MacroScan::SeqResult Sequence(const std::vector<Key>& keys, const std::vector<MacroScan::KeyPredicate>& steps,
                              const double* maxSpan);
MacroScan::SeqResult Within(const std::vector<Key>& keys, const MacroScan::KeyPredicate& predicate,
                            size_t count, double span);
// In the order of the scenarios.
const std::vector<Trigger>& Triggers();
// The whole report in its text form.
std::string ReportJson(const std::vector<UnifiedEvent>& events);

}  // namespace LiteralScan
