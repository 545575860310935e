// The folder of all files that the program keeps for the user. Any thread. Failures are silent unless noted.
#pragma once

#include <string>
#include <string_view>

std::string DataFolderPath();  // computed again by each call
std::string DataFilePath(std::string_view name);
void CreateDataFolder();

// Writes beside the target and renames, so that a reader never sees half a file. For a moment there is no file.
bool AtomicWriteFile(const std::string& path, std::string_view bytes);

// Migrate files of older versions. Call in this order, before the session is read.
void MigrateSessionFile();
void MigrateStateFile(const std::string& destination, const char* name);
void DeleteFromProgramFolder(const char* name);
// Returns the path of the session file in this run.
std::string SessionPath();
void SetSessionPath(const std::string& path);

std::string ReadStatusMirror();  // first line of status.txt, or the idle default document
void WriteStatusMirror(std::string_view text);
std::string ReadEventsMirror();  // "[]" if there is none
void WriteEventsMirror(std::string_view text);
std::string ReadPanelSettings();  // "{}" if there is none
void WritePanelSettings(std::string_view text);
