#include "storage/session.h"

#include "app/autosave.h"
#include "editing/profiles.h"
#include "platform/files.h"
#include "storage/settings_text.h"
#include "unit/test_support.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr const char* kFixtureSettings =
    "1,2,3,77,1,1,0,9,1,100,200,0,1,0,1,1,2.5,1,750,65,66,0,67,4,5,6,88,0,3,68,69,69|70|71,1,1,0,72";
constexpr const char* kFixtureProfileSettings = "7,0,0,20,2,0,1,10,0,0,0,0,0,1,5,1,10,65,65|66,0";

// A copy of the store.
struct Store {
    std::vector<Profile> profiles;
    int32_t current = 0;
    uint64_t revision = 0;

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const Profile& profile : profiles) {
            names.push_back(profile.name);
        }
        return names;
    }
};

Store ReadStore() {
    MutexLock lock(macroMutex);
    return {macroState.profiles, macroState.currentProfile, macroState.revision};
}

void SetStore(std::vector<Profile> profiles, int32_t current) {
    MutexLock lock(macroMutex);
    macroState.profiles = std::move(profiles);
    macroState.currentProfile = current;
}

void ExpectSameProfiles(const std::vector<Profile>& a, const std::vector<Profile>& b) {
    ASSERT_EQ(a.size(), b.size());
    for (size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i].name, b[i].name);
        EXPECT_EQ(a[i].settings, b[i].settings);
        EXPECT_EQ(a[i].events, b[i].events);
    }
}

class SessionTest : public DataFolderTest {
  protected:
    // Loads a copy, so that no fixture is overwritten.
    bool LoadFixture(const char* name) {
        CreateDataFolder();
        WriteFile(SessionPath(), ReadFile(FixturePath("sessions/" + std::string(name))));
        return LoadSession().loaded;
    }
};

std::string LineEnded(std::initializer_list<std::string_view> lines) {
    std::string text;
    for (const std::string_view line : lines) {
        text += line;
        text += TextLineEnd();
    }
    return text;
}

TEST_F(SessionTest, SavesSettingsCurrentAndProfiles) {
    SetStore({{DefaultProfileName, "", {}},
              {"Mi\xE4ning",
               "1,2",
               {{EvAbsMove, 0.5, 10, -20, 0, 0, false, 0}, {EvKey, 1234567, 0, 0, 0, 65, true, 0}}},
              {"", "", {}}},
             1);
    SaveSession();
    EXPECT_EQ(
        ReadFile(SessionPath()),
        LineEnded({"SETTINGS:0,0,0,5,0,0,1,10,0,0,0,1,1,1,1,0,1,0,500,119,118,0,117,0,0,0,5,1,10,120,32,32,0,"
                   "0,0,121",
                   "CURRENT:1", "PROFILE:Default Tracking Profile", "PROFILE:Mi\xE4ning",
                   "PROFILESETTINGS:1,2", "0,0.5,10,-20,0,0,0,0", "3,1.23457e+06,0,0,0,65,1,0", "PROFILE:"}));
}

TEST_F(SessionTest, SavesAnEmptyStoreWithoutProfiles) {
    SaveSession();
    const std::string text = ReadFile(SessionPath());
    EXPECT_TRUE(text.ends_with(LineEnded({"CURRENT:0"})));
    EXPECT_FALSE(LoadSession().loaded);
}

// A save reuses the memory of the one before.
TEST_F(SessionTest, ALaterSaveContainsNothingOfAnEarlierOne) {
    SetStore({{"Large", "1,2", std::vector<UnifiedEvent>(400000)},
              {"Second", "3,4", std::vector<UnifiedEvent>(3)}},
             1);
    SaveSession();
    EXPECT_GT(ReadFile(SessionPath()).size(), 400000U * 16);
    SetStore({{"Small", "", {{EvKey, 1, 0, 0, 0, 65, true, 0}}}}, 0);
    SaveSession();
    EXPECT_TRUE(
        ReadFile(SessionPath()).ends_with(LineEnded({"CURRENT:0", "PROFILE:Small", "3,1,0,0,0,65,1,0"})));
    SetStore({{"A", "", {}}, {"B", "5", std::vector<UnifiedEvent>(1)}}, 0);
    SaveSession();
    EXPECT_TRUE(ReadFile(SessionPath())
                    .ends_with(LineEnded(
                        {"CURRENT:0", "PROFILE:A", "PROFILE:B", "PROFILESETTINGS:5", "0,0,0,0,0,0,0,0"})));
}

TEST_F(SessionTest, SaveWritesNothingWhileTheLockIsHeld) {
    SetStore({{"One", "", {}}}, 0);
    {
        MutexLock lock(macroMutex);
        std::thread(SaveSession).join();
    }
    EXPECT_FALSE(FileExists(SessionPath()));
    SaveSession();
    const std::string saved = ReadFile(SessionPath());
    SetStore({{"Two", "", {}}}, 0);
    {
        MutexLock lock(macroMutex);
        std::thread(SaveSession).join();
    }
    EXPECT_EQ(ReadFile(SessionPath()), saved) << "nothing was written";
    SaveSession();
    EXPECT_NE(ReadFile(SessionPath()), saved) << "the next save is an ordinary one";
}

TEST_F(SessionTest, SaveIgnoresAFileThatCannotBeOpened) {
    std::filesystem::create_directory(root_.File("folder"));
    SetSessionPath(root_.File("folder"));
    SetStore({{"One", "", {}}}, 0);
    SaveSession();
    EXPECT_TRUE(std::filesystem::is_directory(root_.File("folder")));
    SetSessionPath("");
    SaveSession();
    EXPECT_TRUE(FileExists(SessionPath())) << "and does not stand in the way of later ones";
}

TEST_F(SessionTest, SavesToTheSessionPathOfThisRun) {
    SetSessionPath(root_.File("older.mcr"));
    SetStore({{"One", "", {}}}, 0);
    SaveSession();
    EXPECT_TRUE(FileExists(root_.File("older.mcr")));
    EXPECT_FALSE(FileExists(DataFilePath("session.dat")));
    SetStore({}, 0);
    EXPECT_TRUE(LoadSession().loaded);
    EXPECT_EQ(ReadStore().Names(), std::vector<std::string>{"One"});
}

// Several threads change and save at the same time: the file never mixes two saves.
TEST_F(SessionTest, ConcurrentSavesDoNotMix) {
    constexpr int kThreads = 4;
    constexpr int kSaves = 60;
    SetStore({{"Shared", "", std::vector<UnifiedEvent>(3000)}}, 0);
    for (int round = 0; round < 5; ++round) {
        std::atomic<int> changes{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&changes] {
                for (int save = 0; save < kSaves; ++save) {
                    const int change = ++changes;
                    {
                        MutexLock lock(macroMutex);
                        macroState.profiles[0].events.back().x = change;
                    }
                    SaveSession();
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        ASSERT_TRUE(LoadSession().loaded);
        const std::vector<UnifiedEvent> events = ReadStore().profiles.at(0).events;
        ASSERT_EQ(events.size(), 3000U);
        EXPECT_EQ(ReadStore().profiles.size(), 1U);
        EXPECT_GT(events.back().x, 0);
        EXPECT_LE(events.back().x, kThreads * kSaves);
    }
}

TEST_F(SessionTest, SaveDuringAnotherSaveIsNotLost) {
    SetStore({{"Shared", "", std::vector<UnifiedEvent>(3000)}}, 0);
    std::atomic<bool> stop{false};
    std::thread other([&stop] {
        while (!stop) {
            SaveSession();
        }
    });
    for (int change = 1; change <= 100; ++change) {
        {
            MutexLock lock(macroMutex);
            macroState.profiles[0].events.back().x = change;
        }
        SaveSession();
    }
    stop = true;
    other.join();
    ASSERT_TRUE(LoadSession().loaded);
    EXPECT_EQ(ReadStore().profiles.at(0).events.back().x, 100);
}

TEST_F(SessionTest, LoadsWhatWasSaved) {
    ApplySettingsLine(kFixtureSettings);
    const std::vector<Profile> profiles = {
        {DefaultProfileName, kFixtureProfileSettings, {}},
        {"PROFILE:twice", kFixtureProfileSettings, {{EvScroll, 2.25, 0, 0, 0, 0, false, -120}}},
        {"", kFixtureProfileSettings, {{99, 0.125, -1, -2, 4294967295U, 4294967295U, true, 7}}},
        {" \xC3\xA4,\"\\ ", kFixtureProfileSettings, {}},
    };
    SetStore(profiles, 2);
    SaveSession();
    ResetEngineState();
    ASSERT_TRUE(LoadSession().loaded);
    EXPECT_EQ(BuildSettingsLine(), kFixtureSettings);
    EXPECT_EQ(ReadStore().current, 2);
    ExpectSameProfiles(ReadStore().profiles, profiles);
    const std::string saved = ReadFile(SessionPath());
    SaveSession();
    EXPECT_EQ(ReadFile(SessionPath()), saved);
}

TEST_F(SessionTest, LoadsTheCurrentForm) {
    const uint64_t before = ReadStore().revision;
    ASSERT_TRUE(LoadFixture("current.dat"));
    const Store store = ReadStore();
    EXPECT_EQ(BuildSettingsLine(), kFixtureSettings);
    EXPECT_EQ(store.current, 1);
    EXPECT_NE(store.revision, before);
    ExpectSameProfiles(store.profiles,
                       {{DefaultProfileName, "", {}},
                        {"Mining",
                         kFixtureProfileSettings,
                         {{EvAbsMove, 0.5, 10, 20, 0, 0, false, 0}, {EvKey, 1.5, 0, 0, 0, 65, true, 0}}},
                        {"", kFixtureProfileSettings, {{EvScroll, 2, 0, 0, 0, 0, false, -120}}}});
}

TEST_F(SessionTest, TheLiveSettingsComeFromTheFirstLineNotFromTheProfile) {
    ASSERT_TRUE(LoadFixture("current.dat"));
    EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 77) << "the current profile says 20";
}

TEST_F(SessionTest, LoadsOlderForms) {
    struct Row {
        const char* name;
        int32_t intervalMilliseconds;
        int32_t targets;
        bool holdAutoclicker;
        uint32_t unlock;
    };
    for (const Row& row : {Row{"form-35.dat", 88, 3, true, 121}, Row{"form-33.dat", 88, 3, false, 121},
                           Row{"form-31.dat", 88, 1, false, 121}, Row{"form-23.dat", 5, 1, false, 121}}) {
        ResetEngineState();
        ASSERT_TRUE(LoadFixture(row.name)) << row.name;
        EXPECT_EQ(macroSettings.playbackSpeed, 2.5F) << row.name;
        EXPECT_EQ(hotkeyTable.autoclicker, 67U) << row.name;
        EXPECT_EQ(keySpammerSettings.intervalMilliseconds, row.intervalMilliseconds) << row.name;
        EXPECT_EQ(keySpammerSettings.targetCount, row.targets) << row.name;
        EXPECT_EQ(hotkeyTable.holdAutoclicker, row.holdAutoclicker) << row.name;
        EXPECT_EQ(hotkeyTable.unlock, row.unlock) << row.name;
        EXPECT_EQ(ReadStore().profiles.at(0).events.size(), 1U) << row.name;
    }
}

TEST_F(SessionTest, LoadsTheLineEndsOfTheOtherSystem) {
    ASSERT_TRUE(LoadFixture("crlf.dat"));
    EXPECT_EQ(BuildSettingsLine(), kFixtureSettings);
    ExpectSameProfiles(ReadStore().profiles,
                       {{DefaultProfileName, "", {}},
                        {"Mining", kFixtureProfileSettings, {{EvAbsMove, 0.5, 10, 20, 0, 0, false, 0}}}});
}

TEST_F(SessionTest, AMissingFileChangesNothing) {
    SetStore({{"Before", "", {}}}, 0);
    EXPECT_FALSE(LoadSession().loaded);
    EXPECT_EQ(ReadStore().Names(), std::vector<std::string>{"Before"});
}

TEST_F(SessionTest, AWrongFirstLineChangesNothing) {
    SetStore({{"Before", "", {}}}, 0);
    const std::string before = BuildSettingsLine();
    EXPECT_FALSE(LoadFixture("not-a-session.dat"));
    WriteFile(SessionPath(), "");
    EXPECT_FALSE(LoadSession().loaded);
    WriteFile(SessionPath(), "\nSETTINGS:" + std::string(kFixtureSettings) + "\nCURRENT:0\nPROFILE:x\n");
    EXPECT_FALSE(LoadSession().loaded);
    EXPECT_EQ(ReadStore().Names(), std::vector<std::string>{"Before"});
    EXPECT_EQ(BuildSettingsLine(), before);
}

TEST_F(SessionTest, AFileWithoutProfilesStoresItsSettingsAndFails) {
    SetStore({{"Before", "", {}}}, 0);
    EXPECT_FALSE(LoadFixture("no-profiles.dat"));
    EXPECT_EQ(BuildSettingsLine(), kFixtureSettings);
    EXPECT_EQ(ReadStore().Names(), std::vector<std::string>{"Before"});
    WriteFile(SessionPath(), "SETTINGS:");
    EXPECT_FALSE(LoadSession().loaded);
}

TEST_F(SessionTest, AnInvalidCurrentIndexSelectsTheFirstProfile) {
    for (const char* name : {"current-bad.dat", "current-out-of-range.dat"}) {
        ASSERT_TRUE(LoadFixture(name));
        EXPECT_EQ(ReadStore().current, 0) << name;
        EXPECT_EQ(ReadStore().Names(), (std::vector<std::string>{"First", "Second"}));
    }
    for (const char* current : {"-1", "4294967297", "", "2147483647"}) {
        WriteFile(SessionPath(),
                  "SETTINGS:\nCURRENT:" + std::string(current) + "\nPROFILE:First\nPROFILE:Second\n");
        ASSERT_TRUE(LoadSession().loaded);
        EXPECT_EQ(ReadStore().current, 0) << current;
    }
    WriteFile(SessionPath(), "SETTINGS:\nCURRENT: 1x\nPROFILE:First\nPROFILE:Second\n");
    ASSERT_TRUE(LoadSession().loaded);
    EXPECT_EQ(ReadStore().current, 1);
}

TEST_F(SessionTest, IgnoresAnyOtherSecondLine) {
    ASSERT_TRUE(LoadFixture("current-missing.dat"));
    EXPECT_EQ(ReadStore().current, 0);
    EXPECT_EQ(ReadStore().Names(), std::vector<std::string>{"First"})
        << "a profile line in its place is lost";
}

TEST_F(SessionTest, SkipsMalformedLinesOnly) {
    ASSERT_TRUE(LoadFixture("bad-lines.dat"));
    ExpectSameProfiles(ReadStore().profiles, {{"First",
                                               "1,2,3,77,1,1,0,9,1,100,200,4,5,6,88,0,3,69,69|70|71,1",
                                               {{0, 0.5, 1, 2, 0, 0, true, 1},
                                                {5, 5, 5, 5, 5, 5, true, 5},
                                                {0, 0.5, 1, 2, 0, 0, false, 0},
                                                {EvKey, 2, 0, 0, 0, 65, true, 0}}}});
}

TEST_F(SessionTest, KeepsUnusualNames) {
    ASSERT_TRUE(LoadFixture("odd-names.dat"));
    EXPECT_EQ(ReadStore().Names(),
              (std::vector<std::string>{"PROFILE:twice", "PROFILESETTINGS:x", "", " \xE4\xFF,\""}));
    EXPECT_EQ(ReadStore().profiles[0].events.size(), 1U);
}

TEST_F(SessionTest, OnlyTheCurrentProfileGetsTheLiveSettingsIfItHasNone) {
    ASSERT_TRUE(LoadFixture("no-default.dat"));
    EXPECT_EQ(ReadStore().profiles[0].settings, "");
    EXPECT_EQ(ReadStore().profiles[1].settings, "1,2,3,77,1,1,0,9,1,100,200,4,5,6,88,0,3,69,69|70|71,1");
}

// A kill during a save can leave any beginning of the file.
TEST_F(SessionTest, ReadsOrRejectsAnyBeginningOfAFile) {
    const std::string whole = ReadFile(FixturePath("sessions/current.dat"));
    CreateDataFolder();
    for (size_t length = 0; length <= whole.size(); ++length) {
        ResetEngineState();
        WriteFile(SessionPath(), whole.substr(0, length));
        const bool loaded = LoadSession().loaded;
        EXPECT_EQ(loaded, !ReadStore().profiles.empty());
        if (loaded) {
            EXPECT_LT(static_cast<size_t>(ReadStore().current), ReadStore().profiles.size());
        }
        EnsureDefaultProfile();
        EXPECT_FALSE(ReadStore().profiles.empty());
    }
}

TEST_F(SessionTest, AddsTheDefaultProfileInFrontAndKeepsTheCurrentOne) {
    ASSERT_TRUE(LoadFixture("no-default.dat"));
    const uint64_t before = ReadStore().revision;
    EnsureDefaultProfile();
    EXPECT_EQ(ReadStore().Names(), (std::vector<std::string>{DefaultProfileName, "First", "Second"}));
    EXPECT_EQ(ReadStore().current, 2);
    EXPECT_EQ(ReadStore().profiles[0].settings, "");
    EXPECT_NE(ReadStore().revision, before);
    EnsureDefaultProfile();
    EXPECT_EQ(ReadStore().profiles.size(), 3U) << "one is enough";
}

TEST_F(SessionTest, TheDefaultProfileOfAnEmptyStoreIsCurrent) {
    EnsureDefaultProfile();
    EXPECT_EQ(ReadStore().Names(), std::vector<std::string>{DefaultProfileName});
    EXPECT_EQ(ReadStore().current, 0);
}

TEST_F(SessionTest, ASimilarNameIsNotTheDefaultProfile) {
    SetStore({{"default tracking profile", "", {}}, {"Default Tracking Profile ", "", {}}}, 1);
    EnsureDefaultProfile();
    EXPECT_EQ(ReadStore().profiles.size(), 3U);
    EXPECT_EQ(ReadStore().current, 2);
}

TEST_F(SessionTest, TheAutosaveThreadSavesUntilRunningIsFalse) {
    SetStore({{"One", "", {}}}, 0);
    std::thread autosave(AutosaveThreadMain);
    EXPECT_TRUE(WaitUntil([] { return FileExists(SessionPath()); }));
    engineState.running = false;
    autosave.join();
}

TEST_F(SessionTest, TheAutosaveThreadDoesNotSaveAfterRunningIsFalse) {
    SetStore({{"One", "", {}}}, 0);
    engineState.running = false;
    AutosaveThreadMain();
    EXPECT_FALSE(FileExists(SessionPath()));
}

}  // namespace
