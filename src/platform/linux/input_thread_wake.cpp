#include "platform/linux/input_thread_wake.h"

#include <cerrno>
#include <cstdint>
#include <sys/eventfd.h>
#include <unistd.h>

int InputThreadWakeFile() {
    static const int file = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return file;
}

void WakeInputThread() {
    const uint64_t one = 1;
    while (write(InputThreadWakeFile(), &one, sizeof(one)) < 0 && errno == EINTR) {
    }
}

void ClearInputThreadWake() {
    uint64_t count = 0;
    while (read(InputThreadWakeFile(), &count, sizeof(count)) < 0 && errno == EINTR) {
    }
}
