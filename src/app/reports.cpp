// The page polls about eight times a second, and an idle poll must be cheap even with a huge macro. So the text of the
// event list is kept and built again only when the macro has changed.
#include "app/reports.h"

#include "base/json_writer.h"
#include "editing/macro_edits.h"
#include "engines/hotkeys.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/files.h"
#include "storage/data_folder.h"
#include "storage/settings_table.h"

#include <algorithm>
#include <vector>

namespace {

// Up to this size the event mirror is written at every poll. A longer one is written only if it has changed or its file
// is missing: tens of megabytes eight times a second would wear out the disk.
constexpr size_t kAlwaysMirroredSize = 0x20000;

// UI thread only.
struct EventListReport {
    uint64_t revision = 0;  // of the macro that `text` was built from; 0: none, macros start at 1
    // Copy of the macro from which the text is built. Its memory is kept: a recording waits while the next copy is made.
    std::vector<UnifiedEvent> events;
    std::string text;
    bool mirrored = false;  // this text was written to macroevents.txt
};
EventListReport eventList;

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

// Builds the text again if the macro has changed.
void RefreshEventList() {
    {
        MutexLock lock(macroMutex);
        if (macroState.revision == eventList.revision) {
            return;
        }
        eventList.revision = macroState.revision;
        if (const Profile* profile = CurrentProfile()) {
            eventList.events = profile->events;
        } else {
            eventList.events.clear();
        }
    }
    BuildMacroEventsJson(eventList.events, eventList.text);
    eventList.mirrored = false;
}

void MirrorEventList() {
    if (eventList.mirrored && eventList.text.size() > kAlwaysMirroredSize &&
        FileExists(DataFilePath("macroevents.txt"))) {
        return;
    }
    WriteEventsMirror(eventList.text);
    eventList.mirrored = true;
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
    RefreshEventList();
    MirrorEventList();
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
    RefreshEventList();
    WriteEventsMirror(eventList.text);
    eventList.mirrored = true;
    return eventList.text;
}
