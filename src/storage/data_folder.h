// The one per-user folder of everything the program keeps and mirrors. Any thread; failures are silent unless said.
#pragma once

#include <string>
#include <string_view>

std::string DataFolderPath();  // worked out anew by each call
std::string DataFilePath(std::string_view name);
void CreateDataFolder();

// Writes beside the target and renames, so that a reader never sees half a file. There is a moment without a file.
bool AtomicWriteFile(const std::string& path, std::string_view bytes);

// Bring in files of older versions. In this order, before the session is read.
void MigrateSessionFile();
void MigrateStateFile(const std::string& destination, const char* name);
void DeleteFromProgramFolder(const char* name);
// Where the session is loaded from and saved to in this run.
std::string SessionPath();
void SetSessionPath(const std::string& path);

std::string ReadStatusMirror();  // first line of status.txt, or the idle default document
void WriteStatusMirror(std::string_view text);
std::string ReadEventsMirror();  // "[]" where there is none
void WriteEventsMirror(std::string_view text);
std::string ReadPanelSettings();  // "{}" where there is none
void WritePanelSettings(std::string_view text);
