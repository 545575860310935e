// Uses any bytes as each of the small texts that come from outside: a command line, the arguments of page commands, the
// URI of a file from the desktop's dialog, an autostart entry, a text for the page.
#include "fuzz_input.h"

#include "app/commands.h"
#include "app/launch_options.h"
#include "base/numbers.h"
#include "base/text.h"
#include "editing/settings_updates.h"
#include "engines/hotkeys.h"
#include "model/engine_state.h"
#include "platform/linux/autostart_entry.h"
#include "platform/linux/dialog_portal.h"
#include "platform/shared/valid_utf8.h"
#include "storage/settings_text.h"

#include <cstdio>
#include <string>
#include <string_view>

namespace {

// A line end separates two arguments.
void RequireOneRole(const std::string& text) {
    ProcessArguments arguments;
    arguments.line = text;
    arguments.wideViewValid = text.size() % 2 == 0;
    for (const std::string_view argument : SplitParts(text, '\n')) {
        arguments.arguments.push_back(WidenBytes(argument));
    }
    const LaunchOptions options = ParseCommandLine(arguments);
    Require(options.openThemePath.empty() || options.openMacroPath.empty());
    const bool mayOpen = options.mode == LaunchMode::MainProcess || options.mode == LaunchMode::Timeline;
    Require(mayOpen || (options.openThemePath.empty() && options.openMacroPath.empty()));
    Require(options.selftestUpdate || options.mode != LaunchMode::SelfTestUpdate);
    Require(options.validateTheme || options.mode != LaunchMode::ValidateTheme);
    Require(options.validateMacro || options.mode != LaunchMode::ValidateMacro);
    Require(options.scanMacro || options.mode != LaunchMode::ScanMacro);
    Require(options.childLine.empty() || options.mode == LaunchMode::Child);
}

// Whichever arguments a command accepts, the settings can be written and read again.
void RequireSettingsRoundTrip(const std::string& text) {
    const std::string argument = ArgText(text);
    Require(argument.find_first_of("[]\"") == std::string::npos);
    for (void (*command)(std::string_view) :
         {UpdateAutoclickerSettings, UpdateKeySpammerSettings, UpdateMacroSettings, SetHoldMode,
          SetKeySpammerChord, ReassignKey}) {
        try {
            command(argument);
        } catch (const NumberError&) {
            continue;
        }
    }
    const std::string line = BuildSettingsLine();
    ResetEngineState();
    ApplySettingsLine(line);
    Require(BuildSettingsLine() == line);
}

void RequirePathRoundTrip(const std::string& text) {
    const std::string path = PathOfFileUri(text);
    Require(path.empty() || path.front() == '/');
    std::string uri = "file:///";
    bool isPath = true;
    for (const char byte : text) {
        char escape[4];
        std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned char>(byte));
        uri += escape;
        isPath = isPath && byte != '\0';
    }
    Require(PathOfFileUri(uri) == (isPath ? "/" + text : ""));
}

void RequireOwnEntryMatches(const std::string& text) {
    AutostartEntryStands(text, "/opt/varnelle");
    const std::string entry = AutostartEntryText("/" + text);
    Require(AutostartEntryStands(entry, "/" + text));
    Require(!AutostartEntryStands(entry, "/" + text + "x"));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    ResetEngineState();
    RequireOneRole(text);
    RequireSettingsRoundTrip(text);
    RequirePathRoundTrip(text);
    RequireOwnEntryMatches(text);
    const std::string shown = ValidUtf8(text);
    Require(ValidUtf8(shown) == shown && shown.size() >= text.size() && shown.size() <= 3 * text.size());
    return 0;
}
