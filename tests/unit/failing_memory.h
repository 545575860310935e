// Lets large allocations of the test program fail.
#pragma once

#include <cstddef>

// Until the end of its scope every operator new of `bytes` or more throws std::bad_alloc, on every thread.
class FailingMemory {
  public:
    explicit FailingMemory(size_t bytes);
    ~FailingMemory();
    FailingMemory(const FailingMemory&) = delete;
    FailingMemory& operator=(const FailingMemory&) = delete;
};
