// Files and folders by 8-bit path. Nothing here throws; failure is false or an empty result. Any thread.
#pragma once

#include <string>
#include <string_view>

// Line end of the text files this home writes: CR LF on Windows, LF elsewhere. Both are read everywhere.
std::string_view TextLineEnd();

// The folder that holds the data folder: LOCALAPPDATA, then what the home has in its place; "." where nothing usable
// is set (260 characters or more is not usable). Read anew at each call.
std::string DataFolderRoot();
// Where temporary files go, with its closing separator; empty if the system names no place.
std::string SystemTempFolder();

bool FileExists(const std::string& path);  // file or folder
bool IsFolder(const std::string& path);    // false also where there is nothing
bool CreateFolder(const std::string& path);
bool RemoveFile(const std::string& path);
// Moves, also across volumes; an existing target is not replaced and is a failure.
bool MoveFileNoReplace(const std::string& from, const std::string& to);
// The whole file, byte for byte; false if it cannot be opened.
bool ReadFileBytes(const std::string& path, std::string* bytes);
// Creates or truncates, writes all, closes. False if it cannot be opened or a byte could not be written.
bool WriteFileBytes(const std::string& path, std::string_view bytes);
