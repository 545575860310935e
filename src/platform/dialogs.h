// The system's own dialogs that ask for a file name. They have no owner window and return when they are closed. Other
// threads keep working meanwhile, and so does the page if the backend can do that. UI thread unless a function says
// otherwise. One at a time: a call while a dialog is open returns Cancelled at once.
#pragma once

#include <span>
#include <string>

struct FileDialogFilter {
    const char* name;     // as the user reads it
    const char* pattern;  // "*.vrlmacro", in upper or lower case; "*.*" is every file
};

enum class FileDialogOutcome {
    Chosen,
    Cancelled,    // closed without a choice
    Unavailable,  // this system has no such dialog, or it failed
};

struct FileDialogResult {
    FileDialogOutcome outcome = FileDialogOutcome::Cancelled;
    std::string path;     // Chosen: the full path
    std::string problem;  // Unavailable: a sentence for the user, with what to do about it
};

// Asks for an existing file. The first filter is selected at first.
FileDialogResult AskForFileToOpen(std::span<const FileDialogFilter> filters);
// Asks for a file to write. It may exist: then the user has agreed to replace it. A name typed without an extension
// gets `defaultExtension` (without a dot). `proposedName` is a file name in UTF-8 without a folder, which the dialog offers
// at first; empty: none.
FileDialogResult AskForFileToSave(std::span<const FileDialogFilter> filters, const char* defaultExtension,
                                  const std::string& proposedName = {});

// Any thread. Dialogs are allowed at first. While they are not, an open one closes and none opens; each returns
// Cancelled. For the end of the program, which does not wait for the user to close a dialog.
void AllowFileDialogs(bool allowed);
