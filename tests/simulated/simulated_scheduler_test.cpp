// The simulated clock, wake events and turns. Tests of the engines are only worth as much as this scheduler.
#include "platform/simulated/simulation.h"

#include "platform/clock.h"
#include "platform/input.h"
#include "platform/key_table.h"
#include "platform/threads.h"
#include "platform/wake.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// Bodies take no argument, as in the program; what they work on stands here.
WakeEvent* first = nullptr;
WakeEvent* second = nullptr;
std::string trail;
int answers[4];

class SimulatedScheduler : public testing::Test {
  protected:
    void SetUp() override {
        SimBegin();
        first = CreateWakeEvent(WakeReset::Automatic);
        second = CreateWakeEvent(WakeReset::Manual);
        trail.clear();
    }
    void TearDown() override {
        EXPECT_EQ(SimEnd(), "");
        CloseWakeEvent(first);
        CloseWakeEvent(second);
    }
};

// Clock.

TEST_F(SimulatedScheduler, ClockStandsStillWhileTheDriverComputes) {
    const int64_t before = ReadPerformanceCounter();
    for (int turn = 0; turn < 1000; ++turn) {
        ASSERT_EQ(ReadPerformanceCounter(), before);
    }
    EXPECT_EQ(ReadPerformanceFrequency(), 10'000'000);
}

TEST_F(SimulatedScheduler, SleepAndSpinTakeExactlyTheirTime) {
    SleepMilliseconds(7);
    EXPECT_EQ(SimTicks(), 70'000);
    SpinOnce();
    EXPECT_EQ(SimTicks(), 70'100);
    SimRunFor(0.5);
    EXPECT_EQ(SimTicks(), 75'100);
}

TEST_F(SimulatedScheduler, ClockNeverGoesBack) {
    static int64_t last;
    last = ReadPerformanceCounter();
    const auto body = [] {
        for (int turn = 0; turn < 200; ++turn) {
            SleepMilliseconds(static_cast<uint32_t>(turn % 5));
            EXPECT_GE(ReadPerformanceCounter(), last);
            last = ReadPerformanceCounter();
        }
    };
    std::thread one = StartThread("one", body);
    std::thread two = StartThread("two", body);
    JoinThread(one);
    JoinThread(two);
    EXPECT_EQ(SimTicks(), 400 * kSimTicksPerMillisecond);
}

TEST(SimulatedOptions, SleepsEndLateByAtMostTheOvershoot) {
    SimBegin({.seed = 5, .overshootTicks = 3000});
    int64_t latest = 0;
    for (int turn = 0; turn < 200; ++turn) {
        const int64_t before = SimTicks();
        SleepMilliseconds(1);
        const int64_t late = SimTicks() - before - kSimTicksPerMillisecond;
        ASSERT_GE(late, 0);
        ASSERT_LE(late, 3000);
        latest = late > latest ? late : latest;
    }
    EXPECT_GT(latest, 0);
    EXPECT_EQ(SimEnd(), "");
}

TEST(SimulatedOptions, SendingTakesItsTime) {
    SimBegin({.sendTicks = 40});
    SendInputAction({.kind = InputKind::Button, .down = true, .button = kLeftButton});
    SendInputAction({.kind = InputKind::Button, .down = false, .button = kLeftButton});
    EXPECT_EQ(SimTicks(), 80);
    EXPECT_EQ(SimSentLog()[1].ticks, 80);
    EXPECT_EQ(SimEnd(), "");
}

// Events.

TEST_F(SimulatedScheduler, AutomaticEventLetsOneWaiterGo) {
    const auto body = [] {
        WaitForAny(&first, 1, kNoLimit);
        trail += 'x';
    };
    std::thread one = StartThread("one", body);
    std::thread two = StartThread("two", body);
    SimSettle();
    SignalWake(first);
    SimSettle();
    EXPECT_EQ(trail, "x");
    SignalWake(first);
    SimSettle();
    EXPECT_EQ(trail, "xx");
    JoinThread(one);
    JoinThread(two);
}

TEST_F(SimulatedScheduler, ManualEventLetsAllGoAndStaysSet) {
    const auto body = [] {
        WaitForAny(&second, 1, kNoLimit);
        trail += 'x';
    };
    std::thread one = StartThread("one", body);
    std::thread two = StartThread("two", body);
    SimSettle();
    SignalWake(second);
    JoinThread(one);
    JoinThread(two);
    EXPECT_EQ(trail, "xx");
    EXPECT_EQ(WaitForAny(&second, 1, 0), 0);
    EXPECT_EQ(WaitForAny(&second, 1, 0), 0);
}

TEST_F(SimulatedScheduler, SignalsOfAnAutomaticEventDoNotAddUp) {
    SignalWake(first);
    SignalWake(first);
    EXPECT_EQ(WaitForAny(&first, 1, 0), 0);
    EXPECT_EQ(WaitForAny(&first, 1, 0), -1);
}

TEST_F(SimulatedScheduler, LowestIndexWinsAndOnlyItsSignalIsTaken) {
    WakeEvent* third = CreateWakeEvent(WakeReset::Automatic);
    WakeEvent* events[] = {nullptr, first, third};
    SignalWake(third);
    SignalWake(first);
    EXPECT_EQ(WaitForAny(events, 3, kNoLimit), 1);
    EXPECT_EQ(WaitForAny(events, 3, kNoLimit), 2);
    EXPECT_EQ(WaitForAny(events, 3, 5), -1);
    CloseWakeEvent(third);
}

TEST_F(SimulatedScheduler, WaitEndsAtItsLimitOrAtTheSignal) {
    EXPECT_EQ(WaitForAny(&first, 1, 20), -1);
    EXPECT_EQ(SimMilliseconds(), 20.0);
    std::thread one = StartThread("one", [] { answers[0] = WaitForAny(&first, 1, 100); });
    SimRunFor(30);
    SignalWake(first);
    JoinThread(one);
    EXPECT_EQ(answers[0], 0);
    EXPECT_EQ(SimMilliseconds(), 50.0);
}

TEST_F(SimulatedScheduler, LongestWaiterGetsTheSignal) {
    std::thread one = StartThread("one", [] {
        SleepMilliseconds(5);
        WaitForAny(&first, 1, kNoLimit);
        trail += "late ";
    });
    std::thread two = StartThread("two", [] {
        WaitForAny(&first, 1, kNoLimit);
        trail += "early ";
    });
    SimRunFor(10);
    SignalWake(first);
    SimSettle();
    SignalWake(first);
    JoinThread(one);
    JoinThread(two);
    EXPECT_EQ(trail, "early late ");
}

TEST_F(SimulatedScheduler, NoEventIsNeverSet) {
    WakeEvent* none = nullptr;
    SignalWake(none);
    EXPECT_EQ(WaitForAny(&none, 1, 3), -1);
    EXPECT_EQ(SimMilliseconds(), 3.0);
}

TEST_F(SimulatedScheduler, PollingTakesTime) {
    for (int turn = 0; turn < 10; ++turn) {
        EXPECT_EQ(WaitForAny(&first, 1, 0), -1);
    }
    EXPECT_EQ(SimTicks(), 1000);
}

// Turns.

std::string RaceOf(uint64_t seed, uint64_t* hash) {
    SimBegin({.seed = seed});
    trail.clear();
    std::vector<std::thread> racers;
    racers.push_back(StartThread("a", [] {
        for (int turn = 0; turn < 20; ++turn) {
            trail += 'a';
            SleepMilliseconds(1);
        }
    }));
    racers.push_back(StartThread("b", [] {
        for (int turn = 0; turn < 20; ++turn) {
            trail += 'b';
            SleepMilliseconds(1);
        }
    }));
    racers.push_back(StartThread("c", [] {
        for (int turn = 0; turn < 20; ++turn) {
            trail += 'c';
            SpinOnce();
        }
    }));
    for (std::thread& racer : racers) {
        JoinThread(racer);
    }
    EXPECT_EQ(SimEnd(), "");
    *hash = SimScheduleHash();
    return trail;
}

TEST(SimulatedTurns, SameSeedSameRun) {
    uint64_t hash = 0;
    uint64_t again = 0;
    for (uint64_t seed = 1; seed <= 20; ++seed) {
        EXPECT_EQ(RaceOf(seed, &hash), RaceOf(seed, &again));
        EXPECT_EQ(hash, again);
    }
}

TEST(SimulatedTurns, SeedsDiffer) {
    uint64_t hash = 0;
    uint64_t other = 0;
    int different = 0;
    const std::string reference = RaceOf(1, &hash);
    for (uint64_t seed = 2; seed <= 11; ++seed) {
        different += RaceOf(seed, &other) != reference && other != hash ? 1 : 0;
    }
    EXPECT_EQ(different, 10);
}

TEST_F(SimulatedScheduler, DriverGoesLastAtATime) {
    std::thread one = StartThread("one", [] {
        for (int turn = 0; turn < 3; ++turn) {
            SleepMilliseconds(10);
            trail += 'x';
        }
    });
    SimRunFor(10);
    EXPECT_EQ(trail, "x");
    SimRunFor(20);
    EXPECT_EQ(trail, "xxx");
    JoinThread(one);
}

TEST_F(SimulatedScheduler, RunUntilStopsWhenItHoldsOrAtTheLimit) {
    std::thread one = StartThread("one", [] {
        for (int turn = 0; turn < 5; ++turn) {
            SleepMilliseconds(10);
            trail += 'x';
        }
    });
    EXPECT_TRUE(SimRunUntil([] { return trail == "xxx"; }, 1000));
    EXPECT_EQ(SimMilliseconds(), 30.0);
    EXPECT_FALSE(SimRunUntil([] { return trail == "never"; }, 100));
    EXPECT_EQ(SimMilliseconds(), 130.0);
    JoinThread(one);
}

TEST_F(SimulatedScheduler, DeadlockIsReportedWithItsWaiters) {
    const auto body = [] { WaitForAny(&first, 1, kNoLimit); };
    std::thread one = StartThread("stuck", body);
    try {
        JoinThread(one);
        ADD_FAILURE() << "joined a thread that waits for ever";
    } catch (const SimDeadlock& deadlock) {
        EXPECT_EQ(std::string(deadlock.what()),
                  "deadlock: driver waits for the end of stuck; stuck waits for event 1");
    }
    EXPECT_EQ(SimEnd(), "deadlock: driver waits for the end of all threads; stuck waits for event 1");
    SignalWake(first);
    JoinThread(one);
    EXPECT_EQ(SimLiveThreads(), 0);
}

TEST_F(SimulatedScheduler, EndWaitsForSleepers) {
    std::thread one = StartThread("one", [] { SleepMilliseconds(500); });
    EXPECT_EQ(SimLiveThreads(), 1);
    EXPECT_EQ(SimEnd(), "");
    EXPECT_EQ(SimMilliseconds(), 500.0);
    EXPECT_EQ(SimLiveThreads(), 0);
    JoinThread(one);
}

TEST_F(SimulatedScheduler, ThreadsCanFollowOneAnother) {
    for (int turn = 0; turn < 50; ++turn) {
        std::thread one = StartThread("one", [] {
            SleepMilliseconds(1);
            trail += 'x';
        });
        JoinThread(one);
        ASSERT_EQ(trail.size(), static_cast<size_t>(turn + 1));
    }
}

TEST(SimulatedOptions, PreemptionLetsOthersInAtASend) {
    int interleaved = 0;
    for (uint64_t seed = 1; seed <= 20; ++seed) {
        SimBegin({.seed = seed, .preemptPercent = 50});
        const auto body = [] {
            for (int turn = 0; turn < 5; ++turn) {
                SendInputAction({.kind = InputKind::Button, .down = true, .button = kLeftButton});
                SendInputAction({.kind = InputKind::Button, .down = false, .button = kLeftButton});
            }
        };
        std::thread one = StartThread("one", body);
        std::thread two = StartThread("two", body);
        JoinThread(one);
        JoinThread(two);
        EXPECT_EQ(SimSentCount(), 20U);
        for (size_t index = 0; index + 1 < SimSentLog().size(); ++index) {
            if (SimSentLog()[index].action == SimSentLog()[index + 1].action) {
                ++interleaved;
                break;
            }
        }
        EXPECT_EQ(SimEnd(), "");
    }
    EXPECT_GT(interleaved, 10);
}

}  // namespace
