// The simulated platform itself: a green run of the engines means something only if the double keeps its word.
#include "platform/simulated/simulation.h"

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/page_host.h"
#include "platform/process.h"
#include "platform/threads.h"
#include "platform/wake.h"
#include "simulated/engine_rig.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Bodies take no argument, as in the program; what they work on stands here.
WakeEvent* first = nullptr;
WakeEvent* second = nullptr;
std::string trail;
int answers[4];

class Double : public testing::Test {
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

TEST_F(Double, ClockStandsStillWhileTheDriverComputes) {
    const int64_t before = ReadPerformanceCounter();
    for (int turn = 0; turn < 1000; ++turn) {
        ASSERT_EQ(ReadPerformanceCounter(), before);
    }
    EXPECT_EQ(ReadPerformanceFrequency(), 10'000'000);
}

TEST_F(Double, SleepAndSpinTakeExactlyTheirTime) {
    SleepMilliseconds(7);
    EXPECT_EQ(SimTicks(), 70'000);
    SpinOnce();
    EXPECT_EQ(SimTicks(), 70'100);
    SimRunFor(0.5);
    EXPECT_EQ(SimTicks(), 75'100);
}

TEST_F(Double, ClockNeverGoesBack) {
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

TEST(DoubleOptions, SleepsEndLateByAtMostTheOvershoot) {
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

TEST(DoubleOptions, SendingTakesItsTime) {
    SimBegin({.sendTicks = 40});
    SendInputRecord({.type = kInputMouse, .dwFlags = kMouseLeftDown});
    SendInputRecord({.type = kInputMouse, .dwFlags = kMouseLeftUp});
    EXPECT_EQ(SimTicks(), 80);
    EXPECT_EQ(SimSentLog()[1].ticks, 80);
    EXPECT_EQ(SimEnd(), "");
}

// Events.

TEST_F(Double, AutomaticEventLetsOneWaiterGo) {
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

TEST_F(Double, ManualEventLetsAllGoAndStaysSet) {
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

TEST_F(Double, SignalsOfAnAutomaticEventDoNotAddUp) {
    SignalWake(first);
    SignalWake(first);
    EXPECT_EQ(WaitForAny(&first, 1, 0), 0);
    EXPECT_EQ(WaitForAny(&first, 1, 0), -1);
}

TEST_F(Double, LowestIndexWinsAndOnlyItsSignalIsTaken) {
    WakeEvent* third = CreateWakeEvent(WakeReset::Automatic);
    WakeEvent* events[] = {nullptr, first, third};
    SignalWake(third);
    SignalWake(first);
    EXPECT_EQ(WaitForAny(events, 3, kNoLimit), 1);
    EXPECT_EQ(WaitForAny(events, 3, kNoLimit), 2);
    EXPECT_EQ(WaitForAny(events, 3, 5), -1);
    CloseWakeEvent(third);
}

TEST_F(Double, WaitEndsAtItsLimitOrAtTheSignal) {
    EXPECT_EQ(WaitForAny(&first, 1, 20), -1);
    EXPECT_EQ(SimMilliseconds(), 20.0);
    std::thread one = StartThread("one", [] { answers[0] = WaitForAny(&first, 1, 100); });
    SimRunFor(30);
    SignalWake(first);
    JoinThread(one);
    EXPECT_EQ(answers[0], 0);
    EXPECT_EQ(SimMilliseconds(), 50.0);
}

TEST_F(Double, LongestWaiterGetsTheSignal) {
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

TEST_F(Double, NoEventIsNeverSet) {
    WakeEvent* none = nullptr;
    SignalWake(none);
    EXPECT_EQ(WaitForAny(&none, 1, 3), -1);
    EXPECT_EQ(SimMilliseconds(), 3.0);
}

TEST_F(Double, PollingTakesTime) {
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

TEST(DoubleTurns, SameSeedSameRun) {
    uint64_t hash = 0;
    uint64_t again = 0;
    for (uint64_t seed = 1; seed <= 20; ++seed) {
        EXPECT_EQ(RaceOf(seed, &hash), RaceOf(seed, &again));
        EXPECT_EQ(hash, again);
    }
}

TEST(DoubleTurns, SeedsDiffer) {
    uint64_t hash = 0;
    uint64_t other = 0;
    int different = 0;
    const std::string reference = RaceOf(1, &hash);
    for (uint64_t seed = 2; seed <= 11; ++seed) {
        different += RaceOf(seed, &other) != reference && other != hash ? 1 : 0;
    }
    EXPECT_EQ(different, 10);
}

TEST_F(Double, DriverGoesLastAtATime) {
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

TEST_F(Double, RunUntilStopsWhenItHoldsOrAtTheLimit) {
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

TEST_F(Double, DeadlockIsReportedWithItsWaiters) {
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

TEST_F(Double, EndWaitsForSleepers) {
    std::thread one = StartThread("one", [] { SleepMilliseconds(500); });
    EXPECT_EQ(SimLiveThreads(), 1);
    EXPECT_EQ(SimEnd(), "");
    EXPECT_EQ(SimMilliseconds(), 500.0);
    EXPECT_EQ(SimLiveThreads(), 0);
    JoinThread(one);
}

TEST_F(Double, ThreadsCanFollowOneAnother) {
    for (int turn = 0; turn < 50; ++turn) {
        std::thread one = StartThread("one", [] {
            SleepMilliseconds(1);
            trail += 'x';
        });
        JoinThread(one);
        ASSERT_EQ(trail.size(), static_cast<size_t>(turn + 1));
    }
}

TEST(DoubleOptions, PreemptionLetsOthersInAtASend) {
    int interleaved = 0;
    for (uint64_t seed = 1; seed <= 20; ++seed) {
        SimBegin({.seed = seed, .preemptPercent = 50});
        const auto body = [] {
            for (int turn = 0; turn < 5; ++turn) {
                SendInputRecord({.type = kInputMouse, .dwFlags = kMouseLeftDown});
                SendInputRecord({.type = kInputMouse, .dwFlags = kMouseLeftUp});
            }
        };
        std::thread one = StartThread("one", body);
        std::thread two = StartThread("two", body);
        JoinThread(one);
        JoinThread(two);
        EXPECT_EQ(SimSentCount(), 20U);
        for (size_t index = 0; index + 1 < SimSentLog().size(); ++index) {
            if (SimSentLog()[index].record == SimSentLog()[index + 1].record) {
                ++interleaved;
                break;
            }
        }
        EXPECT_EQ(SimEnd(), "");
    }
    EXPECT_GT(interleaved, 10);
}

// Input.

std::string Seen() {
    std::string text;
    for (const SimSeen& seen : SimSeenLog()) {
        switch (seen.kind) {
        case SimSeenKind::Key:
            text += SimNameOfKey(seen.code) + (seen.down ? "+" : "-");
            break;
        case SimSeenKind::Button:
            text += "b" + std::to_string(seen.code) + (seen.down ? "+" : "-");
            break;
        case SimSeenKind::Move:
            text += "m" + std::to_string(seen.x) + "," + std::to_string(seen.y);
            break;
        case SimSeenKind::Wheel:
            text += "w" + std::to_string(seen.wheel);
            break;
        case SimSeenKind::HorizontalWheel:
            text += "h" + std::to_string(seen.wheel);
            break;
        }
        text += seen.injected ? "! " : " ";
    }
    return text;
}

TEST_F(Double, SentInputMovesThePointerAndReachesTheApplication) {
    int32_t x = 0;
    int32_t y = 0;
    for (int32_t pixel = 0; pixel < 1920; ++pixel) {
        SendInputRecord(
            {.type = kInputMouse, .dx = (pixel << 16) / 1920, .dwFlags = kMouseMove | kMouseAbsolute});
        ASSERT_TRUE(ReadPointerPosition(&x, &y));
        ASSERT_EQ(x, pixel);
    }
    for (int32_t pixel = 0; pixel < 1080; ++pixel) {
        SendInputRecord(
            {.type = kInputMouse, .dy = (pixel << 16) / 1080, .dwFlags = kMouseMove | kMouseAbsolute});
        ASSERT_TRUE(ReadPointerPosition(&x, &y));
        ASSERT_EQ(y, pixel);
    }
    SimSetPointer(100, 100);
    SendInputRecord({.type = kInputMouse, .dx = -7, .dy = 9, .dwFlags = kMouseMove});
    EXPECT_TRUE(ReadPointerPosition(&x, &y));
    EXPECT_EQ(x, 93);
    EXPECT_EQ(y, 109);
    SimHidePointer(true);
    EXPECT_FALSE(ReadPointerPosition(&x, &y));
}

TEST_F(Double, SentKeysGoByScanCode) {
    SendInputRecord({.type = kInputKeyboard, .wScan = 0x1E, .dwFlags = kKeyScanCode});
    EXPECT_TRUE(SimKeyIsDown('A'));
    SendInputRecord({.type = kInputKeyboard, .wScan = 0x1E, .dwFlags = kKeyScanCode | kKeyUp});
    EXPECT_FALSE(SimKeyIsDown('A'));
    SendInputRecord({.type = kInputKeyboard, .wScan = 0x48, .dwFlags = kKeyScanCode | kKeyExtended});
    SendInputRecord({.type = kInputKeyboard, .wScan = 0x48, .dwFlags = kKeyScanCode});
    SendInputRecord({.type = kInputKeyboard, .wScan = 0, .dwFlags = kKeyScanCode});  // no key
    EXPECT_EQ(Seen(), "A+! A-! Up+! Num8+! ");
    EXPECT_EQ(SimSentCount(), 5U);
    EXPECT_EQ(SimSentCount(kInputKeyboard, kKeyScanCode), 3U);
}

TEST_F(Double, KeyTableAgreesWithItself) {
    for (uint32_t key = 1; key < 256; ++key) {
        const std::string name = SimNameOfKey(key);
        EXPECT_EQ(SimKeyFromName(name), key) << name;
    }
    EXPECT_EQ(SimKeyFromName("F6"), 117U);
    EXPECT_EQ(SimKeyFromName("Nonsense"), 0U);
    EXPECT_EQ(ScanCodeOfKey(17), ScanCodeOfKey(162));
    EXPECT_EQ(ScanCodeOfKey(255), 0U);
    EXPECT_EQ(SystemKeyName(0x57 << 16), "F11");
    EXPECT_EQ(SystemKeyName((0x48 << 16) | (1 << 24)), "Up");
    EXPECT_EQ(SystemKeyName(0x48 << 16), "Num 8");
    EXPECT_EQ(SystemKeyName(0), "");
}

TEST_F(Double, CountingKeepsNoRecords) {
    SimSetLogMode(SimLogMode::CountOnly);
    SendInputRecord({.type = kInputMouse, .dwFlags = kMouseLeftDown});
    SimKey('A', true);
    EXPECT_EQ(SimSentLog().size(), 0U);
    EXPECT_EQ(SimSeenLog().size(), 0U);
    EXPECT_EQ(SimSentCount(), 1U);
    EXPECT_EQ(SimSeenCount(), 2U);
}

// Hooks: sinks that note what they are told and consume what they are asked to.

struct SinkNotes {
    std::vector<KeyHookRecord> keys;
    std::vector<MouseHookRecord> mouse;
    std::vector<RawMouseRecord> raw;
    std::vector<uint32_t> sessions;
    uint32_t consumedKey = 0;
    bool consumeButtons = false;
    int interestReads = 0;
    uint32_t interestCode = 0;
};
SinkNotes notes;

HookAnswer NoteKey(const KeyHookRecord& record) {
    notes.keys.push_back(record);
    return !record.injected && record.virtualKey == notes.consumedKey ? HookAnswer::Consume
                                                                      : HookAnswer::Pass;
}
HookAnswer NoteMouse(const MouseHookRecord& record) {
    notes.mouse.push_back(record);
    return !record.injected && notes.consumeButtons && record.message != kMouseMoveMessage
               ? HookAnswer::Consume
               : HookAnswer::Pass;
}
void NoteRaw(const RawMouseRecord& record) {
    notes.raw.push_back(record);
}
void NoteSession(uint32_t change) {
    notes.sessions.push_back(change);
}
void NoteInterest(HookInterest* interest) {
    ++notes.interestReads;
    interest->codes[0] = notes.interestCode;
    interest->codeCount = 1;
}

class DoubleHooks : public Double {
  protected:
    void SetUp() override {
        Double::SetUp();
        notes = SinkNotes();
        thread_ = StartThread("hooks", [] {
            RunHookThread({NoteKey, NoteMouse, NoteRaw, NoteSession, NoteInterest});
        });
        SimSettle();
        ASSERT_TRUE(SimHooksInstalled());
    }
    void TearDown() override {
        StopHookThread();
        JoinThread(thread_);
        EXPECT_FALSE(SimHooksInstalled());
        Double::TearDown();
    }
    std::thread thread_;
};

TEST_F(DoubleHooks, RealInputIsNotInjectedAndSentInputIs) {
    SimKey('A', true);
    SimKey('B', true, true);
    SimSettle();
    SendInputRecord({.type = kInputKeyboard, .wScan = 0x1E, .dwFlags = kKeyScanCode | kKeyUp});
    ASSERT_EQ(notes.keys.size(), 3U);
    EXPECT_FALSE(notes.keys[0].injected);
    EXPECT_EQ(notes.keys[0].message, kKeyDownMessage);
    EXPECT_EQ(notes.keys[0].virtualKey, 65U);
    EXPECT_TRUE(notes.keys[1].injected);
    EXPECT_TRUE(notes.keys[2].injected);
    EXPECT_EQ(notes.keys[2].message, kKeyUpMessage);
    EXPECT_EQ(Seen(), "A+ B+! A-! ");
}

TEST_F(DoubleHooks, ConsumedInputReachesNothing) {
    notes.consumedKey = 'A';
    notes.interestCode = 'A';
    HookInterestChanged();
    SimSettle();
    SimKey('A', true);
    SimKey('B', true);
    SimKey('A', false);
    SimSettle();
    EXPECT_EQ(Seen(), "B+ ");
    EXPECT_FALSE(SimKeyIsDown('A'));
    EXPECT_TRUE(SimHookComplaints().empty());
    notes.consumeButtons = true;
    SimButton(2, true);
    SimSettle();
    EXPECT_FALSE(SimButtonIsDown(2));
    EXPECT_EQ(Seen(), "B+ ");
    ASSERT_EQ(SimHookComplaints().size(), 1U);
    EXPECT_EQ(SimHookComplaints()[0], "consumed without announced interest: code 2");
}

TEST_F(DoubleHooks, MouseMessagesCarryPointDataAndTime) {
    SimMove(300, 200);
    SimRunFor(2);
    SimButton(1, true);
    SimButton(6, true);
    SimButton(6, false);
    SimWheel(-120);
    SimHorizontalWheel(240);
    SimSettle();
    ASSERT_EQ(notes.mouse.size(), 6U);
    EXPECT_EQ(notes.mouse[0].message, kMouseMoveMessage);
    EXPECT_EQ(notes.mouse[0].x, 300);
    EXPECT_EQ(notes.mouse[1].message, kLeftDownMessage);
    EXPECT_EQ(notes.mouse[1].y, 200);
    EXPECT_EQ(notes.mouse[1].counter - notes.mouse[0].counter, 2 * kSimTicksPerMillisecond);
    EXPECT_EQ(notes.mouse[2].message, kSideDownMessage);
    EXPECT_EQ(notes.mouse[2].mouseData >> 16, 2U);
    EXPECT_EQ(notes.mouse[3].message, kSideUpMessage);
    EXPECT_EQ(static_cast<int16_t>(notes.mouse[4].mouseData >> 16), -120);
    EXPECT_EQ(notes.mouse[5].message, kHorizontalWheelMessage);
    EXPECT_EQ(Seen(), "m300,200 b1+ b6+ b6- w-120 h240 ");
}

TEST_F(DoubleHooks, RawReportsAndSessionChangesArrive) {
    SimRawMove(4, -2);
    SimSessionChange(kSessionLock);
    SimSettle();
    ASSERT_EQ(notes.raw.size(), 1U);
    EXPECT_EQ(notes.raw[0].dx, 4);
    EXPECT_EQ(notes.raw[0].dy, -2);
    EXPECT_EQ(notes.sessions, std::vector<uint32_t>{kSessionLock});
}

TEST_F(DoubleHooks, InterestIsReadAgainWhenItChanged) {
    const int before = notes.interestReads;
    HookInterestChanged();
    HookInterestChanged();
    SimSettle();
    EXPECT_EQ(notes.interestReads, before + 1);
}

TEST_F(DoubleHooks, SysKeysHaveTheirMessages) {
    SimSysKey(115, true);
    SimSysKey(115, false);
    SimSettle();
    EXPECT_EQ(notes.keys[0].message, kSysKeyDownMessage);
    EXPECT_EQ(notes.keys[1].message, kSysKeyUpMessage);
}

TEST_F(Double, RefusedHooksLetInputThrough) {
    SimRefuseHooks(true);
    notes = SinkNotes();
    std::thread thread = StartThread("hooks", [] {
        RunHookThread({NoteKey, NoteMouse, NoteRaw, NoteSession, NoteInterest});
    });
    JoinThread(thread);
    SimKey('A', true);
    EXPECT_TRUE(notes.keys.empty());
    EXPECT_EQ(Seen(), "A+ ");
    StopHookThread();  // without effect
}

// Desktop, process, page, files.

TEST_F(Double, TopmostVisibleWindowOwnsThePoint) {
    const WindowRef below = SimAddWindow("below", 7, 0, 0, 100, 100);
    const WindowRef above = SimAddWindow("above", 8, 50, 50, 150, 150);
    uint32_t process = 0;
    EXPECT_TRUE(ProcessAtPoint(60, 60, &process));
    EXPECT_EQ(process, 8U);
    EXPECT_TRUE(ProcessAtPoint(49, 60, &process));
    EXPECT_EQ(process, 7U);
    EXPECT_FALSE(ProcessAtPoint(150, 150, &process));
    ForceForeground(below);
    EXPECT_TRUE(ProcessAtPoint(60, 60, &process));
    EXPECT_EQ(process, 7U);
    EXPECT_EQ(SimGetDesktop().foreground, below);
    EXPECT_EQ(ListTopLevelWindows()[0].title, "below");
    EXPECT_EQ(FindWindowByTitle("above"), above);
    EXPECT_EQ(FindWindowByTitle("abov"), 0U);
    SimGetDesktop().windows[1].minimised = true;
    EXPECT_TRUE(IsWindowMinimised(below));
    EXPECT_TRUE(ProcessAtPoint(60, 60, &process));
    EXPECT_EQ(process, 8U);
    RestoreWindow(below);
    EXPECT_FALSE(IsWindowMinimised(below));
    SetWindowIcons(above);
    EXPECT_EQ(SimGetDesktop().icons, std::vector<WindowRef>{above});
    ShowErrorMessage("title", "text");
    EXPECT_EQ(SimGetDesktop().messages.at(0).text, "text");
}

TEST_F(Double, ProcessIsWhatTheTestSays) {
    SimSetProgramPath("/some/where/varnelle");
    EXPECT_EQ(ProgramDirectory(), "/some/where");
    EXPECT_TRUE(IsOwnImage(OwnProcessId()));
    EXPECT_FALSE(IsOwnImage(2000));
    SimAddOwnImageProcess(2000);
    EXPECT_TRUE(IsOwnImage(2000));
    EXPECT_EQ(ClaimSingleInstance("a"), InstanceResult::First);
    EXPECT_TRUE(SimOwnsInstanceName("a"));
    SimTakeInstanceName("b");
    EXPECT_EQ(ClaimSingleInstance("b"), InstanceResult::AlreadyRunning);
    ReleaseSingleInstance();
    EXPECT_FALSE(SimOwnsInstanceName("a"));
    static int crashes;
    crashes = 0;
    SetCrashHandler([] { ++crashes; });
    SimCrash();
    EXPECT_EQ(crashes, 1);
    BeginTimerPeriod();
    BeginTimerPeriod();
    EndTimerPeriod();
    EXPECT_EQ(SimTimerPeriods(), 1);
}

void RunPageThread() {
    PageHost* host = nullptr;
    ASSERT_EQ(CreatePageHost(&host), "");
    SetPageTitle(host, "title");
    SetPageSize(host, 420, 560);
    BindPageFunction(host, "echo", [](const std::string& request) { return request; });
    BindPageFunction(host, "refuse",
                     [](const std::string&) -> std::string { throw std::runtime_error("no"); });
    SetPageHtml(host, "<p>");
    DispatchToPage(host, [host] { EvalInPage(host, "early()"); });
    RunPage(host);
    DestroyPageHost(host);
}

TEST_F(Double, PageRunsUntilItIsClosed) {
    std::thread ui = StartThread("ui", RunPageThread);
    SimSettle();
    SimPage& page = SimGetPage();
    EXPECT_TRUE(page.running);
    EXPECT_EQ(page.title, "title");
    EXPECT_EQ(page.width, 420);
    EXPECT_EQ(page.html, "<p>");
    EXPECT_EQ(page.bound, (std::vector<std::string>{"echo", "refuse"}));
    EXPECT_EQ(page.evals, std::vector<std::string>{"early()"});
    EXPECT_NE(FindWindowByTitle("title"), 0U);
    const SimPageAnswer good = SimPageCall("echo", "[1]");
    EXPECT_TRUE(good.resolved);
    EXPECT_EQ(good.text, "[1]");
    const SimPageAnswer bad = SimPageCall("refuse", "[]");
    EXPECT_FALSE(bad.resolved);
    EXPECT_EQ(bad.text, "no");
    EXPECT_FALSE(SimPageCall("absent", "[]").resolved);
    SimClosePage();
    JoinThread(ui);
    EXPECT_FALSE(page.alive);
    EXPECT_EQ(FindWindowByTitle("title"), 0U);
}

TEST_F(Double, PageOnTheDriver) {
    static SimPageAnswer answer;
    SimOnPageRun([] { answer = SimPageCall("echo", "[2]"); });
    RunPageThread();
    EXPECT_TRUE(answer.resolved);
    EXPECT_EQ(answer.text, "[2]");
    SimFailPageHost("missing");
    PageHost* host = nullptr;
    EXPECT_EQ(CreatePageHost(&host), "missing");
    EXPECT_EQ(host, nullptr);
}

TEST_F(Double, FilesAreRealAndFailOnDemand) {
    const std::string path = RigFolder() + "/file";
    std::string bytes;
    EXPECT_TRUE(WriteFileBytes(path, std::string("a\r\n\0b", 5)));
    EXPECT_TRUE(ReadFileBytes(path, &bytes));
    EXPECT_EQ(bytes, std::string("a\r\n\0b", 5));
    EXPECT_TRUE(FileExists(path));
    EXPECT_EQ(SimFileOperations(), 3);
    SimFailFileOperation(2);
    EXPECT_TRUE(ReadFileBytes(path, &bytes));
    EXPECT_FALSE(ReadFileBytes(path, &bytes));
    EXPECT_TRUE(ReadFileBytes(path, &bytes));
    EXPECT_TRUE(MoveFileNoReplace(path, path + "2"));
    EXPECT_TRUE(WriteFileBytes(path, "c"));
    EXPECT_FALSE(MoveFileNoReplace(path, path + "2"));
    SimFailPath(path);
    EXPECT_FALSE(FileExists(path));
    EXPECT_FALSE(WriteFileBytes(path, "d"));
    EXPECT_FALSE(ReadFileBytes(RigFolder(), &bytes));
    EXPECT_TRUE(RemoveFile(path + "2"));
    EXPECT_FALSE(RemoveFile(path + "2"));
    EXPECT_TRUE(CreateFolder(RigFolder() + "/folder"));
    EXPECT_FALSE(CreateFolder(RigFolder() + "/folder"));
    EXPECT_TRUE(RemoveFile(RigFolder() + "/folder"));
}

TEST_F(Double, DataFolderRootThatIsNotUsable) {
    EXPECT_EQ(DataFolderRoot(), ".");
    SimSetDataFolderRoot(std::string(259, 'a'));
    EXPECT_EQ(DataFolderRoot().size(), 259U);
    SimSetDataFolderRoot(std::string(260, 'a'));
    EXPECT_EQ(DataFolderRoot(), ".");
    SimSetTextLineEnd("\r\n");
    EXPECT_EQ(TextLineEnd(), "\r\n");
}

TEST_F(Double, HeldLockIsHeld) {
    EXPECT_TRUE(macroMutex.TryLock());
    macroMutex.Unlock();
    WithMacroMutexHeld([] {
        const bool taken = macroMutex.TryLock();
        EXPECT_FALSE(taken);
        if (taken) {
            macroMutex.Unlock();
        }
    });
    EXPECT_TRUE(macroMutex.TryLock());
    macroMutex.Unlock();
}

}  // namespace
