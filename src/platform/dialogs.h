// The system's own dialogs that ask for a file name. They are shown without an owner window and return when they are
// closed; the other threads serve on meanwhile, and so does the page where the home can do that. UI thread unless said
// otherwise. One at a time: a call while a dialog is open gives Cancelled at once.
#pragma once

#include <span>
#include <string>

struct FileDialogFilter {
    const char* name;     // as the person reads it
    const char* pattern;  // "*.vrlmacro", in any case of letters; "*.*" is every file
};

enum class FileDialogOutcome {
    Chosen,
    Cancelled,    // closed without a choice
    Unavailable,  // this system shows no such dialog, or it broke
};

struct FileDialogResult {
    FileDialogOutcome outcome = FileDialogOutcome::Cancelled;
    std::string path;     // Chosen: the full path
    std::string problem;  // Unavailable: the sentence for the person, with what to do about it
};

// An existing file. The first filter is the one selected at first.
FileDialogResult AskForFileToOpen(std::span<const FileDialogFilter> filters);
// A file to write, which may exist: the person has then agreed to its loss. A name typed without an extension gets
// `defaultExtension` (without a dot).
FileDialogResult AskForFileToSave(std::span<const FileDialogFilter> filters, const char* defaultExtension);

// Any thread. Not allowed, an open dialog closes and none opens; each gives Cancelled. Allowed at first. For the end of
// the program, which waits for nobody to close a dialog.
void AllowFileDialogs(bool allowed);
