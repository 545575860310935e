#include "editing/settings_updates.h"

#include "base/numbers.h"
#include "base/text.h"
#include "editing/profiles.h"
#include "model/engine_state.h"
#include "platform/hooks.h"
#include "storage/settings_table.h"

namespace {

// Stores the update's fields from `first` on, in order. Throws NumberError at the first malformed number.
void StoreFields(const std::vector<std::string_view>& update, size_t first, const SettingsRange& range) {
    for (size_t i = 0; i < range.Count(); ++i) {
        if (!StoreSettingText(kSettingsFields[range.first + i], update[first + i], "true")) {
            throw NumberError("not a number in range");
        }
    }
}

}  // namespace

void UpdateAutoclickerSettings(std::string_view payload) {
    const std::vector<std::string_view> update = SplitParts(payload, ',');
    if (update.size() < kAutoclickerUpdateFields.Count()) {
        return;
    }
    StoreFields(update, 0, kAutoclickerUpdateFields);
    SyncProfileSettings();
}

void UpdateKeySpammerSettings(std::string_view payload) {
    const std::vector<std::string_view> update = SplitParts(payload, ',');
    if (update.size() < kKeySpammerFields.Count()) {
        return;
    }
    StoreFields(update, 0, kKeySpammerFields);
    SyncProfileSettings();
}

void UpdateMacroSettings(std::string_view payload) {
    const std::vector<std::string_view> update = SplitParts(payload, ',');
    if (update.size() < kMacroFields.Count()) {
        return;
    }
    StoreFields(update, 0, kRecordFields);
    // Recording may need raw mouse reports now. A malformed number below must not prevent the notice.
    HookInterestChanged();
    StoreFields(update, kRecordFields.Count(), kPlaybackFields);
}

void SetHoldMode(std::string_view payload) {
    const size_t comma = payload.find(',');
    if (comma == std::string_view::npos) {
        return;
    }
    const std::string_view tool = payload.substr(0, comma);
    const bool hold = payload.substr(comma + 1) == "1";
    if (tool == "auto") {
        hotkeyTable.holdAutoclicker = hold;
    } else if (tool == "keyspam") {
        hotkeyTable.holdKeySpammer = hold;
    }
}

void SetKeySpammerChord(std::string_view payload) {
    keySpammerSettings.chord = payload == "1";
    SyncProfileSettings();
}

void RemoveKeySpammerTarget(int32_t index) {
    const int32_t count = keySpammerSettings.targetCount;
    if (index < 0 || index >= count) {
        return;
    }
    for (int32_t i = index; i + 1 < count; ++i) {
        keySpammerSettings.targets[i] = keySpammerSettings.targets[i + 1].load();
    }
    keySpammerSettings.targetCount = count - 1;
    if (count > 1) {
        keySpammerSettings.singleKey = keySpammerSettings.targets[0].load();
    }
    SyncProfileSettings();
    if (count == 1 && engineState.keySpamming) {
        RaiseRequest(engineState.requestStopKeySpammer);
    }
}

bool MoveKeySpammerTarget(int32_t from, int32_t to) {
    const int32_t count = keySpammerSettings.targetCount;
    if (from < 0 || from >= count || to < 0 || to >= count) {
        return false;
    }
    const uint32_t moved = keySpammerSettings.targets[from];
    const int32_t step = from < to ? 1 : -1;
    for (int32_t i = from; i != to; i += step) {
        keySpammerSettings.targets[i] = keySpammerSettings.targets[i + step].load();
    }
    keySpammerSettings.targets[to] = moved;
    keySpammerSettings.singleKey = keySpammerSettings.targets[0].load();
    SyncProfileSettings();
    return true;
}

void AddKeySpammerTarget(uint32_t virtualKey) {
    const int32_t count = keySpammerSettings.targetCount;
    if (count >= kMaxKeySpammerTargets) {
        return;
    }
    keySpammerSettings.targets[count] = virtualKey;
    keySpammerSettings.targetCount = count + 1;
    keySpammerSettings.singleKey = keySpammerSettings.targets[0].load();
    SyncProfileSettings();
}
