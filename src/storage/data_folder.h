// The per-user folder of all files that the program keeps, and the mirror files in it that panel windows read. Any
// thread. Failures are not reported unless a function returns a result.
#pragma once

#include <string>
#include <string_view>

// Returns the folder's path; each call reads the environment again.
std::string DataFolderPath();
// Returns the path of a file in the folder.
std::string DataFilePath(std::string_view name);
void CreateDataFolder();

// Writes a file beside the target and renames it, so that no reader sees a part of it. Between the two steps the target
// does not exist. Returns false if the target was not replaced.
bool AtomicWriteFile(const std::string& path, std::string_view bytes);

// Files of older versions: start-up calls these in this order, before it reads the session.
// Moves an older session file to its present path and sets SessionPath. An older file that cannot be moved stays in use.
void MigrateSessionFile();
// Moves a file `name` of the program folder to `destination`, unless that exists.
void MigrateStateFile(const std::string& destination, const char* name);
void DeleteFromProgramFolder(const char* name);

// Returns the path from which the session is loaded and to which it is saved in this run.
std::string SessionPath();
void SetSessionPath(const std::string& path);

// The mirror files. Each Read function returns the first line of its file; without one, it returns the text of an idle
// program ("[]" for the events, "{}" for the panel settings). Each Write function returns whether the whole text is in its
// file.
std::string ReadStatusMirror();
bool WriteStatusMirror(std::string_view text);
std::string ReadEventsMirror();
bool WriteEventsMirror(std::string_view text);
std::string ReadPanelSettings();
bool WritePanelSettings(std::string_view text);
