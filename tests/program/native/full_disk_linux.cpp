// A library to load before others (LD_PRELOAD): the disk of the process is full after FULL_DISK_BYTES bytes. It behaves
// like a file system that can reserve no space, so a write may stop anywhere. Only files count, no pipes or terminals.
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace {

std::atomic<long> left{-1};  // bytes; negative: not read from the environment yet

long BytesLeft() {
    if (left < 0) {
        const char* const text = std::getenv("FULL_DISK_BYTES");
        left = text == nullptr ? 0 : std::atol(text);
    }
    return left;
}

bool IsRegularFile(int file) {
    struct stat status {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode);
}

// Returns how many of `count` bytes still fit, and takes them from the disk.
size_t TakeSpace(size_t count) {
    const long before = BytesLeft();
    const size_t taken = count < static_cast<size_t>(before) ? count : static_cast<size_t>(before);
    left = before - static_cast<long>(taken);
    return taken;
}

template <typename Function> Function Next(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

ssize_t write(int file, const void* bytes, size_t count) {
    static const auto next = Next<ssize_t (*)(int, const void*, size_t)>("write");
    if (!IsRegularFile(file) || count == 0) {
        return next(file, bytes, count);
    }
    const size_t fits = TakeSpace(count);
    if (fits == 0) {
        errno = ENOSPC;
        return -1;
    }
    return next(file, bytes, fits);
}

int fallocate(int, int, off_t, off_t) {
    errno = EOPNOTSUPP;
    return -1;
}

int fallocate64(int, int, off64_t, off64_t) {
    errno = EOPNOTSUPP;
    return -1;
}
}
