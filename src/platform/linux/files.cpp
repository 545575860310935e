#include "platform/files.h"

#include "platform/linux/base_folders.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr size_t kLongestRoot = 259;  // as on Windows: 260 with the closing zero

bool WriteAll(int file, const char* bytes, size_t count) {
    while (count > 0) {
        const ssize_t written = write(file, bytes, count);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        bytes += written;
        count -= static_cast<size_t>(written);
    }
    return true;
}

bool CopyAll(int from, int to) {
    char buffer[64 * 1024];
    for (;;) {
        const ssize_t got = read(from, buffer, sizeof(buffer));
        if (got == 0) {
            return true;
        }
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        if (!WriteAll(to, buffer, static_cast<size_t>(got))) {
            return false;
        }
    }
}

// For a target on another volume. Copies before removing, so that a complete file exists at every moment.
bool MoveByCopy(const std::string& from, const std::string& to) {
    const int source = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (source < 0) {
        return false;
    }
    struct stat status {};
    bool done = fstat(source, &status) == 0 && S_ISREG(status.st_mode);
    int target = -1;
    if (done) {
        target = open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, status.st_mode & 0777);
        done = target >= 0;
    }
    if (target >= 0) {
        done = CopyAll(source, target);
        done = (close(target) == 0) && done;
        done = done && unlink(from.c_str()) == 0;
        if (!done) {
            unlink(to.c_str());
        }
    }
    close(source);
    return done;
}

FileResult ResultOfError(int error) {
    switch (error) {
    case ENOENT:
    case ENOTDIR:
        return FileResult::Missing;
    case ELOOP:  // O_NOFOLLOW met a link
    case EISDIR:
    case ENXIO:  // a socket, or a pipe without a reader
        return FileResult::NotAFile;
    case ENOSPC:
    case EDQUOT:
        return FileResult::DiskFull;
    default:
        return FileResult::Failed;
    }
}

// Reads to the end of the file. `size` is what the file system reports; it is 0 for some files of the system.
FileResult ReadAll(int file, size_t size, size_t limit, std::string* bytes) {
    if (size > limit) {
        return FileResult::TooLarge;
    }
    try {
        size_t used = 0;
        // One byte more than the file has: the read that fills less than it asked for is then usually the last.
        bytes->resize(size > 0 ? size + 1 : size_t{64} * 1024);
        for (;;) {
            if (used == bytes->size()) {
                bytes->resize(bytes->size() * 2);
            }
            const ssize_t count = read(file, bytes->data() + used, bytes->size() - used);
            if (count == 0) {
                break;
            }
            if (count < 0) {
                if (errno == EINTR) {
                    continue;
                }
                return FileResult::Failed;
            }
            used += static_cast<size_t>(count);
            if (used > limit) {
                return FileResult::TooLarge;
            }
        }
        bytes->resize(used);
        return FileResult::Done;
    } catch (const std::bad_alloc&) {
        return FileResult::Failed;
    } catch (const std::length_error&) {
        return FileResult::Failed;
    }
}

// Opens a file and sets *size to its size in bytes. Returns -1 on failure, with the reason in *result.
int OpenForReading(const std::string& path, FileLinks links, size_t* size, FileResult* result) {
    // The user may name a pipe. A state file is never one.
    const int refusing = links == FileLinks::Refuse ? O_NOFOLLOW | O_NONBLOCK : 0;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | refusing);
    if (file < 0) {
        *result = ResultOfError(errno);
        return -1;
    }
    struct stat status {};
    *result = FileResult::Failed;
    if (fstat(file, &status) == 0) {
        if (!S_ISDIR(status.st_mode) && (links == FileLinks::Follow || S_ISREG(status.st_mode))) {
            *size = static_cast<size_t>(status.st_size);
            return file;
        }
        *result = FileResult::NotAFile;
    }
    close(file);
    return -1;
}

// Opens a state file for writing: a regular file, not through a link, without waiting. Negative on failure, with the
// reason in *result.
int OpenStateFile(const std::string& path, int flags, FileResult* result) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | flags, 0600);
    if (file < 0) {
        *result = ResultOfError(errno);
        return -1;
    }
    struct stat status {};
    if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
        *result = FileResult::NotAFile;
        close(file);
        return -1;
    }
    if ((status.st_mode & 0077) != 0 && status.st_uid == geteuid()) {
        fchmod(file, status.st_mode & 0700);
    }
    return file;
}

// Closes a file after writing. `done`: every step has succeeded; if not, errno says why.
FileResult CloseWritten(int file, bool done) {
    const FileResult failure = done ? FileResult::Done : ResultOfError(errno);
    if (close(file) != 0 && done) {
        return ResultOfError(errno);
    }
    return failure;
}

// Not every file system can reserve; those write without it.
bool ReserveSpace(int file, size_t size) {
    return size == 0 || fallocate(file, FALLOC_FL_KEEP_SIZE, 0, static_cast<off_t>(size)) == 0 ||
           errno == EOPNOTSUPP || errno == ENOSYS;
}

// A new name in a folder is on the disk once the folder is.
void FlushFolderOf(const std::string& path) {
    const size_t separator = path.rfind('/');
    const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
    const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file >= 0) {
        fsync(file);
        close(file);
    }
}

}  // namespace

std::string_view TextLineEnd() {
    return "\n";
}

std::string DataFolderRoot() {
    std::string root = EnvironmentText("LOCALAPPDATA");
    if (root.empty()) {
        root = BaseFolder("XDG_DATA_HOME", ".local/share");
        if (!root.empty() && root.size() <= kLongestRoot && !FileExists(root)) {
            CreateFolderWithParents(root);
        }
    }
    if (root.empty() || root.size() > kLongestRoot) {
        return ".";
    }
    return root;
}

std::string SystemTempFolder() {
    std::string folder = EnvironmentText("TMPDIR");
    if (folder.empty()) {
        folder = "/tmp";
    }
    if (folder.back() != '/') {
        folder += '/';
    }
    return folder;
}

bool FileExists(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0;
}

bool IsFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// For the owner only: a recorded macro may contain a typed password.
bool CreateFolder(const std::string& path) {
    return mkdir(path.c_str(), 0700) == 0;
}

// NOTE: Linux deletes a read-only file; Windows refuses.
// HACK: a file without write permission is refused here too, so that a protected file is safe on both backends.
bool RemoveFile(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        return false;
    }
    if (S_ISREG(status.st_mode) && (status.st_mode & 0222) == 0) {
        return false;
    }
    return unlink(path.c_str()) == 0;
}

bool MoveFileNoReplace(const std::string& from, const std::string& to) {
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno == EXDEV) {
        return MoveByCopy(from, to);
    }
    if (errno == EINVAL || errno == ENOSYS) {
        // The file system does not support that flag. A hard link never replaces an existing file.
        if (link(from.c_str(), to.c_str()) == 0) {
            return unlink(from.c_str()) == 0;
        }
        return errno != EEXIST && MoveByCopy(from, to);
    }
    return false;
}

FileResult ReadFileLimited(const std::string& path, size_t limit, FileLinks links, std::string* bytes) {
    FileResult result = FileResult::Failed;
    size_t size = 0;
    const int file = OpenForReading(path, links, &size, &result);
    if (file >= 0) {
        result = ReadAll(file, size, limit, bytes);
        close(file);
    }
    return result;
}

bool ReadFileBytes(const std::string& path, std::string* bytes) {
    return ReadFileLimited(path, kLargestFile, FileLinks::Follow, bytes) == FileResult::Done;
}

bool WriteFileBytes(const std::string& path, std::string_view bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) {
        return false;
    }
    const bool written = WriteAll(file, bytes.data(), bytes.size());
    return close(file) == 0 && written;
}

FileResult ReadStateFileStart(const std::string& path, size_t count, std::string* bytes) {
    FileResult result = FileResult::Failed;
    size_t size = 0;
    const int file = OpenForReading(path, FileLinks::Refuse, &size, &result);
    if (file >= 0) {
        bytes->resize(std::min(count, size));
        const ssize_t got = pread(file, bytes->data(), bytes->size(), 0);
        result = got == static_cast<ssize_t>(bytes->size()) ? FileResult::Done : FileResult::Failed;
        close(file);
    }
    return result;
}

FileResult WriteStateFile(const std::string& path, std::string_view bytes) {
    FileResult result = FileResult::Failed;
    const int file = OpenStateFile(path, O_CREAT, &result);
    if (file < 0) {
        return result;
    }
    const bool done = ftruncate(file, 0) == 0 && WriteAll(file, bytes.data(), bytes.size());
    return CloseWritten(file, done);
}

FileResult WriteStateFileToDisk(const std::string& path, std::string_view bytes) {
    FileResult result = FileResult::Failed;
    const int file = OpenStateFile(path, O_CREAT, &result);
    if (file < 0) {
        return result;
    }
    const bool done = ReserveSpace(file, bytes.size()) && WriteAll(file, bytes.data(), bytes.size()) &&
                      ftruncate(file, static_cast<off_t>(bytes.size())) == 0 && fsync(file) == 0;
    return CloseWritten(file, done);
}

FileResult PatchStateFile(const std::string& path, size_t offset, std::string_view bytes) {
    FileResult result = FileResult::Failed;
    const int file = OpenStateFile(path, 0, &result);
    if (file < 0) {
        return result;
    }
    struct stat status {};
    const bool inside = fstat(file, &status) == 0 && offset <= static_cast<size_t>(status.st_size);
    const bool done = inside && pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset)) ==
                                    static_cast<ssize_t>(bytes.size());
    return close(file) == 0 && done ? FileResult::Done : FileResult::Failed;
}

FileResult ReplaceStateFile(const std::string& from, const std::string& to) {
    if (rename(from.c_str(), to.c_str()) != 0) {
        return ResultOfError(errno);
    }
    FlushFolderOf(to);
    return FileResult::Done;
}

void CreatePrivateFolder(const std::string& path) {
    if (mkdir(path.c_str(), 0700) == 0) {
        return;
    }
    struct stat status {};
    if (lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
        (status.st_mode & 0077) != 0) {
        chmod(path.c_str(), 0700);
    }
}

bool ReadFileStamp(const std::string& path, FileStamp* stamp) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return false;
    }
    constexpr int64_t kNanosecondsPerSecond = 1000000000;
    stamp->volume = status.st_dev;
    stamp->file = status.st_ino;
    stamp->size = static_cast<uint64_t>(status.st_size);
    stamp->time = status.st_mtim.tv_sec * kNanosecondsPerSecond + status.st_mtim.tv_nsec;
    return true;
}
