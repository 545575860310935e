#include "storage/settings_text.h"

#include "base/text.h"
#include "model/engine_state.h"
#include "platform/hooks.h"

#include <vector>

namespace {

// Field counts of the settings line, by the oldest form that has the fields.
constexpr size_t kFirstForm = 23;
constexpr size_t kKeySpammerForm = 31;
constexpr size_t kTargetsForm = 33;
constexpr size_t kHoldForm = 35;
constexpr size_t kUnlockForm = 36;

// Fields of the profile settings text.
constexpr size_t kProfileSingleKey = 17;
constexpr size_t kProfileTargets = 18;
constexpr size_t kProfileChord = 19;
constexpr size_t kProfileNumbers = 18;  // how many integers it begins with
constexpr size_t kProfileFields = 20;

// Builds a comma text field by field.
class FieldWriter {
  public:
    void Int(int32_t value) {
        Separate();
        AppendInt(text_, value);
    }
    // Codes are kept as unsigned numbers but read back by stoi: the signed form is what can be read again.
    void Code(uint32_t value) { Int(static_cast<int32_t>(value)); }
    void Bool(bool value) { Text(value ? "1" : "0"); }
    void Float(float value) {
        Separate();
        AppendStreamDouble(text_, value);
    }
    void Text(std::string_view value) {
        Separate();
        text_ += value;
    }
    std::string Take() { return std::move(text_); }

  private:
    void Separate() {
        if (begun_) {
            text_ += ',';
        }
        begun_ = true;
    }

    std::string text_;
    bool begun_ = false;
};

// Reads a comma text's fields in order. The first bad one ends the group: every later read of it fails too.
class FieldReader {
  public:
    FieldReader(const std::vector<std::string_view>& fields, size_t first) : fields_(fields), next_(first) {}

    void Int(Relaxed<int32_t>& setting) {
        if (int32_t value = 0; NextInt(&value)) {
            setting = value;
        }
    }
    void Code(std::atomic<uint32_t>& setting) {
        if (int32_t value = 0; NextInt(&value)) {
            setting = static_cast<uint32_t>(value);
        }
    }
    void Bool(Relaxed<bool>& setting) {
        if (good_) {
            setting = fields_[next_++] == "1";
        }
    }
    void Float(Relaxed<float>& setting) {
        if (float value = 0; good_ && (good_ = ParseFloat(fields_[next_++], &value))) {
            setting = value;
        }
    }
    void Skip() { ++next_; }
    bool Good() const { return good_; }

  private:
    bool NextInt(int32_t* value) {
        good_ = good_ && ParseInt(fields_[next_++], value);
        return good_;
    }

    const std::vector<std::string_view>& fields_;
    size_t next_;
    bool good_ = true;
};

// The eleven numbers that both texts begin with, in order. `Fields` writes or reads.
template <typename Fields> void SpammerFields(Fields& fields) {
    AutoclickerSettings& s = autoclickerSettings;
    for (Relaxed<int32_t>* setting :
         {&s.intervalHours, &s.intervalMinutes, &s.intervalSeconds, &s.intervalMilliseconds, &s.button,
          &s.doubleClick, &s.repeatMode, &s.repeatCount, &s.locationMode, &s.fixedX, &s.fixedY}) {
        fields.Int(*setting);
    }
}

template <typename Fields> void KeySpammerNumberFields(Fields& fields) {
    KeySpammerSettings& s = keySpammerSettings;
    for (Relaxed<int32_t>* setting : {&s.intervalHours, &s.intervalMinutes, &s.intervalSeconds,
                                      &s.intervalMilliseconds, &s.repeatMode, &s.repeatCount}) {
        fields.Int(*setting);
    }
}

template <typename Fields> void TrackerFields(Fields& fields) {
    MacroSettings& s = macroSettings;
    for (Relaxed<bool>* setting :
         {&s.recordMoves, &s.recordButtons, &s.recordWheel, &s.recordKeys, &s.recordRawMoves}) {
        fields.Bool(*setting);
    }
    fields.Float(s.playbackSpeed);
    fields.Bool(s.loop);
    fields.Int(s.loopPauseMilliseconds);
}

std::string KeyTargetsText() {
    std::string text;
    const int32_t count = keySpammerSettings.targetCount;
    for (int32_t i = 0; i < count && i < kMaxKeySpammerTargets; ++i) {
        if (i > 0) {
            text += '|';
        }
        AppendInt(text, static_cast<int32_t>(keySpammerSettings.targets[i].load()));
    }
    return text;
}

// What the older forms with a single key mean.
void TakeSingleKey() {
    keySpammerSettings.targets[0] = keySpammerSettings.singleKey.load();
    keySpammerSettings.targetCount = 1;
    keySpammerSettings.chord = false;
}

bool WholeInts(const std::vector<std::string_view>& fields, size_t first, size_t last) {
    for (size_t i = first; i <= last; ++i) {
        if (i >= fields.size() || !IsWholeInt(fields[i])) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string BuildSettingsLine() {
    FieldWriter fields;
    SpammerFields(fields);
    TrackerFields(fields);
    fields.Code(hotkeyTable.record);
    fields.Code(hotkeyTable.play);
    fields.Text("0");  // reserved
    fields.Code(hotkeyTable.autoclicker);
    KeySpammerNumberFields(fields);
    fields.Code(hotkeyTable.keySpammer);
    fields.Code(keySpammerSettings.singleKey);
    fields.Text(KeyTargetsText());
    fields.Bool(keySpammerSettings.chord);
    fields.Bool(hotkeyTable.holdAutoclicker);
    fields.Bool(hotkeyTable.holdKeySpammer);
    fields.Code(hotkeyTable.unlock);
    return fields.Take();
}

void ApplySettingsLine(std::string_view text) {
    const std::vector<std::string_view> fields = SplitParts(text, ',');
    if (fields.size() < kFirstForm) {
        return;
    }
    // Each group ends at its own first bad field, and the next one still runs.
    FieldReader first(fields, 0);
    SpammerFields(first);
    TrackerFields(first);
    first.Code(hotkeyTable.record);
    first.Code(hotkeyTable.play);
    first.Skip();
    first.Code(hotkeyTable.autoclicker);
    if (fields.size() >= kKeySpammerForm) {
        FieldReader keySpam(fields, kFirstForm);
        KeySpammerNumberFields(keySpam);
        keySpam.Code(hotkeyTable.keySpammer);
        keySpam.Code(keySpammerSettings.singleKey);
    }
    if (fields.size() >= kTargetsForm) {
        ParseKeyTargets(fields[31]);
        keySpammerSettings.chord = fields[32] == "1";
    } else {
        TakeSingleKey();
    }
    if (fields.size() >= kHoldForm) {
        hotkeyTable.holdAutoclicker = fields[33] == "1";
        hotkeyTable.holdKeySpammer = fields[34] == "1";
    }
    if (fields.size() >= kUnlockForm) {
        FieldReader unlock(fields, 35);
        unlock.Code(hotkeyTable.unlock);
    }
    HookInterestChanged();
}

std::string BuildProfileSettings() {
    FieldWriter fields;
    SpammerFields(fields);
    KeySpammerNumberFields(fields);
    fields.Code(keySpammerSettings.singleKey);
    fields.Text(KeyTargetsText());
    fields.Bool(keySpammerSettings.chord);
    return fields.Take();
}

void ApplyProfileSettings(std::string_view text) {
    const std::vector<std::string_view> fields = SplitParts(text, ',');
    if (fields.size() < kProfileNumbers) {
        return;
    }
    FieldReader numbers(fields, 0);
    SpammerFields(numbers);
    KeySpammerNumberFields(numbers);
    numbers.Code(keySpammerSettings.singleKey);
    if (!numbers.Good()) {
        return;
    }
    if (fields.size() < kProfileFields) {
        TakeSingleKey();
        return;
    }
    ParseKeyTargets(fields[kProfileTargets]);
    keySpammerSettings.chord = fields[kProfileChord] == "1";
}

std::string ProfileSettingsFromLine(std::string_view line) {
    const std::vector<std::string_view> file = SplitParts(line, ',');
    const std::string live = BuildProfileSettings();
    std::vector<std::string_view> profile = SplitParts(live, ',');
    if (file.size() >= kFirstForm && WholeInts(file, 0, 10)) {
        for (size_t i = 0; i <= 10; ++i) {
            profile[i] = file[i];
        }
    }
    if (file.size() >= kKeySpammerForm && WholeInts(file, 23, 28) && WholeInts(file, 30, 30)) {
        for (size_t i = 0; i <= 5; ++i) {
            profile[11 + i] = file[23 + i];
        }
        profile[kProfileSingleKey] = file[30];
    }
    if (file.size() >= kTargetsForm) {
        profile[kProfileTargets] = file[31];
        profile[kProfileChord] = file[32] == "1" ? "1" : "0";
    } else if (file.size() >= kFirstForm) {
        profile[kProfileTargets] = profile[kProfileSingleKey];
        profile[kProfileChord] = "0";
    }
    FieldWriter joined;
    for (const std::string_view field : profile) {
        joined.Text(field);
    }
    return joined.Take();
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
    TakeSingleKey();
}

void ParseKeyTargets(std::string_view text) {
    int32_t count = 0;
    for (const std::string_view piece : SplitParts(text, '|')) {
        int32_t code = 0;
        if (count < kMaxKeySpammerTargets && ParseInt(piece, &code)) {
            keySpammerSettings.targets[count++] = static_cast<uint32_t>(code);
        }
    }
    keySpammerSettings.targetCount = count;
}
