// Imports and exports macro files. Every import goes through OfferMacro.
#pragma once

#include <string>

// The page's commands, with a dialog. UI thread.
// Writes the current profile, with the live settings, to the file that the user chooses. Reports nothing, except by the
// exception of WriteMacroFile and by an alert in the page if the system has no dialog.
void ExportProfile();
// Returns an outcome document: imported, pending, error or cancelled.
std::string ImportProfile();

// The import after the dialog: rejects ".mcr" by its name, reads the file, appends " (Imported)" to its profile's name
// and offers it. Returns an outcome document. Any thread.
std::string ImportMacroFile(const std::string& path);

// Imports a file that a second instance has put into the folder "themes" of the data folder. `stem` is its name without
// the extension. Deletes the file whatever it contains, ignores a missing one, and notifies the page. Any thread.
void ImportStagedMacro(const std::string& stem);

// Imports a file named on the command line, at start-up. A pending import waits until the page asks; a failure becomes
// the first alert of the page. The file stays.
void ImportFromCommandLine(const std::string& path);
