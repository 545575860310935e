// The held macro as the tests of every kind ask for it.
#pragma once

#include "imports/pending_import.h"

#include <string>

// What the person reads of a file from outside that cannot be read, other than by the dialog.
constexpr const char* kUnreadableMacro =
    "That macro file could not be imported - it may be corrupted or from a version this build doesn't "
    "recognize. Since this is recorded work, it's worth checking the original file is intact before trying "
    "again.";

// The id in a pending document; empty if it is another document.
inline std::string PendingIdIn(const std::string& document) {
    const std::string key = R"("pendingId":")";
    const size_t at = document.find(key);
    return at == std::string::npos ? "" : document.substr(at + key.size(), 32);
}

// Of the macro held now; empty if there is none.
inline std::string HeldId() {
    return PendingIdIn(GetPendingMacroImport());
}

inline void DropHeldMacro() {
    CancelMacroImport(HeldId());
}
