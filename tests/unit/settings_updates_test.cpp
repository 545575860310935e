#include "editing/settings_updates.h"

#include "base/text.h"
#include "model/engine_state.h"
#include "storage/settings_text.h"
#include "test_support.h"

namespace {

class ToolSettingsTest : public EngineStateTest {
  protected:
    ToolSettingsTest() {
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, "untouched", {}}};
    }

    static std::string ProfileText() {
        MutexLock lock(macroMutex);
        return macroState.profiles[0].settings;
    }
};

}  // namespace

TEST_F(ToolSettingsTest, AutoclickerNeedsNineFieldsAndSyncsTheProfile) {
    UpdateAutoclickerSettings("1,2,3,4,2,1,0,77,1");
    EXPECT_EQ(autoclickerSettings.intervalHours, 1);
    EXPECT_EQ(autoclickerSettings.intervalMinutes, 2);
    EXPECT_EQ(autoclickerSettings.intervalSeconds, 3);
    EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 4);
    EXPECT_EQ(autoclickerSettings.button, 2);
    EXPECT_EQ(autoclickerSettings.doubleClick, 1);
    EXPECT_EQ(autoclickerSettings.repeatMode, 0);
    EXPECT_EQ(autoclickerSettings.repeatCount, 77);
    EXPECT_EQ(autoclickerSettings.locationMode, 1);
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
}

TEST_F(ToolSettingsTest, AutoclickerIgnoresATenthField) {
    autoclickerSettings.fixedX = 5;
    UpdateAutoclickerSettings("1,2,3,4,2,1,0,77,1,999");
    EXPECT_EQ(autoclickerSettings.locationMode, 1);
    EXPECT_EQ(autoclickerSettings.fixedX, 5);
}

TEST_F(ToolSettingsTest, TooFewFieldsChangeNothing) {
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

TEST_F(ToolSettingsTest, AMalformedNumberEndsTheUpdateThere) {
    EXPECT_THROW(UpdateAutoclickerSettings("9,8,x,6,2,1,0,77,1"), NumberError);
    EXPECT_EQ(autoclickerSettings.intervalHours, 9);
    EXPECT_EQ(autoclickerSettings.intervalMinutes, 8);
    EXPECT_EQ(autoclickerSettings.intervalSeconds, 0);
    EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 5);
    EXPECT_EQ(ProfileText(), "untouched");

    EXPECT_THROW(UpdateKeySpammerSettings("7,,3,4,5,6"), NumberError);
    EXPECT_EQ(keySpammerSettings.intervalHours, 7);
    EXPECT_EQ(keySpammerSettings.intervalMinutes, 0);

    EXPECT_THROW(UpdateMacroSettings("false,true,true,true,true,fast,true,9"), NumberError);
    EXPECT_FALSE(macroSettings.recordMoves);
    EXPECT_TRUE(macroSettings.recordRawMoves);
    EXPECT_EQ(macroSettings.playbackSpeed, 1.0F);
    EXPECT_FALSE(macroSettings.loop);
}

TEST_F(ToolSettingsTest, IntegersAreStoredUncheckedButMustFit) {
    UpdateAutoclickerSettings("-1,2147483647,-2147483648, +12abc,9,-3,4,-5,6");
    EXPECT_EQ(autoclickerSettings.intervalHours, -1);
    EXPECT_EQ(autoclickerSettings.intervalMinutes, INT32_MAX);
    EXPECT_EQ(autoclickerSettings.intervalSeconds, INT32_MIN);
    EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 12);
    EXPECT_EQ(autoclickerSettings.button, 9);
    EXPECT_EQ(autoclickerSettings.repeatCount, -5);
    EXPECT_THROW(UpdateAutoclickerSettings("2147483648,0,0,0,0,0,0,0,0"), NumberError);
    EXPECT_EQ(autoclickerSettings.intervalHours, -1);
}

TEST_F(ToolSettingsTest, KeySpammerNeedsSixFieldsAndSyncsTheProfile) {
    UpdateKeySpammerSettings("1,2,3,4,0,6,7");
    EXPECT_EQ(keySpammerSettings.intervalHours, 1);
    EXPECT_EQ(keySpammerSettings.intervalMinutes, 2);
    EXPECT_EQ(keySpammerSettings.intervalSeconds, 3);
    EXPECT_EQ(keySpammerSettings.intervalMilliseconds, 4);
    EXPECT_EQ(keySpammerSettings.repeatMode, 0);
    EXPECT_EQ(keySpammerSettings.repeatCount, 6);
    EXPECT_EQ(keySpammerSettings.targetCount, 1);
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
}

TEST_F(ToolSettingsTest, MacroNeedsEightFieldsAndLeavesTheProfile) {
    UpdateMacroSettings("false,TRUE,1,true,true,2.5,true,-1");
    EXPECT_FALSE(macroSettings.recordMoves);
    EXPECT_FALSE(macroSettings.recordButtons);  // only the exact text "true" is true
    EXPECT_FALSE(macroSettings.recordWheel);
    EXPECT_TRUE(macroSettings.recordKeys);
    EXPECT_TRUE(macroSettings.recordRawMoves);
    EXPECT_EQ(macroSettings.playbackSpeed, 2.5F);
    EXPECT_TRUE(macroSettings.loop);
    EXPECT_EQ(macroSettings.loopPauseMilliseconds, -1);
    EXPECT_EQ(ProfileText(), "untouched");
}

TEST_F(ToolSettingsTest, ASpeedOfZeroOrLessIsStored) {
    UpdateMacroSettings("true,true,true,true,false,0,false,500");
    EXPECT_EQ(macroSettings.playbackSpeed, 0.0F);
    UpdateMacroSettings("true,true,true,true,false,-2,false,500");
    EXPECT_EQ(macroSettings.playbackSpeed, -2.0F);
}

TEST_F(ToolSettingsTest, HoldMode) {
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
    SetHoldMode("auto,1,1");  // the text behind the first comma is not exactly 1
    EXPECT_FALSE(hotkeyTable.holdAutoclicker);
    SetHoldMode("keyspam,true");
    EXPECT_FALSE(hotkeyTable.holdKeySpammer);
}

TEST_F(ToolSettingsTest, ChordModeIsOnForOneStringOnly) {
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
