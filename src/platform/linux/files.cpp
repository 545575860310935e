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

bool ReadFileBytes(const std::string& path, std::string* bytes) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    bool good = true;
    try {
        struct stat status {};
        const bool sized = fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
        size_t used = 0;
        // One byte more than the file has, so that the first short read is usually the last.
        bytes->resize(sized ? static_cast<size_t>(status.st_size) + 1 : size_t{64} * 1024);
        for (;;) {
            if (used == bytes->size()) {
                bytes->resize(bytes->size() * 2);
            }
            const ssize_t got = read(file, bytes->data() + used, bytes->size() - used);
            if (got == 0) {
                break;
            }
            if (got < 0) {
                if (errno == EINTR) {
                    continue;
                }
                good = false;
                break;
            }
            used += static_cast<size_t>(got);
        }
        bytes->resize(good ? used : 0);
    } catch (const std::bad_alloc&) {
        good = false;
    } catch (const std::length_error&) {
        good = false;
    }
    close(file);
    return good;
}

bool WriteFileBytes(const std::string& path, std::string_view bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) {
        return false;
    }
    const bool written = WriteAll(file, bytes.data(), bytes.size());
    return close(file) == 0 && written;
}
