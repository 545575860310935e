// A second, literal implementation of the scanner for comparison with the fast one: it tries every start key by key. It
// shares only the records.
#pragma once

#include "scan/matchers.h"
#include "scan/report.h"

#include <functional>
#include <string>
#include <vector>

namespace ReferenceScanner {

// A press with a copy of its event.
struct Key {
    UnifiedEvent event;
    MacroScan::HeldMods held;
};

struct Scenario {
    std::string id;
    std::string severity;
    std::function<MacroScan::SeqResult(const std::vector<Key>& keys)> match;
};

std::vector<Key> Normalise(const std::vector<UnifiedEvent>& events);
MacroScan::SeqResult Sequence(const std::vector<Key>& keys, const std::vector<MacroScan::KeyPredicate>& steps,
                              const double* maxSpan);
MacroScan::SeqResult Within(const std::vector<Key>& keys, const MacroScan::KeyPredicate& predicate,
                            size_t count, double span);
// Returns the scenarios in the order of MacroScan::Scenarios.
const std::vector<Scenario>& Scenarios();
// Returns the report that ScanReportJson returns for the same events.
std::string ReportJson(const std::vector<UnifiedEvent>& events);

}  // namespace ReferenceScanner
