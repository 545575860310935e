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

TEST_F(ToolSettingsTest, SpammerTakesNineFieldsAndSyncsTheProfile) {
    UpdateSpammer("1,2,3,4,2,1,0,77,1");
    EXPECT_EQ(spammerSettings.sh, 1);
    EXPECT_EQ(spammerSettings.sm, 2);
    EXPECT_EQ(spammerSettings.ss, 3);
    EXPECT_EQ(spammerSettings.sms, 4);
    EXPECT_EQ(spammerSettings.sbtn, 2);
    EXPECT_EQ(spammerSettings.stype, 1);
    EXPECT_EQ(spammerSettings.rptMode, 0);
    EXPECT_EQ(spammerSettings.rptTimes, 77);
    EXPECT_EQ(spammerSettings.locMode, 1);
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
}

TEST_F(ToolSettingsTest, SpammerIgnoresATenthField) {
    spammerSettings.fixedX = 5;
    UpdateSpammer("1,2,3,4,2,1,0,77,1,999");
    EXPECT_EQ(spammerSettings.locMode, 1);
    EXPECT_EQ(spammerSettings.fixedX, 5);
}

TEST_F(ToolSettingsTest, TooFewFieldsChangeNothing) {
    UpdateSpammer("1,2,3,4,2,1,0,77");
    UpdateSpammer("1,2,3,4,2,1,0,77,");  // a comma at the end adds no field
    UpdateSpammer("");
    UpdateKeySpam("1,2,3,4,5");
    UpdateTracker("false,false,false,false,true,2,true");
    EXPECT_EQ(spammerSettings.sh, 0);
    EXPECT_EQ(keySpamSettings.ksh, 0);
    EXPECT_TRUE(trackerSettings.tmv);
    EXPECT_EQ(trackerSettings.tspd, 1.0F);
    EXPECT_EQ(ProfileText(), "untouched");
}

TEST_F(ToolSettingsTest, AMalformedNumberEndsTheUpdateThere) {
    EXPECT_THROW(UpdateSpammer("9,8,x,6,2,1,0,77,1"), NumberError);
    EXPECT_EQ(spammerSettings.sh, 9);
    EXPECT_EQ(spammerSettings.sm, 8);
    EXPECT_EQ(spammerSettings.ss, 0);
    EXPECT_EQ(spammerSettings.sms, 5);
    EXPECT_EQ(ProfileText(), "untouched");

    EXPECT_THROW(UpdateKeySpam("7,,3,4,5,6"), NumberError);
    EXPECT_EQ(keySpamSettings.ksh, 7);
    EXPECT_EQ(keySpamSettings.ksm, 0);

    EXPECT_THROW(UpdateTracker("false,true,true,true,true,fast,true,9"), NumberError);
    EXPECT_FALSE(trackerSettings.tmv);
    EXPECT_TRUE(trackerSettings.trel);
    EXPECT_EQ(trackerSettings.tspd, 1.0F);
    EXPECT_FALSE(trackerSettings.tloop);
}

TEST_F(ToolSettingsTest, IntegersAreStoredUncheckedButMustFit) {
    UpdateSpammer("-1,2147483647,-2147483648, +12abc,9,-3,4,-5,6");
    EXPECT_EQ(spammerSettings.sh, -1);
    EXPECT_EQ(spammerSettings.sm, INT32_MAX);
    EXPECT_EQ(spammerSettings.ss, INT32_MIN);
    EXPECT_EQ(spammerSettings.sms, 12);
    EXPECT_EQ(spammerSettings.sbtn, 9);
    EXPECT_EQ(spammerSettings.rptTimes, -5);
    EXPECT_THROW(UpdateSpammer("2147483648,0,0,0,0,0,0,0,0"), NumberError);
    EXPECT_EQ(spammerSettings.sh, -1);
}

TEST_F(ToolSettingsTest, KeySpamTakesSixFieldsAndSyncsTheProfile) {
    UpdateKeySpam("1,2,3,4,0,6,7");
    EXPECT_EQ(keySpamSettings.ksh, 1);
    EXPECT_EQ(keySpamSettings.ksm, 2);
    EXPECT_EQ(keySpamSettings.kss, 3);
    EXPECT_EQ(keySpamSettings.ksms, 4);
    EXPECT_EQ(keySpamSettings.ksRptMode, 0);
    EXPECT_EQ(keySpamSettings.ksRptTimes, 6);
    EXPECT_EQ(keySpamSettings.keySpamTargetCount, 1);
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
}

TEST_F(ToolSettingsTest, TrackerTakesEightFieldsAndLeavesTheProfile) {
    UpdateTracker("false,TRUE,1,true,true,2.5,true,-1");
    EXPECT_FALSE(trackerSettings.tmv);
    EXPECT_FALSE(trackerSettings.tclk);  // only the exact text "true" is true
    EXPECT_FALSE(trackerSettings.tscr);
    EXPECT_TRUE(trackerSettings.tkey);
    EXPECT_TRUE(trackerSettings.trel);
    EXPECT_EQ(trackerSettings.tspd, 2.5F);
    EXPECT_TRUE(trackerSettings.tloop);
    EXPECT_EQ(trackerSettings.tloopMs, -1);
    EXPECT_EQ(ProfileText(), "untouched");
}

TEST_F(ToolSettingsTest, ASpeedOfZeroOrLessIsStored) {
    UpdateTracker("true,true,true,true,false,0,false,500");
    EXPECT_EQ(trackerSettings.tspd, 0.0F);
    UpdateTracker("true,true,true,true,false,-2,false,500");
    EXPECT_EQ(trackerSettings.tspd, -2.0F);
}

TEST_F(ToolSettingsTest, HoldMode) {
    SetHoldMode("auto,1");
    EXPECT_TRUE(hotkeyTable.holdAuto);
    EXPECT_FALSE(hotkeyTable.holdKeySpam);
    SetHoldMode("keyspam,1");
    EXPECT_TRUE(hotkeyTable.holdKeySpam);
    SetHoldMode("");
    SetHoldMode("keyspam");
    SetHoldMode("rec,0");
    EXPECT_TRUE(hotkeyTable.holdAuto);
    EXPECT_TRUE(hotkeyTable.holdKeySpam);
    SetHoldMode("auto,0");
    EXPECT_FALSE(hotkeyTable.holdAuto);
    SetHoldMode("auto,1");
    SetHoldMode("auto,1,1");  // the text behind the first comma is not exactly 1
    EXPECT_FALSE(hotkeyTable.holdAuto);
    SetHoldMode("keyspam,true");
    EXPECT_FALSE(hotkeyTable.holdKeySpam);
}

TEST_F(ToolSettingsTest, ChordModeIsTrueForOneTextOnly) {
    SetKeySpamChordMode("1");
    EXPECT_TRUE(keySpamSettings.keySpamChord);
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
    for (const char* text : {"", "0", "true", "1 ", "11"}) {
        keySpamSettings.keySpamChord = true;
        SetKeySpamChordMode(text);
        EXPECT_FALSE(keySpamSettings.keySpamChord) << text;
    }
    EXPECT_EQ(ProfileText(), BuildProfileSettings());
}
