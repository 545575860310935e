#include "app/reports.h"

#include "base/json_writer.h"
#include "editing/event_list.h"
#include "engines/hotkeys.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "storage/data_folder.h"
#include "storage/settings_table.h"

#include <algorithm>

namespace {

// CanUndoContinue compares two whole macros, so its result is kept for a revision too. It changes only with the revision,
// or while a recording or playback runs, when it is false. UI thread only.
struct UndoReport {
    uint64_t revision = 0;
    bool canUndo = false;
};
UndoReport undoReport;

bool CanUndoNow() REQUIRES(macroMutex) {
    if (engineState.recording || engineState.playing) {
        return false;
    }
    if (undoReport.revision != macroState.revision) {
        undoReport = {macroState.revision, CanUndoContinue()};
    }
    return undoReport.canUndo;
}

// Targets and hotkeys are reported by their names, everything else by its value.
void WriteSetting(JsonWriter& json, const SettingsField& field) {
    json.Key(field.wireName);
    if (const auto* number = std::get_if<Relaxed<int32_t>*>(&field.setting)) {
        json.Int(**number);
    } else if (const auto* flag = std::get_if<Relaxed<bool>*>(&field.setting)) {
        json.Bool(**flag);
    } else if (const auto* real = std::get_if<Relaxed<float>*>(&field.setting)) {
        json.Real(**real);
    } else if (const auto* code = std::get_if<std::atomic<uint32_t>*>(&field.setting)) {
        json.Text(KeyNameText(**code));
    } else {
        const int count = std::clamp(keySpammerSettings.targetCount.load(), 0, kMaxKeySpammerTargets);
        json.BeginArray();
        for (int i = 0; i < count; ++i) {
            json.Text(KeyNameText(keySpammerSettings.targets[i]));
        }
        json.EndArray();
    }
}

std::string StatusReport() {
    size_t count = 0;
    bool canUndoContinue = false;
    {
        MutexLock lock(macroMutex);
        if (const Profile* profile = CurrentProfile()) {
            count = profile->events.size();
        }
        canUndoContinue = CanUndoNow();
    }

    std::string report;
    JsonWriter json(report);
    json.BeginObject();
    json.TextField("state", engineState.recording ? "Recording" : engineState.playing ? "Playing" : "Idle");
    json.IntField("count", static_cast<int64_t>(count));
    json.BeginArrayField("restore");  // ids of the panels that have ended since the last poll
    json.EndArray();
    for (const SettingsPosition hotkey : {kRecordHotkeyField, kPlayHotkeyField, kAutoclickerHotkeyField,
                                          kKeySpammerHotkeyField, kUnlockHotkeyField}) {
        WriteSetting(json, kSettingsFields[hotkey]);
    }
    json.BoolField("lockOn", engineState.lockOn);
    json.BoolField("unlocked", engineState.unlocked);
    WriteSetting(json, kSettingsFields[kKeyTargetsField]);
    WriteSetting(json, kSettingsFields[kChordField]);
    json.IntField("ksCap", -1);  // no limit that the page need know
    json.TextField("reassigning", ReassignTargetText());
    json.BoolField("panelHover", engineState.panelHover);
    json.BoolField("autoClicking", engineState.autoClicking);
    json.BoolField("keySpamming", engineState.keySpamming);
    json.BoolField("canUndoContinue", canUndoContinue);
    json.EndObject();
    return report;
}

}  // namespace

std::string PollStatus() {
    std::string report = StatusReport();
    WriteStatusMirror(report);
    UpdateEventMirror();
    return report;
}

std::string SettingsReport() {
    std::string report;
    JsonWriter json(report);
    json.BeginObject();
    for (const SettingsRange& range : {kAutoclickerFields, kMacroFields, kKeySpammerFields, kHoldFields}) {
        for (size_t i = range.first; i < range.end; ++i) {
            WriteSetting(json, kSettingsFields[i]);
        }
    }
    json.EndObject();
    return report;
}

std::string ReportMacroEvents() {
    return ReportEventList();
}
