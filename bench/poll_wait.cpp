// Measures how long a hook call waits for the status polls of the page and for the growth of the event list. A recording
// onto a macro of a million events goes on at 8,000 events a second, as from a fast mouse, and the page polls 8 times a
// second. All input of the session waits for a hook call. The calls are made here, without the system.
#include "app/reports.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "storage/data_folder.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr size_t kEventsBefore = 1'000'000;
constexpr int kRounds = 8;
constexpr int kSlicesARound = 16;
constexpr int kCallsASlice = 1000;
constexpr std::chrono::microseconds kCallPeriod(125);

double MicrosecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::micro>(Clock::now() - begin).count();
}

void PrepareRecording(size_t room) {
    std::vector<UnifiedEvent> events;
    events.reserve(kEventsBefore + room);
    events.resize(kEventsBefore, {.type = EvAbsMove, .time = 1234.5, .x = 1000, .y = 1000});
    ResetEngineState();
    MutexLock lock(macroMutex);
    macroState.profiles.push_back(Profile{DefaultProfileName, "", std::move(events)});
    MarkMacroChanged();
    engineState.counterFrequency = ReadPerformanceFrequency();
    engineState.recording = true;
}

// A thread that does its work once for each slice.
struct Worker {
    std::atomic<int> wanted{0};
    std::atomic<int> done{0};
    std::atomic<bool> stop{false};
    double longest = 0;  // microseconds of one turn
    std::thread thread;

    explicit Worker(const std::function<void()>& work)
        : thread([this, work] {
              for (int turn = 0; !stop;) {
                  if (turn == wanted) {
                      std::this_thread::sleep_for(std::chrono::milliseconds(1));
                      continue;
                  }
                  const Clock::time_point begin = Clock::now();
                  work();
                  longest = std::max(longest, MicrosecondsSince(begin));
                  done = ++turn;
              }
          }) {}
    void End() {
        stop = true;
        thread.join();
    }
};

// Records for an eighth of a second, and on until the worker's turn is done. Returns the longest hook call in
// microseconds.
double LongestCallOfSlice(int64_t* counter, Worker* worker) {
    double longest = 0;
    if (worker != nullptr) {
        ++worker->wanted;
    }
    Clock::time_point next = Clock::now();
    for (int call = 0; call < kCallsASlice || (worker != nullptr && worker->done != worker->wanted); ++call) {
        while (Clock::now() < next) {
        }
        next += kCallPeriod;
        ++*counter;
        const MouseHookRecord move = {.kind = PointerEvent::Move,
                                      .x = static_cast<int32_t>(*counter % 1900),
                                      .y = 5,
                                      .counter = *counter};
        const Clock::time_point begin = Clock::now();
        MouseHook(move);
        longest = std::max(longest, MicrosecondsSince(begin));
    }
    return longest;
}

void Print(const char* name, std::vector<double> slices) {
    std::sort(slices.begin(), slices.end());
    std::printf("%s | %.1f | %.1f\n", name, slices[slices.size() / 2], slices.back());
}

double Median(std::vector<double> slices) {
    std::nth_element(slices.begin(), slices.begin() + static_cast<std::ptrdiff_t>(slices.size() / 2),
                     slices.end());
    return slices[slices.size() / 2];
}

// Every other round has a poll in each of its slices.
void MeasurePolls() {
    PrepareRecording(kEventsBefore);
    PollStatus();  // the first poll builds the whole text
    std::vector<double> alone;
    std::vector<double> polled;
    double longestPoll = 0;
    int64_t counter = 0;
    for (int round = 0; round < kRounds; ++round) {
        for (int slice = 0; slice < kSlicesARound; ++slice) {
            alone.push_back(LongestCallOfSlice(&counter, nullptr));
        }
        Worker page(PollStatus);
        for (int slice = 0; slice < kSlicesARound; ++slice) {
            polled.push_back(LongestCallOfSlice(&counter, &page));
        }
        page.End();
        longestPoll = std::max(longestPoll, page.longest);
    }
    std::printf("Longest hook call of each eighth of a second, microseconds | median | worst\n");
    Print("no polls", alone);
    Print("8 polls a second", polled);
    std::printf("polls / no polls, at the median | %.2f\n", Median(polled) / Median(alone));
    std::printf("longest poll, milliseconds | %.1f\n", longestPoll / 1000);
}

// What a poll does while it holds the lock, by itself.
void MeasureCopy() {
    std::vector<UnifiedEvent> copy(kEventsPerHold);
    std::vector<double> times;
    for (size_t first = 0; first + kEventsPerHold < kEventsBefore; first += kEventsPerHold) {
        const Clock::time_point begin = Clock::now();
        {
            MutexLock lock(macroMutex);
            std::copy_n(CurrentProfile()->events.begin() + static_cast<std::ptrdiff_t>(first), kEventsPerHold,
                        copy.begin());
        }
        times.push_back(MicrosecondsSince(begin));
    }
    std::printf("\nLock held for one part of a copy, microseconds | median | worst\n");
    Print("4,096 events", times);
}

// The list of a million events gets full and grows, by the thread that does so or by the hook call itself.
void MeasureGrowth() {
    constexpr int kGrowths = 10;
    constexpr size_t kLittleRoom = 500;
    constexpr size_t kRoomOfTwoSeconds = 16000;
    std::vector<double> byThread;
    std::vector<double> byHook;
    int64_t counter = 0;
    for (int growth = 0; growth < kGrowths; ++growth) {
        PrepareRecording(kLittleRoom);
        byHook.push_back(LongestCallOfSlice(&counter, nullptr));
        PrepareRecording(kRoomOfTwoSeconds);
        Worker autosave(GrowEventRoom);
        byThread.push_back(LongestCallOfSlice(&counter, &autosave));
        autosave.End();
    }
    std::printf(
        "\nLongest hook call while a list of a million events grows, microseconds | median | worst\n");
    Print("grown by another thread", byThread);
    Print("grown by the hook call", byHook);
}

}  // namespace

int main() {
    const fs::path folder =
        fs::temp_directory_path() / ("varnelle-bench-" + std::to_string(std::random_device()()));
    fs::create_directory(folder);
    setenv("LOCALAPPDATA", folder.c_str(), 1);  // keeps the data of the user untouched
    MeasurePolls();
    MeasureCopy();
    MeasureGrowth();
    fs::remove_all(folder);
    return 0;
}
