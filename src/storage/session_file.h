// The session file on the disk and the recovery file beside it. At every moment one of the two holds a whole session,
// whatever happens to the program or the machine during a save.
//
// A save writes the text to the recovery file first, with its length and checksum, and flushes it to the disk. Only
// then it overwrites the session file in place, flushes it, and marks the recovery file as done.
#pragma once

#include "platform/files.h"

#include <string>
#include <string_view>

// Writes `text` by the steps above. Does nothing if it is the text that was written last and the session file is still
// the one that was written then. A failure leaves the newest whole text in one of the two files. One call at a time.
FileResult WriteSessionFile(const std::string& text);

enum class RecoveryState {
    None,     // no recovery file, or not a whole one
    Pending,  // its text is newer than the session file, which may be half written
    Done,     // the session file was written after it
};
// Returns the state that the head of the recovery file names. Does not read the text, so it may be damaged.
RecoveryState ReadRecoveryState();
// Reads and validates the whole recovery file. *text is undefined for None.
RecoveryState ReadRecoveryFile(std::string* text);
// The same on bytes already in memory. *text points into `bytes`.
RecoveryState ParseRecovery(std::string_view bytes, std::string_view* text);

// Moves the session file out of the way, as "session-damaged-<UTC date and time>.dat" in the data folder. Returns its
// new path, or an empty string if it could not be moved.
std::string KeepDamagedSession();
