#include "platform/clock.h"

#include "platform/win32/system_library.h"

#include <windows.h>

#include <timeapi.h>

int64_t ReadPerformanceCounter() {
    LARGE_INTEGER counter;
    QueryPerformanceCounter(&counter);
    return counter.QuadPart;
}

int64_t ReadPerformanceFrequency() {
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}

void SleepMilliseconds(uint32_t milliseconds) {
    Sleep(milliseconds);
}

void SpinOnce() {
    YieldProcessor();
}

namespace {

struct TimerPeriods {
    SystemLibrary library{L"winmm.dll"};
    decltype(&timeBeginPeriod) begin = library.Find("timeBeginPeriod");
    decltype(&timeEndPeriod) end = library.Find("timeEndPeriod");
};

const TimerPeriods& Periods() {
    static const TimerPeriods periods;
    return periods;
}

}  // namespace

void BeginTimerPeriod() {
    if (Periods().begin) {
        Periods().begin(1);
    }
}

void EndTimerPeriod() {
    if (Periods().end) {
        Periods().end(1);
    }
}

bool KeepTimerResolutionWhenHidden() {
    // NOTE: Windows 11 ignores a process's timer period while all its windows are hidden or minimised.
    // HACK: taking control of that throttle with its state bit off switches it off for this process.
    PROCESS_POWER_THROTTLING_STATE state;
    state.Version = PROCESS_POWER_THROTTLING_CURRENT_VERSION;
    state.ControlMask = PROCESS_POWER_THROTTLING_IGNORE_TIMER_RESOLUTION;
    state.StateMask = 0;
    static_assert(sizeof state == 12);
    return SetProcessInformation(GetCurrentProcess(), ProcessPowerThrottling, &state, sizeof state) != FALSE;
}
