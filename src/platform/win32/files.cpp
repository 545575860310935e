#include "platform/files.h"

#include <windows.h>

#include <algorithm>
#include <new>

// ReadFile and WriteFile count in 32 bits, so larger files are processed in pieces.
constexpr size_t kLargestPiece = size_t{1} << 30;

std::string_view TextLineEnd() {
    return "\r\n";
}

std::string DataFolderRoot() {
    char value[MAX_PATH];
    // For a value that does not fit, the result is the size that it needs, including the closing zero.
    DWORD length = GetEnvironmentVariableA("LOCALAPPDATA", value, sizeof value);
    if (length == 0 || length >= sizeof value) {
        return ".";
    }
    return std::string(value, length);
}

std::string SystemTempFolder() {
    char folder[MAX_PATH + 1];
    const DWORD length = GetTempPathA(sizeof folder, folder);
    return length == 0 || length > sizeof folder ? std::string() : std::string(folder, length);
}

bool FileExists(const std::string& path) {
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsFolder(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool CreateFolder(const std::string& path) {
    return CreateDirectoryA(path.c_str(), nullptr) != FALSE;
}

bool RemoveFile(const std::string& path) {
    return DeleteFileA(path.c_str()) != FALSE;
}

bool MoveFileNoReplace(const std::string& from, const std::string& to) {
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_COPY_ALLOWED) != FALSE;
}

// ERROR_DISK_QUOTA_EXCEEDED of winerror.h, which the mingw headers lack.
constexpr DWORD kDiskQuotaExceeded = 1295;

static FileResult ResultOfError(DWORD error) {
    switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return FileResult::Missing;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case kDiskQuotaExceeded:
        return FileResult::DiskFull;
    default:
        return FileResult::Failed;
    }
}

static FileResult ReadWholeFile(HANDLE file, size_t limit, std::string* bytes) {
    LARGE_INTEGER size;
    if (!GetFileSizeEx(file, &size)) {
        return FileResult::Failed;
    }
    if (static_cast<uint64_t>(size.QuadPart) > limit) {
        return FileResult::TooLarge;
    }
    try {
        bytes->resize(static_cast<size_t>(size.QuadPart));
    } catch (const std::bad_alloc&) {
        return FileResult::Failed;
    }
    size_t have = 0;
    while (have < bytes->size()) {
        DWORD piece = static_cast<DWORD>(std::min(bytes->size() - have, kLargestPiece));
        DWORD got = 0;
        if (!ReadFile(file, bytes->data() + have, piece, &got, nullptr)) {
            return FileResult::Failed;
        }
        if (got == 0) {
            break;  // another process has truncated the file meanwhile
        }
        have += got;
    }
    bytes->resize(have);
    return FileResult::Done;
}

// Whether the opened file is a link to another place. Other reparse points hold the file itself.
static bool IsLink(HANDLE file, bool* isReparsePoint) {
    FILE_ATTRIBUTE_TAG_INFO tag = {};
    *isReparsePoint = GetFileInformationByHandleEx(file, FileAttributeTagInfo, &tag, sizeof tag) != FALSE &&
                      (tag.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return *isReparsePoint &&
           (tag.ReparseTag == IO_REPARSE_TAG_SYMLINK || tag.ReparseTag == IO_REPARSE_TAG_MOUNT_POINT);
}

// Opens a file on a disk. INVALID_HANDLE_VALUE on failure, with the reason in *result.
static HANDLE OpenFileOnDisk(const std::string& path, DWORD access, DWORD sharing, DWORD disposition,
                             FileLinks links, FileResult* result) {
    DWORD flags = FILE_ATTRIBUTE_NORMAL;
    if (links == FileLinks::Refuse) {
        flags |= FILE_FLAG_OPEN_REPARSE_POINT;
    }
    HANDLE file = CreateFileA(path.c_str(), access, sharing, nullptr, disposition, flags, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD error = GetLastError();
        *result = IsFolder(path) ? FileResult::NotAFile : ResultOfError(error);
        return file;
    }
    bool isReparsePoint = false;
    if (GetFileType(file) != FILE_TYPE_DISK ||
        (links == FileLinks::Refuse && IsLink(file, &isReparsePoint))) {
        *result = FileResult::NotAFile;
        CloseHandle(file);
        return INVALID_HANDLE_VALUE;
    }
    if (isReparsePoint) {
        CloseHandle(file);
        return OpenFileOnDisk(path, access, sharing, disposition, FileLinks::Follow, result);
    }
    return file;
}

// Shared with everything: another process may rewrite or replace the file at any moment.
static HANDLE OpenForReading(const std::string& path, FileLinks links, FileResult* result) {
    return OpenFileOnDisk(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                          OPEN_EXISTING, links, result);
}

FileResult ReadFileLimited(const std::string& path, size_t limit, FileLinks links, std::string* bytes) {
    bytes->clear();
    FileResult result = FileResult::Failed;
    HANDLE file = OpenForReading(path, links, &result);
    if (file == INVALID_HANDLE_VALUE) {
        return result;
    }
    result = ReadWholeFile(file, limit, bytes);
    CloseHandle(file);
    return result;
}

FileResult ReadStateFileStart(const std::string& path, size_t count, std::string* bytes) {
    FileResult result = FileResult::Failed;
    HANDLE file = OpenForReading(path, FileLinks::Refuse, &result);
    if (file == INVALID_HANDLE_VALUE) {
        return result;
    }
    bytes->resize(count);
    DWORD got = 0;
    const bool isRead = ReadFile(file, bytes->data(), static_cast<DWORD>(count), &got, nullptr) != FALSE;
    bytes->resize(isRead ? got : 0);
    CloseHandle(file);
    return isRead ? FileResult::Done : FileResult::Failed;
}

bool ReadFileBytes(const std::string& path, std::string* bytes) {
    return ReadFileLimited(path, kLargestFile, FileLinks::Follow, bytes) == FileResult::Done;
}

static bool WriteAll(HANDLE file, std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD piece = static_cast<DWORD>(std::min(bytes.size(), kLargestPiece));
        DWORD written = 0;
        if (!WriteFile(file, bytes.data(), piece, &written, nullptr) || written == 0) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

bool WriteFileBytes(const std::string& path, std::string_view bytes) {
    HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    bool written = WriteAll(file, bytes);
    bool closed = CloseHandle(file) != FALSE;
    return written && closed;
}

static bool SetFileSize(HANDLE file, size_t size) {
    LARGE_INTEGER position;
    position.QuadPart = static_cast<LONGLONG>(size);
    return SetFilePointerEx(file, position, nullptr, FILE_BEGIN) != FALSE && SetEndOfFile(file) != FALSE;
}

// The system takes the clusters when a file grows, before anything is written.
static bool ReserveSpace(HANDLE file, size_t size) {
    LARGE_INTEGER present;
    if (!GetFileSizeEx(file, &present)) {
        return false;
    }
    if (static_cast<uint64_t>(present.QuadPart) < size && !SetFileSize(file, size)) {
        return false;
    }
    const LARGE_INTEGER begin = {};
    return SetFilePointerEx(file, begin, nullptr, FILE_BEGIN) != FALSE;
}

static HANDLE OpenStateFile(const std::string& path, DWORD disposition, FileResult* result) {
    return OpenFileOnDisk(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, disposition,
                          FileLinks::Refuse, result);
}

// Closes a file after writing. `done`: every step has succeeded; if not, the last error says why.
static FileResult CloseWritten(HANDLE file, bool done) {
    const FileResult result = done ? FileResult::Done : ResultOfError(GetLastError());
    return CloseHandle(file) || !done ? result : FileResult::Failed;
}

FileResult WriteStateFile(const std::string& path, std::string_view bytes) {
    FileResult result = FileResult::Failed;
    HANDLE file = OpenStateFile(path, OPEN_ALWAYS, &result);
    if (file == INVALID_HANDLE_VALUE) {
        return result;
    }
    return CloseWritten(file, SetFileSize(file, 0) && WriteAll(file, bytes));
}

FileResult WriteStateFileToDisk(const std::string& path, std::string_view bytes) {
    FileResult result = FileResult::Failed;
    HANDLE file = OpenStateFile(path, OPEN_ALWAYS, &result);
    if (file == INVALID_HANDLE_VALUE) {
        return result;
    }
    return CloseWritten(file, ReserveSpace(file, bytes.size()) && WriteAll(file, bytes) &&
                                  SetFileSize(file, bytes.size()) && FlushFileBuffers(file));
}

FileResult PatchStateFile(const std::string& path, size_t offset, std::string_view bytes) {
    FileResult result = FileResult::Failed;
    HANDLE file = OpenStateFile(path, OPEN_EXISTING, &result);
    if (file == INVALID_HANDLE_VALUE) {
        return result;
    }
    LARGE_INTEGER size;
    LARGE_INTEGER position;
    position.QuadPart = static_cast<LONGLONG>(offset);
    const bool done = GetFileSizeEx(file, &size) && offset <= static_cast<uint64_t>(size.QuadPart) &&
                      SetFilePointerEx(file, position, nullptr, FILE_BEGIN) && WriteAll(file, bytes);
    return CloseHandle(file) && done ? FileResult::Done : FileResult::Failed;
}

FileResult ReplaceStateFile(const std::string& from, const std::string& to) {
    return MoveFileExA(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)
               ? FileResult::Done
               : ResultOfError(GetLastError());
}

// The folder lies in the user's profile, whose access rules it inherits.
void CreatePrivateFolder(const std::string& path) {
    CreateFolder(path);
}

bool ReadFileStamp(const std::string& path, FileStamp* stamp) {
    HANDLE file = CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    BY_HANDLE_FILE_INFORMATION information;
    const bool known = GetFileInformationByHandle(file, &information) != FALSE;
    CloseHandle(file);
    if (!known) {
        return false;
    }
    const auto join = [](DWORD high, DWORD low) { return (uint64_t{high} << 32) | low; };
    stamp->volume = information.dwVolumeSerialNumber;
    stamp->file = join(information.nFileIndexHigh, information.nFileIndexLow);
    stamp->size = join(information.nFileSizeHigh, information.nFileSizeLow);
    stamp->time = static_cast<int64_t>(
        join(information.ftLastWriteTime.dwHighDateTime, information.ftLastWriteTime.dwLowDateTime));
    return true;
}
