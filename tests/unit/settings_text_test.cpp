#include "storage/settings_text.h"

#include "base/text.h"
#include "storage/settings_table.h"
#include "unit/test_support.h"

#include <string>
#include <vector>

namespace {

constexpr const char* kDefaultLine =
    "0,0,0,5,0,0,1,10,0,0,0,1,1,1,1,0,1,0,500,119,118,0,117,0,0,0,5,1,10,120,32,32,0,0,0,121";
constexpr const char* kDefaultProfile = "0,0,0,5,0,0,1,10,0,0,0,0,0,0,5,1,10,32,32,0";
// Every field away from its default; 35 fields, as written before the unlock key.
constexpr const char* kStranger =
    "1,2,3,77,1,1,0,9,1,100,200,0,0,0,0,1,3.0,1,500,65,66,0,67,0,0,1,88,0,4,68,69,69|70,1,1,1";

class SettingsTextTest : public EngineStateTest {};

std::string FirstFields(std::string_view line, size_t count) {
    std::string joined;
    for (const std::string_view field : SplitParts(line, ',')) {
        if (count-- == 0) {
            break;
        }
        joined += joined.empty() ? "" : ",";
        joined += field;
    }
    return joined;
}

std::string WithField(std::string_view line, size_t index, std::string_view text) {
    std::vector<std::string_view> fields = SplitParts(line, ',');
    fields.at(index) = text;
    std::string joined;
    for (size_t i = 0; i < fields.size(); ++i) {
        joined += i == 0 ? "" : ",";
        joined += fields[i];
    }
    return joined;
}

std::vector<uint32_t> Targets() {
    std::vector<uint32_t> targets;
    for (int32_t i = 0; i < keySpammerSettings.targetCount; ++i) {
        targets.push_back(keySpammerSettings.targets[i]);
    }
    return targets;
}

using Keys = std::vector<uint32_t>;

TEST_F(SettingsTextTest, WritesAllDefaults) {
    EXPECT_EQ(BuildSettingsLine(), kDefaultLine);
    EXPECT_EQ(BuildProfileSettings(), kDefaultProfile);
}

// Changes one setting at a time and expects it at its own position.
TEST_F(SettingsTextTest, EachSettingHasItsField) {
    struct Row {
        size_t lineField;
        int profileField;  // -1: not part of a profile
        void (*change)();
        const char* text;
    };
    const Row rows[] = {
        {0, 0, [] { autoclickerSettings.intervalHours = -4; }, "-4"},
        {1, 1, [] { autoclickerSettings.intervalMinutes = 41; }, "41"},
        {2, 2, [] { autoclickerSettings.intervalSeconds = 42; }, "42"},
        {3, 3, [] { autoclickerSettings.intervalMilliseconds = 43; }, "43"},
        {4, 4, [] { autoclickerSettings.button = 2; }, "2"},
        {5, 5, [] { autoclickerSettings.doubleClick = 1; }, "1"},
        {6, 6, [] { autoclickerSettings.repeatMode = 0; }, "0"},
        {7, 7, [] { autoclickerSettings.repeatCount = 44; }, "44"},
        {8, 8, [] { autoclickerSettings.locationMode = 1; }, "1"},
        {9, 9, [] { autoclickerSettings.fixedX = -1920; }, "-1920"},
        {10, 10, [] { autoclickerSettings.fixedY = 45; }, "45"},
        {11, -1, [] { macroSettings.recordMoves = false; }, "0"},
        {12, -1, [] { macroSettings.recordButtons = false; }, "0"},
        {13, -1, [] { macroSettings.recordWheel = false; }, "0"},
        {14, -1, [] { macroSettings.recordKeys = false; }, "0"},
        {15, -1, [] { macroSettings.recordRawMoves = true; }, "1"},
        {16, -1, [] { macroSettings.playbackSpeed = 0.123456789F; }, "0.123457"},
        {17, -1, [] { macroSettings.loop = true; }, "1"},
        {18, -1, [] { macroSettings.loopPauseMilliseconds = -1; }, "-1"},
        {19, -1, [] { hotkeyTable.record = 5; }, "5"},
        {20, -1, [] { hotkeyTable.play = 65; }, "65"},
        {22, -1, [] { hotkeyTable.autoclicker = 66; }, "66"},
        {23, 11, [] { keySpammerSettings.intervalHours = 51; }, "51"},
        {24, 12, [] { keySpammerSettings.intervalMinutes = 52; }, "52"},
        {25, 13, [] { keySpammerSettings.intervalSeconds = 53; }, "53"},
        {26, 14, [] { keySpammerSettings.intervalMilliseconds = 54; }, "54"},
        {27, 15, [] { keySpammerSettings.repeatMode = 0; }, "0"},
        {28, 16, [] { keySpammerSettings.repeatCount = 55; }, "55"},
        {29, -1, [] { hotkeyTable.keySpammer = 67; }, "67"},
        {30, 17, [] { keySpammerSettings.singleKey = 68; }, "68"},
        {31, 18, [] { ParseKeyTargets("65|66|67"); }, "65|66|67"},
        {31, 18, [] { ParseKeyTargets(""); }, ""},
        {32, 19, [] { keySpammerSettings.chord = true; }, "1"},
        {33, -1, [] { hotkeyTable.holdAutoclicker = true; }, "1"},
        {34, -1, [] { hotkeyTable.holdKeySpammer = true; }, "1"},
        {35, -1, [] { hotkeyTable.unlock = 69; }, "69"},
    };
    for (const Row& row : rows) {
        ResetEngineState();
        row.change();
        const std::string line = BuildSettingsLine();
        const std::string profile = BuildProfileSettings();
        EXPECT_EQ(line, WithField(kDefaultLine, row.lineField, row.text));
        EXPECT_EQ(profile, row.profileField < 0
                               ? kDefaultProfile
                               : WithField(kDefaultProfile, static_cast<size_t>(row.profileField), row.text));
        // And read back from the text.
        ResetEngineState();
        ApplySettingsLine(line);
        EXPECT_EQ(BuildSettingsLine(), line);
        if (row.profileField >= 0) {
            ResetEngineState();
            ApplyProfileSettings(profile);
            EXPECT_EQ(BuildProfileSettings(), profile);
        }
    }
}

TEST_F(SettingsTextTest, TheOldestFormStoresTheFieldsThatItHas) {
    ParseKeyTargets("65|66");
    keySpammerSettings.singleKey = 70;
    keySpammerSettings.chord = true;
    hotkeyTable.holdAutoclicker = true;
    ApplySettingsLine(FirstFields(kStranger, 23));
    EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 77);
    EXPECT_EQ(macroSettings.playbackSpeed, 3.0F);
    EXPECT_FALSE(macroSettings.recordMoves);
    EXPECT_TRUE(macroSettings.recordRawMoves);
    EXPECT_EQ(hotkeyTable.record, 65U);
    EXPECT_EQ(hotkeyTable.play, 66U);
    EXPECT_EQ(hotkeyTable.autoclicker, 67U);
    EXPECT_EQ(keySpammerSettings.intervalMilliseconds, 5) << "not in this form";
    EXPECT_EQ(Targets(), Keys{70}) << "the live single key becomes the only target";
    EXPECT_FALSE(keySpammerSettings.chord);
    EXPECT_TRUE(hotkeyTable.holdAutoclicker) << "not in this form";
    EXPECT_EQ(hotkeyTable.unlock, 121U);
}

TEST_F(SettingsTextTest, FormsOf31And32FieldsHaveASingleKey) {
    for (const size_t count : {31, 32}) {
        ResetEngineState();
        keySpammerSettings.chord = true;
        ApplySettingsLine(FirstFields(kStranger, count));
        EXPECT_EQ(keySpammerSettings.intervalSeconds, 1);
        EXPECT_EQ(keySpammerSettings.intervalMilliseconds, 88);
        EXPECT_EQ(hotkeyTable.keySpammer, 68U);
        EXPECT_EQ(keySpammerSettings.singleKey, 69U);
        EXPECT_EQ(Targets(), Keys{69});
        EXPECT_FALSE(keySpammerSettings.chord);
    }
}

TEST_F(SettingsTextTest, FormsOf33To36FieldsAddTargetsHoldModesAndUnlock) {
    for (const size_t count : {33, 34}) {
        ResetEngineState();
        ApplySettingsLine(FirstFields(kStranger, count));
        EXPECT_EQ(Targets(), (Keys{69, 70}));
        EXPECT_TRUE(keySpammerSettings.chord);
        EXPECT_FALSE(hotkeyTable.holdAutoclicker);
        EXPECT_FALSE(hotkeyTable.holdKeySpammer);
    }
    ResetEngineState();
    ApplySettingsLine(kStranger);
    EXPECT_TRUE(hotkeyTable.holdAutoclicker);
    EXPECT_TRUE(hotkeyTable.holdKeySpammer);
    EXPECT_EQ(hotkeyTable.unlock, 121U);
    ApplySettingsLine(std::string(kStranger) + ",72,ignored");
    EXPECT_EQ(hotkeyTable.unlock, 72U);
    ApplySettingsLine(std::string(kStranger) + ",x");
    EXPECT_EQ(hotkeyTable.unlock, 72U) << "a bad value leaves it unchanged";
}

TEST_F(SettingsTextTest, FewerThan23FieldsChangeNothing) {
    ApplySettingsLine("");
    ApplySettingsLine(FirstFields(kStranger, 22));
    EXPECT_EQ(BuildSettingsLine(), kDefaultLine);
}

TEST_F(SettingsTextTest, AMalformedFieldEndsItsGroupOnly) {
    ApplySettingsLine(WithField(kStranger, 3, "x"));
    EXPECT_EQ(autoclickerSettings.intervalSeconds, 3) << "set before the bad field";
    EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 5);
    EXPECT_EQ(autoclickerSettings.button, 0) << "the rest of the group is left out";
    EXPECT_TRUE(macroSettings.recordMoves);
    EXPECT_EQ(hotkeyTable.record, 119U);
    EXPECT_EQ(keySpammerSettings.intervalMilliseconds, 88) << "the next group ran";
    EXPECT_EQ(Targets(), (Keys{69, 70}));

    ResetEngineState();
    ApplySettingsLine(WithField(kStranger, 16, "fast"));
    EXPECT_TRUE(macroSettings.recordRawMoves);
    EXPECT_EQ(macroSettings.playbackSpeed, 1.0F);
    EXPECT_FALSE(macroSettings.loop);

    ResetEngineState();
    ApplySettingsLine(WithField(kStranger, 26, "99999999999"));
    EXPECT_EQ(keySpammerSettings.intervalSeconds, 1);
    EXPECT_EQ(keySpammerSettings.intervalMilliseconds, 5);
    EXPECT_EQ(keySpammerSettings.singleKey, 32U);
    EXPECT_EQ(Targets(), (Keys{69, 70}));
    EXPECT_TRUE(hotkeyTable.holdAutoclicker);
}

TEST_F(SettingsTextTest, TheReservedFieldIsNeverRead) {
    ApplySettingsLine(WithField(kStranger, 21, "not a number"));
    EXPECT_EQ(hotkeyTable.autoclicker, 67U);
}

TEST_F(SettingsTextTest, OnlyTheExactTextOneIsTrue) {
    for (const char* text : {"true", "01", " 1", "1 ", "2", "", "x"}) {
        std::string line = WithField(kDefaultLine, 11, text);
        line = WithField(line, 33, text);
        ResetEngineState();
        hotkeyTable.holdAutoclicker = true;
        ApplySettingsLine(line);
        EXPECT_FALSE(macroSettings.recordMoves) << text;
        EXPECT_TRUE(macroSettings.recordButtons) << "a boolean is never a bad field";
        EXPECT_FALSE(hotkeyTable.holdAutoclicker) << text;
    }
}

TEST_F(SettingsTextTest, ASessionLineReadsLeadingIntegers) {
    ApplySettingsLine(WithField(kDefaultLine, 3, " 12abc"));
    EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 12);
}

TEST_F(SettingsTextTest, CodesOutsideTheKeyRangeSurviveARoundTrip) {
    ApplySettingsLine(WithField(WithField(kDefaultLine, 19, "-5"), 31, "-1|2147483647"));
    EXPECT_EQ(hotkeyTable.record, 4294967291U);
    EXPECT_EQ(Targets(), (Keys{4294967295U, 2147483647U}));
    EXPECT_EQ(BuildSettingsLine(), WithField(WithField(kDefaultLine, 19, "-5"), 31, "-1|2147483647"));
}

TEST_F(SettingsTextTest, ApplyProfileSettingsNeedsEighteenNumbers) {
    ApplyProfileSettings("1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17");
    EXPECT_EQ(BuildProfileSettings(), kDefaultProfile);
    ParseKeyTargets("65|66");
    keySpammerSettings.chord = true;
    ApplyProfileSettings("1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18");
    EXPECT_EQ(BuildProfileSettings(), "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,18,0");
    ParseKeyTargets("65|66");
    keySpammerSettings.chord = true;
    ApplyProfileSettings("1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,19,70");
    EXPECT_EQ(Targets(), Keys{19}) << "19 fields: a target list without its chord field does not count";
    EXPECT_FALSE(keySpammerSettings.chord);
}

TEST_F(SettingsTextTest, ApplyProfileSettingsStopsAtAMalformedNumber) {
    ApplyProfileSettings("1,2,x,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,65|66,1");
    EXPECT_EQ(BuildProfileSettings(), "1,2,0,5,0,0,1,10,0,0,0,0,0,0,5,1,10,32,32,0");
    ApplyProfileSettings("1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,x,65|66,1");
    EXPECT_EQ(BuildProfileSettings(), "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,32,32,0")
        << "targets and chord stay as they were";
}

TEST_F(SettingsTextTest, ApplyProfileSettingsKeepsHotkeysAndMacroSettings) {
    ApplyProfileSettings("1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,65|66,1,99");
    EXPECT_EQ(Targets(), (Keys{65, 66}));
    EXPECT_TRUE(keySpammerSettings.chord);
    EXPECT_EQ(
        BuildSettingsLine(),
        "1,2,3,4,5,6,7,8,9,10,11,1,1,1,1,0,1,0,500,119,118,0,117,12,13,14,15,16,17,120,18,65|66,1,0,0,121");
}

TEST_F(SettingsTextTest, ParseKeyTargetsSkipsMalformedNumbers) {
    ParseKeyTargets("65|66");
    EXPECT_EQ(Targets(), (Keys{65, 66}));
    ParseKeyTargets("x|66||67y|99999999999| 68");
    EXPECT_EQ(Targets(), (Keys{66, 67, 68}));
    ParseKeyTargets("");
    EXPECT_EQ(Targets(), Keys());
    ParseKeyTargets("|||");
    EXPECT_EQ(Targets(), Keys());
}

TEST_F(SettingsTextTest, ParseKeyTargetsStoresAtMost256) {
    std::string text;
    for (int i = 1; i <= 300; ++i) {
        text += std::to_string(i) + "|";
    }
    ParseKeyTargets("x|" + text);
    ASSERT_EQ(keySpammerSettings.targetCount, 256);
    EXPECT_EQ(Targets().back(), 256U);
}

TEST_F(SettingsTextTest, ResetToolSettingsKeepsHotkeysAndMacroSettings) {
    ApplySettingsLine(std::string(kStranger) + ",72");
    ResetToolSettings();
    EXPECT_EQ(BuildProfileSettings(), kDefaultProfile);
    EXPECT_EQ(BuildSettingsLine(),
              "0,0,0,5,0,0,1,10,0,0,0,0,0,0,0,1,3,1,500,65,66,0,67,0,0,0,5,1,10,68,32,32,0,1,1,72");
}

TEST_F(SettingsTextTest, MergeUsesTheToolSettingsOfA35FieldLine) {
    EXPECT_EQ(ProfileSettingsFromLine(kStranger), "1,2,3,77,1,1,0,9,1,100,200,0,0,1,88,0,4,69,69|70,1");
    EXPECT_EQ(BuildSettingsLine(), kDefaultLine) << "the live setup is untouched";
}

TEST_F(SettingsTextTest, MergeKeepsTheLiveSettingsThatAnOlderFormLacks) {
    ApplyProfileSettings("0,0,0,5,0,0,1,10,0,0,0,21,22,23,24,25,26,27,28|29,1");
    EXPECT_EQ(ProfileSettingsFromLine(FirstFields(kStranger, 23)),
              "1,2,3,77,1,1,0,9,1,100,200,21,22,23,24,25,26,27,27,0");
    EXPECT_EQ(ProfileSettingsFromLine(FirstFields(kStranger, 30)),
              "1,2,3,77,1,1,0,9,1,100,200,21,22,23,24,25,26,27,27,0");
    for (const size_t count : {31, 32}) {
        EXPECT_EQ(ProfileSettingsFromLine(FirstFields(kStranger, count)),
                  "1,2,3,77,1,1,0,9,1,100,200,0,0,1,88,0,4,69,69,0");
    }
    for (const size_t count : {0, 1, 22}) {
        EXPECT_EQ(ProfileSettingsFromLine(FirstFields(kStranger, count)),
                  "0,0,0,5,0,0,1,10,0,0,0,21,22,23,24,25,26,27,28|29,1");
    }
}

TEST_F(SettingsTextTest, MergeUsesAWholeGroupOrNone) {
    for (const char* bad : {"", "x", "77x", "77 ", "1.0", "2147483648"}) {
        for (const size_t field : {0, 3, 10}) {
            EXPECT_EQ(ProfileSettingsFromLine(WithField(kStranger, field, bad)),
                      "0,0,0,5,0,0,1,10,0,0,0,0,0,1,88,0,4,69,69|70,1")
                << field << ' ' << bad;
        }
        for (const size_t field : {23, 28, 30}) {
            EXPECT_EQ(ProfileSettingsFromLine(WithField(kStranger, field, bad)),
                      "1,2,3,77,1,1,0,9,1,100,200,0,0,0,5,1,10,32,69|70,1")
                << field << ' ' << bad;
        }
    }
    for (const size_t field : {11, 16, 19, 21, 22, 29, 33, 34}) {
        EXPECT_EQ(ProfileSettingsFromLine(WithField(kStranger, field, "bad")),
                  "1,2,3,77,1,1,0,9,1,100,200,0,0,1,88,0,4,69,69|70,1")
            << "never read on import: " << field;
    }
}

TEST_F(SettingsTextTest, MergeStoresTheTargetListUnchecked) {
    EXPECT_EQ(ProfileSettingsFromLine(WithField(WithField(kStranger, 31, "x||70"), 32, "true")),
              "1,2,3,77,1,1,0,9,1,100,200,0,0,1,88,0,4,69,x||70,0");
    EXPECT_EQ(ProfileSettingsFromLine(WithField(kStranger, 31, "")),
              "1,2,3,77,1,1,0,9,1,100,200,0,0,1,88,0,4,69,,1");
}

TEST_F(SettingsTextTest, MergeCopiesTheLiveEmptyTargetList) {
    ParseKeyTargets("");
    EXPECT_EQ(ProfileSettingsFromLine(""), "0,0,0,5,0,0,1,10,0,0,0,0,0,0,5,1,10,32,,0");
}

}  // namespace
