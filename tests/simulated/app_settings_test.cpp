// What the page's application settings do to the running program.
#include "storage/app_settings.h"

#include "base/build_settings.h"
#include "engine_rig.h"
#include "storage/data_folder.h"
#include "windows/main_window.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

constexpr uint32_t kF6 = 117;   // the autoclicker
constexpr uint32_t kF10 = 121;  // the lock

class AppSettingsCommands : public EngineTest {
  protected:
    void SetUp() override {
        appSettings = AppSettings();
        EngineTest::SetUp();
        CreateDataFolder();
        std::filesystem::remove(Path());
    }
    void TearDown() override {
        EngineTest::TearDown();
        appSettings = AppSettings();
    }

    static std::string Path() { return DataFilePath("appsettings.txt"); }
    static bool Saved() { return std::filesystem::exists(Path()); }
    static std::string File() {
        std::ifstream in(Path(), std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
    static bool FileHas(const std::string& line) {
        return ("\n" + File()).find("\n" + line + "\n") != std::string::npos;
    }

    static void Set(const std::string& text) {
        EXPECT_EQ(RigPage("setAppSetting", text), "") << text;
        SimSettle();
        EXPECT_TRUE(SimHookInterestIsCurrent()) << text;
    }

    // Whether the press stays hidden from the application in front.
    static bool TapIsConsumed(uint32_t key) {
        const uint64_t before = SimSeenCount();
        SimKey(key, true);
        SimSettle();
        bool seen = false;
        for (size_t i = before; i < SimSeenLog().size(); ++i) {
            seen = seen || (SimSeenLog()[i].kind == SimSeenKind::Key && SimSeenLog()[i].code == key);
        }
        SimKey(key, false);
        SimSettle();
        return !seen;
    }
};

}  // namespace

TEST_F(AppSettingsCommands, OnlyTwoPiecesAreASetting) {
    for (const char* text : {"", "alwaysOnTop", "alwaysOnTop,", "a,b,c", "alwaysOnTop,1,1", ","}) {
        Set(text);
        EXPECT_FALSE(Saved()) << text;
    }
    EXPECT_FALSE(appSettings.alwaysOnTop);
}

TEST_F(AppSettingsCommands, EveryTwoPiecesAreSaved) {
    for (const char* text : {"min:panel-other,1", "nothing,1", "hotkeyLockOn,0", ",1", "windowX,1"}) {
        const std::string before = BuildAppSettingsText();
        Set(text);
        EXPECT_EQ(File(), before) << text;
        std::filesystem::remove(Path());
    }
    EXPECT_TRUE(engineState.lockOn);
}

TEST_F(AppSettingsCommands, OnlyOneIsOn) {
    Set("showWarnings,true");
    EXPECT_TRUE(FileHas("showWarnings=0"));
    Set("showWarnings,1");
    EXPECT_TRUE(FileHas("showWarnings=1"));
    Set("min:panel-tracker,1");
    EXPECT_TRUE(FileHas("minimizedPanels=panel-tracker"));
    Set("min:panel-tracker,0");
    EXPECT_TRUE(FileHas("minimizedPanels="));
}

TEST_F(AppSettingsCommands, TheReportTellsWhatWasSet) {
    Set("disableAnimations,1");
    Set("min:panel-ui,1");
    EXPECT_EQ(RigPage("markWarningSeen", "loop"), "");
    EXPECT_EQ(RigPage("setPanelOrder", "panel-tracker,panel-ui"), "");
    EXPECT_EQ(RigPage("getAppSettings"), AppSettingsReport());
    EXPECT_NE(AppSettingsReport().find(
                  R"("disableAnimations":true,"showWarnings":true,"seenWarnings":["loop"],)"
                  R"("minimizedPanels":["panel-ui"],"panelOrder":["panel-tracker","panel-ui"]})"),
              std::string::npos)
        << AppSettingsReport();
}

TEST_F(AppSettingsCommands, HotkeysSwitchedOffPassToTheApplication) {
    EXPECT_TRUE(TapIsConsumed(kF6));
    EXPECT_TRUE(engineState.autoClicking);
    EXPECT_TRUE(TapIsConsumed(kF6));
    Set("hotkeysEnabled,0");
    EXPECT_FALSE(TapIsConsumed(kF6));
    EXPECT_FALSE(TapIsConsumed(kF10));
    EXPECT_FALSE(engineState.autoClicking);
    Set("hotkeysEnabled,1");
    EXPECT_TRUE(TapIsConsumed(kF6));
    EXPECT_TRUE(engineState.autoClicking);
    EXPECT_TRUE(SimHookComplaints().empty());
}

TEST_F(AppSettingsCommands, ChangingTheLockNeverLeavesTheHotkeysLocked) {
    for (const char* text : {"hotkeyLock,0", "hotkeyLock,1"}) {
        engineState.lockOn = true;
        engineState.unlocked = false;
        Set(text);
        EXPECT_EQ(engineState.lockOn, text[11] == '1');
        EXPECT_TRUE(engineState.unlocked) << text;
        EXPECT_TRUE(TapIsConsumed(kF6)) << text;
        EXPECT_TRUE(TapIsConsumed(kF6)) << text;
    }
    // Locked by its key, freed by the page; without the lock its key is the application's.
    EXPECT_TRUE(TapIsConsumed(kF10));
    EXPECT_FALSE(engineState.unlocked);
    EXPECT_FALSE(TapIsConsumed(kF6));
    Set("hotkeyLock,0");
    EXPECT_TRUE(TapIsConsumed(kF6));
    EXPECT_FALSE(TapIsConsumed(kF10));
    EXPECT_TRUE(SimHookComplaints().empty());
    EXPECT_TRUE(FileHas("hotkeyLockOn=0"));
}

TEST_F(AppSettingsCommands, ASettingFromTheFileReachesTheHooks) {
    std::ofstream(Path(), std::ios::binary) << "hotkeysEnabled=0\n";
    LoadAppSettings();
    SimSettle();
    EXPECT_TRUE(SimHookInterestIsCurrent());
    EXPECT_FALSE(TapIsConsumed(kF6));
}

TEST_F(AppSettingsCommands, ToolsStopWithTheMacroOnlyIfTheySay) {
    SetRigMacro({KeyEvent(0.0, 65, true), KeyEvent(0.01, 65, false)});
    Set("stopToolsWithMacro,0");
    RigPage("startSpammer");
    RigPage("startPlayback");
    SimRunFor(500);
    EXPECT_FALSE(engineState.playing);
    EXPECT_TRUE(engineState.autoClicking);
    Set("stopToolsWithMacro,1");
    RigPage("startPlayback");
    SimRunFor(500);
    EXPECT_FALSE(engineState.playing);
    EXPECT_FALSE(engineState.autoClicking);
}

TEST_F(AppSettingsCommands, OnTopMovesTheMainWindowAndNoOther) {
    Set("alwaysOnTop,1");  // there is no window yet
    EXPECT_TRUE(FileHas("alwaysOnTop=1"));
    SimAddWindow("Varnelle (Plus Version 1.0.0)", 7, 0, 0, 10, 10);
    SimAddWindow(kMainWindowTitle, 1000, 20, 20, 440, 580);
    SimAddWindow("Other", 8, 0, 0, 10, 10);
    const auto onTop = [] {
        std::string windows;
        for (const SimWindow& window : SimGetDesktop().windows) {
            windows += window.onTop ? '1' : '0';
        }
        return windows;
    };
    EXPECT_EQ(onTop(), "000");
    Set("alwaysOnTop,1");
    EXPECT_EQ(onTop(), "010");
    Set("startMinimized,1");
    EXPECT_EQ(onTop(), "010");
    Set("alwaysOnTop,yes");
    EXPECT_EQ(onTop(), "000");
    EXPECT_TRUE(FileHas("alwaysOnTop=0"));
}

TEST_F(AppSettingsCommands, StartingWithTheSessionIsArrangedAtOnce) {
    Set("launchOnStartup,1");
    Set("startMinimized,1");
    Set("launchOnStartup,0");
    EXPECT_EQ(SimGetShell().launchAtStartup, (std::vector<bool>{true, false}));
    EXPECT_TRUE(FileHas("launchOnStartup=0"));
}

TEST_F(AppSettingsCommands, TwoWordsOpenAPage) {
    for (const char* word :
         {"docs", "discord", "", "Docs", "docs ", "https://elsewhere.example/", "docs,discord"}) {
        EXPECT_EQ(RigPage("openLink", word), "") << word;
    }
    EXPECT_EQ(SimGetShell().opened,
              (std::vector<std::string>{std::string(kDocumentationUrl), std::string(kCommunityUrl)}));
}
