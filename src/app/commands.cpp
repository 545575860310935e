#include "app/commands.h"

#include "app/about.h"
#include "app/app_settings_commands.h"
#include "app/progress_reports.h"
#include "app/reports.h"
#include "base/json_writer.h"
#include "base/numbers.h"
#include "editing/macro_batch_edits.h"
#include "editing/macro_edits.h"
#include "editing/macro_history.h"
#include "editing/profiles.h"
#include "editing/settings_updates.h"
#include "engines/hotkeys.h"
#include "engines/key_spammer.h"
#include "imports/last_import.h"
#include "imports/macro_import.h"
#include "imports/pending_import.h"
#include "model/engine_state.h"
#include "platform/hooks.h"
#include "storage/app_settings.h"
#include "windows/main_page.h"
#include "windows/main_window.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace {

// An empty result resolves the promise of the page with undefined.

// A command that only raises a request. The dispatcher decides what to do with it.
template <std::atomic<bool> EngineState::*Flag> std::string Raise(const std::string&) {
    RaiseRequest(engineState.*Flag);
    return {};
}

// A command that passes its arguments to one function.
template <void (*Function)(std::string_view)> std::string Call(const std::string& request) {
    Function(ArgText(request));
    return {};
}

// A command without arguments.
template <void (*Function)()> std::string Call(const std::string&) {
    Function();
    return {};
}

template <std::string (*Function)()> std::string Report(const std::string&) {
    return Function();
}

// A report on its arguments.
template <std::string (*Function)(std::string_view)> std::string Report(const std::string& request) {
    return Function(ArgText(request));
}

// The results of the additional commands that do something.
std::string ActionResult(Refusal refusal) {
    // Indexed by Refusal.
    constexpr const char* kReasons[] = {"",         "recording", "playing", "revision",
                                        "argument", "default",   "unknown"};
    std::string result;
    JsonWriter json(result);
    json.BeginObject();
    json.BoolField("done", refusal == Refusal::None);
    if (refusal != Refusal::None) {
        json.PlainTextField("reason", kReasons[static_cast<size_t>(refusal)]);
    }
    json.EndObject();
    return result;
}

std::string ActionResult(bool done) {
    return ActionResult(done ? Refusal::None : Refusal::Argument);
}

// Splits "first,rest" at the first comma; without one, *rest is empty. Returns whether `first` is a number.
bool SplitIndex(std::string_view text, int32_t* index, std::string_view* rest) {
    const size_t comma = std::min(text.find(','), text.size());
    *rest = text.substr(std::min(comma + 1, text.size()));
    return IsWholeInt(text.substr(0, comma)) && ParseInt(text, index);
}

// A command on two positions, "from,to".
template <auto Move> std::string MovePosition(const std::string& request) {
    const std::string text = ArgText(request);
    int32_t from = 0;
    int32_t to = 0;
    std::string_view rest;
    const bool valid = SplitIndex(text, &from, &rest) && IsWholeInt(rest) && ParseInt(rest, &to);
    return valid ? ActionResult(Move(from, to)) : ActionResult(Refusal::Argument);
}

std::string RenameProfileCommand(const std::string& request) {
    const std::string text = ArgText(request);
    int32_t index = 0;
    std::string_view name;
    return ActionResult(SplitIndex(text, &index, &name) ? RenameProfile(index, name) : Refusal::Argument);
}

std::string DuplicateProfileCommand(const std::string& request) {
    const std::string text = ArgText(request);
    int32_t index = 0;
    const bool valid = IsWholeInt(text) && ParseInt(text, &index);
    return ActionResult(valid ? DuplicateProfile(index) : Refusal::Argument);
}

std::string LockHotkeysCommand(const std::string&) {
    return ActionResult(LockHotkeys() ? Refusal::None : Refusal::Unknown);
}

std::string SetHotkeyCommand(const std::string& request) {
    const std::string text = ArgText(request);
    const size_t comma = text.find(',');
    int32_t code = 0;
    const bool valid = comma != std::string::npos && IsWholeInt(std::string_view(text).substr(comma + 1)) &&
                       ParseInt(std::string_view(text).substr(comma + 1), &code) && code > 0;
    return ActionResult(valid &&
                        SetHotkey(std::string_view(text).substr(0, comma), static_cast<uint32_t>(code)));
}

template <EditResult (*Edit)(std::string_view)> std::string EditMacro(const std::string& request) {
    const EditResult edit = Edit(ArgText(request));
    if (edit.refusal != Refusal::None) {
        return ActionResult(edit.refusal);
    }
    std::string result;
    JsonWriter json(result);
    json.BeginObject();
    json.BoolField("done", true);
    json.IntField("revision", static_cast<int64_t>(edit.revision));
    json.IntField("changed", static_cast<int64_t>(edit.changed));
    json.EndObject();
    return result;
}

std::string RestoreMacroCommand(const std::string& request) {
    const std::string text = ArgText(request);
    uint64_t id = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    const bool valid = error == std::errc() && end == text.data() + text.size();
    return ActionResult(valid ? RestoreMacro(id) : Refusal::Argument);
}

// A command without arguments that always succeeds.
template <void (*Function)()> std::string Do(const std::string&) {
    Function();
    return ActionResult(Refusal::None);
}

std::string SetAdditionalSettingCommand(const std::string& request) {
    return ActionResult(SetAdditionalSetting(ArgText(request)));
}

std::string UseImportedSettingsCommand(const std::string&) {
    return ActionResult(UseImportedSettings() ? Refusal::None : Refusal::Unknown);
}

void RemoveTarget(std::string_view indexText) {
    int32_t index = 0;
    if (ParseInt(indexText, &index)) {
        RemoveKeySpammerTarget(index);
    }
}

void PickLocation() {
    engineState.pickingLocation = true;
    HookInterestChanged();
}

std::string FetchPendingThemeAlert() {
    return JsonText(TakePendingThemeAlert());
}

// In binding order. Do not reorder. A new command goes to the additional ones at the end.
constexpr PageCommand kMainProcessCommands[] = {
    {"resizeWindow", "width,height", "fit the window to the page's content", Call<ResizeMainWindow>},
    {"updateSpammer", "9 comma fields", "store the autoclicker's settings", Call<UpdateAutoclickerSettings>},
    {"startSpammer", "", "request the start of the autoclicker",
     Raise<&EngineState::requestStartAutoclicker>},
    {"stopSpammer", "", "request its stop", Raise<&EngineState::requestStopAutoclicker>},
    {"updateKeySpam", "6 comma fields", "store the key spammer's settings", Call<UpdateKeySpammerSettings>},
    {"startKeySpam", "", "request the start of the key spammer", Raise<&EngineState::requestStartKeySpammer>},
    {"stopKeySpam", "", "request its stop", Raise<&EngineState::requestStopKeySpammer>},
    {"removeKeySpamTarget", "index", "remove the target; ignore an invalid index", Call<RemoveTarget>},
    {"setKeySpamChordMode", "1 or other", "press all targets together, or in turn", Call<SetKeySpammerChord>},
    {"pickLocation", "", "use the position of the next left press as click location", Call<PickLocation>},
    {"setHoldMode", "auto,0|1 or keyspam,0|1", "run the tool only while its hotkey is held",
     Call<SetHoldMode>},
    {"getPendingThemeAlert", "", "return the message that waits for the page, once",
     Report<FetchPendingThemeAlert>},
    {"getAppSettings", "", "return the application settings", Report<AppSettingsReport>},
    {"markWarningSeen", "id", "remember that the user dismissed this warning", Call<MarkWarningSeen>},
    {"setAppSetting", "key,value", "store one application setting and apply it; 1 is on",
     Call<SetAppSetting>},
    {"setPanelOrder", "panel ids", "store the order of the panels, if it is valid", Call<SetPanelOrder>},
    {"resetHotkeys", "", "set the hotkeys to F8, F7, F6, F9, F10", Call<ResetHotkeys>},
    {"openLink", "docs or discord", "open that page in the user's browser", Call<OpenLink>},
    {"updateTracker", "8 comma fields", "store the recording and playback settings",
     Call<UpdateMacroSettings>},
    {"startRecording", "", "request a new recording", Raise<&EngineState::requestStartRecord>},
    {"stopRecording", "", "request its stop", Raise<&EngineState::requestStopRecord>},
    {"continueRecording", "", "request a recording that continues the macro",
     Raise<&EngineState::requestContinueRecord>},
    {"undoContinueRecording", "", "request the macro from before the continued segment",
     Raise<&EngineState::requestUndoContinue>},
    {"startPlayback", "", "request playback", Raise<&EngineState::requestStartPlay>},
    {"stopPlayback", "", "request its stop", Raise<&EngineState::requestStopPlay>},
    {"optimizeMacro", "", "thin out pointer paths", Call<OptimizeMacro>},
    {"getTrackerStatus", "", "return one status report", Report<PollStatus>},
    {"getMacroEvents", "", "return the event list", Report<ReportMacroEvents>},
    {"deleteEvent", "index", "delete the event", Call<DeleteEvent>},
    {"updateEventTime", "index,seconds", "set the time of the event", Call<UpdateEventTime>},
    {"clearProfile", "", "clear the current profile", Call<ClearProfile>},
    {"addProfile", "name", "add a profile and make it current", Call<AddProfile>},
    {"deleteProfile", "", "delete the current profile", Call<DeleteProfile>},
    {"switchProfile", "index", "make the profile current", Call<SwitchProfile>},
    {"getProfiles", "", "return the list of profiles", Report<GetProfiles>},
    {"exportProfile", "", "ask for a file name and write the current profile", Call<ExportProfile>},
    {"importProfile", "", "ask for a file and read it as a new profile", Report<ImportProfile>},
    {"confirmMacroImport", "id", "add the pending import", Call<ConfirmMacroImport>},
    {"cancelMacroImport", "id", "drop the pending import", Call<CancelMacroImport>},
    {"getPendingMacroImport", "", "return the pending import", Report<GetPendingMacroImport>},
    {"getSettings", "", "return the settings report", Report<SettingsReport>},
    {"reassignKey", "rec, play, auto, keyspamhotkey, keyspamtarget or unlock",
     "make the next key or button this binding", Call<ReassignKey>},
    {"getPendingMacroSummary", "", "return event counts of the pending import over its time",
     Report<GetPendingMacroSummary>, true},
    {"getProgress", "", "return what runs and how far it is", Report<ProgressReport>, true},
    {"getMacroRows", "none, first or first,count", "return events of the macro as rows of eight numbers",
     Report<MacroRowsReport>, true},
    {"getKeyNames", "", "return the names of the keys by virtual key", Report<KeyNamesReport>, true},
    {"cancelPick", "", "stop waiting for the click location", Do<CancelLocationPick>, true},
    {"getHotkeys", "", "return the codes of the hotkeys", Report<HotkeyCodesReport>, true},
    {"setHotkey", "rec, play, auto, keyspamhotkey or unlock,code", "set the hotkey, if a capture could",
     SetHotkeyCommand, true},
    {"moveKeySpamTarget", "from,to", "move the target to another position",
     MovePosition<MoveKeySpammerTarget>, true},
    {"renameProfile", "index,name", "rename the profile", RenameProfileCommand, true},
    {"duplicateProfile", "index", "add a copy of the profile and make it current", DuplicateProfileCommand,
     true},
    {"moveProfile", "from,to", "move the profile to another position", MovePosition<MoveProfile>, true},
    {"getMacroHistory", "", "return the changes that can be undone and redone", Report<MacroHistoryReport>,
     true},
    {"restoreMacro", "id", "undo or redo up to this change", RestoreMacroCommand, true},
    {"deleteMacroEvents", "revision,first-last,...", "delete events", EditMacro<DeleteMacroEvents>, true},
    {"shiftMacroEvents", "revision,seconds,first-last,...", "add seconds to the times of events",
     EditMacro<ShiftMacroEvents>, true},
    {"retimeMacroEvents", "revision,index,seconds,...", "set the times of events",
     EditMacro<RetimeMacroEvents>, true},
    {"addMissingReleases", "revision", "append the releases of what the macro leaves pressed",
     EditMacro<AddMissingReleases>, true},
    {"getAdditionalSettings", "", "return the additional settings", Report<AdditionalSettingsReport>, true},
    {"setAdditionalSetting", "key,number", "store one additional setting", SetAdditionalSettingCommand, true},
    {"getAbout", "", "return version, data folder, system and licences", Report<AboutReport>, true},
    {"openDataFolder", "", "show the data folder in the file manager", Do<OpenDataFolder>, true},
    {"getLastImport", "", "return what came of the last import", Report<LastImportReport>, true},
    {"useImportedSettings", "", "apply the tool settings of the last imported file",
     UseImportedSettingsCommand, true},
    {"exportMacro", "", "ask for a file name, propose the profile's, and write the current profile",
     Report<ExportMacro>, true},
    {"lockHotkeys", "", "lock the hotkeys as the unlock hotkey does", LockHotkeysCommand, true},
};

}  // namespace

std::string ArgText(std::string_view request) {
    std::string text;
    text.reserve(request.size());
    std::copy_if(request.begin(), request.end(), std::back_inserter(text),
                 [](char c) { return c != '[' && c != ']' && c != '"'; });
    return text;
}

const PageCommand* MainProcessCommands(int* count) {
    *count = static_cast<int>(std::size(kMainProcessCommands));
    return kMainProcessCommands;
}

void BindMainProcessCommands(PageHost* host) {
    for (const PageCommand& command : kMainProcessCommands) {
        BindPageFunction(host, command.name, command.function);
    }
}
