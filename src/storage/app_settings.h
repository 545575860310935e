// The preferences of the program, kept in "appsettings.txt" in the data folder. UI thread, and LoadAppSettings before the
// threads start: no lock. Three switches that other threads read (hotkeysEnabled, lockOn, stopToolsWithMacro) are fields
// of engineState; these functions load and store them too.
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
    std::set<std::string> seenWarnings;     // ids of dismissed warnings; the page defines the ids
    std::set<std::string> minimizedPanels;  // ids of panels shown without their content
    std::vector<std::string> panelOrder;    // panel ids, possibly not all; empty: the page's own order
    int32_t windowX = 0;                    // main window, outer rectangle in physical pixels
    int32_t windowY = 0;
    int32_t windowWidth = 420;
    int32_t windowHeight = 560;
    bool windowMaximized = false;
    int32_t countdownSeconds =
        3;  // for the page: before a tool starts that the page was asked to start; 0: none
    bool windowPositionKnown = false;  // not stored: windowX was read, or the window was placed
};

extern AppSettings appSettings;

// Returns whether `text` is the id of one of the page's five panels.
bool IsPanelId(std::string_view text);
// Parses a comma list of panel ids; empty pieces are skipped. Returns false, with *order unchanged, if an id is unknown
// or repeated.
bool ParsePanelOrder(std::string_view text, std::vector<std::string>* order);

// Reads the file. Settings that it does not name stay; a malformed line is skipped. A file that cannot be read changes
// nothing.
void LoadAppSettings();
// Rewrites the file. A failure is not reported.
void SaveAppSettings();

// Returns the whole content of the file for the current settings.
std::string BuildAppSettingsText();
// Stores the settings of such a text, as LoadAppSettings does.
void ApplyAppSettingsText(std::string_view text);

// Returns the settings as JSON for the page, without the window's placement. Ids are not escaped.
std::string AppSettingsReport();

// The additional settings: whole numbers that the report above does not have, and that stand in the file only where they
// differ from their default.
// Returns them as JSON for the page.
std::string AdditionalSettingsReport();
// "key,value": stores one and saves. Returns false, with nothing changed, for an unknown key, another text, or a number out
// of its range.
bool SetAdditionalSetting(std::string_view text);

// Stores the setting that the page calls `key`; "min:" with a panel id stores whether that panel is minimised. An
// unknown key changes nothing. Does not save, and does not apply the setting.
void StoreAppSetting(std::string_view key, bool value);

// Page command. Adds a warning to the dismissed ones and saves; an empty or known id changes nothing.
void MarkWarningSeen(std::string_view id);
// Page command. Stores a comma list of panel ids as the order and saves; an invalid list changes nothing.
void SetPanelOrder(std::string_view text);
