#include "platform/files.h"

#include <windows.h>

#include <algorithm>

// ReadFile and WriteFile count in 32 bits, so larger files are processed in pieces.
constexpr size_t kLargestPiece = size_t{1} << 30;

std::string_view TextLineEnd() {
    return "\r\n";
}

std::string DataFolderRoot() {
    char value[260];
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

static bool ReadWholeFile(HANDLE file, std::string* bytes) {
    LARGE_INTEGER size;
    if (!GetFileSizeEx(file, &size)) {
        return false;
    }
    bytes->resize(static_cast<size_t>(size.QuadPart));
    size_t have = 0;
    while (have < bytes->size()) {
        DWORD piece = static_cast<DWORD>(std::min(bytes->size() - have, kLargestPiece));
        DWORD got = 0;
        if (!ReadFile(file, bytes->data() + have, piece, &got, nullptr)) {
            return false;
        }
        if (got == 0) {
            break;  // another process has truncated the file meanwhile
        }
        have += got;
    }
    bytes->resize(have);
    return true;
}

bool ReadFileBytes(const std::string& path, std::string* bytes) {
    bytes->clear();
    // Shares all access: another process may rewrite or replace the file at any moment.
    HANDLE file =
        CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    bool read = ReadWholeFile(file, bytes);
    CloseHandle(file);
    return read;
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
