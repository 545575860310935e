#include "storage/app_settings.h"

#include "base/json_writer.h"
#include "base/numbers.h"
#include "base/text.h"
#include "model/engine_state.h"
#include "platform/files.h"
#include "platform/hooks.h"
#include "storage/data_folder.h"

#include <algorithm>
#include <iterator>

AppSettings appSettings;

namespace {

constexpr const char* kSettingsFile = "appsettings.txt";
constexpr std::string_view kMinimisedPrefix = "min:";

constexpr std::string_view kPanelIds[] = {
    "panel-ui", "panel-profile", "panel-spammer", "panel-keyspam", "panel-tracker",
};

// A switch of the page, in the order of file and report. It is a field of appSettings or, if other threads read it, of
// engineState; the other pointer is null.
struct Switch {
    std::string_view fileKey;
    std::string_view pageKey;
    bool AppSettings::*field;
    std::atomic<bool> EngineState::*flag;

    bool Read() const { return field != nullptr ? appSettings.*field : (engineState.*flag).load(); }
    void Store(bool value) const {
        if (field != nullptr) {
            appSettings.*field = value;
        } else {
            engineState.*flag = value;
        }
    }
};

constexpr Switch kSwitches[] = {
    {"alwaysOnTop", "alwaysOnTop", &AppSettings::alwaysOnTop, nullptr},
    {"launchOnStartup", "launchOnStartup", &AppSettings::launchOnStartup, nullptr},
    {"startMinimized", "startMinimized", &AppSettings::startMinimized, nullptr},
    {"hotkeysEnabled", "hotkeysEnabled", nullptr, &EngineState::hotkeysEnabled},
    // Its three names are fixed: files and pages of every version use theirs.
    {"hotkeyLockOn", "hotkeyLock", nullptr, &EngineState::lockOn},
    {"stopToolsWithMacro", "stopToolsWithMacro", nullptr, &EngineState::stopToolsWithMacro},
    {"disableAnimations", "disableAnimations", &AppSettings::disableAnimations, nullptr},
    {"showWarnings", "showWarnings", &AppSettings::showWarnings, nullptr},
};

struct Number {
    std::string_view fileKey;
    int32_t AppSettings::*field;
};

constexpr Number kNumbers[] = {
    {"windowX", &AppSettings::windowX},
    {"windowY", &AppSettings::windowY},
    {"windowWidth", &AppSettings::windowWidth},
    {"windowHeight", &AppSettings::windowHeight},
};

// In the order of file and report, behind everything else in the file.
struct AdditionalNumber {
    std::string_view key;
    int32_t AppSettings::*field;
    int32_t least;
    int32_t most;

    // Stores a decimal number of the range, which must be the whole text.
    bool Store(std::string_view text) const {
        int32_t value = 0;
        if (!IsWholeInt(text) || !ParseInt(text, &value) || value < least || value > most) {
            return false;
        }
        appSettings.*field = value;
        return true;
    }
};

constexpr AdditionalNumber kAdditionalNumbers[] = {
    {"countdownSeconds", &AppSettings::countdownSeconds, 0, 10},
};

constexpr std::string_view kMaximisedKey = "windowMaximized";

void AppendLine(std::string& out, std::string_view key, std::string_view value) {
    out += key;
    out += '=';
    out += value;
    out += TextLineEnd();
}

std::string_view FileBool(bool value) {
    return value ? "1" : "0";
}

template <typename Texts> std::string Joined(const Texts& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        if (!joined.empty()) {
            joined += ',';
        }
        joined += text;
    }
    return joined;
}

// Ids are not escaped: the report's format says so.
template <typename Ids> void WriteIds(JsonWriter& json, std::string_view key, const Ids& ids) {
    json.BeginArrayField(key);
    for (const std::string& id : ids) {
        json.PlainText(id);
    }
    json.EndArray();
}

// Returns the pieces of a comma list for which `wanted` is true.
template <typename Wanted> std::set<std::string> ReadSet(std::string_view value, Wanted wanted) {
    std::set<std::string> pieces;
    for (const std::string_view piece : SplitParts(value, ',')) {
        if (wanted(piece)) {
            pieces.emplace(piece);
        }
    }
    return pieces;
}

void ApplyNumber(const Number& number, std::string_view value) {
    int32_t parsed = 0;
    if (!ParseInt(value, &parsed)) {
        return;
    }
    appSettings.*number.field = parsed;
    if (number.field == &AppSettings::windowX) {
        appSettings.windowPositionKnown = true;
    }
}

void ApplyLine(std::string_view key, std::string_view value) {
    for (const Switch& each : kSwitches) {
        if (key == each.fileKey) {
            each.Store(value == "1");
            return;
        }
    }
    for (const Number& each : kNumbers) {
        if (key == each.fileKey) {
            ApplyNumber(each, value);
            return;
        }
    }
    for (const AdditionalNumber& each : kAdditionalNumbers) {
        if (key == each.key) {
            each.Store(value);
            return;
        }
    }
    if (key == "seenWarnings") {
        appSettings.seenWarnings = ReadSet(value, [](std::string_view piece) { return !piece.empty(); });
    } else if (key == "minimizedPanels") {
        appSettings.minimizedPanels = ReadSet(value, IsPanelId);
    } else if (key == "panelOrder") {
        ParsePanelOrder(value, &appSettings.panelOrder);
    } else if (key == kMaximisedKey) {
        appSettings.windowMaximized = value == "1";
    }
}

}  // namespace

bool IsPanelId(std::string_view text) {
    return std::find(std::begin(kPanelIds), std::end(kPanelIds), text) != std::end(kPanelIds);
}

bool ParsePanelOrder(std::string_view text, std::vector<std::string>* order) {
    std::vector<std::string> parsed;
    for (const std::string_view piece : SplitParts(text, ',')) {
        if (piece.empty()) {
            continue;
        }
        if (!IsPanelId(piece) || std::find(parsed.begin(), parsed.end(), piece) != parsed.end()) {
            return false;
        }
        parsed.emplace_back(piece);
    }
    *order = std::move(parsed);
    return true;
}

void ApplyAppSettingsText(std::string_view text) {
    TextLines lines(text);
    std::string_view line;
    while (lines.Next(&line)) {
        const size_t equals = line.find('=');
        if (equals != std::string_view::npos) {
            ApplyLine(line.substr(0, equals), line.substr(equals + 1));
        }
    }
    HookInterestChanged();
}

std::string BuildAppSettingsText() {
    std::string text;
    for (const Switch& each : kSwitches) {
        AppendLine(text, each.fileKey, FileBool(each.Read()));
    }
    AppendLine(text, "seenWarnings", Joined(appSettings.seenWarnings));
    AppendLine(text, "minimizedPanels", Joined(appSettings.minimizedPanels));
    AppendLine(text, "panelOrder", Joined(appSettings.panelOrder));
    for (const Number& each : kNumbers) {
        std::string digits;
        AppendInt(digits, appSettings.*each.field);
        AppendLine(text, each.fileKey, digits);
    }
    AppendLine(text, kMaximisedKey, FileBool(appSettings.windowMaximized));
    const AppSettings defaults;
    for (const AdditionalNumber& each : kAdditionalNumbers) {
        if (appSettings.*each.field != defaults.*each.field) {
            std::string digits;
            AppendInt(digits, appSettings.*each.field);
            AppendLine(text, each.key, digits);
        }
    }
    return text;
}

void LoadAppSettings() {
    std::string text;
    if (ReadFileLimited(DataFilePath(kSettingsFile), kLargestFile, FileLinks::Refuse, &text) ==
        FileResult::Done) {
        ApplyAppSettingsText(text);
    }
}

void SaveAppSettings() {
    CreateDataFolder();
    WriteStateFile(DataFilePath(kSettingsFile), BuildAppSettingsText());
}

std::string AppSettingsReport() {
    std::string report;
    JsonWriter json(report);
    json.BeginObject();
    for (const Switch& each : kSwitches) {
        json.BoolField(each.pageKey, each.Read());
    }
    WriteIds(json, "seenWarnings", appSettings.seenWarnings);
    WriteIds(json, "minimizedPanels", appSettings.minimizedPanels);
    WriteIds(json, "panelOrder", appSettings.panelOrder);
    json.EndObject();
    return report;
}

std::string AdditionalSettingsReport() {
    std::string report;
    JsonWriter json(report);
    json.BeginObject();
    for (const AdditionalNumber& each : kAdditionalNumbers) {
        json.IntField(each.key, appSettings.*each.field);
    }
    json.EndObject();
    return report;
}

bool SetAdditionalSetting(std::string_view text) {
    const size_t comma = text.find(',');
    if (comma == std::string_view::npos) {
        return false;
    }
    for (const AdditionalNumber& each : kAdditionalNumbers) {
        if (text.substr(0, comma) == each.key && each.Store(text.substr(comma + 1))) {
            SaveAppSettings();
            return true;
        }
    }
    return false;
}

void StoreAppSetting(std::string_view key, bool value) {
    for (const Switch& each : kSwitches) {
        if (key == each.pageKey) {
            each.Store(value);
            return;
        }
    }
    if (!StartsWith(key, kMinimisedPrefix)) {
        return;
    }
    const std::string panel(key.substr(kMinimisedPrefix.size()));
    if (!IsPanelId(panel)) {
        return;
    }
    if (value) {
        appSettings.minimizedPanels.insert(panel);
    } else {
        appSettings.minimizedPanels.erase(panel);
    }
}

void MarkWarningSeen(std::string_view id) {
    if (!id.empty() && appSettings.seenWarnings.emplace(id).second) {
        SaveAppSettings();
    }
}

void SetPanelOrder(std::string_view text) {
    if (ParsePanelOrder(text, &appSettings.panelOrder)) {
        SaveAppSettings();
    }
}
