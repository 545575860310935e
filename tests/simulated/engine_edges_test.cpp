// What the engines do at their limits, where a script would say less than code.
#include "simulated/engine_rig.h"

#include "app/autosave.h"
#include "engines/autoclicker.h"
#include "engines/dispatcher.h"
#include "engines/injection.h"
#include "engines/key_spammer.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/hooks.h"
#include "platform/key_table.h"
#include "platform/threads.h"
#include "platform/wake.h"
#include "storage/data_folder.h"
#include "storage/session.h"

#include <limits>

namespace {

std::vector<InputAction> Sent() {
    std::vector<InputAction> actions;
    for (const SimSent& sent : SimSentLog()) {
        actions.push_back(sent.action);
    }
    return actions;
}

using Edges = EngineTest;

TEST_F(Edges, EachCallSendsOneAction) {
    MoveMouseAbsolute(0, 0);
    MoveMouseAbsolute(1919, 1079);
    MoveMouseRelative(-5, 7);
    SendButton(kMiddleButton, true);
    SendMouseFlags(64);
    SendWheel(-120);
    SendKey(46, false);
    SendKey('A', true);
    SendKey(163, true);
    const std::vector<InputAction> expected = {
        {.kind = InputKind::MoveTo},
        {.kind = InputKind::MoveTo, .x = 65501, .y = 65475},
        {.kind = InputKind::MoveBy, .x = -5, .y = 7},
        {.kind = InputKind::Button, .down = true, .button = kMiddleButton},
        {.kind = InputKind::Button, .down = false, .button = kMiddleButton},
        {.kind = InputKind::Wheel, .wheelDelta = -120},
        KeyAction(0x53, true, false),
        KeyAction(0x1E, false, true),
        KeyAction(0x1D, false, true),
    };
    EXPECT_EQ(Sent(), expected);
}

TEST_F(Edges, ScreenSizeIsReadAtEachMove) {
    MoveMouseAbsolute(500, 500);
    SimSetScreen(1000, 1000);
    MoveMouseAbsolute(500, 500);
    EXPECT_EQ(Sent()[0].x, (500 << 16) / 1920);
    EXPECT_EQ(Sent()[1].x, 32768);
    EXPECT_EQ(Sent()[1].y, 32768);
}

TEST_F(Edges, PlaybackStopsInTheMiddleOfALongTurnOfTheWheel) {
    EndRig();
    BeginRig({.sendsNotches = true});
    SetRigMacro({{.type = EvScroll, .wheel = std::numeric_limits<int32_t>::max()}, KeyEvent(0, 'A', true)});
    RigPage("startPlayback");
    SimRunFor(100);
    EXPECT_GT(SimSentCount(), 1000U);
    const int64_t pressed = SimTicks();
    SimKey(118, true);
    SimRunFor(100);
    EXPECT_FALSE(engineState.playing);
    EXPECT_LE(SimLastSentTicks() - pressed, kSimTicksPerMillisecond);
    EXPECT_EQ(SimSentKeys(true), 0U);
}

TEST_F(Edges, AFullTargetListDropsTheKey) {
    SetRigTargets(std::vector<uint32_t>(256, 'A'));
    RigPage("reassignKey", "keyspamtarget");
    SimKey('B', true);
    SimSettle();
    EXPECT_EQ(keySpammerSettings.targetCount, 256);
    EXPECT_EQ(keySpammerSettings.targets[255], 65U);
    EXPECT_EQ(engineState.capture.load().target, 0U);
    RigPage("removeKeySpamTarget", "0");
    RigPage("reassignKey", "keyspamtarget");
    SimKey('C', true);
    SimSettle();
    EXPECT_EQ(keySpammerSettings.targetCount, 256);
    EXPECT_EQ(keySpammerSettings.targets[255], 67U);
}

TEST_F(Edges, AChordOfAllTargetsIsReleasedToTheLast) {
    SetRigTargets(std::vector<uint32_t>(256, 'A'));
    keySpammerSettings.chord = true;
    RigPage("startKeySpam");
    SimSettle();
    EXPECT_EQ(SimSentKeys(true), 256U);
    EXPECT_EQ(SimSentKeys(false), 256U);
    RigPage("stopKeySpam");
    SimSettle();
    EXPECT_EQ(SimSentKeys(false), 512U);
}

int notices = 0;
void CountNotice(bool wait) {
    EXPECT_TRUE(wait);
    ++notices;
}

TEST_F(Edges, TheEditorHearsOfEachRunOfTheKeySpammerAndEachRoundOfThePlayback) {
    notices = 0;
    editorBusyNotice = CountNotice;
    RigPage("startSpammer");
    SimRunFor(20);
    EXPECT_EQ(notices, 0);
    RigPage("startKeySpam");
    SimRunFor(100);
    EXPECT_EQ(notices, 1);
    RigPage("stopKeySpam");
    SimSettle();
    RigPage("startKeySpam");
    SimSettle();
    EXPECT_EQ(notices, 2);
    RigPage("stopKeySpam");
    SimSettle();
    RigPage("startPlayback");  // empty: nothing to be busy with
    SimSettle();
    EXPECT_EQ(notices, 2);
    macroSettings.loop = true;
    macroSettings.loopPauseMilliseconds = 10;
    SetRigMacro({KeyEvent(0, 'A', true)});
    RigPage("startPlayback");
    SimRunFor(25);
    EXPECT_EQ(notices, 5);
}

// The spammer's first round waits for the editor; the run goes on when it has answered.
TEST_F(Edges, ASlowEditorDelaysTheFirstRoundOnly) {
    editorBusyNotice = [](bool) { SleepMilliseconds(500); };
    keySpammerSettings.intervalMilliseconds = 100;
    RigPage("startKeySpam");
    SimRunFor(499.9);
    EXPECT_EQ(SimSentCount(), 0U);
    SimRunFor(200.1);
    EXPECT_EQ(SimSentLog()[0].ticks, 500 * kSimTicksPerMillisecond);
    EXPECT_EQ(SimSentCount(), 6U);
}

TEST_F(Edges, AKeyReplacedInAChordIsReleasedAsPressed) {
    SetRigTargets({'A', 'B'});
    keySpammerSettings.chord = true;
    SimOnSent([](const SimSent& sent) {
        if (sent.action == KeyAction(ScanCodeOfKey('B'), false, true)) {
            keySpammerSettings.targets[0] = 'C';
        }
    });
    RigPage("startKeySpam");
    SimSettle();
    const std::vector<InputAction> sent = Sent();
    ASSERT_EQ(sent.size(), 4U);
    EXPECT_EQ(sent[2].scanCode, ScanCodeOfKey('A'));
    EXPECT_EQ(sent[3].scanCode, ScanCodeOfKey('B'));
    SimRunFor(5);
    EXPECT_EQ(Sent()[4].scanCode, ScanCodeOfKey('C'));  // the slot has noticed the new key
}

TEST_F(Edges, SpeedIsReadForEachEventAndInfinityIsNeverReached) {
    SetRigMacro({KeyEvent(std::numeric_limits<double>::infinity(), 'A', true)});
    RigPage("startPlayback");
    SimRunFor(100000);
    EXPECT_TRUE(engineState.playing);
    EXPECT_EQ(SimSentCount(), 0U);
    RigPage("stopPlayback");
    SimRunFor(2);
    EXPECT_FALSE(engineState.playing);
}

TEST_F(Edges, AHiddenPointerCountsAsTheCorner) {
    SimSetPointer(500, 500);
    SimHidePointer(true);
    SetRigMacro({KeyEvent(0, 'A', true)});
    RigPage("startPlayback");
    SimRunFor(10);
    EXPECT_EQ(SimSentCount(), 1U);
    EXPECT_FALSE(engineState.playing);
}

TEST_F(Edges, ShutdownEndsEveryRunAtOnce) {
    macroSettings.loop = true;
    macroSettings.loopPauseMilliseconds = -1;
    keySpammerSettings.intervalHours = 100;
    autoclickerSettings.intervalHours = 100;
    SetRigMacro({KeyEvent(0, 'A', true)});
    RigPage("startPlayback");
    RigPage("startSpammer");
    RigPage("startKeySpam");
    SimRunFor(10);
    EXPECT_TRUE(engineState.playing && engineState.autoClicking && engineState.keySpamming);
    const double before = SimMilliseconds();
    EXPECT_EQ(EndRig(), "");
    EXPECT_EQ(SimMilliseconds(), before);
    BeginRig();
}

TEST_F(Edges, ShutdownDuringARoundEndsItWithinAMillisecond) {
    SetRigMacro({KeyEvent(0, 'A', true), KeyEvent(3600, 'A', false)});
    RigPage("startPlayback");
    SimRunFor(10.5);
    const double before = SimMilliseconds();
    EXPECT_EQ(EndRig(), "");
    EXPECT_LE(SimMilliseconds() - before, 1.0);
    EXPECT_EQ(SimSentCount(), 1U);
    BeginRig();
}

// Hooks that the system refuses: no hotkeys and no recorded input, the rest works.
TEST(EdgesWithoutHooks, TheEnginesServeThePageAllTheSame) {
    BeginRig({}, false);
    EXPECT_FALSE(SimHooksInstalled());
    SimKey(117, true);
    SimSettle();
    EXPECT_EQ(SimSentCount(), 0U);
    RigPage("startSpammer");
    SimRunFor(5);
    EXPECT_EQ(SimSentCount(), 4U);
    RigPage("startRecording");
    SimKey('A', true);
    SimSettle();
    RigPage("stopRecording");
    SimSettle();
    EXPECT_TRUE(RigMacro().empty());
    EXPECT_FALSE(engineState.autoClicking);
    EXPECT_EQ(EndRig(), "");
}

TEST_F(Edges, SignalsWithoutEventsAreNothing) {
    EXPECT_EQ(EndRig(), "");
    engineState.requestStartAutoclicker = true;
    DispatchRequests();  // every event is closed and cleared
    EXPECT_TRUE(engineState.autoClicking);
    BeginRig();
}

// Autosave.

class Autosave : public EngineTest {
  protected:
    void SetUp() override {
        EngineTest::SetUp();
        SetSessionPath(RigFolder() + "/autosave.dat");
        RemoveFile(SessionPath());
        thread_ = StartThread("autosave", AutosaveThreadMain);
    }
    void TearDown() override {
        engineState.running = false;
        const double before = SimMilliseconds();
        JoinThread(thread_);
        EXPECT_LE(SimMilliseconds() - before, 100.0);
        RemoveFile(SessionPath());
        EngineTest::TearDown();
    }
    std::thread thread_;
};

TEST_F(Autosave, SavesEveryFiveSeconds) {
    SimRunFor(4999);
    EXPECT_FALSE(FileExists(SessionPath()));
    SimRunFor(1);
    EXPECT_TRUE(FileExists(SessionPath()));
    RemoveFile(SessionPath());
    SimRunFor(4999);
    EXPECT_FALSE(FileExists(SessionPath()));
    SimRunFor(1);
    EXPECT_TRUE(FileExists(SessionPath()));
}

TEST_F(Autosave, SkipsASaveThatFindsTheLockHeld) {
    SimRunFor(4999);
    WithMacroMutexHeld([] { SimRunFor(1); });
    EXPECT_FALSE(FileExists(SessionPath()));
    SimRunFor(5000);
    EXPECT_TRUE(FileExists(SessionPath()));
}

TEST_F(Autosave, KeepsTheLastFileWhereThePathCannotBeOpened) {
    SimRunFor(5000);
    std::string saved;
    ASSERT_TRUE(ReadFileBytes(SessionPath(), &saved));
    SetRigMacro({KeyEvent(0, 'A', true)});
    SimFailPath(SessionPath());
    SimRunFor(5000);
    SimFailPath("");
    std::string kept;
    ASSERT_TRUE(ReadFileBytes(SessionPath(), &kept));
    EXPECT_EQ(kept, saved);
}

}  // namespace
