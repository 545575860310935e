#include "storage/settings_text.h"

#include "base/numbers.h"
#include "base/text.h"
#include "platform/hooks.h"
#include "storage/settings_table.h"

#include <vector>

namespace {

using Fields = std::vector<std::string_view>;

// The settings line grew with the versions: a line has the first group, the first two groups and so on. A malformed
// number ends only its own group.
constexpr SettingsRange kLineGroups[] = {{0, 23}, {23, 31}, {31, 33}, {33, 35}, {35, 36}};
constexpr size_t kFewestLineFields = kLineGroups[0].end;
constexpr size_t kKeySpammerForm = kLineGroups[1].end;
constexpr size_t kTargetsForm = kLineGroups[2].end;

// The fields of a profile settings text by their position in the settings line.
constexpr std::array<size_t, 20> kProfilePositions = {
    0,
    1,
    2,
    3,
    4,
    5,
    6,
    7,
    8,
    9,
    10,  // autoclicker
    23,
    24,
    25,
    26,
    27,
    28,
    kSingleKeyField,  // key spammer
    kKeyTargetsField,
    kChordField,
};
constexpr size_t kProfileKeySpammer = 11;
constexpr size_t kProfileSingleKey = 17;
constexpr size_t kProfileTargets = 18;
constexpr size_t kProfileChord = 19;
constexpr size_t kFewestProfileFields = 18;

// Stores the fields of a group up to its first malformed number.
void StoreGroup(const SettingsRange& group, const Fields& fields) {
    for (size_t i = group.first; i < group.end; ++i) {
        if (!StoreSettingText(kSettingsFields[i], fields[i])) {
            return;
        }
    }
}

// Forms without a target list have one key, and no chord.
void UseSingleKey() {
    keySpammerSettings.targets[0] = keySpammerSettings.singleKey.load();
    keySpammerSettings.targetCount = 1;
    keySpammerSettings.chord = false;
}

// Copies a line's fields to the profile fields `first` up to `end`, unless one of them is not a whole number.
void MergeNumbers(const Fields& line, size_t first, size_t end, Fields* profile) {
    for (size_t i = first; i < end; ++i) {
        if (!IsWholeInt(line[kProfilePositions[i]])) {
            return;
        }
    }
    for (size_t i = first; i < end; ++i) {
        (*profile)[i] = line[kProfilePositions[i]];
    }
}

}  // namespace

std::string BuildSettingsLine() {
    std::string line;
    for (const SettingsField& field : kSettingsFields) {
        if (!line.empty()) {
            line += ',';
        }
        AppendSettingText(line, field);
    }
    return line;
}

void ApplySettingsLine(std::string_view text) {
    const Fields fields = SplitParts(text, ',');
    if (fields.size() < kFewestLineFields) {
        return;
    }
    for (const SettingsRange& group : kLineGroups) {
        if (fields.size() >= group.end) {
            StoreGroup(group, fields);
        }
    }
    if (fields.size() < kTargetsForm) {
        UseSingleKey();
    }
    HookInterestChanged();
}

std::string BuildProfileSettings() {
    std::string text;
    for (const size_t position : kProfilePositions) {
        if (!text.empty()) {
            text += ',';
        }
        AppendSettingText(text, kSettingsFields[position]);
    }
    return text;
}

void ApplyProfileSettings(std::string_view text) {
    const Fields fields = SplitParts(text, ',');
    if (fields.size() < kFewestProfileFields) {
        return;
    }
    for (size_t i = 0; i < kFewestProfileFields; ++i) {
        if (!StoreSettingText(kSettingsFields[kProfilePositions[i]], fields[i])) {
            return;
        }
    }
    if (fields.size() < kProfilePositions.size()) {
        UseSingleKey();
        return;
    }
    StoreSettingText(kSettingsFields[kKeyTargetsField], fields[kProfileTargets]);
    StoreSettingText(kSettingsFields[kChordField], fields[kProfileChord]);
}

void ApplyStoredSettings(std::string_view text) {
    if (text.empty()) {
        ResetToolSettings();
    } else {
        ApplyProfileSettings(text);
    }
}

std::string ProfileSettingsFromLine(std::string_view line) {
    const Fields file = SplitParts(line, ',');
    const std::string live = BuildProfileSettings();
    Fields profile = SplitParts(live, ',');
    if (file.size() >= kFewestLineFields) {
        MergeNumbers(file, 0, kProfileKeySpammer, &profile);
    }
    if (file.size() >= kKeySpammerForm) {
        MergeNumbers(file, kProfileKeySpammer, kProfileTargets, &profile);
    }
    if (file.size() >= kTargetsForm) {
        profile[kProfileTargets] = file[kKeyTargetsField];
        profile[kProfileChord] = file[kChordField] == "1" ? "1" : "0";
    } else if (file.size() >= kFewestLineFields) {
        profile[kProfileTargets] = profile[kProfileSingleKey];
        profile[kProfileChord] = "0";
    }
    std::string merged;
    for (size_t i = 0; i < profile.size(); ++i) {
        if (i > 0) {
            merged += ',';
        }
        merged += profile[i];
    }
    return merged;
}

void ResetToolSettings() {
    autoclickerSettings = AutoclickerSettings{};
    KeySpammerSettings& s = keySpammerSettings;
    const KeySpammerSettings defaults;
    s.intervalHours = defaults.intervalHours;
    s.intervalMinutes = defaults.intervalMinutes;
    s.intervalSeconds = defaults.intervalSeconds;
    s.intervalMilliseconds = defaults.intervalMilliseconds;
    s.repeatMode = defaults.repeatMode;
    s.repeatCount = defaults.repeatCount;
    s.singleKey = kSpaceKey;
    UseSingleKey();
}
