#include "platform/linux/last_save.h"

#include <atomic>

namespace {

std::atomic<void (*)()> lastSave{nullptr};

}  // namespace

void SetLastSave(void (*save)()) {
    lastSave.store(save);
}

void RunLastSave() {
    if (void (*save)() = lastSave.load()) {
        save();
    }
}
