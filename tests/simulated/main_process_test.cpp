// The whole life of the main process on the simulated backend: what exists when the page appears, and what is left when
// it has gone.
#include "app/main_process.h"

#include "app/commands.h"
#include "model/engine_state.h"
#include "platform/key_table.h"
#include "platform/page_host.h"
#include "platform/simulated/simulation.h"
#include "platform/wake.h"
#include "storage/app_settings.h"
#include "storage/data_folder.h"
#include "temp_folder.h"
#include "windows/main_page.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

constexpr uint32_t kF6 = 117;
constexpr uint32_t kF8 = 119;

class MainProcessTest : public ::testing::Test {
  protected:
    MainProcessTest() {
        std::filesystem::create_directories(root_ / "program" / "ui");
        Begin({});
    }

    ~MainProcessTest() override {
        SimEnd();
        ResetEngineState();
        SetSessionPath("");
    }

    void Begin(const SimOptions& options) {
        ResetEngineState();
        appSettings = AppSettings();
        SetSessionPath("");
        SimBegin(options);
        SimSetDataFolderRoot(root_.string());
        SimSetProgramPath((root_ / "program" / "varnelle").string());
    }

    std::string DataFile(const char* name) const { return (root_ / "Varnelle" / name).string(); }

    // The main process releases everything that it claims. One of its two timer periods ends with the process.
    static void ExpectNothingIsLeft() {
        EXPECT_EQ(SimLiveThreads(), 0);
        EXPECT_FALSE(SimHooksInstalled());
        EXPECT_FALSE(SimGetPage().alive);
        EXPECT_EQ(SimTimerPeriods(), 1);
        EXPECT_FALSE(engineState.running);
        for (const std::atomic<WakeEvent*>* event :
             {&engineState.quitEvent, &engineState.dispatchEvent, &engineState.autoclickerWakeEvent,
              &engineState.keySpammerWakeEvent, &engineState.playWakeEvent, &engineState.timelineAckEvent}) {
            EXPECT_EQ(event->load(), nullptr);
        }
    }

    TempFolder folder_;
    const std::filesystem::path root_ = folder_.Path();
};

}  // namespace

TEST_F(MainProcessTest, ServesAPageAndEndsInOrder) {
    WriteFile((root_ / "program" / "ui" / "index.html").string(), "<p>page</p>");
    bool served = false;
    SimOnPageRun([&] {
        served = true;
        const SimPage& page = SimGetPage();
        EXPECT_EQ(page.title, "Varnelle (Plus Version 1.0.1)");
        EXPECT_EQ(page.width, 420);
        EXPECT_EQ(page.height, 560);
        EXPECT_EQ(page.html, "<p>page</p>");
        EXPECT_TRUE(page.browserFeaturesOff);
        int count = 0;
        const PageCommand* commands = MainProcessCommands(&count);
        ASSERT_EQ(page.bound.size(), static_cast<size_t>(count));
        for (int i = 0; i < count; ++i) {
            EXPECT_EQ(page.bound[static_cast<size_t>(i)], commands[i].name);
        }
        SimSettle();
        EXPECT_EQ(SimLiveThreads(), 6);
        EXPECT_TRUE(SimHooksInstalled());
        EXPECT_EQ(SimTimerPeriods(), 2);
        EXPECT_TRUE(SimTimerKeptWhenHidden());
        EXPECT_EQ(engineState.counterFrequency, kSimTicksPerMillisecond * 1000);
        EXPECT_NE(SimGetDesktop().foreground, 0U);
        EXPECT_FALSE(SimGetDesktop().icons.empty());
        EXPECT_TRUE(SimOwnsInstanceName("Local\\VarnelleUI_SingleInstance"));
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    EXPECT_TRUE(served);
    EXPECT_TRUE(SimGetDesktop().messages.empty());
    EXPECT_TRUE(SimOwnsInstanceName("Local\\VarnelleUI_SingleInstance"));  // until the process ends
    ExpectNothingIsLeft();
}

TEST_F(MainProcessTest, AFreshStartHasTheDefaultProfile) {
    SimOnPageRun([] {
        EXPECT_EQ(SimPageCall("getProfiles", "[]").text,
                  "{\"current\":0,\"names\":[\"Default Tracking Profile\"],\"cap\":-1,"
                  "\"defaultName\":\"Default Tracking Profile\"}");
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    EXPECT_NE(ReadFile(DataFile("session.dat")).find("PROFILE:Default Tracking Profile\n"),
              std::string::npos);
}

TEST_F(MainProcessTest, ASessionWithoutTheDefaultProfileGainsItAndStaysWhereItWas) {
    SimOnPageRun([] {
        SimPageCall("addProfile", "[\"Farm\"]");
        SimPageCall("switchProfile", "[0]");
        SimPageCall("updateSpammer", "[0,0,0,77,0,0,1,10,0]");
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    std::string session = ReadFile(DataFile("session.dat"));
    const std::string name = "PROFILE:Default Tracking Profile\n";
    ASSERT_NE(session.find(name), std::string::npos);
    session.replace(session.find(name), name.size(), "PROFILE:Another\n");
    WriteFile(DataFile("session.dat"), session);

    Begin({});
    SimOnPageRun([] {
        EXPECT_EQ(SimPageCall("getProfiles", "[]").text,
                  "{\"current\":1,\"names\":[\"Default Tracking Profile\",\"Another\",\"Farm\"],\"cap\":-1,"
                  "\"defaultName\":\"Default Tracking Profile\"}");
        EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 77);
    });
    EXPECT_EQ(RunMainProcess({}), 0);
}

TEST_F(MainProcessTest, OlderFilesAreBroughtInBeforeTheSessionIsRead) {
    const std::string program = (root_ / "program").string();
    WriteFile(program + "/session.mcr", "SETTINGS:\nCURRENT:0\nPROFILE:Old\n");
    WriteFile(program + "/theme.txt", "dark");
    WriteFile(program + "/appsettings.txt", "launchOnStartup=0\n");
    WriteFile(program + "/status.txt", "{}");
    WriteFile(program + "/macroevents.txt", "[]");
    SimOnPageRun([this] {
        EXPECT_NE(SimPageCall("getProfiles", "[]").text.find("\"Old\""), std::string::npos);
        EXPECT_EQ(ReadFile(DataFile("appsettings.txt")), "launchOnStartup=0\n");
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    for (const char* name :
         {"session.mcr", "theme.txt", "appsettings.txt", "status.txt", "macroevents.txt"}) {
        EXPECT_FALSE(std::filesystem::exists(program + "/" + name)) << name;
    }
    EXPECT_EQ(ReadFile(DataFile("theme.txt")), "dark");
}

TEST_F(MainProcessTest, SettingsStandBeforeTheFirstThread) {
    WriteFile(DataFile("appsettings.txt"),
              "launchOnStartup=1\nhotkeysEnabled=0\nseenWarnings=loop\nwindowX=77\n");
    SimOnPageRun([&] {
        EXPECT_EQ(SimGetShell().launchAtStartup, std::vector<bool>{true});
        EXPECT_NE(SimPageCall("getAppSettings", "[]").text.find("\"seenWarnings\":[\"loop\"]"),
                  std::string::npos);
        SimSettle();
        SimKey(kF6, true);
        SimKey(kF6, false);
        SimRunFor(50);
        EXPECT_FALSE(engineState.autoClicking);
        SimPageCall("setAppSetting", "[\"hotkeysEnabled,1\"]");
        SimPageCall("setAppSetting", "[\"launchOnStartup\",0]");
        SimKey(kF6, true);
        SimKey(kF6, false);
        SimRunFor(50);
        EXPECT_TRUE(engineState.autoClicking);
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    EXPECT_EQ(SimGetShell().launchAtStartup, (std::vector<bool>{true, false}));
    const std::string file = ReadFile(DataFile("appsettings.txt"));
    EXPECT_NE(file.find("launchOnStartup=0\nstartMinimized=0\nhotkeysEnabled=1\n"), std::string::npos)
        << file;
    EXPECT_NE(file.find("windowX=77\n"), std::string::npos) << file;
}

TEST_F(MainProcessTest, AFreshStartArrangesNoStartWithTheSession) {
    SimOnPageRun([this] {
        EXPECT_EQ(SimGetShell().launchAtStartup, std::vector<bool>{false});
        EXPECT_FALSE(std::filesystem::exists(DataFile("appsettings.txt"))) << "nothing was changed";
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    // The end of the window is the first that there is to save.
    EXPECT_NE(ReadFile(DataFile("appsettings.txt")).find("windowWidth=420\nwindowHeight=560\n"),
              std::string::npos);
}

TEST_F(MainProcessTest, AMissingPageIsSaidAndTheHotkeysServeOn) {
    SimOnPageRun([&] {
        ASSERT_EQ(SimGetDesktop().messages.size(), 1U);
        EXPECT_EQ(SimGetDesktop().messages[0].title, "UI Error");
        EXPECT_EQ(SimGetDesktop().messages[0].text,
                  "Failed to read:\n" + (root_ / "program" / "ui" / "index.html").string());
        EXPECT_EQ(SimGetPage().html, "");
        SimSettle();
        SimKey(kF6, true);
        SimKey(kF6, false);
        SimRunFor(50);
        EXPECT_TRUE(engineState.autoClicking);
        EXPECT_GT(SimSentButtons(kLeftButton, true), 5U);
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    ExpectNothingIsLeft();
}

TEST_F(MainProcessTest, ASecondInstanceOnlyRaisesTheFirst) {
    SimTakeInstanceName("Local\\VarnelleUI_SingleInstance");
    const WindowRef first = SimAddWindow("Varnelle (Plus Version 1.0.0)", 7, 0, 0, 420, 560);
    SimAddWindow("Something else", 8, 0, 0, 800, 600);
    SimGetDesktop().windows.front().minimised = true;
    EXPECT_EQ(RunMainProcess({}), 0);
    EXPECT_EQ(SimGetDesktop().foreground, first);
    for (const SimWindow& window : SimGetDesktop().windows) {
        EXPECT_FALSE(window.minimised) << window.title;
    }
    EXPECT_EQ(SimGetPage().created, 0);
    EXPECT_EQ(SimLiveThreads(), 0);
    EXPECT_EQ(SimTimerPeriods(), 0);
    EXPECT_FALSE(std::filesystem::exists(root_ / "Varnelle"));
}

TEST_F(MainProcessTest, ASecondInstanceWithoutAWindowToRaiseJustEnds) {
    SimTakeInstanceName("Local\\VarnelleUI_SingleInstance");
    EXPECT_EQ(RunMainProcess({}), 0);
    EXPECT_EQ(SimGetPage().created, 0);
    EXPECT_FALSE(SimOwnsInstanceName("Local\\VarnelleUI_SingleInstance"));
}

TEST_F(MainProcessTest, WithoutAWebViewItSaysSoSavesAndEnds) {
    // A seed an order in which the threads get to run: some have hardly begun when the end comes.
    for (uint64_t seed = 1; seed <= 40; ++seed) {
        SCOPED_TRACE(seed);
        Begin({.seed = seed, .preemptPercent = 50});
        std::filesystem::remove_all(root_ / "Varnelle");
        SimFailPageHost("Install the web view.");
        EXPECT_EQ(RunMainProcess({}), 1);
        ASSERT_EQ(SimGetDesktop().messages.size(), 1U);
        EXPECT_EQ(SimGetDesktop().messages[0].title, "Varnelle");
        EXPECT_EQ(SimGetDesktop().messages[0].text, "Install the web view.");
        EXPECT_TRUE(std::filesystem::exists(DataFile("session.dat")));
        ExpectNothingIsLeft();
        EXPECT_EQ(SimEnd(), "");
    }
}

TEST_F(MainProcessTest, RefusedHooksDoNotKeepItFromEnding) {
    SimRefuseHooks(true);
    SimOnPageRun([] { SimRunFor(1000); });
    EXPECT_EQ(RunMainProcess({}), 0);
    ExpectNothingIsLeft();
}

TEST_F(MainProcessTest, EndsWithinASecondWhateverRuns) {
    for (uint64_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        Begin({.seed = seed});
        std::filesystem::remove_all(root_ / "Varnelle");
        double closed = 0;
        SimOnPageRun([&] {
            SimSettle();
            SimPageCall("updateKeySpam", "[1,0,0,0,1,10]");
            SimPageCall("updateSpammer", "[0,0,0,1,0,0,1,10,0]");
            SimPageCall("startSpammer", "[]");
            SimPageCall("startKeySpam", "[]");
            SimKey(kF8, true);
            SimKey(kF8, false);
            SimRunFor(20);
            SimKey(65, true);
            SimRunFor(200);
            SimKey(65, false);
            if (seed % 2 == 0) {
                SimPageCall("stopRecording", "[]");
                SimRunFor(5);
                SimPageCall("updateTracker", "[true,true,true,true,false,1,true,60000]");
                SimPageCall("startPlayback", "[]");
                SimPageCall("startSpammer", "[]");
                SimPageCall("startKeySpam", "[]");
                SimRunFor(1000);
                EXPECT_TRUE(engineState.playing);
            } else {
                EXPECT_TRUE(engineState.recording);
            }
            EXPECT_TRUE(engineState.autoClicking);
            EXPECT_TRUE(engineState.keySpamming);
            closed = SimMilliseconds();
        });
        EXPECT_EQ(RunMainProcess({}), 0);
        EXPECT_LE(SimMilliseconds() - closed, 1000);
        ExpectNothingIsLeft();
        const uint64_t sent = SimSentCount();
        EXPECT_EQ(SimEnd(), "");
        EXPECT_EQ(SimSentCount(), sent);
        EXPECT_NE(ReadFile(DataFile("session.dat")).find("\n3,"), std::string::npos);  // the recorded key
    }
}

TEST_F(MainProcessTest, ARequestToEndFromOutsideIsAClosedWindow) {
    double asked = 0;
    SimOnPageRun([&] {
        SimPageCall("updateSpammer", "[0,0,0,88,0,0,1,10,0]");
        asked = SimMilliseconds();
        SimRequestEnd();
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    ExpectNothingIsLeft();
    EXPECT_NE(ReadFile(DataFile("session.dat")).find("88"), std::string::npos);
    SimRequestEnd();  // nobody listens any more
}

namespace {

// Starts the autoclicker and a looped macro that presses keys without a pause.
void StartSending() {
    {
        MutexLock lock(macroMutex);
        CurrentProfile()->events = {{.type = EvKey, .virtualKey = 'A', .down = true},
                                    {.type = EvKey, .time = 0.001, .virtualKey = 'A'}};
        MarkMacroChanged();
    }
    SimPageCall("updateTracker", "[true,true,true,true,false,1,true,0]");
    SimPageCall("updateSpammer", "[0,0,0,1,0,0,1,10,0]");
    SimPageCall("startSpammer", "[]");
    SimPageCall("startPlayback", "[]");
    SimRunFor(100);
    ASSERT_TRUE(engineState.playing);
    ASSERT_TRUE(engineState.autoClicking);
    ASSERT_GT(SimSentCount(), 100U);
}

constexpr int64_t kOneRound = 50 * kSimTicksPerMillisecond;

}  // namespace

TEST_F(MainProcessTest, NothingIsSentWhileTheLastSaveWaitsForTheDisk) {
    int64_t closed = 0;
    SimOnPageRun([&] {
        StartSending();
        closed = SimTicks();
        SimDelayFileOperation(3000);
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    EXPECT_GE(SimTicks() - closed, 3000 * kSimTicksPerMillisecond);
    EXPECT_LE(SimLastSentTicks() - closed, kOneRound);
    EXPECT_FALSE(SimProcessEndedAtOnce());
    ExpectNothingIsLeft();
}

TEST_F(MainProcessTest, ARequestToEndStopsInputEvenIfTheWindowHangs) {
    SimOnPageRun([&] {
        StartSending();
        const int64_t asked = SimTicks();
        SimRequestEnd();
        SimRunFor(2000);
        EXPECT_LE(SimLastSentTicks() - asked, kOneRound);
        EXPECT_FALSE(SimHooksInstalled());
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    ExpectNothingIsLeft();
}

TEST_F(MainProcessTest, TheEndOfTheSessionSavesBeforeItReturns) {
    bool returned = false;
    SimOnPageRun([&] {
        StartSending();
        SimPageCall("addProfile", "[\"Before the end\"]");
        const int64_t asked = SimTicks();
        SimEndSession();
        EXPECT_NE(ReadFile(DataFile("session.dat")).find("PROFILE:Before the end\n"), std::string::npos);
        SimRunFor(1000);
        EXPECT_LE(SimLastSentTicks() - asked, kOneRound);
        EXPECT_FALSE(SimHooksInstalled());
        returned = true;
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    EXPECT_TRUE(returned);
    ExpectNothingIsLeft();
}

TEST_F(MainProcessTest, AThreadThatHangsInAFileOperationIsLeftBehindAfterFiveSeconds) {
    double closed = 0;
    SimOnPageRun([&] {
        SimPageCall("addProfile", "[\"Kept\"]");
        SimRunFor(4900);
        SimDelayFileOperation(60000);
        SimRunFor(200);  // the autosave hangs
        closed = SimMilliseconds();
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    EXPECT_TRUE(SimProcessEndedAtOnce());
    EXPECT_GE(SimMilliseconds() - closed, 5000);
    EXPECT_LE(SimMilliseconds() - closed, 5100);
    EXPECT_EQ(SimLiveThreads(), 1);
    EXPECT_FALSE(SimHooksInstalled());
    // What the end of the process would release. The thread may use it until then.
    EXPECT_NE(engineState.quitEvent.load(), nullptr);
    EXPECT_EQ(SimEnd(), "");
    EXPECT_NE(ReadFile(DataFile("session.dat")).find("PROFILE:Kept\n"), std::string::npos);
    for (std::atomic<WakeEvent*>* event :
         {&engineState.quitEvent, &engineState.dispatchEvent, &engineState.autoclickerWakeEvent,
          &engineState.keySpammerWakeEvent, &engineState.playWakeEvent, &engineState.timelineAckEvent}) {
        CloseWakeEvent(event->exchange(nullptr));
    }
    DestroyPageHost(MainPage());
    SetMainPage(nullptr);
}

TEST_F(MainProcessTest, ARequestToEndBeforeTheMainLoopIsNotLost) {
    // The user may close the program while it shows the message about the missing page.
    bool served = false;
    SimOnPageRun([&] { served = true; });
    SimGetDesktop().onMessage = [] { SimRequestEnd(); };
    EXPECT_EQ(RunMainProcess({}), 0);
    EXPECT_FALSE(served);
    ExpectNothingIsLeft();
}

TEST_F(MainProcessTest, ACrashSavesTheSession) {
    SimOnPageRun([&] {
        SimPageCall("addProfile", "[\"Before the crash\"]");
        EXPECT_FALSE(std::filesystem::exists(DataFile("session.dat")));
        SimCrash();
        EXPECT_NE(ReadFile(DataFile("session.dat")).find("PROFILE:Before the crash\n"), std::string::npos);
    });
    EXPECT_EQ(RunMainProcess({}), 0);
}

TEST_F(MainProcessTest, AutosaveNeedsNoShutdown) {
    SimOnPageRun([&] {
        SimPageCall("addProfile", "[\"Kept\"]");
        SimRunFor(4900);
        EXPECT_FALSE(std::filesystem::exists(DataFile("session.dat")));
        SimRunFor(200);
        EXPECT_NE(ReadFile(DataFile("session.dat")).find("PROFILE:Kept\n"), std::string::npos);
    });
    EXPECT_EQ(RunMainProcess({}), 0);
}

TEST_F(MainProcessTest, AMalformedNumberRejectsItsCallAndNothingElse) {
    SimOnPageRun([] {
        EXPECT_FALSE(SimPageCall("updateSpammer", "[1,x,0,0,0,0,0,0,0]").resolved);
        EXPECT_EQ(autoclickerSettings.intervalHours, 1);
        const SimPageAnswer answer = SimPageCall("getSettings", "[]");
        EXPECT_TRUE(answer.resolved);
        EXPECT_EQ(answer.text.substr(0, 7), "{\"sh\":1");
    });
    EXPECT_EQ(RunMainProcess({}), 0);
}

TEST_F(MainProcessTest, ScriptsReachThePageWhileItLives) {
    PageEval("before()");
    SimOnPageRun([] {
        PageEval("first()");
        PageEval("second()");
        EXPECT_TRUE(SimGetPage().evals.empty());  // not before the UI thread gets to it
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    PageEval("after()");
    EXPECT_EQ(SimGetPage().evals, (std::vector<std::string>{"first()", "second()"}));
}

TEST_F(MainProcessTest, TheNextStartFindsEverything) {
    SimOnPageRun([] {
        SimSettle();
        SimPageCall("updateSpammer", "[1,2,3,4,1,1,0,7,0]");
        SimPageCall("updateTracker", "[true,true,true,true,false,1.5,true,250]");
        SimPageCall("reassignKey", "[\"rec\"]");
        SimKey(82, true);
        SimKey(82, false);
        SimRunFor(5);
        SimPageCall("startRecording", "[]");
        SimRunFor(5);
        SimKey(65, true);
        SimRunFor(30);
        SimKey(65, false);
        SimSettle();
        SimPageCall("stopRecording", "[]");
        SimRunFor(5);
    });
    EXPECT_EQ(RunMainProcess({}), 0);
    std::string settings;
    std::string events;
    {
        Begin({.seed = 2});
        SimOnPageRun([&] {
            settings = SimPageCall("getSettings", "[]").text;
            events = SimPageCall("getMacroEvents", "[]").text;
            EXPECT_EQ(hotkeyTable.record, 82U);
        });
        EXPECT_EQ(RunMainProcess({}), 0);
    }
    EXPECT_EQ(settings.substr(0, settings.find(",\"locMode\"")),
              "{\"sh\":1,\"sm\":2,\"ss\":3,\"sms\":4,\"sbtn\":1,\"stype\":1,\"rptMode\":0,\"rptTimes\":7");
    EXPECT_NE(settings.find("\"tspd\":1.5,\"tloop\":true,\"tloopMs\":250"), std::string::npos);
    EXPECT_EQ(events, "[{\"id\":0,\"time\":0.000000,\"desc\":\"Keyboard VK: 65 (DOWN)\"},"
                      "{\"id\":1,\"time\":0.030000,\"desc\":\"Keyboard VK: 65 (UP)\"}]");
}
