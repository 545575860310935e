// Imports and exports macro files. Every import ends in OfferMacro. An outcome document is the JSON text with which a
// command answers the page: {"outcome":"imported"}, "pending", "error" with a message, or "cancelled".
#pragma once

#include <string>

// The two commands of the page that show a file dialog. UI thread.

// Writes the current profile, with the live settings, to the file that the user chooses. Throws what WriteMacroFile
// throws. Shows an alert in the page if the system has no file dialog.
void ExportProfile();
// As ExportProfile, but proposes a file name made of the profile's, and returns what came of it, as JSON:
// {"outcome":WORD,"file":NAME,"message":TEXT} with "written", "cancelled", "failed" or "unavailable". Shows no alert.
std::string ExportMacro();
// Imports the file that the user chooses. Returns an outcome document.
std::string ImportProfile();

// Imports the file at `path`: rejects ".mcr" by its name, reads the file, appends " (Imported)" to the profile's name and
// offers the macro. Returns an outcome document. Any thread.
std::string ImportMacroFile(const std::string& path);

// Imports a file that a second instance has put into the folder "themes" of the data folder and notifies the page.
// `stem` is the file's name without extension. Deletes the file whatever it holds; does nothing if it is gone. Any
// thread.
void ImportStagedMacro(const std::string& stem);

// Imports a file named on the command line, before the page exists. A pending import waits until the page asks for it, and
// a failure becomes the page's first alert. Keeps the file.
void ImportFromCommandLine(const std::string& path);
