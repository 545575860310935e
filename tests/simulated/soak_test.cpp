// Eight hours in simulated time: counts exact, memory flat, no drift. Under a sanitizer the hours are cut to minutes.
#include "platform/key_table.h"
#include "simulated/engine_rig.h"
#include "simulated/sanitizers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

constexpr int64_t kHourSeconds = kSanitized ? 60 : 3600;
constexpr int64_t kSeconds = 8 * kHourSeconds;
constexpr double kMilliseconds = static_cast<double>(kSeconds) * 1000.0;

// Memory of this process that is in use, in kilobytes.
int64_t ResidentKilobytes() {
    std::FILE* file = std::fopen("/proc/self/status", "r");
    char line[256];
    long long kilobytes = -1;
    while (file != nullptr && std::fgets(line, sizeof line, file) != nullptr) {
        if (std::sscanf(line, "VmRSS: %lld", &kilobytes) == 1) {
            break;
        }
    }
    if (file != nullptr) {
        std::fclose(file);
    }
    return kilobytes;
}

// What a run may take beyond what it took after its first minute.
void ExpectFlat(int64_t before) {
    if (!kSanitized) {
        EXPECT_LT(ResidentKilobytes() - before, 4096);
    }
}

class Soak : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        if (kSanitized) {
            std::printf("eight minutes instead of eight hours\n");
        }
        SimSetLogMode(SimLogMode::CountOnly);
    }
};

TEST_F(Soak, ClickingEveryMillisecond) {
    autoclickerSettings.intervalMilliseconds = 1;
    RigPage("startSpammer");
    SimRunFor(60000);
    const int64_t memory = ResidentKilobytes();
    SimRunFor(kMilliseconds - 60000);
    const uint64_t clicks = static_cast<uint64_t>(kSeconds) * 1000 + 1;  // the first comes at once
    EXPECT_EQ(SimSentButtons(kLeftButton, true), clicks);
    EXPECT_EQ(SimSentButtons(kLeftButton, false), clicks);
    EXPECT_EQ(SimSeenCount(), 2 * clicks);
    EXPECT_EQ(static_cast<uint64_t>(engineState.autoclickerCount), clicks);
    EXPECT_EQ(SimLastSentTicks(), kSeconds * 1000 * kSimTicksPerMillisecond);
    RigPage("stopSpammer");
    SimSettle();
    EXPECT_EQ(SimSentCount(), 2 * clicks + 3);
    ExpectFlat(memory);
}

TEST_F(Soak, ClickingACountedNumber) {
    autoclickerSettings.intervalMilliseconds = 1;
    autoclickerSettings.repeatMode = 0;
    autoclickerSettings.repeatCount = static_cast<int32_t>(kSeconds * 1000);
    RigPage("startSpammer");
    SimRunFor(kMilliseconds - 1);
    EXPECT_TRUE(engineState.autoClicking);
    SimRunFor(10000);
    EXPECT_FALSE(engineState.autoClicking);
    EXPECT_EQ(SimSentCount(), 2U * static_cast<uint64_t>(kSeconds) * 1000U);
}

// A key every second of the recording, with the autoclicker running every millisecond beside it.
void RecordKeysEverySecond(std::vector<UnifiedEvent>* macro) {
    autoclickerSettings.intervalMilliseconds = 1;
    RigPage("startRecording");
    SimSettle();
    RigPage("startSpammer");
    SimSettle();
    for (int64_t second = 0; second < kSeconds; ++second) {
        SimKey('A', second % 2 == 0);
        SimRunFor(1000);
    }
    RigPage("stopRecording");
    SimSettle();
    *macro = RigMacro();
}

TEST_F(Soak, RecordingWhileClicking) {
    std::vector<UnifiedEvent> macro;
    RecordKeysEverySecond(&macro);
    ASSERT_EQ(macro.size(), static_cast<size_t>(kSeconds) + 1);
    EXPECT_EQ(macro[0].type, EvToolState);
    EXPECT_EQ(macro[0].time, 0.0);
    for (int64_t second = 0; second < kSeconds; ++second) {
        const UnifiedEvent& event = macro[static_cast<size_t>(second) + 1];
        ASSERT_EQ(event, KeyEvent(static_cast<double>(second), 'A', second % 2 == 0));
    }
    // None of the clicks is in the macro, and each was sent: the last one falls on the end.
    EXPECT_EQ(SimSentButtons(kLeftButton, true), static_cast<uint64_t>(kSeconds) * 1000 + 1);
}

// How late each key comes, in ticks.
struct Lateness {
    int64_t count = 0;
    int64_t worstInFirstHour = 0;
    int64_t worstInLastHour = 0;
    int64_t last = 0;
};
Lateness lateness;

void NoteLateness(const SimSent& sent) {
    const int64_t second = lateness.count++;
    const int64_t late = sent.ticks - second * 1000 * kSimTicksPerMillisecond;
    lateness.last = late;
    if (second < kHourSeconds) {
        lateness.worstInFirstHour = std::max(lateness.worstInFirstHour, late);
    }
    if (second >= kSeconds - kHourSeconds) {
        lateness.worstInLastHour = std::max(lateness.worstInLastHour, late);
    }
}

std::vector<UnifiedEvent> KeysEverySecond() {
    std::vector<UnifiedEvent> macro;
    for (int64_t second = 0; second < kSeconds; ++second) {
        macro.push_back(KeyEvent(static_cast<double>(second), 'A', second % 2 == 0));
    }
    return macro;
}

// Sending takes time and sleeps end late: neither adds up.
TEST(SoakWithLateSleeps, ReplayingDoesNotDrift) {
    SimOptions options;
    options.sendTicks = 37;
    options.overshootTicks = 9000;
    BeginRig(options);
    SimSetLogMode(SimLogMode::CountOnly);
    SetRigMacro(KeysEverySecond());
    lateness = Lateness();
    SimOnSent(NoteLateness);
    RigPage("startPlayback");
    SimRunFor(60000);
    const int64_t memory = ResidentKilobytes();
    SimRunFor(kMilliseconds - 60000);
    EXPECT_EQ(lateness.count, kSeconds);
    EXPECT_FALSE(engineState.playing);
    // One spin, and the time of one send.
    EXPECT_LE(lateness.worstInFirstHour, options.spinTicks + options.sendTicks);
    EXPECT_LE(lateness.worstInLastHour, options.spinTicks + options.sendTicks);
    ExpectFlat(memory);
    EXPECT_EQ(EndRig(), "");
}

TEST_F(Soak, ReplayingInALoop) {
    macroSettings.loop = true;
    macroSettings.loopPauseMilliseconds = 500;
    SetRigMacro({KeyEvent(0, 'A', true), KeyEvent(1.0, 'A', false)});
    RigPage("startPlayback");
    SimRunFor(60000);
    const int64_t memory = ResidentKilobytes();
    SimRunFor(kMilliseconds - 60000);
    // A round every 1.5 seconds, and the first event of one more at the very end.
    const uint64_t rounds = static_cast<uint64_t>(kSeconds) * 2 / 3;
    EXPECT_EQ(SimSentKeys(true), rounds + 1);
    EXPECT_EQ(SimSentKeys(false), rounds);
    RigPage("stopPlayback");
    SimSettle();
    EXPECT_FALSE(engineState.playing);
    ExpectFlat(memory);
}

// What was recorded in eight hours plays back in eight hours: the tool's start, and each key at its second.
TEST_F(Soak, ReplayingWhatWasRecorded) {
    std::vector<UnifiedEvent> macro;
    RecordKeysEverySecond(&macro);
    autoclickerSettings.intervalMilliseconds =
        600000;  // the autoclicker that the macro starts clicks every ten minutes
    const uint64_t sentBefore = SimSentCount();
    RigPage("startPlayback");
    SimRunFor(kMilliseconds - 1000);
    EXPECT_FALSE(engineState.playing);
    EXPECT_FALSE(engineState.autoClicking);
    const uint64_t clicks = static_cast<uint64_t>((kSeconds - 1) / 600) + 1;
    EXPECT_EQ(SimSentCount() - sentBefore, static_cast<uint64_t>(kSeconds) + 2 * clicks + 3);
    EXPECT_EQ(RigMacro(), macro);
}

}  // namespace
