#include "app/reports.h"

#include "base/json_writer.h"
#include "engines/hotkeys.h"
#include "model/engine_state.h"
#include "test_support.h"

namespace {

class ReportsTest : public DataFolderTest {
  protected:
    ReportsTest() { SetMacro({}); }

    static void SetMacro(std::vector<UnifiedEvent> events) {
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, {}, std::move(events)}};
        MarkMacroChanged();
    }

    static UnifiedEvent MoveTo(int32_t x, int32_t y) {
        UnifiedEvent event;
        event.x = x;
        event.y = y;
        return event;
    }

    static std::string Name(uint32_t code) { return JsonText(KeyNameText(code)); }

    std::string EventsFile() const { return DataFilePath("macroevents.txt"); }
};

bool Contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST_F(ReportsTest, StatusOfAFreshProgram) {
    EXPECT_EQ(PollStatus(),
              "{\"state\":\"Idle\",\"count\":0,\"restore\":[],\"hkRec\":" + Name(119) +
                  ",\"hkPlay\":" + Name(118) + ",\"hkAuto\":" + Name(117) + ",\"hkKeySpam\":" + Name(120) +
                  ",\"hkUnlock\":" + Name(121) + ",\"lockOn\":true,\"unlocked\":true,\"keySpamTargets\":[" +
                  Name(32) +
                  "],\"keySpamChord\":false,\"ksCap\":-1,\"reassigning\":\"\",\"panelHover\":false,"
                  "\"autoClicking\":false,\"keySpamming\":false,\"canUndoContinue\":false}");
}

TEST_F(ReportsTest, StatusOfABusyProgram) {
    SetMacro({MoveTo(1, 2), MoveTo(3, 4)});
    engineState.autoClicking = true;
    engineState.keySpamming = true;
    engineState.panelHover = true;
    engineState.playing = true;
    engineState.unlocked = false;
    engineState.lockOn = false;
    engineState.capture = Capture{kReassignKeySpammerTarget, 0};
    keySpammerSettings.targets[0] = 65;
    keySpammerSettings.targets[1] = 66;
    keySpammerSettings.targetCount = 2;
    keySpammerSettings.chord = true;
    hotkeyTable.record = 1;
    EXPECT_EQ(
        PollStatus(),
        "{\"state\":\"Playing\",\"count\":2,\"restore\":[],\"hkRec\":" + Name(1) +
            ",\"hkPlay\":" + Name(118) + ",\"hkAuto\":" + Name(117) + ",\"hkKeySpam\":" + Name(120) +
            ",\"hkUnlock\":" + Name(121) + ",\"lockOn\":false,\"unlocked\":false,\"keySpamTargets\":[" +
            Name(65) + "," + Name(66) +
            "],\"keySpamChord\":true,\"ksCap\":-1,\"reassigning\":\"keyspamtarget\",\"panelHover\":true,"
            "\"autoClicking\":true,\"keySpamming\":true,\"canUndoContinue\":false}");
}

TEST_F(ReportsTest, RecordingWinsOverPlaying) {
    engineState.recording = true;
    engineState.playing = true;
    EXPECT_TRUE(Contains(PollStatus(), "{\"state\":\"Recording\","));
}

TEST_F(ReportsTest, NoTargetsAreAnEmptyList) {
    keySpammerSettings.targetCount = 0;
    EXPECT_TRUE(Contains(PollStatus(), "\"keySpamTargets\":[],"));
}

TEST_F(ReportsTest, ReportsWhetherAContinuedSegmentCanBeUndone) {
    const std::vector<UnifiedEvent> before = {MoveTo(1, 1)};
    const std::vector<UnifiedEvent> after = {MoveTo(1, 1), MoveTo(2, 2)};
    SetMacro(after);
    {
        MutexLock lock(macroMutex);
        macroState.continueProfile = 0;
        macroState.continueBaseline = before;
        macroState.continueResult = after;
    }
    EXPECT_TRUE(Contains(PollStatus(), "\"canUndoContinue\":true}"));
    SetMacro(before);
    EXPECT_TRUE(Contains(PollStatus(), "\"canUndoContinue\":false}"));
}

TEST_F(ReportsTest, APollWritesBothMirrors) {
    SetMacro({MoveTo(100, 200)});
    const std::string report = PollStatus();
    EXPECT_EQ(ReadFile(DataFilePath("status.txt")), report);
    EXPECT_EQ(ReadFile(EventsFile()), "[{\"id\":0,\"time\":0.000000,\"desc\":\"Abs Move to X:100 Y:200\"}]");
}

TEST_F(ReportsTest, APollReportsIfTheMirrorsCannotBeWritten) {
    WriteFile(root_.File("Varnelle"), "a file where the folder should be");
    EXPECT_TRUE(Contains(PollStatus(), "\"state\":\"Idle\""));
    EXPECT_EQ(ReportMacroEvents(), "[]");
}

TEST_F(ReportsTest, TheNextPollRestoresAShortEventMirror) {
    PollStatus();
    WriteFile(EventsFile(), "scribble");
    PollStatus();
    EXPECT_EQ(ReadFile(EventsFile()), "[]");
}

TEST_F(ReportsTest, EveryChangeOfTheMacroReachesTheNextPoll) {
    SetMacro({MoveTo(1, 2)});
    PollStatus();
    {
        MutexLock lock(macroMutex);
        macroState.profiles[0].events[0].x = 7;
        MarkMacroChanged();
    }
    PollStatus();
    EXPECT_TRUE(Contains(ReadFile(EventsFile()), "X:7 Y:2"));
    {
        MutexLock lock(macroMutex);
        macroState.profiles.push_back(Profile{"other", {}, {MoveTo(8, 9)}});
        macroState.currentProfile = 1;
        MarkMacroChanged();
    }
    EXPECT_TRUE(Contains(PollStatus(), "\"count\":1,"));
    EXPECT_TRUE(Contains(ReadFile(EventsFile()), "X:8 Y:9"));
    EXPECT_TRUE(Contains(ReportMacroEvents(), "X:8 Y:9"));
}

TEST_F(ReportsTest, AHugeEventMirrorIsWrittenOnceForEachChange) {
    std::vector<UnifiedEvent> events(20000, MoveTo(1, 2));
    SetMacro(events);
    PollStatus();
    const std::string whole = ReadFile(EventsFile());
    ASSERT_GT(whole.size(), 500000U);

    WriteFile(EventsFile(), "left alone");
    PollStatus();
    EXPECT_EQ(ReadFile(EventsFile()), "left alone");

    std::filesystem::remove(EventsFile());
    PollStatus();
    EXPECT_EQ(ReadFile(EventsFile()), whole);

    WriteFile(EventsFile(), "asked for");
    EXPECT_EQ(ReportMacroEvents(), whole);
    EXPECT_EQ(ReadFile(EventsFile()), whole);

    events[0].x = 5;
    SetMacro(events);
    PollStatus();
    EXPECT_TRUE(Contains(ReadFile(EventsFile()), "X:5 Y:2"));
}

TEST_F(ReportsTest, SettingsOfAFreshProgram) {
    EXPECT_EQ(
        SettingsReport(),
        "{\"sh\":0,\"sm\":0,\"ss\":0,\"sms\":5,\"sbtn\":0,\"stype\":0,\"rptMode\":1,\"rptTimes\":10,"
        "\"locMode\":0,\"fixedX\":0,\"fixedY\":0,\"tmv\":true,\"tclk\":true,\"tscr\":true,\"tkey\":true,"
        "\"trel\":false,\"tspd\":1,\"tloop\":false,\"tloopMs\":500,\"ksh\":0,\"ksm\":0,\"kss\":0,\"ksms\":5,"
        "\"ksRptMode\":1,\"ksRptTimes\":10,\"holdAuto\":false,\"holdKeySpam\":false}");
}

TEST_F(ReportsTest, EverySettingHasItsOwnKey) {
    autoclickerSettings.intervalHours = 1;
    autoclickerSettings.intervalMinutes = 2;
    autoclickerSettings.intervalSeconds = 3;
    autoclickerSettings.intervalMilliseconds = 4;
    autoclickerSettings.button = 5;
    autoclickerSettings.doubleClick = 6;
    autoclickerSettings.repeatMode = 7;
    autoclickerSettings.repeatCount = 8;
    autoclickerSettings.locationMode = 9;
    autoclickerSettings.fixedX = -10;
    autoclickerSettings.fixedY = 2147483647;
    macroSettings.recordMoves = false;
    macroSettings.recordButtons = true;
    macroSettings.recordWheel = false;
    macroSettings.recordKeys = true;
    macroSettings.recordRawMoves = true;
    macroSettings.playbackSpeed = 1.5F;
    macroSettings.loop = true;
    macroSettings.loopPauseMilliseconds = 12;
    keySpammerSettings.intervalHours = 13;
    keySpammerSettings.intervalMinutes = 14;
    keySpammerSettings.intervalSeconds = 15;
    keySpammerSettings.intervalMilliseconds = 16;
    keySpammerSettings.repeatMode = 17;
    keySpammerSettings.repeatCount = 18;
    hotkeyTable.holdAutoclicker = true;
    EXPECT_EQ(
        SettingsReport(),
        "{\"sh\":1,\"sm\":2,\"ss\":3,\"sms\":4,\"sbtn\":5,\"stype\":6,\"rptMode\":7,\"rptTimes\":8,"
        "\"locMode\":9,\"fixedX\":-10,\"fixedY\":2147483647,\"tmv\":false,\"tclk\":true,\"tscr\":false,"
        "\"tkey\":true,\"trel\":true,\"tspd\":1.5,\"tloop\":true,\"tloopMs\":12,\"ksh\":13,\"ksm\":14,"
        "\"kss\":15,\"ksms\":16,\"ksRptMode\":17,\"ksRptTimes\":18,\"holdAuto\":true,\"holdKeySpam\":false}");
    hotkeyTable.holdAutoclicker = false;
    hotkeyTable.holdKeySpammer = true;
    EXPECT_TRUE(Contains(SettingsReport(), "\"holdAuto\":false,\"holdKeySpam\":true}"));
}

TEST_F(ReportsTest, SpeedHasSixSignificantDigits) {
    macroSettings.playbackSpeed = 0.1F;
    EXPECT_TRUE(Contains(SettingsReport(), "\"tspd\":0.1,"));
    macroSettings.playbackSpeed = 1.2345678F;
    EXPECT_TRUE(Contains(SettingsReport(), "\"tspd\":1.23457,"));
    macroSettings.playbackSpeed = 1234567.0F;
    EXPECT_TRUE(Contains(SettingsReport(), "\"tspd\":1.23457e+06,"));
}
