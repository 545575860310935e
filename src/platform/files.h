// Files and folders by 8-bit path. No function throws. A failure returns false or an empty result. Any thread.
#pragma once

#include <cstddef>
#include <cstdint>
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

// The largest file that is read, in bytes. A macro of ten million events has about 400 MB.
constexpr size_t kLargestFile = size_t{1} << 30;

enum class FileResult {
    Done,
    Missing,   // no file at this path
    TooLarge,  // more bytes than the caller allows
    NotAFile,  // a folder, pipe, socket, device, or a link where links are not followed
    DiskFull,
    Failed,  // anything else, for example a missing permission
};

// Refuse: only a regular file, not through a link and without waiting, for files in the data folder. Follow: whatever
// the user names, a pipe included, but no folder.
enum class FileLinks { Follow, Refuse };

// Reads the whole file, byte for byte, if it has at most `limit` bytes. *bytes is undefined unless the result is Done.
FileResult ReadFileLimited(const std::string& path, size_t limit, FileLinks links, std::string* bytes);
// The same with kLargestFile and links followed. False unless the whole file was read.
bool ReadFileBytes(const std::string& path, std::string* bytes);
// Creates or truncates the file and writes all bytes. Returns false if it cannot be opened or a byte cannot be written.
bool WriteFileBytes(const std::string& path, std::string_view bytes);

// Files that only this program and its user may read: everything in the data folder.

// Reads the first `count` bytes, or all if there are fewer. Refuses what FileLinks::Refuse refuses. *bytes is undefined
// unless the result is Done.
FileResult ReadStateFileStart(const std::string& path, size_t count, std::string* bytes);

// Both refuse links and everything that is not a regular file, and leave a file that is readable and writable for the
// user alone.

// Creates or truncates the file and writes it.
FileResult WriteStateFile(const std::string& path, std::string_view bytes);
// Creates the file or overwrites it in place, and returns after the content has reached the disk. Asks for the disk
// space before the old content changes, so DiskFull leaves the old content.
FileResult WriteStateFileToDisk(const std::string& path, std::string_view bytes);
// Writes `bytes` at `offset` of an existing state file, which may grow by them. Fails for an offset behind its end.
FileResult PatchStateFile(const std::string& path, size_t offset, std::string_view bytes);
// Puts `from` in the place of `to` in one step: a reader sees the old file or the new one. Both in one folder.
FileResult ReplaceStateFile(const std::string& from, const std::string& to);
// Creates the folder if it is missing, and takes the access of other users away from a folder of this user.
void CreatePrivateFolder(const std::string& path);

// What changes when another program replaces or rewrites a file.
struct FileStamp {
    uint64_t volume = 0;
    uint64_t file = 0;
    uint64_t size = 0;  // bytes
    int64_t time = 0;   // of the last change, in units of the system

    bool operator==(const FileStamp&) const = default;
};
// False if there is no file at this path.
bool ReadFileStamp(const std::string& path, FileStamp* stamp);
