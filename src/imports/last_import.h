// What came of the last import, beyond the outcome document: for a page that says what came in, or why nothing did. Any
// thread. Its lock is a leaf. A closed dialog is no import.
#pragma once

#include "storage/macro_file.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

enum class ImportProblem {
    None,
    NotFound,    // there is no such file
    Unreadable,  // there is one, but it cannot be read
    TooLarge,
    OldFormat,  // a format that is not supported any more
    NoName,     // the file lacks its first line
};

// The profile that an import has added.
struct ImportedProfile {
    std::string name;
    uint64_t id = 0;
};

// Returns the last part of a path.
std::string FileNameOf(const std::string& path);

// What is remembered of an imported macro.
struct ImportFacts {
    std::string path;      // of the file
    std::string name;      // in the file
    std::string settings;  // of the file: profile settings text, or empty
    size_t events = 0;
    size_t skippedLines = 0;
    double seconds = 0;  // the largest time that is a number
};
ImportFacts FactsOfImport(const std::string& path, const ParsedMacro& macro);

// Each begins a new import and replaces what was known of the one before.
void NoteImportFailed(const std::string& path, ImportProblem problem);
void NoteImportDone(ImportFacts facts, const ImportedProfile& profile);
void NoteImportPending(ImportFacts facts, const std::string& pendingId);

// The pending import with this id was added or dropped. Does nothing if it is not the last import.
void NotePendingConfirmed(std::string_view pendingId, const ImportedProfile& profile);
void NotePendingDropped(std::string_view pendingId);

// Page commands. UI thread.
// Returns the last import as JSON; its id is 0 if there was none.
std::string LastImportReport();
// Applies the tool settings of the last import's file to the tools and its profile. Returns false if the file has none or
// its profile is not current.
bool UseImportedSettings();

// Forgets the last import. Tests only.
void ResetLastImport();
