#include "editing/settings_updates.h"

#include "base/numbers.h"
#include "model/engine_state.h"
#include "storage/settings_table.h"
#include "storage/settings_text.h"
#include "test_support.h"

namespace {

class SettingsUpdatesTest : public EngineStateTest {
  protected:
    SettingsUpdatesTest() {
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, "untouched", {}}};
    }

    static std::string ProfileText() {
        MutexLock lock(macroMutex);
        return macroState.profiles[0].settings;
    }
};

// The settings of a range as the settings line holds them.
std::string Stored(const SettingsRange& range) {
    std::string text;
    for (size_t i = range.first; i < range.end; ++i) {
        text += i == range.first ? "" : ",";
        AppendSettingText(text, kSettingsFields[i]);
    }
    return text;
}

}  // namespace

TEST_F(SettingsUpdatesTest, AutoclickerUpdateStoresNineFieldsAndSyncsTheProfile) {
    UpdateAutoclickerSettings("1,2,3,4,2,1,0,77,1");
    EXPECT_EQ(Stored(kAutoclickerUpdateFields), "1,2,3,4,2,1,0,77,1");
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
}

TEST_F(SettingsUpdatesTest, AutoclickerUpdateIgnoresATenthField) {
    autoclickerSettings.fixedX = 5;
    UpdateAutoclickerSettings("1,2,3,4,2,1,0,77,1,999");
    EXPECT_EQ(Stored(kAutoclickerFields), "1,2,3,4,2,1,0,77,1,5,0");
}

TEST_F(SettingsUpdatesTest, TooFewFieldsChangeNothing) {
    UpdateAutoclickerSettings("1,2,3,4,2,1,0,77");
    UpdateAutoclickerSettings("1,2,3,4,2,1,0,77,");  // a comma at the end adds no field
    UpdateAutoclickerSettings("");
    UpdateKeySpammerSettings("1,2,3,4,5");
    UpdateMacroSettings("false,false,false,false,true,2,true");
    EXPECT_EQ(autoclickerSettings.intervalHours, 0);
    EXPECT_EQ(keySpammerSettings.intervalHours, 0);
    EXPECT_TRUE(macroSettings.recordMoves);
    EXPECT_EQ(macroSettings.playbackSpeed, 1.0F);
    EXPECT_EQ(ProfileText(), "untouched");
}

TEST_F(SettingsUpdatesTest, AMalformedNumberEndsTheUpdateThere) {
    EXPECT_THROW(UpdateAutoclickerSettings("9,8,x,6,2,1,0,77,1"), NumberError);
    EXPECT_EQ(Stored(kAutoclickerUpdateFields), "9,8,0,5,0,0,1,10,0");
    EXPECT_EQ(ProfileText(), "untouched");

    EXPECT_THROW(UpdateKeySpammerSettings("7,,3,4,5,6"), NumberError);
    EXPECT_EQ(Stored(kKeySpammerFields), "7,0,0,5,1,10");

    EXPECT_THROW(UpdateMacroSettings("false,true,true,true,true,fast,true,9"), NumberError);
    EXPECT_EQ(Stored(kMacroFields), "0,1,1,1,1,1,0,500");
}

TEST_F(SettingsUpdatesTest, IntegersAreStoredUncheckedIfTheyFit) {
    UpdateAutoclickerSettings("-1,2147483647,-2147483648, +12abc,9,-3,4,-5,6");
    EXPECT_EQ(Stored(kAutoclickerUpdateFields), "-1,2147483647,-2147483648,12,9,-3,4,-5,6");
    EXPECT_THROW(UpdateAutoclickerSettings("2147483648,0,0,0,0,0,0,0,0"), NumberError);
    EXPECT_EQ(autoclickerSettings.intervalHours, -1);
}

TEST_F(SettingsUpdatesTest, KeySpammerUpdateStoresSixFieldsAndSyncsTheProfile) {
    UpdateKeySpammerSettings("1,2,3,4,0,6,7");
    EXPECT_EQ(Stored(kKeySpammerFields), "1,2,3,4,0,6");
    EXPECT_EQ(keySpammerSettings.targetCount, 1);
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
}

TEST_F(SettingsUpdatesTest, MacroUpdateStoresEightFieldsAndLeavesTheProfile) {
    UpdateMacroSettings("false,TRUE,1,true,true,2.5,true,-1");
    EXPECT_EQ(Stored(kMacroFields), "0,0,0,1,1,2.5,1,-1") << "only the exact text \"true\" is true";
    EXPECT_EQ(ProfileText(), "untouched");
}

TEST_F(SettingsUpdatesTest, ASpeedOfZeroOrLessIsStored) {
    UpdateMacroSettings("true,true,true,true,false,0,false,500");
    EXPECT_EQ(macroSettings.playbackSpeed, 0.0F);
    UpdateMacroSettings("true,true,true,true,false,-2,false,500");
    EXPECT_EQ(macroSettings.playbackSpeed, -2.0F);
}

TEST_F(SettingsUpdatesTest, HoldModeIsSetForTheNamedTool) {
    SetHoldMode("auto,1");
    EXPECT_TRUE(hotkeyTable.holdAutoclicker);
    EXPECT_FALSE(hotkeyTable.holdKeySpammer);
    SetHoldMode("keyspam,1");
    EXPECT_TRUE(hotkeyTable.holdKeySpammer);
    SetHoldMode("");
    SetHoldMode("keyspam");
    SetHoldMode("rec,0");
    EXPECT_TRUE(hotkeyTable.holdAutoclicker);
    EXPECT_TRUE(hotkeyTable.holdKeySpammer);
    SetHoldMode("auto,0");
    EXPECT_FALSE(hotkeyTable.holdAutoclicker);
    SetHoldMode("auto,1");
    SetHoldMode("auto,1,1");  // the text after the first comma is not exactly 1
    EXPECT_FALSE(hotkeyTable.holdAutoclicker);
    SetHoldMode("keyspam,true");
    EXPECT_FALSE(hotkeyTable.holdKeySpammer);
}

TEST_F(SettingsUpdatesTest, ChordIsTrueForOneTextOnly) {
    SetKeySpammerChord("1");
    EXPECT_TRUE(keySpammerSettings.chord);
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
    for (const char* text : {"", "0", "true", "1 ", "11"}) {
        keySpammerSettings.chord = true;
        SetKeySpammerChord(text);
        EXPECT_FALSE(keySpammerSettings.chord) << text;
    }
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
}

TEST_F(SettingsUpdatesTest, MovesATarget) {
    const auto set = [] {
        for (uint32_t i = 0; i < 4; ++i) {
            keySpammerSettings.targets[i] = 'A' + i;
        }
        keySpammerSettings.targetCount = 4;
    };
    const auto text = [] {
        std::string letters;
        for (int32_t i = 0; i < keySpammerSettings.targetCount; ++i) {
            letters += static_cast<char>(keySpammerSettings.targets[i].load());
        }
        return letters;
    };
    set();
    EXPECT_TRUE(MoveKeySpammerTarget(0, 2));
    EXPECT_EQ(text(), "BCAD");
    EXPECT_EQ(keySpammerSettings.singleKey, 66U);
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
    EXPECT_TRUE(MoveKeySpammerTarget(3, 0));
    EXPECT_EQ(text(), "DBCA");
    EXPECT_TRUE(MoveKeySpammerTarget(1, 1));
    EXPECT_EQ(text(), "DBCA");
    for (const auto& [from, to] : {std::pair{-1, 0}, {0, -1}, {4, 0}, {0, 4}}) {
        EXPECT_FALSE(MoveKeySpammerTarget(from, to));
    }
    EXPECT_EQ(text(), "DBCA");
}
