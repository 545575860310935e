#include "editing/settings_updates.h"

#include "base/text.h"
#include "editing/profiles.h"
#include "model/engine_state.h"
#include "platform/hooks.h"

void UpdateSpammer(std::string_view payload) {
    const std::vector<std::string_view> fields = SplitParts(payload, ',');
    if (fields.size() < 9) {
        return;
    }
    spammerSettings.sh = ReadInt(fields[0]);
    spammerSettings.sm = ReadInt(fields[1]);
    spammerSettings.ss = ReadInt(fields[2]);
    spammerSettings.sms = ReadInt(fields[3]);
    spammerSettings.sbtn = ReadInt(fields[4]);
    spammerSettings.stype = ReadInt(fields[5]);
    spammerSettings.rptMode = ReadInt(fields[6]);
    spammerSettings.rptTimes = ReadInt(fields[7]);
    spammerSettings.locMode = ReadInt(fields[8]);
    SyncProfileSettings();
}

void UpdateKeySpam(std::string_view payload) {
    const std::vector<std::string_view> fields = SplitParts(payload, ',');
    if (fields.size() < 6) {
        return;
    }
    keySpamSettings.ksh = ReadInt(fields[0]);
    keySpamSettings.ksm = ReadInt(fields[1]);
    keySpamSettings.kss = ReadInt(fields[2]);
    keySpamSettings.ksms = ReadInt(fields[3]);
    keySpamSettings.ksRptMode = ReadInt(fields[4]);
    keySpamSettings.ksRptTimes = ReadInt(fields[5]);
    SyncProfileSettings();
}

void UpdateTracker(std::string_view payload) {
    const std::vector<std::string_view> fields = SplitParts(payload, ',');
    if (fields.size() < 8) {
        return;
    }
    trackerSettings.tmv = fields[0] == "true";
    trackerSettings.tclk = fields[1] == "true";
    trackerSettings.tscr = fields[2] == "true";
    trackerSettings.tkey = fields[3] == "true";
    trackerSettings.trel = fields[4] == "true";
    // Raw mouse reports may be wanted from now on; said before a malformed number can end the update.
    HookInterestChanged();
    trackerSettings.tspd = ReadFloat(fields[5]);
    trackerSettings.tloop = fields[6] == "true";
    trackerSettings.tloopMs = ReadInt(fields[7]);
}

void SetHoldMode(std::string_view payload) {
    const size_t comma = payload.find(',');
    if (comma == std::string_view::npos) {
        return;
    }
    const std::string_view tool = payload.substr(0, comma);
    const bool hold = payload.substr(comma + 1) == "1";
    if (tool == "auto") {
        hotkeyTable.holdAuto = hold;
    } else if (tool == "keyspam") {
        hotkeyTable.holdKeySpam = hold;
    }
}

void SetKeySpamChordMode(std::string_view payload) {
    keySpamSettings.keySpamChord = payload == "1";
    SyncProfileSettings();
}

void RemoveKeySpamTarget(int32_t index) {
    const int32_t count = keySpamSettings.keySpamTargetCount;
    if (index < 0 || index >= count) {
        return;
    }
    for (int32_t i = index; i + 1 < count; ++i) {
        keySpamSettings.keySpamTargets[i] = keySpamSettings.keySpamTargets[i + 1].load();
    }
    keySpamSettings.keySpamTargetCount = count - 1;
    if (count > 1) {
        keySpamSettings.ksKey = keySpamSettings.keySpamTargets[0].load();
    }
    SyncProfileSettings();
    if (count == 1 && engineState.keySpamming) {
        RaiseRequest(engineState.reqStopKeySpam);
    }
}

void AddKeySpamTarget(uint32_t virtualKey) {
    const int32_t count = keySpamSettings.keySpamTargetCount;
    if (count >= kMaxKeySpamTargets) {
        return;
    }
    keySpamSettings.keySpamTargets[count] = virtualKey;
    keySpamSettings.keySpamTargetCount = count + 1;
    keySpamSettings.ksKey = keySpamSettings.keySpamTargets[0].load();
    SyncProfileSettings();
}
