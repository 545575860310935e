// The page polls about eight times a second, so an idle poll must cost next to nothing even with a huge macro: the
// event list's text is kept and built again only when the macro has changed.
#include "app/reports.h"

#include "base/text.h"
#include "editing/macro_edits.h"
#include "engines/hotkeys.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/files.h"
#include "storage/data_folder.h"

#include <algorithm>
#include <vector>

namespace {

// Up to this size the event mirror is written at every poll. A longer one is written when it has changed or its file
// is gone: eight times a second tens of megabytes would wear out the disk to say the same again.
constexpr size_t kAlwaysMirroredSize = 0x20000;

// UI thread only.
struct EventListReport {
    uint64_t revision = 0;  // of the macro that `text` was built from; 0 is none, macros start at 1
    // The macro's copy for building the text. Kept, so that the next copy under the lock, which a recording waits for,
    // needs no new memory.
    std::vector<UnifiedEvent> events;
    std::string text;
    bool mirrored = false;  // this text was written to macroevents.txt
};
EventListReport eventList;

// Whether the last take can be undone takes a comparison of two whole macros, so the answer is kept for a revision too.
// Nothing of it changes without a new revision, but for a recording or playback under way, which rules it out.
// UI thread only.
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

// Builds the text anew if the macro has changed.
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

// Appends `"key":`, behind a comma where a field stands before it.
void AppendKey(std::string& out, const char* key) {
    if (out.back() != '{') {
        out += ',';
    }
    out += '"';
    out += key;
    out += "\":";
}

void AppendTextField(std::string& out, const char* key, std::string_view value) {
    AppendKey(out, key);
    out += JsonText(value);
}

void AppendBoolField(std::string& out, const char* key, bool value) {
    AppendKey(out, key);
    out += value ? "true" : "false";
}

void AppendIntField(std::string& out, const char* key, int64_t value) {
    AppendKey(out, key);
    AppendInt(out, value);
}

void AppendKeyNameField(std::string& out, const char* key, const std::atomic<uint32_t>& code) {
    AppendTextField(out, key, KeyNameText(code));
}

// The names of the key spammer's targets as a JSON array.
std::string TargetNames() {
    const int count = std::clamp(keySpammerSettings.targetCount.load(), 0, kMaxKeySpammerTargets);
    std::string names = "[";
    for (int i = 0; i < count; ++i) {
        if (i > 0) {
            names += ',';
        }
        names += JsonText(KeyNameText(keySpammerSettings.targets[i]));
    }
    return names + "]";
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

    std::string report = "{";
    AppendTextField(report, "state",
                    engineState.recording ? "Recording"
                    : engineState.playing ? "Playing"
                                          : "Idle");
    AppendIntField(report, "count", static_cast<int64_t>(count));
    AppendKey(report, "restore");  // ids of the panels that have ended since the last poll
    report += "[]";
    AppendKeyNameField(report, "hkRec", hotkeyTable.record);
    AppendKeyNameField(report, "hkPlay", hotkeyTable.play);
    AppendKeyNameField(report, "hkAuto", hotkeyTable.autoclicker);
    AppendKeyNameField(report, "hkKeySpam", hotkeyTable.keySpammer);
    AppendKeyNameField(report, "hkUnlock", hotkeyTable.unlock);
    AppendBoolField(report, "lockOn", engineState.lockOn);
    AppendBoolField(report, "unlocked", engineState.unlocked);
    AppendKey(report, "keySpamTargets");
    report += TargetNames();
    AppendBoolField(report, "keySpamChord", keySpammerSettings.chord);
    AppendIntField(report, "ksCap", -1);  // no limit that the page need know
    AppendTextField(report, "reassigning", ReassignTargetText());
    AppendBoolField(report, "panelHover", engineState.panelHover);
    AppendBoolField(report, "autoClicking", engineState.autoClicking);
    AppendBoolField(report, "keySpamming", engineState.keySpamming);
    AppendBoolField(report, "canUndoContinue", canUndoContinue);
    report += '}';
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
    std::string report = "{";
    AppendIntField(report, "sh", autoclickerSettings.intervalHours);
    AppendIntField(report, "sm", autoclickerSettings.intervalMinutes);
    AppendIntField(report, "ss", autoclickerSettings.intervalSeconds);
    AppendIntField(report, "sms", autoclickerSettings.intervalMilliseconds);
    AppendIntField(report, "sbtn", autoclickerSettings.button);
    AppendIntField(report, "stype", autoclickerSettings.doubleClick);
    AppendIntField(report, "rptMode", autoclickerSettings.repeatMode);
    AppendIntField(report, "rptTimes", autoclickerSettings.repeatCount);
    AppendIntField(report, "locMode", autoclickerSettings.locationMode);
    AppendIntField(report, "fixedX", autoclickerSettings.fixedX);
    AppendIntField(report, "fixedY", autoclickerSettings.fixedY);
    AppendBoolField(report, "tmv", macroSettings.recordMoves);
    AppendBoolField(report, "tclk", macroSettings.recordButtons);
    AppendBoolField(report, "tscr", macroSettings.recordWheel);
    AppendBoolField(report, "tkey", macroSettings.recordKeys);
    AppendBoolField(report, "trel", macroSettings.recordRawMoves);
    AppendKey(report, "tspd");
    AppendStreamDouble(report, static_cast<double>(macroSettings.playbackSpeed.Get()));
    AppendBoolField(report, "tloop", macroSettings.loop);
    AppendIntField(report, "tloopMs", macroSettings.loopPauseMilliseconds);
    AppendIntField(report, "ksh", keySpammerSettings.intervalHours);
    AppendIntField(report, "ksm", keySpammerSettings.intervalMinutes);
    AppendIntField(report, "kss", keySpammerSettings.intervalSeconds);
    AppendIntField(report, "ksms", keySpammerSettings.intervalMilliseconds);
    AppendIntField(report, "ksRptMode", keySpammerSettings.repeatMode);
    AppendIntField(report, "ksRptTimes", keySpammerSettings.repeatCount);
    AppendBoolField(report, "holdAuto", hotkeyTable.holdAutoclicker);
    AppendBoolField(report, "holdKeySpam", hotkeyTable.holdKeySpammer);
    report += '}';
    return report;
}

std::string ReportMacroEvents() {
    RefreshEventList();
    WriteEventsMirror(eventList.text);
    eventList.mirrored = true;
    return eventList.text;
}
