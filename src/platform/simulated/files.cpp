// Real files, with failures on demand.
#include "platform/simulated/files.h"

#include "platform/clock.h"
#include "platform/files.h"

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <set>
#include <system_error>

namespace {

struct FileState {
    std::string localAppData;
    std::string_view lineEnd = "\n";
    std::set<std::string> failingPaths;
};

FileState state;
// Atomic and separate: a bench may read files on its own threads.
std::atomic<int> operations{0};
std::atomic<int> failingOperation{0};
std::atomic<SimFileFault> failingFault{SimFileFault::Refused};
std::atomic<bool> failsPermanently{false};
std::atomic<uint32_t> nextDelay{0};

// Counts the operation that begins here. Returns its fault, if any.
std::optional<SimFileFault> NextFault(const std::string& path) {
    const int number = ++operations;
    if (const uint32_t delay = nextDelay.exchange(0)) {
        SleepMilliseconds(delay);
    }
    const int failing = failingOperation;
    if (failing != 0 && (number == failing || (failsPermanently && number > failing))) {
        return failingFault;
    }
    if (state.failingPaths.count(path) != 0) {
        return SimFileFault::Refused;
    }
    return std::nullopt;
}

bool Fails(const std::string& path) {
    return NextFault(path).has_value();
}

bool Exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

bool IsRegularFile(const std::string& path, FileLinks links) {
    std::error_code error;
    return std::filesystem::is_regular_file(links == FileLinks::Refuse
                                                ? std::filesystem::symlink_status(path, error)
                                                : std::filesystem::status(path, error));
}

}  // namespace

std::string_view TextLineEnd() {
    return state.lineEnd;
}

std::string DataFolderRoot() {
    return state.localAppData.empty() || state.localAppData.size() >= 260 ? "." : state.localAppData;
}

std::string SystemTempFolder() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    return error ? std::string() : folder.string() + '/';
}

bool FileExists(const std::string& path) {
    return !Fails(path) && Exists(path);
}

bool IsFolder(const std::string& path) {
    std::error_code error;
    return !Fails(path) && std::filesystem::is_directory(path, error);
}

bool CreateFolder(const std::string& path) {
    std::error_code error;
    return !Fails(path) && std::filesystem::create_directory(path, error);
}

bool RemoveFile(const std::string& path) {
    return !Fails(path) && std::remove(path.c_str()) == 0;
}

bool MoveFileNoReplace(const std::string& from, const std::string& to) {
    const std::optional<SimFileFault> fault = NextFault(from);
    if (fault == SimFileFault::Refused || state.failingPaths.count(to) != 0 || Exists(to)) {
        return false;
    }
    std::error_code error;
    if (fault) {
        std::filesystem::copy_file(from, to, error);
        return false;
    }
    std::filesystem::rename(from, to, error);
    return !error;
}

FileResult ReadFileLimited(const std::string& path, size_t limit, FileLinks links, std::string* bytes) {
    const std::optional<SimFileFault> fault = NextFault(path);
    if (fault == SimFileFault::Refused) {
        return FileResult::Failed;
    }
    if (!Exists(path)) {
        return FileResult::Missing;
    }
    if (!IsRegularFile(path, links)) {
        return FileResult::NotAFile;
    }
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return FileResult::Failed;
    }
    bytes->clear();
    char buffer[65536];
    size_t count = 0;
    while (bytes->size() <= limit && (count = std::fread(buffer, 1, sizeof buffer, file)) != 0) {
        bytes->append(buffer, count);
    }
    const bool complete = std::ferror(file) == 0;
    std::fclose(file);
    if (fault) {
        bytes->resize(bytes->size() / 2);
    }
    if (!complete || fault) {
        return FileResult::Failed;
    }
    return bytes->size() > limit ? FileResult::TooLarge : FileResult::Done;
}

FileResult ReadStateFileStart(const std::string& path, size_t count, std::string* bytes) {
    const FileResult result = ReadFileLimited(path, kLargestFile, FileLinks::Refuse, bytes);
    bytes->resize(std::min(count, bytes->size()));
    return result;
}

bool ReadFileBytes(const std::string& path, std::string* bytes) {
    return ReadFileLimited(path, kLargestFile, FileLinks::Follow, bytes) == FileResult::Done;
}

bool WriteFileBytes(const std::string& path, std::string_view bytes) {
    const std::optional<SimFileFault> fault = NextFault(path);
    if (fault == SimFileFault::Refused) {
        return false;
    }
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return false;
    }
    if (fault) {
        bytes = bytes.substr(0, bytes.size() / 2);
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && written && !fault;
}

FileResult WriteStateFile(const std::string& path, std::string_view bytes) {
    const std::optional<SimFileFault> fault = NextFault(path);
    if (fault == SimFileFault::Refused) {
        return FileResult::DiskFull;
    }
    if (Exists(path) && !IsRegularFile(path, FileLinks::Refuse)) {
        return FileResult::NotAFile;
    }
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) {
        return FileResult::Failed;
    }
    if (fault) {
        bytes = bytes.substr(0, bytes.size() / 2);
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && written && !fault ? FileResult::Done : FileResult::Failed;
}

FileResult WriteStateFileToDisk(const std::string& path, std::string_view bytes) {
    return WriteStateFile(path, bytes);
}

FileResult PatchStateFile(const std::string& path, size_t offset, std::string_view bytes) {
    if (Fails(path) || !IsRegularFile(path, FileLinks::Refuse)) {
        return FileResult::Failed;
    }
    std::FILE* file = std::fopen(path.c_str(), "rb+");
    if (file == nullptr) {
        return FileResult::Failed;
    }
    std::error_code error;
    const bool done = offset <= std::filesystem::file_size(path, error) &&
                      std::fseek(file, static_cast<long>(offset), SEEK_SET) == 0 &&
                      std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && done ? FileResult::Done : FileResult::Failed;
}

FileResult ReplaceStateFile(const std::string& from, const std::string& to) {
    if (Fails(from)) {
        return FileResult::Failed;
    }
    std::error_code error;
    std::filesystem::rename(from, to, error);
    return error ? FileResult::Failed : FileResult::Done;
}

void CreatePrivateFolder(const std::string& path) {
    CreateFolder(path);
}

bool ReadFileStamp(const std::string& path, FileStamp* stamp) {
    std::error_code error;
    if (Fails(path) || !Exists(path)) {
        return false;
    }
    stamp->size = std::filesystem::file_size(path, error);
    stamp->time = std::filesystem::last_write_time(path, error).time_since_epoch().count();
    return !error;
}

void SimFailFileOperation(int number, SimFileFault fault, bool permanently) {
    failingFault = fault;
    failsPermanently = permanently;
    failingOperation = number == 0 ? 0 : operations + number;
}

void SimDelayFileOperation(uint32_t milliseconds) {
    nextDelay = milliseconds;
}

void SimFailPath(const std::string& path) {
    if (path.empty()) {
        state.failingPaths.clear();
    } else {
        state.failingPaths.insert(path);
    }
}

int SimFileOperations() {
    return operations;
}

void SimSetDataFolderRoot(const std::string& value) {
    state.localAppData = value;
}

void SimSetTextLineEnd(std::string_view lineEnd) {
    state.lineEnd = lineEnd;
}

void SimResetFiles() {
    nextDelay = 0;
    state = FileState();
    operations = 0;
    failingOperation = 0;
}
