#include "app/app_settings_commands.h"

#include "base/build_settings.h"
#include "base/text.h"
#include "model/engine_state.h"
#include "platform/desktop.h"
#include "platform/hooks.h"
#include "platform/shell.h"
#include "storage/app_settings.h"
#include "windows/main_window.h"

void SetAppSetting(std::string_view text) {
    const std::vector<std::string_view> pieces = SplitParts(text, ',');
    if (pieces.size() != 2) {
        return;
    }
    const std::string_view key = pieces[0];
    const bool value = pieces[1] == "1";
    StoreAppSetting(key, value);
    if (key == "alwaysOnTop") {
        SetWindowOnTop(FindWindowByTitle(kMainWindowTitle), value);
    } else if (key == "launchOnStartup") {
        SetLaunchAtStartup(value);
    } else if (key == "hotkeyLock") {
        engineState.unlocked = true;  // switching the lock on or off never leaves the hotkeys locked
    }
    HookInterestChanged();
    SaveAppSettings();
}

void OpenLink(std::string_view word) {
    if (word == "docs") {
        OpenTarget(std::string(kDocumentationUrl));
    } else if (word == "discord") {
        OpenTarget(std::string(kCommunityUrl));
    }
}
