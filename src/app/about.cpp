#include "app/about.h"

#include "base/build_settings.h"
#include "base/json_writer.h"
#include "platform/process.h"
#include "platform/shell.h"
#include "storage/data_folder.h"

namespace {

struct Part {
    const char* name;
    const char* licence;
    const char* file;  // its text, in the folder of the licences
    bool windowsOnly;
};

// The parts of THIRD-PARTY.md that ship in the program folder.
constexpr Part kParts[] = {
    {"webview", "MIT", "webview.txt", false},
    {"Preact", "MIT", "preact.txt", false},
    {"Preact Signals", "MIT", "preact-signals.txt", false},
    {"Sortable", "MIT", "sortable.txt", false},
    {"Inter", "OFL 1.1", "inter.txt", false},
    {"mingw-w64", "permissive licences", "mingw-w64.txt", true},
    {"GCC run-time libraries", "GPL 3 with the run-time library exception", "gcc-runtime.txt", true},
};

const char* SessionWord(SessionKind session) {
    switch (session) {
    case SessionKind::Windows:
        return "windows";
    case SessionKind::Wayland:
        return "wayland";
    default:
        return "x11";
    }
}

}  // namespace

std::string AboutReport() {
    const SessionKind session = ReadSessionKind();
    const bool isWindows = session == SessionKind::Windows;
    std::string report;
    JsonWriter json(report);
    json.BeginObject();
    json.TextField("version", kProgramVersion);
    json.PlainTextField("platform", isWindows ? "windows" : "linux");
    json.PlainTextField("session", SessionWord(session));
    json.TextField("dataFolder", DataFolderPath());
    json.TextField("licenceFolder", ProgramDirectory() + kPathSeparator + "licenses");
    json.BeginArrayField("licences");
    for (const Part& part : kParts) {
        if (part.windowsOnly && !isWindows) {
            continue;
        }
        json.BeginObject();
        json.TextField("part", part.name);
        json.TextField("licence", part.licence);
        json.TextField("file", part.file);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    return report;
}

void OpenDataFolder() {
    CreateDataFolder();
    OpenFolder(DataFolderPath());
}
