#include "app/commands.h"

#include "app/app_settings_commands.h"
#include "app/reports.h"
#include "base/json_writer.h"
#include "base/numbers.h"
#include "editing/macro_edits.h"
#include "editing/profiles.h"
#include "editing/settings_updates.h"
#include "engines/hotkeys.h"
#include "engines/key_spammer.h"
#include "imports/macro_import.h"
#include "imports/pending_import.h"
#include "model/engine_state.h"
#include "platform/hooks.h"
#include "storage/app_settings.h"
#include "windows/main_page.h"
#include "windows/main_window.h"

#include <algorithm>
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

// In binding order. Add a new command beside those of its subject; do not reorder the others.
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
    {"getPendingMacroSummary", "", "return event counts of the pending import over its time",
     Report<GetPendingMacroSummary>},
    {"getSettings", "", "return the settings report", Report<SettingsReport>},
    {"reassignKey", "rec, play, auto, keyspamhotkey, keyspamtarget or unlock",
     "make the next key or button this binding", Call<ReassignKey>},
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
