// The preferences of the program, as opposed to those of a macro or a tool, in "appsettings.txt" in the data folder.
// UI thread, and LoadAppSettings before the threads start: no lock. The three switches that other threads read
// (hotkeysEnabled, lockOn, stopToolsWithMacro) live in the engine state and are only read and written here.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

struct AppSettings {
    bool alwaysOnTop = false;      // main window stays on top
    bool launchOnStartup = false;  // start when the person logs in
    bool startMinimized = false;
    bool disableAnimations = false;         // for the page
    bool showWarnings = true;               // for the page
    std::set<std::string> seenWarnings;     // warning ids that were dismissed; the page owns the ids
    std::set<std::string> minimizedPanels;  // ids of panels shown without their content
    std::vector<std::string> panelOrder;    // panel ids, may leave out some; empty is the page's own order
    int32_t windowX = 0;                    // main window, outer rectangle in physical pixels
    int32_t windowY = 0;
    int32_t windowWidth = 420;
    int32_t windowHeight = 560;
    bool windowMaximized = false;
    bool windowPositionKnown = false;  // not stored: a corner was read, or the window was placed
};

extern AppSettings appSettings;

// Whether this is the id of one of the page's five panels.
bool IsPanelId(std::string_view text);
// A comma list of panel ids; empty pieces are skipped. False, with *order untouched, if one is unknown or repeated.
bool ParsePanelOrder(std::string_view text, std::vector<std::string>* order);

// What the file says replaces what it names; everything else stays. A malformed line is skipped.
void LoadAppSettings();
// Rewrites the file. Silent where it cannot be written.
void SaveAppSettings();

// The file's whole content from the settings as they are, and back as LoadAppSettings takes it.
std::string BuildAppSettingsText();
void ApplyAppSettingsText(std::string_view text);

// The settings as the page reads them; the window's placement is not among them. Ids are not escaped.
std::string AppSettingsReport();

// Stores one setting under the name that the page has for it, "min:" and a panel id among them. Another name changes
// nothing. Neither saves nor carries out what the setting means.
void StoreAppSetting(std::string_view key, bool value);

// The page's command: a warning that was dismissed is remembered, an empty id is none. Saves if it is new.
void MarkWarningSeen(std::string_view id);
// The page's command: a comma list of panel ids becomes the order and is saved; one that is not valid does nothing.
void SetPanelOrder(std::string_view text);
