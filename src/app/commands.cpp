#include "app/commands.h"

#include "app/app_settings_commands.h"
#include "app/reports.h"
#include "base/text.h"
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

// An empty answer resolves the page's promise with undefined.

// A command that only raises a request: the dispatcher decides what becomes of it.
template <std::atomic<bool> EngineState::*Flag> std::string Raise(const std::string&) {
    RaiseRequest(engineState.*Flag);
    return {};
}

// A command that hands its arguments to one function.
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

// In binding order. A new command goes beside those of its subject; the order of the rest stays.
constexpr PageCommand kMasterCommands[] = {
    {"resizeWindow", "width,height", "fit the window to the page's content", Call<ResizeMainWindow>},
    {"updateSpammer", "9 comma fields", "store the autoclicker's settings", Call<UpdateAutoclickerSettings>},
    {"startSpammer", "", "ask for the autoclicker", Raise<&EngineState::requestStartAutoclicker>},
    {"stopSpammer", "", "ask for its end", Raise<&EngineState::requestStopAutoclicker>},
    {"updateKeySpam", "6 comma fields", "store the key spammer's settings", Call<UpdateKeySpammerSettings>},
    {"startKeySpam", "", "ask for the key spammer", Raise<&EngineState::requestStartKeySpammer>},
    {"stopKeySpam", "", "ask for its end", Raise<&EngineState::requestStopKeySpammer>},
    {"removeKeySpamTarget", "index", "remove that target; a bad number does nothing", Call<RemoveTarget>},
    {"setKeySpamChordMode", "1 or other", "targets together, or in turn", Call<SetKeySpammerChord>},
    {"pickLocation", "", "the next left press anywhere becomes the click location", Call<PickLocation>},
    {"setHoldMode", "auto,0|1 or keyspam,0|1", "a hotkey runs its tool while held", Call<SetHoldMode>},
    {"getPendingThemeAlert", "", "the message that waits for the page, once", Report<FetchPendingThemeAlert>},
    {"getAppSettings", "", "the application settings", Report<AppSettingsReport>},
    {"markWarningSeen", "id", "remember a dismissed warning", Call<MarkWarningSeen>},
    {"setAppSetting", "key,value", "store one application setting and carry it out; 1 is on",
     Call<SetAppSetting>},
    {"setPanelOrder", "panel ids", "store the order of the panels, if it is a valid one",
     Call<SetPanelOrder>},
    {"resetHotkeys", "", "F8, F7, F6, F9, F10", Call<ResetHotkeys>},
    {"openLink", "docs or discord", "open that page in the person's browser", Call<OpenLink>},
    {"updateTracker", "8 comma fields", "store what is recorded and how it is played",
     Call<UpdateMacroSettings>},
    {"startRecording", "", "ask for a fresh recording", Raise<&EngineState::requestStartRecord>},
    {"stopRecording", "", "ask for its end", Raise<&EngineState::requestStopRecord>},
    {"continueRecording", "", "ask to record on behind the macro",
     Raise<&EngineState::requestContinueRecord>},
    {"undoContinueRecording", "", "ask for the macro of before", Raise<&EngineState::requestUndoContinue>},
    {"startPlayback", "", "ask for playback", Raise<&EngineState::requestStartPlay>},
    {"stopPlayback", "", "ask for its end", Raise<&EngineState::requestStopPlay>},
    {"optimizeMacro", "", "thin out pointer paths", Call<OptimizeMacro>},
    {"getTrackerStatus", "", "one status poll", Report<PollStatus>},
    {"getMacroEvents", "", "the event list", Report<ReportMacroEvents>},
    {"deleteEvent", "index", "remove that event", Call<DeleteEvent>},
    {"updateEventTime", "index,seconds", "set that event's time", Call<UpdateEventTime>},
    {"clearProfile", "", "empty the current profile", Call<ClearProfile>},
    {"addProfile", "name", "add a profile and make it current", Call<AddProfile>},
    {"deleteProfile", "", "delete the current profile", Call<DeleteProfile>},
    {"switchProfile", "index", "make that profile current", Call<SwitchProfile>},
    {"getProfiles", "", "the list of profiles", Report<GetProfiles>},
    {"exportProfile", "", "ask where to, write the current profile", Call<ExportProfile>},
    {"importProfile", "", "ask for a file, read it as a new profile", Report<ImportProfile>},
    {"confirmMacroImport", "id", "add the held macro", Call<ConfirmMacroImport>},
    {"cancelMacroImport", "id", "drop the held macro", Call<CancelMacroImport>},
    {"getPendingMacroImport", "", "the held macro", Report<GetPendingMacroImport>},
    {"getPendingMacroSummary", "", "what the held macro holds, over its time",
     Report<GetPendingMacroSummary>},
    {"getSettings", "", "the settings report", Report<SettingsReport>},
    {"reassignKey", "rec, play, auto, keyspamhotkey, keyspamtarget or unlock",
     "the next key or button becomes that binding", Call<ReassignKey>},
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
    *count = static_cast<int>(std::size(kMasterCommands));
    return kMasterCommands;
}

void BindMainProcessCommands(PageHost* host) {
    for (const PageCommand& command : kMasterCommands) {
        BindPageFunction(host, command.name, command.function);
    }
}
