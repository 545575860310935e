#include "platform/clock.h"

#include "platform/linux/threads.h"

#include <cerrno>
#include <ctime>
#include <sched.h>
#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace {
constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
}

int64_t ReadPerformanceCounter() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<int64_t>(now.tv_sec) * kNanosecondsPerSecond + now.tv_nsec;
}

int64_t ReadPerformanceFrequency() {
    return kNanosecondsPerSecond;
}

void SleepMilliseconds(uint32_t milliseconds) {
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    // An absolute deadline, so that a signal in the middle does not lengthen the sleep.
    const int64_t deadline = ReadPerformanceCounter() + static_cast<int64_t>(milliseconds) * 1'000'000;
    timespec until{};
    until.tv_sec = static_cast<time_t>(deadline / kNanosecondsPerSecond);
    until.tv_nsec = static_cast<long>(deadline % kNanosecondsPerSecond);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
    }
}

void SpinOnce() {
#if defined(__x86_64__) || defined(__i386__)
    _mm_pause();
#endif
}

// NOTE: Linux has no timer period: sleeps are accurate to the calling thread's timer slack, 50 microseconds at first.
// HACK: every thread sets the least slack when it starts (see SetUpThread). The main thread does so here. There is nothing
// to end.
void BeginTimerPeriod() {
    SetUpThread();
}

void EndTimerPeriod() {}

bool KeepTimerResolutionWhenHidden() {
    return true;
}
