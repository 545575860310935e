// Measures one hook call while recording onto a macro of a million events: all input of the session waits for it. On the
// simulated backend, so that only our own code is measured.
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/key_table.h"
#include "platform/simulated/simulation.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace {

constexpr size_t kEventsBefore = 1'000'000;
constexpr int kCalls = 200'000;

void PrepareRecording() {
    SimBegin();
    SimAddWindow("other", 4321, 0, 0, 1920, 1080);
    ResetEngineState();
    MutexLock lock(macroMutex);
    macroState.profiles.push_back(Profile{DefaultProfileName, "", std::vector<UnifiedEvent>(kEventsBefore)});
    engineState.counterFrequency = ReadPerformanceFrequency();
    engineState.recordingStartCounter = ReadPerformanceCounter();
    engineState.recording = true;
}

// Median of the calls' times in microseconds.
template <typename Call> double MedianMicroseconds(Call call) {
    using Clock = std::chrono::steady_clock;
    std::vector<double> times;
    times.reserve(kCalls);
    for (int turn = 0; turn < kCalls; ++turn) {
        const Clock::time_point begin = Clock::now();
        call(turn);
        times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
    }
    std::nth_element(times.begin(), times.begin() + kCalls / 2, times.end());
    return times[kCalls / 2];
}

bool HasGrownBy(size_t count) {
    MutexLock lock(macroMutex);
    return CurrentProfile()->events.size() == kEventsBefore + count;
}

bool Report(const char* name, double median) {
    if (!HasGrownBy(kCalls)) {
        std::fprintf(stderr, "%s: the calls were not recorded\n", name);
        return false;
    }
    std::printf("%-14s median %.3f microseconds\n", name, median);
    return true;
}

}  // namespace

int main() {
    PrepareRecording();
    const double key = MedianMicroseconds([](int turn) {
        KeyboardHook({.virtualKey = 'A', .down = turn % 2 == 0, .counter = ReadPerformanceCounter()});
    });
    if (!Report("key", key)) {
        return 1;
    }
    PrepareRecording();
    const double move = MedianMicroseconds([](int turn) {
        MouseHook(
            {.kind = PointerEvent::Move, .x = turn % 1900, .y = 5, .counter = ReadPerformanceCounter()});
    });
    if (!Report("pointer move", move)) {
        return 1;
    }
    PrepareRecording();
    const double button = MedianMicroseconds([](int turn) {
        MouseHook({.kind = turn % 2 == 0 ? PointerEvent::Press : PointerEvent::Release,
                   .button = kLeftButton,
                   .x = 5,
                   .y = 5,
                   .counter = ReadPerformanceCounter()});
    });
    return Report("mouse button", button) ? 0 : 1;
}
