// The preferences of the program, as opposed to those of a macro or a tool, in "appsettings.txt" in the data folder.
// UI thread, and LoadAppSettings before the threads start, so there is no lock. The three switches that other threads
// read (hotkeysEnabled, lockOn, stopToolsWithMacro) live in the engine state and are only read and written here.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

struct AppSettings {
    bool alwaysOnTop = false;      // main window stays on top
    bool launchOnStartup = false;  // start when the user logs in
    bool startMinimized = false;
    bool disableAnimations = false;         // for the page
    bool showWarnings = true;               // for the page
    std::set<std::string> seenWarnings;     // warning ids that were dismissed; the page owns the ids
    std::set<std::string> minimizedPanels;  // ids of collapsed panels
    std::vector<std::string> panelOrder;    // panel ids, some may be missing; empty is the default order
    int32_t windowX = 0;                    // main window, outer rectangle in physical pixels
    int32_t windowY = 0;
    int32_t windowWidth = 420;
    int32_t windowHeight = 560;
    bool windowMaximized = false;
    bool windowPositionKnown = false;  // not stored: a corner was read, or the window was placed
};

extern AppSettings appSettings;

// Returns true for the id of one of the page's five panels.
bool IsPanelId(std::string_view text);
// Reads a comma list of panel ids and skips empty parts. Returns false, with *order unchanged, if one is unknown or
// repeated.
bool ParsePanelOrder(std::string_view text, std::vector<std::string>* order);

// Loads the settings that the file contains; the others stay. Skips malformed lines.
void LoadAppSettings();
// Rewrites the file. Does nothing if it cannot be written.
void SaveAppSettings();

// Returns the whole content of the file for the current settings, and reads it as LoadAppSettings does.
std::string BuildAppSettingsText();
void ApplyAppSettingsText(std::string_view text);

// Returns the settings report for the page, without the window's placement. Ids are not escaped.
std::string AppSettingsReport();

// Stores one setting by the name that the page uses, which may be "min:" and a panel id. Ignores an unknown name.
// Neither saves nor applies the setting.
void StoreAppSetting(std::string_view key, bool value);

// The page's command: remembers a dismissed warning, and saves if it is new. Ignores an empty id.
void MarkWarningSeen(std::string_view id);
// The page's command: stores a comma list of panel ids as the order and saves it. Ignores an invalid list.
void SetPanelOrder(std::string_view text);
