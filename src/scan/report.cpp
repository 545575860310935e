#include "scan/report.h"

#include "base/json_writer.h"
#include "scan/matchers.h"
#include "scan/scenarios.h"

#include <algorithm>
#include <map>
#include <utility>

namespace MacroScan {

namespace {

struct Suppression {
    const char* match;
    const char* removes;
};

constexpr Suppression kSuppressions[] = {
    {"copy-paste-send", "copy-paste"},
    {"run-command", "system-keys"},
    {"start-launch", "system-keys"},
};

bool StandsBefore(const ScanMatch& a, const ScanMatch& b) {
    return a.severity == b.severity ? a.atSec < b.atSec : a.severity == "DANGER";
}

// Sorts by hand, because a time that is not a number makes the result of the library's sorts undefined.
void SortStably(std::vector<ScanMatch>* matches) {
    for (size_t end = 1; end < matches->size(); ++end) {
        for (size_t i = end; i > 0 && StandsBefore((*matches)[i], (*matches)[i - 1]); --i) {
            std::swap((*matches)[i], (*matches)[i - 1]);
        }
    }
}

}  // namespace

ScanReport ScanMacro(const std::vector<UnifiedEvent>& events) {
    const std::vector<KeyEv> keys = NormaliseKeys(events);
    std::map<std::string, ScanMatch> found;
    for (const Scenario& scenario : Scenarios()) {
        const SeqResult result = scenario.match(keys);
        if (result.matched) {
            found[scenario.id] = {scenario.id, scenario.severity, scenario.message, scenario.title,
                                  result.atSec};
        }
    }
    for (const Suppression& row : kSuppressions) {
        if (found.count(row.match) != 0) {
            found.erase(row.removes);
        }
    }
    ScanReport report;
    for (auto& [id, match] : found) {
        report.matches.push_back(std::move(match));
    }
    SortStably(&report.matches);
    const bool danger = std::any_of(report.matches.begin(), report.matches.end(),
                                    [](const ScanMatch& match) { return match.severity == "DANGER"; });
    if (danger) {
        report.level = "danger";
    } else if (!report.matches.empty()) {
        report.level = "caution";
    }
    return report;
}

std::string ScanReportJson(const ScanReport& report) {
    std::string text;
    JsonWriter json(text);
    json.BeginObject();
    json.PlainTextField("level", report.level);
    json.BeginArrayField("matches");
    for (const ScanMatch& match : report.matches) {
        json.BeginObject();
        json.PlainTextField("id", match.id);
        json.PlainTextField("severity", match.severity);
        json.RealField("atSec", match.atSec);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    return text;
}

}  // namespace MacroScan
