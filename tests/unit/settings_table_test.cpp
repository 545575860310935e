#include "storage/settings_table.h"

#include "base/text.h"
#include "storage/settings_text.h"
#include "unit/test_support.h"

#include <set>

namespace {

class SettingsTableTest : public EngineStateTest {};

std::string Text(size_t position) {
    std::string text;
    AppendSettingText(text, kSettingsFields[position]);
    return text;
}

bool IsNumber(const SettingsField& field) {
    return std::holds_alternative<Relaxed<int32_t>*>(field.setting) ||
           std::holds_alternative<Relaxed<float>*>(field.setting) ||
           std::holds_alternative<std::atomic<uint32_t>*>(field.setting);
}

TEST_F(SettingsTableTest, EachWireNameNamesOneField) {
    std::set<std::string> names;
    for (const SettingsField& field : kSettingsFields) {
        const std::string name = field.wireName;
        EXPECT_TRUE(name.empty() || names.insert(name).second) << name;
    }
    EXPECT_EQ(names.size(), 34U) << "all but the reserved field and the single key";
}

TEST_F(SettingsTableTest, RangesBeginAndEndAtTheirFields) {
    const auto names = [](const SettingsRange& range) {
        return std::string(kSettingsFields[range.first].wireName) + ".." +
               kSettingsFields[range.end - 1].wireName;
    };
    EXPECT_EQ(names(kAutoclickerFields), "sh..fixedY");
    EXPECT_EQ(names(kAutoclickerUpdateFields), "sh..locMode");
    EXPECT_EQ(names(kMacroFields), "tmv..tloopMs");
    EXPECT_EQ(names(kRecordFields), "tmv..trel");
    EXPECT_EQ(names(kPlaybackFields), "tspd..tloopMs");
    EXPECT_EQ(names(kKeySpammerFields), "ksh..ksRptTimes");
    EXPECT_EQ(names(kHoldFields), "holdAuto..holdKeySpam");
    const auto name = [](SettingsPosition position) {
        return std::string(kSettingsFields[position].wireName);
    };
    EXPECT_EQ(name(kRecordHotkeyField), "hkRec");
    EXPECT_EQ(name(kPlayHotkeyField), "hkPlay");
    EXPECT_EQ(name(kAutoclickerHotkeyField), "hkAuto");
    EXPECT_EQ(name(kKeySpammerHotkeyField), "hkKeySpam");
    EXPECT_EQ(name(kKeyTargetsField), "keySpamTargets");
    EXPECT_EQ(name(kChordField), "keySpamChord");
    EXPECT_EQ(name(kUnlockHotkeyField), "hkUnlock");
}

TEST_F(SettingsTableTest, AStoredFieldShowsUpAtItsPositionOnly) {
    const std::string before = BuildSettingsLine();
    const std::vector<std::string_view> fields = SplitParts(before, ',');
    ASSERT_EQ(fields.size(), kSettingsFields.size());
    for (size_t changed = 0; changed < kSettingsFields.size(); ++changed) {
        ResetEngineState();
        const bool reserved = std::holds_alternative<ReservedField>(kSettingsFields[changed].setting);
        // No default is 7, and a flag takes the other value.
        const bool isFlag = std::holds_alternative<Relaxed<bool>*>(kSettingsFields[changed].setting);
        const std::string text = !isFlag ? "7" : fields[changed] == "1" ? "0" : "1";
        EXPECT_TRUE(StoreSettingText(kSettingsFields[changed], text));
        for (size_t i = 0; i < kSettingsFields.size(); ++i) {
            EXPECT_EQ(Text(i), i == changed && !reserved ? text : fields[i]) << changed << ' ' << i;
        }
    }
}

TEST_F(SettingsTableTest, RejectsMalformedNumbersAndNothingElse) {
    const std::string before = BuildSettingsLine();
    for (size_t i = 0; i < kSettingsFields.size(); ++i) {
        if (IsNumber(kSettingsFields[i])) {
            EXPECT_FALSE(StoreSettingText(kSettingsFields[i], "x")) << i;
            EXPECT_FALSE(StoreSettingText(kSettingsFields[i], "")) << i;
        }
    }
    EXPECT_EQ(BuildSettingsLine(), before);
    for (size_t i = 0; i < kSettingsFields.size(); ++i) {
        EXPECT_TRUE(IsNumber(kSettingsFields[i]) || StoreSettingText(kSettingsFields[i], "x")) << i;
    }
}

TEST_F(SettingsTableTest, AFlagIsTrueForTheGivenTextOnly) {
    const SettingsField& field = kSettingsFields[kChordField];
    for (const char* text : {"", "0", "1", "TRUE", " true", "true "}) {
        keySpammerSettings.chord = true;
        StoreSettingText(field, text, "true");
        EXPECT_FALSE(keySpammerSettings.chord) << text;
    }
    StoreSettingText(field, "true", "true");
    EXPECT_TRUE(keySpammerSettings.chord);
}

}  // namespace
