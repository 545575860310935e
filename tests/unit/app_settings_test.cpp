#include "storage/app_settings.h"

#include "platform/files.h"
#include "unit/test_support.h"

#include <filesystem>

namespace {

namespace fs = std::filesystem;

// The file with all defaults.
constexpr const char* kDefaultLines = "alwaysOnTop=0\n"
                                      "launchOnStartup=0\n"
                                      "startMinimized=0\n"
                                      "hotkeysEnabled=1\n"
                                      "hotkeyLockOn=1\n"
                                      "stopToolsWithMacro=1\n"
                                      "disableAnimations=0\n"
                                      "showWarnings=1\n"
                                      "seenWarnings=\n"
                                      "minimizedPanels=\n"
                                      "panelOrder=\n"
                                      "windowX=0\n"
                                      "windowY=0\n"
                                      "windowWidth=420\n"
                                      "windowHeight=560\n"
                                      "windowMaximized=0\n";

// Every setting with a value other than its default.
constexpr const char* kOtherLines = "alwaysOnTop=1\n"
                                    "launchOnStartup=1\n"
                                    "startMinimized=1\n"
                                    "hotkeysEnabled=0\n"
                                    "hotkeyLockOn=0\n"
                                    "stopToolsWithMacro=0\n"
                                    "disableAnimations=1\n"
                                    "showWarnings=0\n"
                                    "seenWarnings=loop,zero-interval\n"
                                    "minimizedPanels=panel-spammer,panel-ui\n"
                                    "panelOrder=panel-tracker,panel-ui\n"
                                    "windowX=-7\n"
                                    "windowY=2147483647\n"
                                    "windowWidth=800\n"
                                    "windowHeight=-2147483648\n"
                                    "windowMaximized=1\n";

class AppSettingsTest : public DataFolderTest {
  protected:
    AppSettingsTest() {
        appSettings = AppSettings();
        CreateDataFolder();
    }
    ~AppSettingsTest() override { appSettings = AppSettings(); }

    static std::string Path() { return DataFilePath("appsettings.txt"); }

    static void Load(std::string_view text) {
        WriteFile(Path(), text);
        LoadAppSettings();
    }

    // The content of the file with LF line ends.
    static std::string File() {
        std::string text = ReadFile(Path());
        for (size_t at = text.find('\r'); at != std::string::npos; at = text.find('\r')) {
            text.erase(at, 1);
        }
        return text;
    }

    static std::string Saved() {
        SaveAppSettings();
        return File();
    }

    using Texts = std::vector<std::string>;
};

}  // namespace

TEST_F(AppSettingsTest, AcceptsTheFivePanelIdsOnly) {
    for (const char* id : {"panel-ui", "panel-profile", "panel-spammer", "panel-keyspam", "panel-tracker"}) {
        EXPECT_TRUE(IsPanelId(id)) << id;
    }
    for (const char* text :
         {"", "panel", "panel-", "panel-other", "Panel-ui", "panel-ui ", " panel-ui", "ui"}) {
        EXPECT_FALSE(IsPanelId(text)) << text;
    }
    EXPECT_FALSE(IsPanelId(std::string_view("panel-ui\0", 9)));
}

TEST_F(AppSettingsTest, AnOrderMayOmitPanelsButNotRepeatThem) {
    const Texts before{"panel-keyspam"};
    Texts order = before;
    EXPECT_TRUE(ParsePanelOrder("panel-tracker,panel-ui", &order));
    EXPECT_EQ(order, (Texts{"panel-tracker", "panel-ui"}));
    EXPECT_TRUE(ParsePanelOrder(",,panel-ui,,panel-profile,", &order));
    EXPECT_EQ(order, (Texts{"panel-ui", "panel-profile"}));
    for (const char* empty : {"", ",", ",,,"}) {
        order = before;
        EXPECT_TRUE(ParsePanelOrder(empty, &order)) << empty;
        EXPECT_TRUE(order.empty()) << empty;
    }
    for (const char* bad : {"panel-ui,panel-ui", "panel-ui,other", "panel-ui, panel-profile", "x", " ",
                            "panel-ui,panel-profile,panel-spammer,panel-keyspam,panel-tracker,panel-ui"}) {
        order = before;
        EXPECT_FALSE(ParsePanelOrder(bad, &order)) << bad;
        EXPECT_EQ(order, before) << bad;
    }
}

TEST_F(AppSettingsTest, AMissingFileKeepsTheDefaults) {
    LoadAppSettings();
    EXPECT_FALSE(FileExists(Path()));
    EXPECT_FALSE(appSettings.windowPositionKnown);
    EXPECT_EQ(Saved(), kDefaultLines);
}

TEST_F(AppSettingsTest, WritesTheLineEndsOfTheSystem) {
    SaveAppSettings();
    const std::string bytes = ReadFile(Path());
    const std::string first = "alwaysOnTop=0" + std::string(TextLineEnd()) + "launchOnStartup=0";
    EXPECT_EQ(bytes.substr(0, first.size()), first);
    EXPECT_TRUE(bytes.ends_with("windowMaximized=0" + std::string(TextLineEnd())));
}

TEST_F(AppSettingsTest, ReadsAndWritesEverySetting) {
    Load(kOtherLines);
    EXPECT_TRUE(appSettings.alwaysOnTop);
    EXPECT_TRUE(appSettings.launchOnStartup);
    EXPECT_TRUE(appSettings.startMinimized);
    EXPECT_FALSE(engineState.hotkeysEnabled);
    EXPECT_FALSE(engineState.lockOn);
    EXPECT_FALSE(engineState.stopToolsWithMacro);
    EXPECT_TRUE(appSettings.disableAnimations);
    EXPECT_FALSE(appSettings.showWarnings);
    EXPECT_EQ(appSettings.seenWarnings, (std::set<std::string>{"loop", "zero-interval"}));
    EXPECT_EQ(appSettings.minimizedPanels, (std::set<std::string>{"panel-spammer", "panel-ui"}));
    EXPECT_EQ(appSettings.panelOrder, (Texts{"panel-tracker", "panel-ui"}));
    EXPECT_EQ(appSettings.windowX, -7);
    EXPECT_EQ(appSettings.windowY, 2147483647);
    EXPECT_EQ(appSettings.windowWidth, 800);
    EXPECT_EQ(appSettings.windowHeight, INT32_MIN);
    EXPECT_TRUE(appSettings.windowMaximized);
    EXPECT_TRUE(appSettings.windowPositionKnown);
    EXPECT_EQ(Saved(), kOtherLines);
    Load(kDefaultLines);
    EXPECT_EQ(Saved(), kDefaultLines);
}

TEST_F(AppSettingsTest, ReadsTheFilesOfOlderVersions) {
    const auto read = [](const char* name) {
        appSettings = AppSettings();
        ResetEngineState();
        Load(ReadFile(FixturePath("appsettings/" + std::string(name))));
        return Saved();
    };
    EXPECT_EQ(read("everything.txt"), kOtherLines);
    EXPECT_EQ(read("windows-line-ends.txt"), kOtherLines);
    const std::string first = read("first-lines-only.txt");
    EXPECT_TRUE(first.starts_with("alwaysOnTop=1\nlaunchOnStartup=0\nstartMinimized=0\nhotkeysEnabled=0\n"))
        << first;
    const std::string faults = read("faults.txt");
    EXPECT_TRUE(
        faults.ends_with("showWarnings=0\nseenWarnings==,a=b\nminimizedPanels=panel-ui\npanelOrder=\n"
                         "windowX=0\nwindowY=0\nwindowWidth=420\nwindowHeight=560\nwindowMaximized=0\n"))
        << faults;
}

TEST_F(AppSettingsTest, IgnoresCarriageReturnsAndAMissingLastLineEnd) {
    Load("alwaysOnTop=1\r\nseenWarnings=a,b\r\n\r\nwindowX=12\r\nwindowMaximized=1");
    EXPECT_TRUE(appSettings.alwaysOnTop);
    EXPECT_EQ(appSettings.seenWarnings, (std::set<std::string>{"a", "b"}));
    EXPECT_EQ(appSettings.windowX, 12);
    EXPECT_TRUE(appSettings.windowMaximized);
}

TEST_F(AppSettingsTest, ASwitchIsOnOnlyForTheTextOne) {
    for (const char* value : {"0", "", "true", "01", "1 ", " 1", "2", "1=1", "yes"}) {
        appSettings.showWarnings = true;
        engineState.hotkeysEnabled = true;
        Load("showWarnings=" + std::string(value) + "\nhotkeysEnabled=" + value + "\n");
        EXPECT_FALSE(appSettings.showWarnings) << value;
        EXPECT_FALSE(engineState.hotkeysEnabled) << value;
    }
}

TEST_F(AppSettingsTest, IgnoresUnknownLines) {
    Load("\n"
         "=\n"
         "=1\n"
         "alwaysOnTop\n"
         "alwaysOnTop =1\n"
         " alwaysOnTop=1\n"
         "alwaysontop=1\n"
         "hotkeyLock=0\n"
         "windowPositionKnown=1\n"
         "somethingNew=5\n"
         "# a remark\n"
         "startMinimized=1\n");
    EXPECT_TRUE(appSettings.startMinimized);
    EXPECT_FALSE(appSettings.windowPositionKnown);
    appSettings.startMinimized = false;
    EXPECT_EQ(Saved(), kDefaultLines);
}

TEST_F(AppSettingsTest, TheKeyEndsAtTheFirstEqualsSign) {
    Load("seenWarnings=a=b,=,c==\n");
    EXPECT_EQ(appSettings.seenWarnings, (std::set<std::string>{"=", "a=b", "c=="}));
    EXPECT_NE(Saved().find("seenWarnings==,a=b,c==\n"), std::string::npos);
}

TEST_F(AppSettingsTest, AMalformedNumberKeepsTheValue) {
    for (const char* value :
         {"abc", "", "-", " ", "2147483648", "-2147483649", "99999999999999999999", "x12"}) {
        appSettings = AppSettings();
        appSettings.windowHeight = 777;
        Load("windowX=" + std::string(value) + "\nwindowHeight=" + value + "\nwindowWidth=33\n");
        EXPECT_EQ(appSettings.windowX, 0) << value;
        EXPECT_FALSE(appSettings.windowPositionKnown) << value;
        EXPECT_EQ(appSettings.windowHeight, 777) << value;
        EXPECT_EQ(appSettings.windowWidth, 33) << value;
    }
    Load("windowX= +12px\n");
    EXPECT_EQ(appSettings.windowX, 12);
    EXPECT_TRUE(appSettings.windowPositionKnown);
}

TEST_F(AppSettingsTest, OnlyTheLeftEdgeMakesThePositionKnown) {
    Load("windowY=5\nwindowWidth=6\nwindowHeight=7\n");
    EXPECT_FALSE(appSettings.windowPositionKnown);
    Load("windowX=0\n");
    EXPECT_TRUE(appSettings.windowPositionKnown);
}

TEST_F(AppSettingsTest, ListsDropInvalidPieces) {
    Load("seenWarnings=,b,,a,b,\n"
         "minimizedPanels=panel-ui,panel-other,,panel-ui,PANEL-UI,panel-tracker\n"
         "panelOrder=panel-ui,panel-other\n");
    EXPECT_EQ(appSettings.seenWarnings, (std::set<std::string>{"a", "b"}));
    EXPECT_EQ(appSettings.minimizedPanels, (std::set<std::string>{"panel-tracker", "panel-ui"}));
    EXPECT_TRUE(appSettings.panelOrder.empty());
}

TEST_F(AppSettingsTest, ALaterLineReplacesAnEarlierOne) {
    Load("alwaysOnTop=1\nalwaysOnTop=0\n"
         "seenWarnings=a\nseenWarnings=b\n"
         "minimizedPanels=panel-ui\nminimizedPanels=\n"
         "panelOrder=panel-ui,panel-tracker\npanelOrder=panel-ui,panel-ui\n"
         "windowX=1\nwindowX=2\nwindowX=x\n");
    EXPECT_FALSE(appSettings.alwaysOnTop);
    EXPECT_EQ(appSettings.seenWarnings, (std::set<std::string>{"b"}));
    EXPECT_TRUE(appSettings.minimizedPanels.empty());
    EXPECT_EQ(appSettings.panelOrder, (Texts{"panel-ui", "panel-tracker"})) << "a bad one is not taken";
    EXPECT_EQ(appSettings.windowX, 2);
}

TEST_F(AppSettingsTest, KeepsSettingsThatTheFileDoesNotName) {
    appSettings.alwaysOnTop = true;
    appSettings.seenWarnings = {"kept"};
    Load("startMinimized=1\n");
    EXPECT_TRUE(appSettings.alwaysOnTop);
    EXPECT_EQ(appSettings.seenWarnings, (std::set<std::string>{"kept"}));
}

TEST_F(AppSettingsTest, ReadsVeryLongLinesAndAnyBytes) {
    std::string ids;
    for (int i = 0; i < 20000; ++i) {
        ids += "warning-" + std::to_string(i) + ",";
    }
    Load("seenWarnings=" + ids + "\n" + std::string(5000000, 'x') + "\nwindowX=" + std::string(100000, '1') +
         "\n" + std::string("\0=\0\n", 4) + "panelOrder=\xFF\xFE\nalwaysOnTop=1\n");
    EXPECT_EQ(appSettings.seenWarnings.size(), 20000U);
    EXPECT_FALSE(appSettings.windowPositionKnown);
    EXPECT_TRUE(appSettings.alwaysOnTop);
    const std::string text = Saved();
    appSettings = AppSettings();
    LoadAppSettings();
    EXPECT_EQ(appSettings.seenWarnings.size(), 20000U);
    EXPECT_EQ(BuildAppSettingsText(), ReadFile(Path()));
    EXPECT_EQ(Saved(), text);
}

TEST_F(AppSettingsTest, SavingReplacesTheWholeFile) {
    WriteFile(Path(), std::string(10000, 'x') + "\nsomethingNew=5\n");
    EXPECT_EQ(Saved(), kDefaultLines);
}

TEST_F(AppSettingsTest, SavingCreatesAMissingDataFolder) {
    fs::remove_all(DataFolderPath());
    EXPECT_EQ(Saved(), kDefaultLines);
}

TEST_F(AppSettingsTest, AFailedSaveKeepsTheLiveValues) {
    fs::remove_all(DataFolderPath());
    WriteFile(DataFolderPath(), "a file where the folder should be");
    appSettings.alwaysOnTop = true;
    SaveAppSettings();
    MarkWarningSeen("a");
    SetPanelOrder("panel-ui");
    LoadAppSettings();
    EXPECT_TRUE(appSettings.alwaysOnTop);
    EXPECT_EQ(appSettings.seenWarnings, (std::set<std::string>{"a"}));
    EXPECT_EQ(appSettings.panelOrder, Texts{"panel-ui"});
    EXPECT_EQ(ReadFile(DataFolderPath()), "a file where the folder should be");
}

TEST_F(AppSettingsTest, IgnoresAFolderInPlaceOfTheFile) {
    fs::create_directory(Path());
    LoadAppSettings();
    SaveAppSettings();
    EXPECT_TRUE(fs::is_directory(Path()));
    EXPECT_EQ(BuildAppSettingsText().substr(0, 13), "alwaysOnTop=0");
}

TEST_F(AppSettingsTest, TheReportHasItsFixedForm) {
    EXPECT_EQ(AppSettingsReport(),
              R"({"alwaysOnTop":false,"launchOnStartup":false,"startMinimized":false,"hotkeysEnabled":true,)"
              R"("hotkeyLock":true,"stopToolsWithMacro":true,"disableAnimations":false,"showWarnings":true,)"
              R"("seenWarnings":[],"minimizedPanels":[],"panelOrder":[]})");
    Load(kOtherLines);
    EXPECT_EQ(
        AppSettingsReport(),
        R"({"alwaysOnTop":true,"launchOnStartup":true,"startMinimized":true,"hotkeysEnabled":false,)"
        R"("hotkeyLock":false,"stopToolsWithMacro":false,"disableAnimations":true,"showWarnings":false,)"
        R"("seenWarnings":["loop","zero-interval"],"minimizedPanels":["panel-spammer","panel-ui"],)"
        R"("panelOrder":["panel-tracker","panel-ui"]})");
}

TEST_F(AppSettingsTest, StoresByTheNamesOfThePage) {
    struct Row {
        const char* key;
        const char* line;
        const char* otherLine;
    };
    const Row rows[] = {
        {"alwaysOnTop", "alwaysOnTop=1\n", "alwaysOnTop=0\n"},
        {"launchOnStartup", "launchOnStartup=1\n", "launchOnStartup=0\n"},
        {"startMinimized", "startMinimized=1\n", "startMinimized=0\n"},
        {"hotkeysEnabled", "hotkeysEnabled=1\n", "hotkeysEnabled=0\n"},
        {"hotkeyLock", "hotkeyLockOn=1\n", "hotkeyLockOn=0\n"},
        {"stopToolsWithMacro", "stopToolsWithMacro=1\n", "stopToolsWithMacro=0\n"},
        {"disableAnimations", "disableAnimations=1\n", "disableAnimations=0\n"},
        {"showWarnings", "showWarnings=1\n", "showWarnings=0\n"},
        {"min:panel-tracker", "minimizedPanels=panel-tracker\n", "minimizedPanels=\n"},
    };
    for (const Row& row : rows) {
        for (const bool value : {true, false, true}) {
            StoreAppSetting(row.key, value);
            EXPECT_NE(Saved().find(value ? row.line : row.otherLine), std::string::npos) << row.key;
        }
    }
    const std::string before = Saved();
    for (const char* key :
         {"", "hotkeyLockOn", "windowMaximized", "windowX", "seenWarnings", "min:", "min:panel-other",
          "min:panel-ui ", "MIN:panel-ui", "panel-ui", "minimizedPanels"}) {
        StoreAppSetting(key, true);
        StoreAppSetting(key, false);
        EXPECT_EQ(Saved(), before) << key;
    }
}

TEST_F(AppSettingsTest, ASeenWarningIsSavedOnce) {
    MarkWarningSeen("");
    EXPECT_FALSE(FileExists(Path()));
    MarkWarningSeen("zero-interval");
    EXPECT_NE(File().find("seenWarnings=zero-interval\n"), std::string::npos);
    MarkWarningSeen("loop");
    EXPECT_NE(File().find("seenWarnings=loop,zero-interval\n"), std::string::npos);
    RemoveFile(Path());
    MarkWarningSeen("loop");
    EXPECT_FALSE(FileExists(Path())) << "nothing new, nothing saved";
    MarkWarningSeen("Any text at all");
    EXPECT_EQ(appSettings.seenWarnings.size(), 3U);
}

TEST_F(AppSettingsTest, StoresAWholeOrderOrNone) {
    SetPanelOrder("panel-ui,panel-ui");
    SetPanelOrder("panel-other");
    EXPECT_FALSE(FileExists(Path()));
    SetPanelOrder("panel-tracker,panel-ui");
    EXPECT_NE(File().find("panelOrder=panel-tracker,panel-ui\n"), std::string::npos);
    RemoveFile(Path());
    SetPanelOrder("panel-tracker,panel-tracker");
    EXPECT_EQ(appSettings.panelOrder, (Texts{"panel-tracker", "panel-ui"}));
    EXPECT_FALSE(FileExists(Path()));
    SetPanelOrder("");
    EXPECT_TRUE(appSettings.panelOrder.empty());
    EXPECT_NE(File().find("panelOrder=\n"), std::string::npos);
}

TEST_F(AppSettingsTest, AnAdditionalSettingStandsInTheFileOnlyIfItDiffers) {
    const std::string before = BuildAppSettingsText();
    EXPECT_EQ(AdditionalSettingsReport(), R"({"countdownSeconds":3})");
    EXPECT_TRUE(SetAdditionalSetting("countdownSeconds,0"));
    EXPECT_EQ(AdditionalSettingsReport(), R"({"countdownSeconds":0})");
    EXPECT_EQ(BuildAppSettingsText(), before + "countdownSeconds=0" + std::string(TextLineEnd()));
    appSettings = AppSettings();
    LoadAppSettings();
    EXPECT_EQ(appSettings.countdownSeconds, 0) << "it was saved";
    EXPECT_TRUE(SetAdditionalSetting("countdownSeconds,3"));
    EXPECT_EQ(BuildAppSettingsText(), before);
    EXPECT_EQ(AppSettingsReport().find("countdown"), std::string::npos);
}

TEST_F(AppSettingsTest, AnInvalidAdditionalSettingChangesNothing) {
    for (const char* text :
         {"", "countdownSeconds", "countdownSeconds,", "countdownSeconds,11", "countdownSeconds,-1",
          "countdownSeconds,x", "countdownSeconds,5x", "countdownSeconds,5,", "other,5", "windowX,5", ",5"}) {
        EXPECT_FALSE(SetAdditionalSetting(text)) << text;
    }
    EXPECT_FALSE(FileExists(Path()));
    Load("countdownSeconds=99\ncountdownSeconds=x\n");
    EXPECT_EQ(appSettings.countdownSeconds, 3);
    Load("countdownSeconds=10\n");
    EXPECT_EQ(appSettings.countdownSeconds, 10);
}
