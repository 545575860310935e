// The hold: a macro from outside in which the scan finds anything waits in one slot until the person has seen the
// findings and said yes. It is not saved; a second held macro replaces the first. Any thread.
#pragma once

#include "scan/report.h"
#include "storage/macro_file.h"

#include <string>
#include <string_view>
#include <vector>

struct OfferResult {
    bool committed = false;  // nothing was found and the profile was added
    std::string pendingId;   // of the held macro; empty if committed
    std::string level;       // of the scan
    std::vector<MacroScan::ScanMatch> matches;
};

// Scans the macro, with no lock held, and adds it as a profile or holds it. The caller tells the page.
OfferResult OfferMacro(ParsedMacro macro);
// The document of what was offered: {"outcome":"imported"} or the pending document.
std::string OfferDocument(const OfferResult& offer);

// The page's answers. An id that is not that of the macro held now does nothing.
void ConfirmMacroImport(std::string_view id);  // adds the profile and tells the page
void CancelMacroImport(std::string_view id);
// The pending document, or {"outcome":"none"}.
std::string GetPendingMacroImport();
