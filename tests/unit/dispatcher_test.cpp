// What a dispatcher pass does to the flags and the macro. The simulated tests check the input that it sends: no test here
// stops a running engine.
#include "engines/dispatcher.h"

#include "failing_memory.h"
#include "model/engine_state.h"
#include "platform/wake.h"
#include "test_support.h"

#include <new>
#include <thread>

namespace {

class DispatcherTest : public EngineStateTest {
  protected:
    DispatcherTest() {
        engineState.dispatchEvent = CreateWakeEvent(WakeReset::Automatic);
        engineState.autoclickerWakeEvent = CreateWakeEvent(WakeReset::Automatic);
        engineState.keySpammerWakeEvent = CreateWakeEvent(WakeReset::Automatic);
        engineState.playWakeEvent = CreateWakeEvent(WakeReset::Automatic);
        engineState.quitEvent = CreateWakeEvent(WakeReset::Manual);
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, {}, {}}};
    }
    ~DispatcherTest() override {
        for (std::atomic<WakeEvent*>* event :
             {&engineState.dispatchEvent, &engineState.autoclickerWakeEvent, &engineState.keySpammerWakeEvent,
              &engineState.playWakeEvent, &engineState.quitEvent}) {
            CloseWakeEvent(event->exchange(nullptr));
        }
    }

    static bool TakeWake(WakeEvent* event) { return WaitForAny(&event, 1, 0) == 0; }
    static std::vector<UnifiedEvent> Macro() {
        MutexLock lock(macroMutex);
        return macroState.profiles[0].events;
    }
    static bool AnyRequest() {
        return engineState.requestToggleRecord || engineState.requestStartRecord ||
               engineState.requestStopRecord || engineState.requestContinueRecord ||
               engineState.requestUndoContinue || engineState.requestTogglePlay ||
               engineState.requestStartPlay || engineState.requestStopPlay ||
               engineState.requestToggleAutoclicker || engineState.requestStartAutoclicker ||
               engineState.requestStopAutoclicker || engineState.requestToggleKeySpammer ||
               engineState.requestStartKeySpammer || engineState.requestStopKeySpammer;
    }
};

}  // namespace

TEST_F(DispatcherTest, ARequestWakesTheDispatcherAndRunsOnce) {
    RaiseRequest(engineState.requestStartAutoclicker);
    EXPECT_TRUE(engineState.requestStartAutoclicker);
    EXPECT_TRUE(TakeWake(engineState.dispatchEvent));
    DispatchRequests();
    EXPECT_FALSE(engineState.requestStartAutoclicker);
    EXPECT_TRUE(engineState.autoClicking);
    EXPECT_TRUE(TakeWake(engineState.autoclickerWakeEvent));
    RaiseRequest(engineState.requestStartAutoclicker);
    DispatchRequests();
    EXPECT_TRUE(engineState.autoClicking);
    EXPECT_FALSE(TakeWake(engineState.autoclickerWakeEvent));  // it ran already
}

TEST_F(DispatcherTest, RequestsRunWithoutWakeEvents) {
    for (std::atomic<WakeEvent*>* event : {&engineState.dispatchEvent, &engineState.autoclickerWakeEvent}) {
        CloseWakeEvent(event->exchange(nullptr));
    }
    RaiseRequest(engineState.requestToggleAutoclicker);
    DispatchRequests();
    EXPECT_TRUE(engineState.autoClicking);
}

TEST_F(DispatcherTest, RecordingComesBeforePlaying) {
    engineState.requestStartPlay = true;
    engineState.requestStartRecord = true;
    DispatchRequests();
    EXPECT_TRUE(engineState.recording);
    EXPECT_FALSE(engineState.playing);
    EXPECT_FALSE(AnyRequest());
    EXPECT_FALSE(TakeWake(engineState.playWakeEvent));
}

TEST_F(DispatcherTest, DropsRequestsThatAGuardRejects) {
    engineState.playing = true;
    engineState.requestToggleRecord = true;
    engineState.requestStartRecord = true;
    engineState.requestContinueRecord = true;
    engineState.requestUndoContinue = true;
    engineState.requestStopRecord = true;
    engineState.requestStartPlay = true;
    DispatchRequests();
    EXPECT_FALSE(AnyRequest());
    EXPECT_FALSE(engineState.recording);
    EXPECT_TRUE(engineState.playing);
    EXPECT_FALSE(TakeWake(engineState.playWakeEvent));
    engineState.playing = false;
    DispatchRequests();
    EXPECT_FALSE(engineState.recording);
}

TEST_F(DispatcherTest, RejectsPlayRequestsWhileRecording) {
    engineState.requestStartRecord = true;
    DispatchRequests();
    engineState.requestTogglePlay = true;
    engineState.requestStartPlay = true;
    engineState.requestStopPlay = true;
    DispatchRequests();
    EXPECT_FALSE(AnyRequest());
    EXPECT_TRUE(engineState.recording);
    EXPECT_FALSE(engineState.playing);
}

TEST_F(DispatcherTest, StoppingAnIdleEngineDoesNothing) {
    engineState.requestStopRecord = true;
    engineState.requestStopPlay = true;
    engineState.requestStopAutoclicker = true;
    engineState.requestStopKeySpammer = true;
    DispatchRequests();
    EXPECT_FALSE(AnyRequest());
    EXPECT_FALSE(TakeWake(engineState.playWakeEvent));
    EXPECT_FALSE(TakeWake(engineState.autoclickerWakeEvent));
    EXPECT_FALSE(TakeWake(engineState.keySpammerWakeEvent));
}

TEST_F(DispatcherTest, RecordToggleStartsAndStopsARecording) {
    engineState.requestToggleRecord = true;
    DispatchRequests();
    EXPECT_TRUE(engineState.recording);
    engineState.requestToggleRecord = true;
    DispatchRequests();
    EXPECT_FALSE(engineState.recording);
    EXPECT_FALSE(AnyRequest());  // the tool stops that it raised ran in the same pass
}

TEST_F(DispatcherTest, TheEndOfARecordingStopsNoToolWithoutTheSetting) {
    engineState.stopToolsWithMacro = false;
    engineState.requestStartRecord = true;
    DispatchRequests();
    engineState.requestStartAutoclicker = true;
    DispatchRequests();
    engineState.requestStopRecord = true;
    DispatchRequests();
    EXPECT_FALSE(engineState.recording);
    EXPECT_TRUE(engineState.autoClicking);
}

TEST_F(DispatcherTest, StartsAndStopsARecordingInOnePass) {
    engineState.requestStartRecord = true;
    engineState.requestStopRecord = true;
    DispatchRequests();
    EXPECT_FALSE(engineState.recording);
}

TEST_F(DispatcherTest, PlaybackStartsOnce) {
    engineState.requestTogglePlay = true;
    engineState.requestStartPlay = true;
    DispatchRequests();
    EXPECT_TRUE(engineState.playing);
    EXPECT_TRUE(TakeWake(engineState.playWakeEvent));
    engineState.requestStartPlay = true;
    DispatchRequests();
    EXPECT_FALSE(TakeWake(engineState.playWakeEvent));
}

TEST_F(DispatcherTest, KeySpammerNeedsATarget) {
    keySpammerSettings.targetCount = 0;
    engineState.requestStartKeySpammer = true;
    DispatchRequests();
    EXPECT_FALSE(engineState.keySpamming);
    EXPECT_FALSE(TakeWake(engineState.keySpammerWakeEvent));
    engineState.requestToggleKeySpammer = true;
    DispatchRequests();
    EXPECT_FALSE(engineState.keySpamming);
    EXPECT_TRUE(TakeWake(engineState.keySpammerWakeEvent));  // the toggle signals in either case
    keySpammerSettings.targetCount = 1;
    engineState.requestStartKeySpammer = true;
    DispatchRequests();
    EXPECT_TRUE(engineState.keySpamming);
    EXPECT_TRUE(TakeWake(engineState.keySpammerWakeEvent));
}

TEST_F(DispatcherTest, RecordsToolStartsInOrder) {
    engineState.requestStartRecord = true;
    engineState.requestStartAutoclicker = true;
    engineState.requestStartKeySpammer = true;
    DispatchRequests();
    const std::vector<UnifiedEvent> macro = Macro();
    ASSERT_EQ(macro.size(), 2U);
    EXPECT_EQ(macro[0].type, static_cast<uint32_t>(EvToolState));
    EXPECT_EQ(macro[0].virtualKey, kToolAutoclicker);
    EXPECT_TRUE(macro[0].down);
    EXPECT_GE(macro[0].time, 0.0);
    EXPECT_EQ(macro[1].virtualKey, kToolKeySpammer);
    EXPECT_TRUE(macro[1].down);
    DispatchRequests();
    EXPECT_EQ(Macro().size(), 2U);  // no change, no event
}

TEST_F(DispatcherTest, RecordsNoToolStartOutsideARecording) {
    engineState.requestStartAutoclicker = true;
    DispatchRequests();
    EXPECT_TRUE(Macro().empty());
    engineState.requestStartRecord = true;
    DispatchRequests();
    EXPECT_TRUE(Macro().empty());
}

TEST_F(DispatcherTest, ToolStateEventsContainOnlyToolAndState) {
    engineState.recording = true;
    RecordToolState(2, false);
    std::vector<UnifiedEvent> macro = Macro();
    ASSERT_EQ(macro.size(), 1U);
    macro[0].time = 0.0;
    EXPECT_EQ(macro[0], (UnifiedEvent{.type = EvToolState, .virtualKey = 2}));
}

TEST_F(DispatcherTest, ACapturedKeyIsAppliedBeforeTheRequests) {
    engineState.capture = Capture{kReassignKeySpammerTarget, 65};
    keySpammerSettings.targetCount = 0;
    engineState.requestStartKeySpammer = true;
    DispatchRequests();
    EXPECT_EQ(keySpammerSettings.targetCount, 1);
    EXPECT_EQ(keySpammerSettings.targets[0], 65U);
    EXPECT_EQ(keySpammerSettings.singleKey, 65U);
    EXPECT_TRUE(engineState.keySpamming);
}

TEST_F(DispatcherTest, ACaptureWithoutAKeyWaits) {
    engineState.capture = Capture{kReassignRecord, 0};
    DispatchRequests();
    EXPECT_EQ(engineState.capture.load().target, static_cast<uint32_t>(kReassignRecord));
    engineState.capture = Capture{kReassignNone, 65};
    DispatchRequests();
    EXPECT_EQ(hotkeyTable.record, 119U);
    EXPECT_EQ(engineState.capture.load().key, 65U);
}

TEST_F(DispatcherTest, AFullTargetListDropsTheKey) {
    keySpammerSettings.targetCount = kMaxKeySpammerTargets;
    engineState.capture = Capture{kReassignKeySpammerTarget, 65};
    DispatchRequests();
    EXPECT_EQ(keySpammerSettings.targetCount, kMaxKeySpammerTargets);
    EXPECT_EQ(engineState.capture.load().target, 0U);
}

// The first request needs more memory than there is. The one after it is not left until somebody presses another key.
TEST_F(DispatcherTest, ARequestWithoutMemoryDoesNotDelayTheOthers) {
    REQUIRE_FAILING_MEMORY();
    const FailingMemory failing(1000000);
    engineState.requestContinueRecord = true;
    engineState.requestStartAutoclicker = true;
    std::thread dispatcher(DispatcherThreadMain);
    EXPECT_TRUE(WaitUntil([] { return engineState.autoClicking.load(); }, 5));
    EXPECT_FALSE(engineState.recording);
    EXPECT_FALSE(AnyRequest());
    engineState.running = false;
    SignalWake(engineState.quitEvent);
    dispatcher.join();
}

TEST_F(DispatcherTest, ACaptureEndsIfItsTargetCannotBeStored) {
    REQUIRE_FAILING_MEMORY();
    keySpammerSettings.targetCount = 0;
    engineState.capture = Capture{kReassignKeySpammerTarget, 65};
    {
        const FailingMemory failing(20);
        EXPECT_THROW(DispatchRequests(), std::bad_alloc);
    }
    EXPECT_EQ(engineState.capture.load().target, 0U);
    EXPECT_EQ(engineState.capture.load().key, 0U);
    DispatchRequests();
    EXPECT_LE(keySpammerSettings.targetCount, 1);  // not stored again and again
}

TEST_F(DispatcherTest, TheThreadRunsRequestsUntilQuit) {
    std::thread dispatcher(DispatcherThreadMain);
    RaiseRequest(engineState.requestStartAutoclicker);
    EXPECT_TRUE(WaitUntil([] { return engineState.autoClicking.load(); }));
    RaiseRequest(engineState.requestStartKeySpammer);
    EXPECT_TRUE(WaitUntil([] { return engineState.keySpamming.load(); }));
    engineState.running = false;
    SignalWake(engineState.quitEvent);
    dispatcher.join();
    EXPECT_TRUE(engineState.autoClicking);
}
