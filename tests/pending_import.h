// Access to the pending import for tests of every kind.
#pragma once

#include "imports/pending_import.h"

#include <string>

// The message about a macro file that cannot be read, unless it comes from the dialog.
constexpr const char* kUnreadableMacro =
    "That macro file could not be imported - it may be corrupted or from a version this build doesn't "
    "recognize. Since this is recorded work, it's worth checking the original file is intact before trying "
    "again.";

// Returns the id in a pending document, or an empty string for another document.
inline std::string PendingIdIn(const std::string& document) {
    const std::string key = R"("pendingId":")";
    const size_t at = document.find(key);
    return at == std::string::npos ? "" : document.substr(at + key.size(), 32);
}

// Returns the id of the pending import, or an empty string if there is none.
inline std::string PendingImportId() {
    return PendingIdIn(GetPendingMacroImport());
}

inline void DropPendingImport() {
    CancelMacroImport(PendingImportId());
}
