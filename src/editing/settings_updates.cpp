#include "editing/settings_updates.h"

#include "base/text.h"
#include "editing/profiles.h"
#include "model/engine_state.h"
#include "platform/hooks.h"

void UpdateAutoclickerSettings(std::string_view payload) {
    const std::vector<std::string_view> fields = SplitParts(payload, ',');
    if (fields.size() < 9) {
        return;
    }
    autoclickerSettings.intervalHours = ReadInt(fields[0]);
    autoclickerSettings.intervalMinutes = ReadInt(fields[1]);
    autoclickerSettings.intervalSeconds = ReadInt(fields[2]);
    autoclickerSettings.intervalMilliseconds = ReadInt(fields[3]);
    autoclickerSettings.button = ReadInt(fields[4]);
    autoclickerSettings.doubleClick = ReadInt(fields[5]);
    autoclickerSettings.repeatMode = ReadInt(fields[6]);
    autoclickerSettings.repeatCount = ReadInt(fields[7]);
    autoclickerSettings.locationMode = ReadInt(fields[8]);
    SyncProfileSettings();
}

void UpdateKeySpammerSettings(std::string_view payload) {
    const std::vector<std::string_view> fields = SplitParts(payload, ',');
    if (fields.size() < 6) {
        return;
    }
    keySpammerSettings.intervalHours = ReadInt(fields[0]);
    keySpammerSettings.intervalMinutes = ReadInt(fields[1]);
    keySpammerSettings.intervalSeconds = ReadInt(fields[2]);
    keySpammerSettings.intervalMilliseconds = ReadInt(fields[3]);
    keySpammerSettings.repeatMode = ReadInt(fields[4]);
    keySpammerSettings.repeatCount = ReadInt(fields[5]);
    SyncProfileSettings();
}

void UpdateMacroSettings(std::string_view payload) {
    const std::vector<std::string_view> fields = SplitParts(payload, ',');
    if (fields.size() < 8) {
        return;
    }
    macroSettings.recordMoves = fields[0] == "true";
    macroSettings.recordButtons = fields[1] == "true";
    macroSettings.recordWheel = fields[2] == "true";
    macroSettings.recordKeys = fields[3] == "true";
    macroSettings.recordRawMoves = fields[4] == "true";
    // Raw mouse reports may be wanted from now on; said before a malformed number can end the update.
    HookInterestChanged();
    macroSettings.playbackSpeed = ReadFloat(fields[5]);
    macroSettings.loop = fields[6] == "true";
    macroSettings.loopPauseMilliseconds = ReadInt(fields[7]);
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
