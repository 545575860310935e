#include "engines/recorder.h"

#include "app/reports.h"
#include "failing_memory.h"
#include "platform/key_table.h"
#include "storage/settings_text.h"
#include "test_support.h"

#include <atomic>
#include <new>
#include <thread>

namespace {

constexpr int64_t kFrequency = 1000;  // so that counter values read as milliseconds
constexpr int64_t kStart = 50000;

class RecorderTest : public DataFolderTest {
  protected:
    RecorderTest() {
        ResetInputState();
        engineState.counterFrequency = kFrequency;
        SetMacro({});
        // The pointer comes from somewhere that no test uses.
        MouseHook(Move(-500, -500, 0));
    }
    ~RecorderTest() override { ResetInputState(); }

    static void SetMacro(std::vector<UnifiedEvent> events) {
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, "untouched", std::move(events)}};
    }
    static std::vector<UnifiedEvent> Macro() {
        MutexLock lock(macroMutex);
        return macroState.profiles[0].events;
    }
    static bool UndoPossible() {
        MutexLock lock(macroMutex);
        return CanUndoContinue();
    }
    static size_t Capacity() {
        MutexLock lock(macroMutex);
        return macroState.profiles[0].events.capacity();
    }
    static void StartAt(int64_t counter) {
        engineState.recordingStartCounter = counter;
        engineState.recording = true;
    }
    static KeyHookRecord KeyDown(uint32_t key, int64_t counter = kStart) {
        return {.virtualKey = key, .down = true, .counter = counter};
    }
    static KeyHookRecord KeyUp(uint32_t key, int64_t counter = kStart) {
        return {.virtualKey = key, .down = false, .counter = counter};
    }
    static MouseHookRecord Move(int32_t x, int32_t y, int64_t counter) {
        return {.kind = PointerEvent::Move, .x = x, .y = y, .counter = counter};
    }
    static MouseHookRecord Press(uint32_t button, int32_t x, int32_t y, int64_t counter) {
        return {.kind = PointerEvent::Press, .button = button, .x = x, .y = y, .counter = counter};
    }
    static MouseHookRecord Release(uint32_t button, int32_t x, int32_t y, int64_t counter) {
        return {.kind = PointerEvent::Release, .button = button, .x = x, .y = y, .counter = counter};
    }
    static MouseHookRecord Wheel(PointerEvent kind, int32_t x, int32_t y, int64_t counter, int32_t delta) {
        return {.kind = kind, .x = x, .y = y, .wheelDelta = delta, .counter = counter};
    }
};

using Events = std::vector<UnifiedEvent>;

}  // namespace

TEST_F(RecorderTest, NothingIsRecordedWhileIdle) {
    KeyboardHook(KeyDown(65));
    MouseHook(Move(1, 2, kStart));
    MouseHook(Press(kLeftButton, 1, 2, kStart));
    MouseHook(Wheel(PointerEvent::Wheel, 1, 2, kStart, 120));
    macroSettings.recordRawMoves = true;
    RawMouseReport({.dx = 1, .dy = 2, .counter = kStart});
    EXPECT_EQ(Macro(), Events{});
}

TEST_F(RecorderTest, KeysWithTheirCaptureTime) {
    StartAt(kStart);
    EXPECT_EQ(KeyboardHook(KeyDown(65, kStart + 250)), HookDecision::Pass);
    KeyboardHook(KeyDown(65, kStart + 280));  // each repeat is an event
    KeyboardHook(KeyUp(65, kStart + 300));
    KeyboardHook(KeyDown(164, kStart + 400));
    KeyboardHook(KeyUp(164, kStart + 1500));
    EXPECT_EQ(Macro(), (Events{{.type = EvKey, .time = 0.25, .virtualKey = 65, .down = true},
                               {.type = EvKey, .time = 0.28, .virtualKey = 65, .down = true},
                               {.type = EvKey, .time = 0.3, .virtualKey = 65},
                               {.type = EvKey, .time = 0.4, .virtualKey = 164, .down = true},
                               {.type = EvKey, .time = 1.5, .virtualKey = 164}}));
}

TEST_F(RecorderTest, InjectedInputIsNeitherRecordedNorAHotkey) {
    StartAt(kStart);
    KeyHookRecord key = KeyDown(118);
    key.injected = true;
    EXPECT_EQ(KeyboardHook(key), HookDecision::Pass);
    key.virtualKey = 65;
    EXPECT_EQ(KeyboardHook(key), HookDecision::Pass);
    engineState.pickingLocation = true;
    hotkeyTable.autoclicker = kRightButton;
    for (MouseHookRecord record :
         {Press(kLeftButton, 5, 5, kStart), Release(kLeftButton, 5, 5, kStart),
          Press(kRightButton, 5, 5, kStart), Wheel(PointerEvent::Wheel, 5, 5, kStart, 120)}) {
        record.injected = true;
        EXPECT_EQ(MouseHook(record), HookDecision::Pass);
    }
    EXPECT_EQ(Macro(), Events{});
    EXPECT_FALSE(engineState.requestTogglePlay);
    EXPECT_FALSE(engineState.requestToggleAutoclicker);
    EXPECT_TRUE(engineState.pickingLocation);
}

TEST_F(RecorderTest, AnInjectedMoveOnlyMovesTheLastPoint) {
    StartAt(kStart);
    MouseHookRecord move = Move(40, 50, kStart);
    move.injected = true;
    MouseHook(move);
    MouseHook(Move(40, 50, kStart + 10));  // the pointer is there already
    EXPECT_EQ(Macro(), Events{});
    MouseHook(Move(41, 50, kStart + 20));
    EXPECT_EQ(Macro(), (Events{{.type = EvAbsMove, .time = 0.02, .x = 41, .y = 50}}));
}

TEST_F(RecorderTest, EveryChangeOfPixelIsOneMove) {
    MouseHook(Move(7, 8, kStart - 5));
    StartAt(kStart);
    MouseHook(Move(7, 8, kStart + 1));
    MouseHook(Move(7, 9, kStart + 2));
    MouseHook(Move(7, 9, kStart + 3));
    MouseHook(Move(8, 9, kStart + 4));
    EXPECT_EQ(Macro(), (Events{{.type = EvAbsMove, .time = 0.002, .x = 7, .y = 9},
                               {.type = EvAbsMove, .time = 0.004, .x = 8, .y = 9}}));
}

TEST_F(RecorderTest, ButtonsAreRecordedByTheirStoredValue) {
    StartAt(kStart);
    const std::pair<MouseHookRecord, uint32_t> recorded[] = {
        {Press(kLeftButton, 11, 12, kStart + 500), 2},    {Release(kLeftButton, 11, 12, kStart + 500), 4},
        {Press(kRightButton, 11, 12, kStart + 500), 8},   {Release(kRightButton, 11, 12, kStart + 500), 16},
        {Press(kMiddleButton, 11, 12, kStart + 500), 32}, {Release(kMiddleButton, 11, 12, kStart + 500), 64}};
    Events expected;
    for (const auto& [record, flags] : recorded) {
        EXPECT_EQ(MouseHook(record), HookDecision::Pass);
        expected.push_back({.type = EvMouseButton, .time = 0.5, .x = 11, .y = 12, .flags = flags});
    }
    EXPECT_EQ(Macro(), expected);
}

TEST_F(RecorderTest, SideButtonsAreOnePressWithoutARelease) {
    StartAt(kStart);
    MouseHook(Press(kFirstSideButton, 1, 2, kStart));
    MouseHook(Release(kFirstSideButton, 1, 2, kStart));
    MouseHook(Press(kSecondSideButton, 1, 2, kStart));
    MouseHook(Release(kSecondSideButton, 1, 2, kStart));
    const UnifiedEvent press = {.type = EvMouseButton, .x = 1, .y = 2, .flags = 128};
    EXPECT_EQ(Macro(), (Events{press, press}));
}

TEST_F(RecorderTest, SideButtonsAreDistinctHotkeys) {
    hotkeyTable.autoclicker = kSecondSideButton;
    EXPECT_EQ(MouseHook(Press(kFirstSideButton, 1, 2, kStart)), HookDecision::Pass);
    EXPECT_EQ(MouseHook(Press(kSecondSideButton, 1, 2, kStart)), HookDecision::Consume);
    EXPECT_EQ(MouseHook(Release(kFirstSideButton, 1, 2, kStart)), HookDecision::Pass);
    EXPECT_EQ(MouseHook(Release(kSecondSideButton, 1, 2, kStart)), HookDecision::Consume);
}

TEST_F(RecorderTest, TheWheelIsASignedDeltaWithoutAPosition) {
    StartAt(kStart);
    MouseHook(Wheel(PointerEvent::Wheel, 300, 400, kStart + 10, 120));
    MouseHook(Wheel(PointerEvent::Wheel, 300, 400, kStart + 20, -120));
    MouseHook(Wheel(PointerEvent::HorizontalWheel, 300, 400, kStart + 30, 120));
    EXPECT_EQ(Macro(), (Events{{.type = EvScroll, .time = 0.01, .wheel = 120},
                               {.type = EvScroll, .time = 0.02, .wheel = -120}}));
}

TEST_F(RecorderTest, EachFilterDropsItsKind) {
    StartAt(kStart);
    macroSettings.recordMoves = false;
    macroSettings.recordButtons = false;
    macroSettings.recordWheel = false;
    macroSettings.recordKeys = false;
    MouseHook(Move(1, 1, kStart));
    MouseHook(Press(kLeftButton, 1, 1, kStart));
    MouseHook(Release(kLeftButton, 1, 1, kStart));
    MouseHook(Wheel(PointerEvent::Wheel, 1, 1, kStart, 120));
    KeyboardHook(KeyDown(65));
    macroSettings.recordRawMoves = true;
    RawMouseReport({.dx = 1, .dy = 1, .counter = kStart});
    EXPECT_EQ(Macro(), Events{});
}

TEST_F(RecorderTest, RelativeMovesComeFromRawReports) {
    StartAt(kStart);
    RawMouseReport({.dx = 9, .dy = 9, .counter = kStart});  // not asked for
    macroSettings.recordRawMoves = true;
    MouseHook(Move(60, 70, kStart + 100));
    RawMouseReport({.dx = -3, .dy = 0, .counter = kStart + 100});
    RawMouseReport({.dx = 0, .dy = 0, .counter = kStart + 150});  // a report about buttons only
    RawMouseReport({.dx = 0, .dy = 4, .counter = kStart + 200});
    MouseHook(Press(kLeftButton, 60, 70, kStart + 300));
    macroSettings.recordRawMoves = false;
    MouseHook(Move(60, 70, kStart + 400));  // where it was seen last
    EXPECT_EQ(Macro(), (Events{{.type = EvRelMove, .time = 0.1, .x = -3},
                               {.type = EvRelMove, .time = 0.2, .y = 4},
                               {.type = EvMouseButton, .time = 0.3, .x = 60, .y = 70, .flags = 2}}));
}

TEST_F(RecorderTest, HotkeysStayOutOfTheMacro) {
    StartAt(kStart);
    EXPECT_EQ(KeyboardHook(KeyDown(119)), HookDecision::Consume);
    EXPECT_EQ(KeyboardHook(KeyDown(119)), HookDecision::Consume);
    EXPECT_EQ(KeyboardHook(KeyUp(119)), HookDecision::Consume);
    hotkeyTable.play = kMiddleButton;
    EXPECT_EQ(MouseHook(Press(kMiddleButton, 1, 1, kStart)), HookDecision::Consume);
    EXPECT_EQ(MouseHook(Release(kMiddleButton, 1, 1, kStart)), HookDecision::Consume);
    EXPECT_EQ(Macro(), Events{});
    engineState.hotkeysEnabled = false;
    EXPECT_EQ(KeyboardHook(KeyDown(119)), HookDecision::Pass);
    EXPECT_EQ(KeyboardHook(KeyUp(119)), HookDecision::Pass);
    EXPECT_EQ(Macro().size(), 2U);
}

TEST_F(RecorderTest, ACapturedKeyIsNotRecordedButItsReleaseIs) {
    StartAt(kStart);
    ReassignKey("play");
    EXPECT_EQ(KeyboardHook(KeyDown(65)), HookDecision::Consume);
    EXPECT_EQ(KeyboardHook(KeyUp(65)), HookDecision::Pass);
    EXPECT_EQ(Macro(), (Events{{.type = EvKey, .virtualKey = 65}}));
}

TEST_F(RecorderTest, ALeftPressPicksTheLocationAndReachesNothing) {
    engineState.pickingLocation = true;
    ReassignKey("play");
    StartAt(kStart);
    EXPECT_EQ(MouseHook(Press(kLeftButton, 123, -45, kStart)), HookDecision::Consume);
    EXPECT_EQ(autoclickerSettings.fixedX, 123);
    EXPECT_EQ(autoclickerSettings.fixedY, -45);
    EXPECT_EQ(autoclickerSettings.locationMode, 1);
    EXPECT_FALSE(engineState.pickingLocation);
    EXPECT_EQ(engineState.capture.load().key, 0U);  // the pick comes before a capture
    EXPECT_EQ(Macro(), Events{});
    {
        MutexLock lock(macroMutex);
        EXPECT_EQ(macroState.profiles[0].settings, BuildProfileSettings());
    }
    EXPECT_EQ(MouseHook(Release(kLeftButton, 123, -45, kStart)), HookDecision::Pass);
    EXPECT_EQ(Macro(), (Events{{.type = EvMouseButton, .x = 123, .y = -45, .flags = 4}}));
}

TEST_F(RecorderTest, ARightOrMiddlePressCancelsThePick) {
    for (const uint32_t button : {kRightButton, kMiddleButton}) {
        engineState.pickingLocation = true;
        EXPECT_EQ(MouseHook(Press(button, 9, 9, kStart)), HookDecision::Consume);
        EXPECT_FALSE(engineState.pickingLocation);
        EXPECT_EQ(autoclickerSettings.fixedX, 0);
        EXPECT_EQ(autoclickerSettings.locationMode, 0);
    }
    MutexLock lock(macroMutex);
    EXPECT_EQ(macroState.profiles[0].settings, "untouched");
}

TEST_F(RecorderTest, SideButtonsKeysAndReleasesDoNotEndThePick) {
    engineState.pickingLocation = true;
    hotkeyTable.autoclicker = kFirstSideButton;
    EXPECT_EQ(MouseHook(Press(kFirstSideButton, 1, 1, kStart)), HookDecision::Consume);  // as a hotkey
    EXPECT_TRUE(engineState.requestToggleAutoclicker);
    EXPECT_EQ(MouseHook(Press(kSecondSideButton, 1, 1, kStart)), HookDecision::Pass);
    EXPECT_EQ(MouseHook(Release(kLeftButton, 1, 1, kStart)), HookDecision::Pass);
    EXPECT_EQ(KeyboardHook(KeyDown(65)), HookDecision::Pass);
    MouseHook(Move(2, 2, kStart));
    EXPECT_TRUE(engineState.pickingLocation);
}

TEST_F(RecorderTest, AFreshRecordingEmptiesTheMacroAndEndsTheUndo) {
    SetMacro({{.type = EvKey, .time = 1.0}});
    {
        MutexLock lock(macroMutex);
        macroState.continueProfile = 0;
        macroState.continueBaseline = {{.type = EvKey}};
        macroState.continueResult = {{.type = EvKey}};
        macroState.continueKeepCount = 4;
    }
    BeginFreshRecording();
    EXPECT_TRUE(engineState.recording);
    EXPECT_NE(engineState.recordingStartCounter, 0);
    EXPECT_EQ(Macro(), Events{});
    MutexLock lock(macroMutex);
    EXPECT_EQ(macroState.continueProfile, -1);
    EXPECT_TRUE(macroState.continueBaseline.empty());
    EXPECT_TRUE(macroState.continueResult.empty());
    EXPECT_EQ(macroState.continueKeepCount, 0U);
}

TEST_F(RecorderTest, AFreshRecordingStartsAtItsFirstEvent) {
    BeginFreshRecording();
    engineState.recordingStartCounter = kStart;
    KeyboardHook(KeyDown(65, kStart + 4000));
    KeyboardHook(KeyUp(65, kStart + 4250));
    engineState.recording = false;
    FinishRecording();
    EXPECT_EQ(Macro()[0].time, 0.0);
    EXPECT_EQ(Macro()[1].time, 0.25);
    EXPECT_FALSE(UndoPossible());
}

TEST_F(RecorderTest, AContinuedSegmentFollowsTheMacroAndCanBeUndone) {
    const Events before = {{.type = EvKey, .time = 10.0, .virtualKey = 65, .down = true}};
    SetMacro(before);
    BeginContinuedRecording();
    engineState.recordingStartCounter = kStart;
    EXPECT_FALSE(UndoPossible());  // not while it runs
    KeyboardHook(KeyDown(66, kStart + 3000));
    engineState.recording = false;
    FinishRecording();
    ASSERT_EQ(Macro().size(), 2U);
    EXPECT_EQ(Macro()[0], before[0]);
    EXPECT_DOUBLE_EQ(Macro()[1].time, 10.1);
    EXPECT_TRUE(UndoPossible());
    engineState.playing = true;
    EXPECT_FALSE(UndoPossible());
    UndoContinuedRecording();
    EXPECT_EQ(Macro().size(), 2U);
    engineState.playing = false;
    UndoContinuedRecording();
    EXPECT_EQ(Macro(), before);
    EXPECT_FALSE(UndoPossible());
    UndoContinuedRecording();
    EXPECT_EQ(Macro(), before);
}

TEST_F(RecorderTest, AnEmptyContinuedSegmentCanBeUndone) {
    const Events before = {{.type = EvKey, .time = 10.0}};
    SetMacro(before);
    BeginContinuedRecording();
    engineState.recording = false;
    FinishRecording();
    EXPECT_EQ(Macro(), before);
    EXPECT_TRUE(UndoPossible());
    UndoContinuedRecording();
    EXPECT_EQ(Macro(), before);
}

TEST_F(RecorderTest, ContinuingAnEmptyMacroIsAFreshRecordingWithUndo) {
    BeginContinuedRecording();
    engineState.recordingStartCounter = kStart;
    KeyboardHook(KeyDown(66, kStart + 3000));
    engineState.recording = false;
    FinishRecording();
    EXPECT_EQ(Macro()[0].time, 0.0);
    EXPECT_TRUE(UndoPossible());
    UndoContinuedRecording();
    EXPECT_EQ(Macro(), Events{});
}

TEST_F(RecorderTest, EveryFieldOfAnEditLosesTheUndo) {
    BeginContinuedRecording();
    engineState.recordingStartCounter = kStart;
    KeyboardHook(KeyDown(66, kStart));
    engineState.recording = false;
    FinishRecording();
    const UnifiedEvent recorded = Macro()[0];
    const auto possibleWith = [&](auto change) {
        UnifiedEvent edited = recorded;
        change(edited);
        MutexLock lock(macroMutex);
        macroState.profiles[0].events = {edited};
        return CanUndoContinue();
    };
    EXPECT_TRUE(possibleWith([](UnifiedEvent&) {}));
    EXPECT_FALSE(possibleWith([](UnifiedEvent& event) { event.type = 9; }));
    EXPECT_FALSE(possibleWith([](UnifiedEvent& event) { event.time = 1e-9; }));
    EXPECT_FALSE(possibleWith([](UnifiedEvent& event) { event.x = 1; }));
    EXPECT_FALSE(possibleWith([](UnifiedEvent& event) { event.y = 1; }));
    EXPECT_FALSE(possibleWith([](UnifiedEvent& event) { event.flags = 1; }));
    EXPECT_FALSE(possibleWith([](UnifiedEvent& event) { event.virtualKey = 1; }));
    EXPECT_FALSE(possibleWith([](UnifiedEvent& event) { event.down = false; }));
    EXPECT_FALSE(possibleWith([](UnifiedEvent& event) { event.wheel = 1; }));
    EXPECT_TRUE(possibleWith([](UnifiedEvent&) {}));
}

TEST_F(RecorderTest, TheUndoBelongsToItsProfile) {
    BeginContinuedRecording();
    engineState.recording = false;
    FinishRecording();
    EXPECT_TRUE(UndoPossible());
    {
        MutexLock lock(macroMutex);
        macroState.profiles.push_back(Profile{"other", {}, {}});
        macroState.currentProfile = 1;
    }
    EXPECT_FALSE(UndoPossible());
    {
        MutexLock lock(macroMutex);
        macroState.currentProfile = 0;
    }
    EXPECT_TRUE(UndoPossible());
}

TEST_F(RecorderTest, WithoutAProfileEventsAreLost) {
    {
        MutexLock lock(macroMutex);
        macroState.profiles.clear();
    }
    BeginContinuedRecording();
    EXPECT_EQ(KeyboardHook(KeyDown(66)), HookDecision::Pass);
    engineState.recording = false;
    FinishRecording();
    UndoContinuedRecording();
    EXPECT_FALSE(UndoPossible());
}

TEST_F(RecorderTest, AnEventThatComesTooLateIsLost) {
    StartAt(kStart);
    engineState.recording = false;
    AppendRecordedEvent({.type = EvKey, .virtualKey = 65});
    EXPECT_EQ(Macro(), Events{});
}

TEST_F(RecorderTest, EventsOfTwoThreadsAllArrive) {
    constexpr int kEach = 5000;
    StartAt(kStart);
    std::thread tools([] {
        for (int i = 0; i < kEach; ++i) {
            AppendRecordedEvent({.type = EvToolState, .virtualKey = 1});
        }
    });
    for (int i = 0; i < kEach; ++i) {
        KeyboardHook(KeyDown(65, kStart + i));
    }
    tools.join();
    EXPECT_EQ(Macro().size(), 2U * kEach);
}

TEST_F(RecorderTest, AppendingRaisesTheRevision) {
    StartAt(kStart);
    uint64_t before = 0;
    {
        MutexLock lock(macroMutex);
        before = macroState.revision;
    }
    KeyboardHook(KeyDown(65));
    MutexLock lock(macroMutex);
    EXPECT_GT(macroState.revision, before);
}

TEST_F(RecorderTest, ARecordingStartsWithRoomForItsEvents) {
    constexpr size_t kMinuteOfAMouse = 60000;
    BeginFreshRecording();
    EXPECT_GE(Capacity(), kMinuteOfAMouse);
    engineState.recording = false;
    FinishRecording();
    SetMacro(Events(1000));
    BeginContinuedRecording();
    EXPECT_EQ(Macro(), Events(1000));
    EXPECT_GE(Capacity(), 1000 + kMinuteOfAMouse);
}

TEST_F(RecorderTest, ARunningRecordingGetsMoreRoom) {
    Events before(20000);
    for (size_t i = 0; i < before.size(); ++i) {
        before[i].x = static_cast<int32_t>(i);
    }
    SetMacro(before);
    GrowEventRoom();
    EXPECT_EQ(Capacity(), before.size());  // no recording, no room
    StartAt(kStart);
    GrowEventRoom();
    const size_t grown = Capacity();
    EXPECT_GE(grown, before.size() + 60000);
    EXPECT_EQ(Macro(), before);
    GrowEventRoom();
    EXPECT_EQ(Capacity(), grown);  // there is still room
}

TEST_F(RecorderTest, EventsAndEditsWhileTheListGrowsAreKept) {
    constexpr int32_t kEvents = 60000;
    SetMacro({{.type = EvKey}});
    StartAt(kStart);
    std::atomic<bool> done{false};
    std::thread input([&done] {
        for (int32_t i = 0; i < kEvents; ++i) {
            AppendRecordedEvent({.type = EvAbsMove, .x = i});
        }
        done = true;
    });
    while (!done) {
        GrowEventRoom();
        MutexLock lock(macroMutex);
        macroState.profiles[0].events[0].x += 1;
        macroState.profiles[0].events.shrink_to_fit();
        MarkMacroChanged();
    }
    input.join();
    const Events macro = Macro();
    ASSERT_EQ(macro.size(), 1U + kEvents);
    EXPECT_GT(macro[0].x, 0);
    for (int32_t i = 0; i < kEvents; ++i) {
        ASSERT_EQ(macro[static_cast<size_t>(i) + 1].x, i);
    }
}

TEST_F(RecorderTest, WithoutMemoryARecordingStartsAllTheSame) {
    REQUIRE_FAILING_MEMORY();
    SetMacro({{.type = EvKey}});
    const FailingMemory failing(1000000);
    BeginFreshRecording();
    EXPECT_TRUE(engineState.recording);
    GrowEventRoom();
    KeyboardHook(KeyDown(65));
    EXPECT_EQ(Macro().size(), 1U);
}

TEST_F(RecorderTest, AContinuedRecordingWithoutMemoryChangesNothing) {
    REQUIRE_FAILING_MEMORY();
    SetMacro({{.type = EvKey, .time = 1}});
    BeginContinuedRecording();
    KeyboardHook(KeyDown(66));
    engineState.recording = false;
    FinishRecording();
    const auto reportsUndo = [] {
        return PollStatus().find("\"canUndoContinue\":true") != std::string::npos;
    };
    EXPECT_TRUE(reportsUndo());
    {
        const FailingMemory failing(1000000);
        EXPECT_THROW(BeginContinuedRecording(), std::bad_alloc);
    }
    EXPECT_FALSE(engineState.recording);
    EXPECT_EQ(Macro().size(), 2U);
    EXPECT_TRUE(reportsUndo());
    UndoContinuedRecording();
    EXPECT_EQ(Macro().size(), 1U);  // what the report says is possible
}

TEST_F(RecorderTest, WithoutMemoryForItsUndoASegmentIsJoinedAllTheSame) {
    REQUIRE_FAILING_MEMORY();
    SetMacro(Events(50000, {.type = EvKey, .time = 1}));
    BeginContinuedRecording();
    engineState.recordingStartCounter = kStart;
    KeyboardHook(KeyDown(66));
    engineState.recording = false;
    {
        const FailingMemory failing(1000000);
        FinishRecording();
    }
    EXPECT_EQ(Macro().size(), 50001U);
    EXPECT_DOUBLE_EQ(Macro().back().time, 1.1);
    EXPECT_FALSE(UndoPossible());
    UndoContinuedRecording();
    EXPECT_EQ(Macro().size(), 50001U);
}
