// The additional commands on running engines.
#include "base/text.h"
#include "simulated/engine_rig.h"

namespace {

using AdditionalCommands = EngineTest;

// Returns the value of a key in the progress report.
std::string Progress(const std::string& key) {
    const std::string report = RigPage("getProgress");
    const size_t found = report.find("\"" + key + "\":");
    if (found == std::string::npos) {
        return "no " + key + " in " + report;
    }
    const size_t start = found + key.size() + 3;
    return report.substr(start, report.find_first_of(",}", start) - start);
}

TEST_F(AdditionalCommands, ProgressOfAnIdleProgramIsZero) {
    for (const char* key :
         {"clicks", "presses", "playRound", "playSeconds", "playEvent", "recordSeconds", "recordEvents"}) {
        EXPECT_EQ(Progress(key), "0") << key;
    }
    EXPECT_EQ(Progress("picking"), "false");
}

TEST_F(AdditionalCommands, ProgressCountsTheClicksAndPressesOfThisRun) {
    autoclickerSettings.intervalMilliseconds = 10;
    keySpammerSettings.intervalMilliseconds = 20;
    RigPage("startSpammer");
    RigPage("startKeySpam");
    SimRunFor(95);
    EXPECT_EQ(Progress("clicks"), "10");
    EXPECT_EQ(Progress("presses"), "5");
    RigPage("stopSpammer");
    RigPage("stopKeySpam");
    SimSettle();
    EXPECT_EQ(Progress("clicks"), "0");
    EXPECT_EQ(Progress("presses"), "0");
    RigPage("startSpammer");
    SimRunFor(15);
    EXPECT_EQ(Progress("clicks"), "2");
}

TEST_F(AdditionalCommands, LockHotkeysStopsWhatRunsExceptARecording) {
    RigPage("startSpammer");
    RigPage("startRecording");
    SimRunFor(20);
    EXPECT_TRUE(engineState.autoClicking);
    EXPECT_EQ(RigPage("lockHotkeys"), R"({"done":true})");
    SimSettle();
    EXPECT_FALSE(engineState.autoClicking);
    EXPECT_TRUE(engineState.recording);
    EXPECT_FALSE(engineState.unlocked);
    engineState.lockOn = false;
    EXPECT_EQ(RigPage("lockHotkeys"), R"({"done":false,"reason":"unknown"})");
}

TEST_F(AdditionalCommands, ProgressFollowsTheRoundsOfAPlayback) {
    SetRigMacro({KeyEvent(0.1, 'A', true), KeyEvent(0.2, 'A', false), KeyEvent(0.4, 'B', true)});
    macroSettings.loop = true;
    macroSettings.loopPauseMilliseconds = 100;
    macroSettings.playbackSpeed = 2.0F;
    RigPage("startPlayback");
    SimRunFor(75);
    EXPECT_EQ(Progress("playRound"), "1");
    EXPECT_EQ(Progress("playEvent"), "1");
    EXPECT_EQ(Progress("playSeconds").substr(0, 4), "0.15");  // 75 ms at twice the speed
    SimRunFor(300);                                           // the second round begins at about 300 ms
    EXPECT_EQ(Progress("playRound"), "2");
    EXPECT_EQ(Progress("playEvent"), "1");
    RigPage("stopPlayback");
    SimRunFor(10);
    EXPECT_EQ(Progress("playRound"), "0");
    EXPECT_EQ(Progress("playEvent"), "0");
    RigPage("startPlayback");
    SimRunFor(10);
    EXPECT_EQ(Progress("playRound"), "1") << "a new run counts from 1";
}

TEST_F(AdditionalCommands, ProgressHasNoPositionForASpeedWithoutOne) {
    SetRigMacro({KeyEvent(5.0, 'A', true)});
    macroSettings.loop = true;
    for (const float speed : {-1.0F, std::numeric_limits<float>::quiet_NaN()}) {
        macroSettings.playbackSpeed = speed;
        RigPage("startPlayback");
        SimRunFor(20);
        EXPECT_EQ(Progress("playSeconds"), "0") << speed;
        RigPage("stopPlayback");
        SimRunFor(5000);
    }
}

TEST_F(AdditionalCommands, ProgressCountsTheEventsOfTheRecording) {
    SetRigMacro({KeyEvent(0.1, 'A', true), KeyEvent(0.2, 'A', false)});
    RigPage("continueRecording");
    SimRunFor(250);
    EXPECT_EQ(Progress("recordEvents"), "0");
    SimKey('B', true);
    SimKey('B', false);
    SimKey('C', true);
    SimSettle();
    EXPECT_EQ(Progress("recordEvents"), "3");
    EXPECT_EQ(Progress("recordSeconds"), "0.25");
    RigPage("stopRecording");
    SimSettle();
    EXPECT_EQ(Progress("recordEvents"), "0");
    EXPECT_EQ(Progress("recordSeconds"), "0");
}

TEST_F(AdditionalCommands, ARecordingExtendsTheMacroAndItsEndRewritesIt) {
    SetRigMacro({KeyEvent(0.1, 'A', true)});
    RigPage("continueRecording");
    SimSettle();
    const std::string rewritten = Progress("rewritten");
    const std::string before = Progress("revision");
    SimKey('B', true);
    SimSettle();
    EXPECT_NE(Progress("revision"), before);
    EXPECT_EQ(Progress("rewritten"), rewritten);
    EXPECT_EQ(RigPage("getMacroRows", "1"),
              "{\"revision\":" + Progress("revision") + ",\"rewritten\":" + rewritten +
                  ",\"first\":1,\"total\":2,\"rows\":[[3,0.000000,0,0,0,66,1,0]]}");
    RigPage("stopRecording");
    SimSettle();
    EXPECT_EQ(Progress("rewritten"), Progress("revision"));
    EXPECT_NE(Progress("rewritten"), rewritten);
}

TEST_F(AdditionalCommands, SingleEditsWithinASecondAreOneStep) {
    SetRigMacro({KeyEvent(0.1, 'A', true), KeyEvent(0.2, 'A', false), KeyEvent(0.3, 'B', true),
                 KeyEvent(0.4, 'B', false)});
    RigPage("deleteEvent", "0");
    SimRunFor(999);
    RigPage("updateEventTime", "0,5");
    SimRunFor(999);
    RigPage("deleteEvent", "0");
    SimRunFor(1001);
    RigPage("deleteEvent", "0");
    EXPECT_EQ(
        RigPage("getMacroHistory"),
        R"({"undo":[{"id":2,"reason":"edit","profile":"Default Tracking Profile","current":true,"events":2},)"
        R"({"id":1,"reason":"edit","profile":"Default Tracking Profile","current":true,"events":4}],)"
        R"("redo":[]})");
    EXPECT_EQ(RigPage("restoreMacro", "1"), R"({"done":true})");
    EXPECT_EQ(RigMacro().size(), 4U);
    EXPECT_EQ(RigPage("restoreMacro", "2"), R"({"done":true})");
    EXPECT_EQ(RigMacro().size(), 1U);
    EXPECT_EQ(RigPage("restoreMacro", "3"), R"({"done":false,"reason":"unknown"})");
    EXPECT_EQ(RigPage("restoreMacro", "x"), R"({"done":false,"reason":"argument"})");
}

TEST_F(AdditionalCommands, ARecordingIsUndoneOnlyAfterItsEnd) {
    SetRigMacro({KeyEvent(0.1, 'A', true)});
    RigPage("startRecording");
    SimSettle();
    SimKey('B', true);
    SimSettle();
    EXPECT_EQ(RigPage("restoreMacro", "1"), R"({"done":false,"reason":"recording"})");
    RigPage("stopRecording");
    SimSettle();
    macroSettings.loop = true;
    RigPage("startPlayback");
    SimSettle();
    EXPECT_EQ(RigPage("restoreMacro", "1"), R"({"done":false,"reason":"playing"})");
    RigPage("stopPlayback");
    SimRunFor(10);
    EXPECT_EQ(RigPage("restoreMacro", "1"), R"({"done":true})");
    EXPECT_EQ(RigMacro(), std::vector<UnifiedEvent>{KeyEvent(0.1, 'A', true)});
}

TEST_F(AdditionalCommands, BatchEditsReportTheNewRevision) {
    SetRigMacro({KeyEvent(0.1, 'A', true), KeyEvent(0.2, 'B', true)});
    const std::string before = Progress("revision");
    const std::string edit = RigPage("deleteMacroEvents", before + ",0");
    EXPECT_EQ(edit, "{\"done\":true,\"revision\":" + Progress("revision") + ",\"changed\":1}");
    EXPECT_NE(Progress("revision"), before);
    EXPECT_EQ(RigPage("deleteMacroEvents", before + ",0"), R"({"done":false,"reason":"revision"})");
    const std::string releases = RigPage("addMissingReleases", Progress("revision"));
    EXPECT_EQ(releases, "{\"done\":true,\"revision\":" + Progress("revision") + ",\"changed\":1}");
    EXPECT_EQ(RigMacro().back(), KeyEvent(0.2, 'B', false));
}

TEST_F(AdditionalCommands, ACancelledPickLeavesTheNextPressToTheApplications) {
    RigPage("pickLocation");
    SimSettle();
    EXPECT_EQ(Progress("picking"), "true");
    EXPECT_EQ(RigPage("cancelPick"), R"({"done":true})");
    EXPECT_EQ(Progress("picking"), "false");
    EXPECT_TRUE(SimHookInterestIsCurrent());
    SimSetPointer(7, 8);
    SimButton(1, true);
    SimSettle();
    EXPECT_EQ(autoclickerSettings.locationMode, 0);
    EXPECT_EQ(SimSeenLog().size(), 1U);
}

TEST_F(AdditionalCommands, ASetHotkeyActsAtOnce) {
    EXPECT_EQ(RigPage("setHotkey", "auto,65"), R"({"done":true})");
    EXPECT_TRUE(SimHookInterestIsCurrent());
    SimKey('A', true);
    SimSettle();
    EXPECT_TRUE(engineState.autoClicking);
    EXPECT_EQ(RigPage("getHotkeys"), R"({"rec":119,"play":118,"auto":65,"keyspamhotkey":120,"unlock":121})");
}

}  // namespace
