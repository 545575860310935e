// Lets large allocations of the test program fail.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>

// The thread sanitizer has an allocation of its own, which cannot be replaced.
#if defined(__SANITIZE_THREAD__)
constexpr bool kMemoryCanFail = false;
#elif defined(__has_feature)
constexpr bool kMemoryCanFail = !__has_feature(thread_sanitizer);
#else
constexpr bool kMemoryCanFail = true;
#endif

// For the start of a test that uses FailingMemory.
#define REQUIRE_FAILING_MEMORY()                                                                             \
    if (!kMemoryCanFail)                                                                                     \
    GTEST_SKIP() << "no allocation fails under the thread sanitizer"

// Until the end of its scope every operator new of `bytes` or more throws std::bad_alloc, on every thread.
class FailingMemory {
  public:
    explicit FailingMemory(size_t bytes);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
};
