// The ways of a macro file into the program and out of it. Every way in ends in OfferMacro.
#pragma once

#include <string>

// The page's commands, with a dialog. UI thread.
// Writes the current profile, with the live settings, where the person says. Silent, but for the throw of
// WriteMacroFile and an alert in the page where the system has no dialog.
void ExportProfile();
// An outcome document: imported, pending, error or cancelled.
std::string ImportProfile();

// What follows the dialog: refuses ".mcr" by its name, reads the file, appends " (Imported)" to its profile's name and
// offers it. An outcome document. Any thread.
std::string ImportMacroFile(const std::string& path);

// A file that a second instance has put into the folder "themes" of the data folder, by its name without the
// extension. The file is deleted whatever is in it; one that is gone is nothing. Tells the page. Any thread.
void ImportStagedMacro(const std::string& stem);

// A file named on the command line, at start-up: a held macro waits for the page to ask, a failure is the page's first
// alert. The file stays.
void ImportFromCommandLine(const std::string& path);
