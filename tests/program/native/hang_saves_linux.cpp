// Preloaded into the program by a test: while the file that VARNELLE_TEST_HANG names exists, every flush to the disk waits
// for ever, as on a network disk whose server is gone. The first one writes "hangs" into that file.
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int fsync(int file) {
    const char* name = getenv("VARNELLE_TEST_HANG");
    const int mark = name == nullptr ? -1 : open(name, O_WRONLY | O_CLOEXEC);
    if (mark < 0) {
        static const auto original = reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fsync"));
        return original(file);
    }
    if (write(mark, "hangs", 5) != 5) {
        abort();
    }
    for (;;) {
        pause();
    }
}
