#include "editing/profiles.h"

#include "storage/settings_text.h"
#include "unit/test_support.h"

#include <functional>
#include <string>
#include <vector>

namespace {

constexpr const char* kDefaults = "0,0,0,5,0,0,1,10,0,0,0,0,0,0,5,1,10,32,32,0";
constexpr const char* kFast = "0,0,0,1,1,1,0,3,1,7,8,0,0,0,2,0,4,65,65|66,1";
constexpr const char* kSlow = "0,0,9,0,2,0,1,10,0,0,0,0,0,8,0,1,10,67,67,0";

const UnifiedEvent kEvent{EvAbsMove, 0.5, 1, 2, 0, 0, false, 0};

class ProfilesTest : public EngineStateTest {
  protected:
    ProfilesTest() {
        SetStore({{DefaultProfileName, "", {kEvent}},
                  {"Fast", kFast, {kEvent, kEvent}},
                  {"Slow", kSlow, {kEvent}}},
                 0);
    }

    static void SetStore(std::vector<Profile> profiles, int32_t current) {
        MutexLock lock(macroMutex);
        macroState.profiles = std::move(profiles);
        macroState.currentProfile = current;
    }
    static std::vector<std::string> Names() {
        MutexLock lock(macroMutex);
        std::vector<std::string> names;
        for (const Profile& profile : macroState.profiles) {
            names.push_back(profile.name);
        }
        return names;
    }
    static int32_t Current() {
        MutexLock lock(macroMutex);
        return macroState.currentProfile;
    }
    static Profile At(size_t index) {
        MutexLock lock(macroMutex);
        return macroState.profiles.at(index);
    }
    static uint64_t Revision() {
        MutexLock lock(macroMutex);
        return macroState.revision;
    }
    // Runs `command` and returns whether names, order, current profile, contents or live settings have changed.
    static bool Changes(const std::function<void()>& command) {
        const auto state = [] {
            std::string all = GetProfiles() + BuildSettingsLine();
            for (size_t i = 0; i < Names().size(); ++i) {
                all += "|" + At(i).settings + "#" + std::to_string(At(i).events.size());
            }
            return all;
        };
        const std::string before = state();
        command();
        return state() != before;
    }
};

using NameList = std::vector<std::string>;

TEST_F(ProfilesTest, AddUsesTheLiveSettingsAndAnEmptyMacro) {
    ApplyProfileSettings(kFast);
    const uint64_t before = Revision();
    AddProfile("New");
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Fast", "Slow", "New"}));
    EXPECT_EQ(Current(), 3);
    EXPECT_EQ(At(3).settings, kFast);
    EXPECT_TRUE(At(3).events.empty());
    EXPECT_EQ(BuildProfileSettings(), kFast) << "the live setup is not touched";
    EXPECT_NE(Revision(), before);
}

TEST_F(ProfilesTest, AddAcceptsAnExistingNameAndRejectsAnEmptyOne) {
    AddProfile("Fast");
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Fast", "Slow", "Fast"}));
    EXPECT_FALSE(Changes([] { AddProfile(""); }));
}

TEST_F(ProfilesTest, SwitchAppliesTheStoredSettings) {
    const uint64_t before = Revision();
    SwitchProfile("1");
    EXPECT_EQ(Current(), 1);
    EXPECT_EQ(BuildProfileSettings(), kFast);
    EXPECT_NE(Revision(), before);
    SwitchProfile(" 2x");
    EXPECT_EQ(Current(), 2);
    EXPECT_EQ(BuildProfileSettings(), kSlow);
}

TEST_F(ProfilesTest, SwitchToAProfileWithoutSettingsAppliesTheDefaults) {
    SwitchProfile("1");
    SwitchProfile("0");
    EXPECT_EQ(BuildProfileSettings(), kDefaults);
    EXPECT_EQ(At(0).settings, "") << "it is not stored";
}

TEST_F(ProfilesTest, SwitchToTruncatedSettingsKeepsTheLiveOnes) {
    SetStore({{"A", "", {}}, {"B", "1,2,3", {}}}, 0);
    ApplyProfileSettings(kSlow);
    SwitchProfile("1");
    EXPECT_EQ(Current(), 1);
    EXPECT_EQ(BuildProfileSettings(), kSlow);
}

TEST_F(ProfilesTest, SwitchToAnInvalidIndexChangesNothing) {
    ApplyProfileSettings(kSlow);
    for (const char* index : {"abc", "", "99", "3", "-1", "99999999999", "4294967297"}) {
        EXPECT_FALSE(Changes([index] { SwitchProfile(index); })) << index;
    }
}

TEST_F(ProfilesTest, DeletingTheDefaultProfileClearsIt) {
    ApplyProfileSettings(kSlow);
    const uint64_t before = Revision();
    DeleteProfile();
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Fast", "Slow"}));
    EXPECT_EQ(Current(), 0);
    EXPECT_TRUE(At(0).events.empty());
    EXPECT_EQ(At(0).settings, kDefaults);
    EXPECT_EQ(BuildProfileSettings(), kDefaults);
    EXPECT_NE(Revision(), before);
}

TEST_F(ProfilesTest, DeletingASecondDefaultProfileClearsThatOne) {
    SetStore({{DefaultProfileName, kFast, {kEvent}}, {DefaultProfileName, kSlow, {kEvent}}}, 1);
    DeleteProfile();
    EXPECT_EQ(Names().size(), 2U);
    EXPECT_EQ(At(0).events.size(), 1U);
    EXPECT_TRUE(At(1).events.empty());
}

TEST_F(ProfilesTest, TheOnlyProfileIsNotDeleted) {
    SetStore({{"Lonely", kFast, {kEvent}}}, 0);
    EXPECT_FALSE(Changes(DeleteProfile));
}

TEST_F(ProfilesTest, DeletingTheLastOfThreeMakesTheNewLastCurrent) {
    SetStore({{"A", kSlow, {}}, {"B", kFast, {}}, {"C", kSlow, {}}}, 2);
    const uint64_t before = Revision();
    DeleteProfile();
    EXPECT_EQ(Names(), (NameList{"A", "B"}));
    EXPECT_EQ(Current(), 1);
    EXPECT_EQ(BuildProfileSettings(), kFast);
    EXPECT_NE(Revision(), before);
}

TEST_F(ProfilesTest, DeletingTheFirstOfThreeMakesTheSecondCurrent) {
    SetStore({{"A", kSlow, {}}, {"B", kFast, {}}, {"C", kSlow, {}}}, 0);
    DeleteProfile();
    EXPECT_EQ(Names(), (NameList{"B", "C"}));
    EXPECT_EQ(Current(), 0);
    EXPECT_EQ(BuildProfileSettings(), kFast);
}

TEST_F(ProfilesTest, DeletingBeforeAProfileWithoutSettingsAppliesTheDefaults) {
    SetStore({{"A", kSlow, {}}, {"B", "", {}}}, 0);
    ApplyProfileSettings(kSlow);
    DeleteProfile();
    EXPECT_EQ(BuildProfileSettings(), kDefaults);
}

TEST_F(ProfilesTest, ClearKeepsTheNameAndPositionOfTheProfile) {
    SwitchProfile("1");
    const uint64_t before = Revision();
    ClearProfile();
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Fast", "Slow"}));
    EXPECT_EQ(Current(), 1);
    EXPECT_TRUE(At(1).events.empty());
    EXPECT_EQ(At(1).settings, kDefaults);
    EXPECT_EQ(BuildProfileSettings(), kDefaults);
    EXPECT_EQ(At(0).events.size(), 1U);
    EXPECT_NE(Revision(), before);
}

TEST_F(ProfilesTest, NothingChangesWhileARecordingRuns) {
    SwitchProfile("1");
    engineState.recording = true;
    EXPECT_FALSE(Changes([] { AddProfile("New"); }));
    EXPECT_FALSE(Changes([] { SwitchProfile("2"); }));
    EXPECT_FALSE(Changes(DeleteProfile));
    EXPECT_FALSE(Changes(ClearProfile));
    SwitchProfile("0");
    EXPECT_EQ(Current(), 1);
    engineState.recording = false;
    engineState.playing = true;
    EXPECT_TRUE(Changes([] { SwitchProfile("2"); })) << "a playback does not stand in the way";
}

TEST_F(ProfilesTest, AnEmptyStoreStaysEmpty) {
    SetStore({}, 0);
    EXPECT_FALSE(Changes([] {
        DeleteProfile();
        SwitchProfile("0");
        SyncProfileSettings();
        ClearProfile();
    }));
}

TEST_F(ProfilesTest, TheListIsJson) {
    EXPECT_EQ(
        GetProfiles(),
        R"({"current":0,"names":["Default Tracking Profile","Fast","Slow"],"cap":-1,"defaultName":"Default Tracking Profile"})");
    SetStore({{"a\"b\\c\n\x01\xE4", "", {}}}, 0);
    EXPECT_EQ(GetProfiles(), "{\"current\":0,\"names\":[\"a\\\"b\\\\c\\n\\u0001\xE4\"],\"cap\":-1,"
                             "\"defaultName\":\"Default Tracking "
                             "Profile\"}");
    SetStore({}, 0);
    EXPECT_EQ(GetProfiles(), R"({"current":0,"names":[],"cap":-1,"defaultName":"Default Tracking Profile"})");
}

TEST_F(ProfilesTest, SyncStoresTheLiveSettingsInTheCurrentProfile) {
    SwitchProfile("2");
    autoclickerSettings.intervalMilliseconds = 123;
    SyncProfileSettings();
    EXPECT_EQ(At(2).settings, "0,0,9,123,2,0,1,10,0,0,0,0,0,8,0,1,10,67,67,0");
    EXPECT_EQ(At(1).settings, kFast);
    SetStore({{"A", "kept", {}}}, 7);
    SyncProfileSettings();
    EXPECT_EQ(At(0).settings, "kept") << "an index out of range";
}

TEST_F(ProfilesTest, RenameKeepsTheProfileAtItsPlace) {
    EXPECT_EQ(RenameProfile(1, "Farm, east"), Refusal::None);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Farm, east", "Slow"}));
    EXPECT_EQ(At(1).settings, kFast);
    EXPECT_EQ(At(1).events.size(), 2U);
    EXPECT_EQ(RenameProfile(1, "Slow"), Refusal::None) << "two profiles may have the same name";
}

TEST_F(ProfilesTest, RenameRefusesTheDefaultProfileAndItsName) {
    EXPECT_FALSE(Changes([] {
        EXPECT_EQ(RenameProfile(0, "Other"), Refusal::Default);
        EXPECT_EQ(RenameProfile(1, DefaultProfileName), Refusal::Default);
        EXPECT_EQ(RenameProfile(1, ""), Refusal::Argument);
        EXPECT_EQ(RenameProfile(3, "Other"), Refusal::Argument);
        EXPECT_EQ(RenameProfile(-1, "Other"), Refusal::Argument);
    }));
}

TEST_F(ProfilesTest, DuplicateIsCurrentBehindItsOriginal) {
    EXPECT_EQ(DuplicateProfile(1), Refusal::None);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Fast", "Fast (2)", "Slow"}));
    EXPECT_EQ(Current(), 2);
    EXPECT_EQ(At(2).events, At(1).events);
    EXPECT_EQ(At(2).settings, kFast);
    EXPECT_EQ(BuildProfileSettings(), kFast);
    EXPECT_EQ(DuplicateProfile(0), Refusal::None);
    EXPECT_EQ(Names()[1], std::string(DefaultProfileName) + " (2)");
    EXPECT_EQ(BuildProfileSettings(), kDefaults) << "the default profile never stored its settings";
}

TEST_F(ProfilesTest, DuplicateRefusesAnInvalidIndexAndARecording) {
    EXPECT_FALSE(Changes([] {
        EXPECT_EQ(DuplicateProfile(3), Refusal::Argument);
        EXPECT_EQ(DuplicateProfile(-1), Refusal::Argument);
        engineState.recording = true;
        EXPECT_EQ(DuplicateProfile(1), Refusal::Recording);
        EXPECT_EQ(MoveProfile(1, 2), Refusal::Recording);
    }));
}

TEST_F(ProfilesTest, MoveKeepsTheSameProfileCurrent) {
    const NameList names = {DefaultProfileName, "Fast", "Slow", "Third"};
    for (int32_t current = 0; current < 4; ++current) {
        for (int32_t from = 0; from < 4; ++from) {
            for (int32_t to = 0; to < 4; ++to) {
                SetStore({{names[0], "", {}}, {names[1], "", {}}, {names[2], "", {}}, {names[3], "", {}}},
                         current);
                {
                    MutexLock lock(macroMutex);
                    macroState.continueProfile = current;
                }
                EXPECT_EQ(MoveProfile(from, to), Refusal::None);
                NameList expected = names;
                expected.erase(expected.begin() + from);
                expected.insert(expected.begin() + to, names[static_cast<size_t>(from)]);
                EXPECT_EQ(Names(), expected) << from << " to " << to;
                EXPECT_EQ(At(static_cast<size_t>(Current())).name, names[static_cast<size_t>(current)]);
                MutexLock lock(macroMutex);
                EXPECT_EQ(macroState.continueProfile, macroState.currentProfile);
            }
        }
    }
}

TEST_F(ProfilesTest, MoveRefusesAnInvalidIndex) {
    EXPECT_FALSE(Changes([] {
        EXPECT_EQ(MoveProfile(0, 3), Refusal::Argument);
        EXPECT_EQ(MoveProfile(3, 0), Refusal::Argument);
        EXPECT_EQ(MoveProfile(-1, 0), Refusal::Argument);
        EXPECT_EQ(MoveProfile(0, -1), Refusal::Argument);
    }));
}

}  // namespace
