// The one table of the settings: each field's wire name, its position in the settings line and the live setting. The
// session file, the profile settings text, the reports and the update commands read this table.
#pragma once

#include "model/settings.h"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <variant>

struct KeyTargetList {};  // the targets of keySpammerSettings, as one field
struct ReservedField {};  // always "0", never read

struct SettingsField {
    const char* wireName;  // key in the settings or status report; empty: in no report
    // The live setting. An unsigned setting is a key code.
    std::variant<Relaxed<int32_t>*, Relaxed<bool>*, Relaxed<float>*, std::atomic<uint32_t>*, KeyTargetList,
                 ReservedField>
        setting;
};

// One row for each field of the settings line, in its order: the index is the position.
extern const std::array<SettingsField, 36> kSettingsFields;

// Positions that are used one by one.
enum SettingsPosition : size_t {
    kRecordHotkeyField = 19,
    kPlayHotkeyField = 20,
    kAutoclickerHotkeyField = 22,
    kKeySpammerHotkeyField = 29,
    kSingleKeyField = 30,
    kKeyTargetsField = 31,
    kChordField = 32,
    kUnlockHotkeyField = 35,
};

// Positions that belong together: `first` up to, but not including, `end`.
struct SettingsRange {
    size_t first;
    size_t end;
    constexpr size_t Count() const { return end - first; }
};
constexpr SettingsRange kAutoclickerFields{0, 11};
constexpr SettingsRange kAutoclickerUpdateFields{0, 9};  // without the fixed location
constexpr SettingsRange kMacroFields{11, 19};
constexpr SettingsRange kRecordFields{11, 16};    // of the macro fields: what is recorded
constexpr SettingsRange kPlaybackFields{16, 19};  // of the macro fields: how it is played
constexpr SettingsRange kKeySpammerFields{23, 29};
constexpr SettingsRange kHoldFields{33, 35};

// Appends the setting as files hold it: numbers in decimal, key codes as signed numbers, flags as "1" or "0", targets
// joined by "|". Any thread.
void AppendSettingText(std::string& out, const SettingsField& field);

// Stores the setting that `text` holds. A flag is true only for exactly `trueText`. Returns false, with the setting
// unchanged, for a malformed number; flags, targets and the reserved field never fail. Any thread.
bool StoreSettingText(const SettingsField& field, std::string_view text, std::string_view trueText = "1");

// Replaces the key spammer's targets by those of "65|66". Skips malformed numbers and what exceeds
// kMaxKeySpammerTargets. Any thread.
void ParseKeyTargets(std::string_view text);
