#include "failing_memory.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

std::atomic<size_t> failsFrom{SIZE_MAX};

}  // namespace

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define VARNELLE_OWN_ALLOCATION 0
#endif
#endif
#ifndef VARNELLE_OWN_ALLOCATION
#define VARNELLE_OWN_ALLOCATION 1
#endif

#if VARNELLE_OWN_ALLOCATION
// Replaces the allocation of the whole program. The sanitizers have forms of their own for arrays and aligned memory, which
// fit together.
void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
    return bytes < failsFrom ? std::malloc(bytes == 0 ? 1 : bytes) : nullptr;
}

void* operator new(size_t bytes) {
    void* const memory = operator new(bytes, std::nothrow);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
#endif

FailingMemory::FailingMemory(size_t bytes) {
    failsFrom = bytes;
}

FailingMemory::~FailingMemory() {
    failsFrom = SIZE_MAX;
}
