// Files and folders by 8-bit path. No function throws. A failure returns false or an empty result. Any thread.
#pragma once

#include <string>
#include <string_view>

// Returns the line end of the text files that this backend writes: CR LF on Windows, LF elsewhere. Both are read everywhere.
std::string_view TextLineEnd();

// Returns the folder that holds the data folder: LOCALAPPDATA, else the backend's own default, else ".". A value of 260
// characters or more is ignored. Reads the environment at each call.
std::string DataFolderRoot();
// Returns the folder for temporary files with its closing separator, empty if the system has none.
std::string SystemTempFolder();

bool FileExists(const std::string& path);  // file or folder
bool IsFolder(const std::string& path);    // false also if nothing exists there
bool CreateFolder(const std::string& path);
bool RemoveFile(const std::string& path);
// Moves a file, also across volumes. Fails if the target exists.
bool MoveFileNoReplace(const std::string& from, const std::string& to);
// Reads the whole file, byte for byte. Returns false if it cannot be opened.
bool ReadFileBytes(const std::string& path, std::string* bytes);
// Creates or truncates the file and writes all bytes. Returns false if it cannot be opened or a byte cannot be written.
bool WriteFileBytes(const std::string& path, std::string_view bytes);
