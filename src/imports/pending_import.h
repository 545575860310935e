// The pending import: an imported macro with findings waits in one slot until the user has seen the findings and
// accepts or rejects it. It is not saved. A second one replaces the first. Any thread.
#pragma once

#include "scan/report.h"
#include "storage/macro_file.h"

#include <string>
#include <string_view>
#include <vector>

struct OfferResult {
    bool committed = false;  // no findings, the profile was added
    std::string pendingId;   // empty if committed
    std::string level;       // of the scan
    std::vector<MacroScan::ScanMatch> matches;
};

// Scans the macro, with no lock held. Adds it as a profile, or makes it the pending import. The caller notifies the
// page.
OfferResult OfferMacro(ParsedMacro macro);
// Returns the outcome document of an offer: {"outcome":"imported"} or the pending document.
std::string OfferDocument(const OfferResult& offer);

// The user's decision. Does nothing unless the id is that of the current pending import.
void ConfirmMacroImport(std::string_view id);  // adds the profile and notifies the page
void CancelMacroImport(std::string_view id);
// Returns the pending document, or {"outcome":"none"}.
std::string GetPendingMacroImport();
// Returns a summary of the pending import over its time, or {}: {"pendingId":ID,"name":TEXT,"events":COUNT,
// "seconds":LENGTH,"moves":[...],"clicks":[...],"keys":[...]}. Each list has kSummaryParts counts of events in equal
// parts of the length. The wheel counts as clicks. Linear in the macro.
constexpr int kSummaryParts = 100;
std::string GetPendingMacroSummary();
