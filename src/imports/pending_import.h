// The pending import: a macro from outside with findings waits in one slot until the user has seen the findings and
// decides. The slot is not saved. A second pending import replaces the first. Any thread. Lock order: the lock of the
// slot, then macroMutex.
#pragma once

#include "scan/report.h"
#include "storage/macro_file.h"

#include <string>
#include <string_view>
#include <vector>

struct OfferResult {
    bool committed = false;  // no findings: the profile was added
    std::string pendingId;   // empty if committed
    std::string level;       // of the scan: "none", "caution" or "danger"
    std::vector<MacroScan::ScanMatch> matches;
};

// Scans the macro, without a lock, and adds it as a profile or makes it the pending import. The caller notifies the page.
// `path` is the file that it comes from.
OfferResult OfferMacro(ParsedMacro macro, const std::string& path = {});
// Returns {"outcome":"imported"} or the pending document: {"outcome":"pending","pendingId":ID,"level":LEVEL,"matches":
// [{"severity":...,"message":...,"atSec":...}]}.
std::string OfferDocument(const OfferResult& offer);

// Adds the pending import with this id as a profile and notifies the page. Any other id does nothing.
void ConfirmMacroImport(std::string_view id);
// Drops the pending import with this id. Any other id does nothing.
void CancelMacroImport(std::string_view id);
// Returns the pending document, or {"outcome":"none"}.
std::string GetPendingMacroImport();

constexpr int kSummaryParts = 100;
// Returns a summary of the pending import over time, or {}: {"pendingId":ID,"name":TEXT,"events":COUNT,"seconds":LENGTH,
// "moves":[...],"clicks":[...],"keys":[...]}. Each list has kSummaryParts counts of events over equal parts of the
// length. Wheel events count as clicks. Takes time in proportion to the macro.
std::string GetPendingMacroSummary();
