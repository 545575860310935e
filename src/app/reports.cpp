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
    const int count = std::clamp(keySpamSettings.keySpamTargetCount.load(), 0, kMaxKeySpamTargets);
    std::string names = "[";
    for (int i = 0; i < count; ++i) {
        if (i > 0) {
            names += ',';
        }
        names += JsonText(KeyNameText(keySpamSettings.keySpamTargets[i]));
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
    AppendKeyNameField(report, "hkRec", hotkeyTable.rec);
    AppendKeyNameField(report, "hkPlay", hotkeyTable.play);
    AppendKeyNameField(report, "hkAuto", hotkeyTable.autoKey);
    AppendKeyNameField(report, "hkKeySpam", hotkeyTable.keyspam);
    AppendKeyNameField(report, "hkUnlock", hotkeyTable.unlock);
    AppendBoolField(report, "lockOn", engineState.lockOn);
    AppendBoolField(report, "unlocked", engineState.unlocked);
    AppendKey(report, "keySpamTargets");
    report += TargetNames();
    AppendBoolField(report, "keySpamChord", keySpamSettings.keySpamChord);
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

std::string PollTrackerStatus() {
    std::string report = StatusReport();
    WriteStatusMirror(report);
    RefreshEventList();
    MirrorEventList();
    return report;
}

std::string SettingsReport() {
    std::string report = "{";
    AppendIntField(report, "sh", spammerSettings.sh);
    AppendIntField(report, "sm", spammerSettings.sm);
    AppendIntField(report, "ss", spammerSettings.ss);
    AppendIntField(report, "sms", spammerSettings.sms);
    AppendIntField(report, "sbtn", spammerSettings.sbtn);
    AppendIntField(report, "stype", spammerSettings.stype);
    AppendIntField(report, "rptMode", spammerSettings.rptMode);
    AppendIntField(report, "rptTimes", spammerSettings.rptTimes);
    AppendIntField(report, "locMode", spammerSettings.locMode);
    AppendIntField(report, "fixedX", spammerSettings.fixedX);
    AppendIntField(report, "fixedY", spammerSettings.fixedY);
    AppendBoolField(report, "tmv", trackerSettings.tmv);
    AppendBoolField(report, "tclk", trackerSettings.tclk);
    AppendBoolField(report, "tscr", trackerSettings.tscr);
    AppendBoolField(report, "tkey", trackerSettings.tkey);
    AppendBoolField(report, "trel", trackerSettings.trel);
    AppendKey(report, "tspd");
    AppendStreamDouble(report, static_cast<double>(trackerSettings.tspd.Get()));
    AppendBoolField(report, "tloop", trackerSettings.tloop);
    AppendIntField(report, "tloopMs", trackerSettings.tloopMs);
    AppendIntField(report, "ksh", keySpamSettings.ksh);
    AppendIntField(report, "ksm", keySpamSettings.ksm);
    AppendIntField(report, "kss", keySpamSettings.kss);
    AppendIntField(report, "ksms", keySpamSettings.ksms);
    AppendIntField(report, "ksRptMode", keySpamSettings.ksRptMode);
    AppendIntField(report, "ksRptTimes", keySpamSettings.ksRptTimes);
    AppendBoolField(report, "holdAuto", hotkeyTable.holdAuto);
    AppendBoolField(report, "holdKeySpam", hotkeyTable.holdKeySpam);
    report += '}';
    return report;
}

std::string ReportMacroEvents() {
    RefreshEventList();
    WriteEventsMirror(eventList.text);
    eventList.mirrored = true;
    return eventList.text;
}
