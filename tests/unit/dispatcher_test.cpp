// What a pass does to the flags and the macro. What it sends is a matter of the simulated platform: nothing here lets
// a running engine stop.
#include "engines/dispatcher.h"

#include "model/engine_state.h"
#include "platform/wake.h"
#include "test_support.h"

#include <thread>

namespace {

class DispatcherTest : public EngineStateTest {
  protected:
    DispatcherTest() {
        engineState.dispatchEvent = CreateWakeEvent(WakeReset::Automatic);
        engineState.autoWakeEvent = CreateWakeEvent(WakeReset::Automatic);
        engineState.keySpamWakeEvent = CreateWakeEvent(WakeReset::Automatic);
        engineState.playWakeEvent = CreateWakeEvent(WakeReset::Automatic);
        engineState.quitEvent = CreateWakeEvent(WakeReset::Manual);
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, {}, {}}};
    }
    ~DispatcherTest() override {
        for (std::atomic<WakeEvent*>* event :
             {&engineState.dispatchEvent, &engineState.autoWakeEvent, &engineState.keySpamWakeEvent,
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
        return engineState.reqToggleRecord || engineState.reqStartRecord || engineState.reqStopRecord ||
               engineState.reqContinueRecord || engineState.reqUndoContinue || engineState.reqTogglePlay ||
               engineState.reqStartPlay || engineState.reqStopPlay || engineState.reqToggleAuto ||
               engineState.reqStartAuto || engineState.reqStopAuto || engineState.reqToggleKeySpam ||
               engineState.reqStartKeySpam || engineState.reqStopKeySpam;
    }
};

}  // namespace

TEST_F(DispatcherTest, ARequestWakesTheDispatcherAndIsTakenOnce) {
    RaiseRequest(engineState.reqStartAuto);
    EXPECT_TRUE(engineState.reqStartAuto);
    EXPECT_TRUE(TakeWake(engineState.dispatchEvent));
    DispatchRequests();
    EXPECT_FALSE(engineState.reqStartAuto);
    EXPECT_TRUE(engineState.autoClicking);
    EXPECT_TRUE(TakeWake(engineState.autoWakeEvent));
    RaiseRequest(engineState.reqStartAuto);
    DispatchRequests();
    EXPECT_TRUE(engineState.autoClicking);
    EXPECT_FALSE(TakeWake(engineState.autoWakeEvent));  // it ran already
}

TEST_F(DispatcherTest, WithoutEventsRequestsAreServedAllTheSame) {
    for (std::atomic<WakeEvent*>* event : {&engineState.dispatchEvent, &engineState.autoWakeEvent}) {
        CloseWakeEvent(event->exchange(nullptr));
    }
    RaiseRequest(engineState.reqToggleAuto);
    DispatchRequests();
    EXPECT_TRUE(engineState.autoClicking);
}

TEST_F(DispatcherTest, RecordingComesBeforePlaying) {
    engineState.reqStartPlay = true;
    engineState.reqStartRecord = true;
    DispatchRequests();
    EXPECT_TRUE(engineState.recording);
    EXPECT_FALSE(engineState.playing);
    EXPECT_FALSE(AnyRequest());
    EXPECT_FALSE(TakeWake(engineState.playWakeEvent));
}

TEST_F(DispatcherTest, RefusedRequestsAreForgotten) {
    engineState.playing = true;
    engineState.reqToggleRecord = true;
    engineState.reqStartRecord = true;
    engineState.reqContinueRecord = true;
    engineState.reqUndoContinue = true;
    engineState.reqStopRecord = true;
    engineState.reqStartPlay = true;
    DispatchRequests();
    EXPECT_FALSE(AnyRequest());
    EXPECT_FALSE(engineState.recording);
    EXPECT_TRUE(engineState.playing);
    EXPECT_FALSE(TakeWake(engineState.playWakeEvent));
    engineState.playing = false;
    DispatchRequests();
    EXPECT_FALSE(engineState.recording);
}

TEST_F(DispatcherTest, PlayRequestsAreRefusedWhileRecording) {
    engineState.reqStartRecord = true;
    DispatchRequests();
    engineState.reqTogglePlay = true;
    engineState.reqStartPlay = true;
    engineState.reqStopPlay = true;
    DispatchRequests();
    EXPECT_FALSE(AnyRequest());
    EXPECT_TRUE(engineState.recording);
    EXPECT_FALSE(engineState.playing);
}

TEST_F(DispatcherTest, StopsOfWhatDoesNotRunDoNothing) {
    engineState.reqStopRecord = true;
    engineState.reqStopPlay = true;
    engineState.reqStopAuto = true;
    engineState.reqStopKeySpam = true;
    DispatchRequests();
    EXPECT_FALSE(AnyRequest());
    EXPECT_FALSE(TakeWake(engineState.playWakeEvent));
    EXPECT_FALSE(TakeWake(engineState.autoWakeEvent));
    EXPECT_FALSE(TakeWake(engineState.keySpamWakeEvent));
}

TEST_F(DispatcherTest, RecordToggleBeginsAndEnds) {
    engineState.reqToggleRecord = true;
    DispatchRequests();
    EXPECT_TRUE(engineState.recording);
    engineState.reqToggleRecord = true;
    DispatchRequests();
    EXPECT_FALSE(engineState.recording);
    EXPECT_FALSE(AnyRequest());  // the tool stops it raised are served in the same pass
}

TEST_F(DispatcherTest, TheEndOfARecordingRaisesNoToolStopsWithoutTheSetting) {
    engineState.stopToolsWithMacro = false;
    engineState.reqStartRecord = true;
    DispatchRequests();
    engineState.reqStartAuto = true;
    DispatchRequests();
    engineState.reqStopRecord = true;
    DispatchRequests();
    EXPECT_FALSE(engineState.recording);
    EXPECT_TRUE(engineState.autoClicking);
}

TEST_F(DispatcherTest, StartAndStopOfARecordingInOnePass) {
    engineState.reqStartRecord = true;
    engineState.reqStopRecord = true;
    DispatchRequests();
    EXPECT_FALSE(engineState.recording);
}

TEST_F(DispatcherTest, PlayStartsOnce) {
    engineState.reqTogglePlay = true;
    engineState.reqStartPlay = true;
    DispatchRequests();
    EXPECT_TRUE(engineState.playing);
    EXPECT_TRUE(TakeWake(engineState.playWakeEvent));
    engineState.reqStartPlay = true;
    DispatchRequests();
    EXPECT_FALSE(TakeWake(engineState.playWakeEvent));
}

TEST_F(DispatcherTest, KeySpamNeedsATarget) {
    keySpamSettings.keySpamTargetCount = 0;
    engineState.reqStartKeySpam = true;
    DispatchRequests();
    EXPECT_FALSE(engineState.keySpamming);
    EXPECT_FALSE(TakeWake(engineState.keySpamWakeEvent));
    engineState.reqToggleKeySpam = true;
    DispatchRequests();
    EXPECT_FALSE(engineState.keySpamming);
    EXPECT_TRUE(TakeWake(engineState.keySpamWakeEvent));  // the toggle signals in either case
    keySpamSettings.keySpamTargetCount = 1;
    engineState.reqStartKeySpam = true;
    DispatchRequests();
    EXPECT_TRUE(engineState.keySpamming);
    EXPECT_TRUE(TakeWake(engineState.keySpamWakeEvent));
}

TEST_F(DispatcherTest, ToolStartsAreRecordedInOrder) {
    engineState.reqStartRecord = true;
    engineState.reqStartAuto = true;
    engineState.reqStartKeySpam = true;
    DispatchRequests();
    const std::vector<UnifiedEvent> macro = Macro();
    ASSERT_EQ(macro.size(), 2U);
    EXPECT_EQ(macro[0].type, static_cast<uint32_t>(EvToolState));
    EXPECT_EQ(macro[0].vk, kToolAutoclicker);
    EXPECT_TRUE(macro[0].down);
    EXPECT_GE(macro[0].time, 0.0);
    EXPECT_EQ(macro[1].vk, kToolKeySpammer);
    EXPECT_TRUE(macro[1].down);
    DispatchRequests();
    EXPECT_EQ(Macro().size(), 2U);  // no change, no event
}

TEST_F(DispatcherTest, ToolStartsOutsideARecordingLeaveNoEvent) {
    engineState.reqStartAuto = true;
    DispatchRequests();
    EXPECT_TRUE(Macro().empty());
    engineState.reqStartRecord = true;
    DispatchRequests();
    EXPECT_TRUE(Macro().empty());
}

TEST_F(DispatcherTest, ToolStateEventsHoldOnlyTheToolAndTheSwitch) {
    engineState.recording = true;
    RecordToolState(2, false);
    std::vector<UnifiedEvent> macro = Macro();
    ASSERT_EQ(macro.size(), 1U);
    macro[0].time = 0.0;
    EXPECT_EQ(macro[0], (UnifiedEvent{.type = EvToolState, .vk = 2}));
}

TEST_F(DispatcherTest, ACapturedKeyIsAppliedBeforeTheRequests) {
    engineState.reassignTarget = kReassignKeySpamTarget;
    engineState.capturedKey = 65;
    keySpamSettings.keySpamTargetCount = 0;
    engineState.reqStartKeySpam = true;
    DispatchRequests();
    EXPECT_EQ(keySpamSettings.keySpamTargetCount, 1);
    EXPECT_EQ(keySpamSettings.keySpamTargets[0], 65U);
    EXPECT_EQ(keySpamSettings.ksKey, 65U);
    EXPECT_TRUE(engineState.keySpamming);
}

TEST_F(DispatcherTest, ACaptureWithoutAKeyWaits) {
    engineState.reassignTarget = kReassignRec;
    DispatchRequests();
    EXPECT_EQ(engineState.reassignTarget, static_cast<uint32_t>(kReassignRec));
    engineState.reassignTarget = 0;
    engineState.capturedKey = 65;
    DispatchRequests();
    EXPECT_EQ(hotkeyTable.rec, 119U);
    EXPECT_EQ(engineState.capturedKey, 65U);
}

TEST_F(DispatcherTest, AFullTargetListDropsTheKey) {
    keySpamSettings.keySpamTargetCount = kMaxKeySpamTargets;
    engineState.reassignTarget = kReassignKeySpamTarget;
    engineState.capturedKey = 65;
    DispatchRequests();
    EXPECT_EQ(keySpamSettings.keySpamTargetCount, kMaxKeySpamTargets);
    EXPECT_EQ(engineState.reassignTarget, 0U);
}

TEST_F(DispatcherTest, TheThreadServesRequestsUntilQuit) {
    std::thread dispatcher(DispatcherThreadMain);
    RaiseRequest(engineState.reqStartAuto);
    EXPECT_TRUE(WaitUntil([] { return engineState.autoClicking.load(); }));
    RaiseRequest(engineState.reqStartKeySpam);
    EXPECT_TRUE(WaitUntil([] { return engineState.keySpamming.load(); }));
    engineState.running = false;
    SignalWake(engineState.quitEvent);
    dispatcher.join();
    EXPECT_TRUE(engineState.autoClicking);
}
