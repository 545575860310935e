// The pending import, for the tests of every kind.
#pragma once

#include "imports/pending_import.h"

#include <string>

// The error message for a file that cannot be read, unless it came from the file dialog.
constexpr const char* kUnreadableMacro =
    "That macro file could not be imported - it may be corrupted or from a version this build doesn't "
    "recognize. Since this is recorded work, it's worth checking the original file is intact before trying "
    "again.";

// Returns the id in a pending document, or an empty string for any other document.
inline std::string PendingIdIn(const std::string& document) {
    const std::string key = R"("pendingId":")";
    const size_t at = document.find(key);
    return at == std::string::npos ? "" : document.substr(at + key.size(), 32);
}

// Returns the id of the pending import, or an empty string without one.
inline std::string PendingId() {
    return PendingIdIn(GetPendingMacroImport());
}

inline void DropPendingImport() {
    CancelMacroImport(PendingId());
}
