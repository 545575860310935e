#include "failing_memory.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> failsFrom{SIZE_MAX};

}  // namespace

// Replaces the allocation of the whole program. The other forms of new and delete call these.
void* operator new(size_t bytes) {
    void* const memory = bytes < failsFrom ? std::malloc(bytes == 0 ? 1 : bytes) : nullptr;
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}

FailingMemory::FailingMemory(size_t bytes) {
    failsFrom = bytes;
}

FailingMemory::~FailingMemory() {
    failsFrom = SIZE_MAX;
}
