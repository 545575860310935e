#include "storage/settings_table.h"

#include "base/numbers.h"
#include "base/text.h"

constinit const std::array<SettingsField, 36> kSettingsFields = {{
    {"sh", &autoclickerSettings.intervalHours},
    {"sm", &autoclickerSettings.intervalMinutes},
    {"ss", &autoclickerSettings.intervalSeconds},
    {"sms", &autoclickerSettings.intervalMilliseconds},
    {"sbtn", &autoclickerSettings.button},
    {"stype", &autoclickerSettings.doubleClick},
    {"rptMode", &autoclickerSettings.repeatMode},
    {"rptTimes", &autoclickerSettings.repeatCount},
    {"locMode", &autoclickerSettings.locationMode},
    {"fixedX", &autoclickerSettings.fixedX},
    {"fixedY", &autoclickerSettings.fixedY},

    {"tmv", &macroSettings.recordMoves},  // 11
    {"tclk", &macroSettings.recordButtons},
    {"tscr", &macroSettings.recordWheel},
    {"tkey", &macroSettings.recordKeys},
    {"trel", &macroSettings.recordRawMoves},
    {"tspd", &macroSettings.playbackSpeed},
    {"tloop", &macroSettings.loop},
    {"tloopMs", &macroSettings.loopPauseMilliseconds},

    {"hkRec", &hotkeyTable.record},  // 19
    {"hkPlay", &hotkeyTable.play},
    {"", ReservedField{}},
    {"hkAuto", &hotkeyTable.autoclicker},

    {"ksh", &keySpammerSettings.intervalHours},  // 23
    {"ksm", &keySpammerSettings.intervalMinutes},
    {"kss", &keySpammerSettings.intervalSeconds},
    {"ksms", &keySpammerSettings.intervalMilliseconds},
    {"ksRptMode", &keySpammerSettings.repeatMode},
    {"ksRptTimes", &keySpammerSettings.repeatCount},
    {"hkKeySpam", &hotkeyTable.keySpammer},
    {"", &keySpammerSettings.singleKey},

    {"keySpamTargets", KeyTargetList{}},  // 31
    {"keySpamChord", &keySpammerSettings.chord},

    {"holdAuto", &hotkeyTable.holdAutoclicker},  // 33
    {"holdKeySpam", &hotkeyTable.holdKeySpammer},

    {"hkUnlock", &hotkeyTable.unlock},  // 35
}};

namespace {

void AppendKeyTargets(std::string& out) {
    const int32_t count = keySpammerSettings.targetCount;
    for (int32_t i = 0; i < count && i < kMaxKeySpammerTargets; ++i) {
        if (i > 0) {
            out += '|';
        }
        AppendInt(out, static_cast<int32_t>(keySpammerSettings.targets[i].load()));
    }
}

}  // namespace

void AppendSettingText(std::string& out, const SettingsField& field) {
    if (const auto* number = std::get_if<Relaxed<int32_t>*>(&field.setting)) {
        AppendInt(out, **number);
    } else if (const auto* flag = std::get_if<Relaxed<bool>*>(&field.setting)) {
        out += **flag ? '1' : '0';
    } else if (const auto* real = std::get_if<Relaxed<float>*>(&field.setting)) {
        AppendStreamDouble(out, **real);
    } else if (const auto* code = std::get_if<std::atomic<uint32_t>*>(&field.setting)) {
        AppendInt(out, static_cast<int32_t>((*code)->load()));  // the form that a signed read takes back
    } else if (std::holds_alternative<KeyTargetList>(field.setting)) {
        AppendKeyTargets(out);
    } else {
        out += '0';
    }
}

bool StoreSettingText(const SettingsField& field, std::string_view text, std::string_view trueText) {
    if (const auto* number = std::get_if<Relaxed<int32_t>*>(&field.setting)) {
        int32_t value = 0;
        if (!ParseInt(text, &value)) {
            return false;
        }
        **number = value;
    } else if (const auto* flag = std::get_if<Relaxed<bool>*>(&field.setting)) {
        **flag = text == trueText;
    } else if (const auto* real = std::get_if<Relaxed<float>*>(&field.setting)) {
        float value = 0;
        if (!ParseFloat(text, &value)) {
            return false;
        }
        **real = value;
    } else if (const auto* code = std::get_if<std::atomic<uint32_t>*>(&field.setting)) {
        int32_t value = 0;
        if (!ParseInt(text, &value)) {
            return false;
        }
        **code = static_cast<uint32_t>(value);
    } else if (std::holds_alternative<KeyTargetList>(field.setting)) {
        ParseKeyTargets(text);
    }
    return true;
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
