#include "storage/data_folder.h"

#include "base/mutex.h"
#include "base/text.h"
#include "platform/files.h"
#include "platform/process.h"

namespace {

constexpr const char* kSessionFile = "session.dat";
constexpr const char* kStatusMirror = "status.txt";
constexpr const char* kEventsMirror = "macroevents.txt";
constexpr const char* kPanelSettingsMirror = "panelsettings.txt";

// A panel's status while no status report exists: the shorter form of older versions.
constexpr const char* kIdleStatus =
    R"({"state":"Idle","count":0,"restore":[],"hkRec":"","hkPlay":"","hkAuto":"","hkKeySpam":"",)"
    R"("keySpamTargets":[],"keySpamChord":false,"ksCap":0,"reassigning":"","panelHover":false,)"
    R"("autoClicking":false,"keySpamming":false})";

// Set once at start-up. Empty: the session file in the data folder.
Mutex sessionPathMutex;
std::string sessionPath GUARDED_BY(sessionPathMutex);

std::string ProgramFilePath(const char* name) {
    return ProgramDirectory() + kPathSeparator + name;
}

std::string ReadMirror(const char* name, const char* otherwise) {
    std::string bytes;
    std::string_view line;
    if (ReadFileLimited(DataFilePath(name), kLargestFile, FileLinks::Refuse, &bytes) != FileResult::Done ||
        !TextLines(bytes).Next(&line) || line.empty()) {
        return otherwise;
    }
    return std::string(line);
}

bool WriteMirror(const char* name, std::string_view text) {
    CreateDataFolder();
    return WriteStateFile(DataFilePath(name), text) == FileResult::Done;
}

}  // namespace

std::string DataFolderPath() {
    return DataFolderRoot() + kPathSeparator + "Varnelle";
}

std::string DataFilePath(std::string_view name) {
    return (DataFolderPath() + kPathSeparator).append(name);
}

void CreateDataFolder() {
    CreatePrivateFolder(DataFolderPath());
}

bool AtomicWriteFile(const std::string& path, std::string_view bytes) {
    const std::string temporary = path + ".tmp";
    bool done = WriteStateFile(temporary, bytes) == FileResult::Done;
    if (done) {
        if (FileExists(path)) {
            RemoveFile(path);
        }
        done = MoveFileNoReplace(temporary, path);
    }
    if (!done && FileExists(temporary)) {
        RemoveFile(temporary);
    }
    return done;
}

void MigrateSessionFile() {
    CreateDataFolder();
    const std::string path = DataFilePath(kSessionFile);
    SetSessionPath(path);
    if (FileExists(path)) {
        return;
    }
    for (const std::string& older :
         {DataFilePath("session.vrlmacro"), DataFilePath("session.mcr"), ProgramFilePath("session.mcr")}) {
        if (FileExists(older)) {
            MoveFileNoReplace(older, path);
            if (!FileExists(path) && FileExists(older)) {
                SetSessionPath(older);
            }
            return;
        }
    }
}

void MigrateStateFile(const std::string& destination, const char* name) {
    const std::string older = ProgramFilePath(name);
    if (!FileExists(destination) && FileExists(older)) {
        MoveFileNoReplace(older, destination);
    }
}

void DeleteFromProgramFolder(const char* name) {
    RemoveFile(ProgramFilePath(name));
}

std::string SessionPath() {
    MutexLock lock(sessionPathMutex);
    return sessionPath.empty() ? DataFilePath(kSessionFile) : sessionPath;
}

void SetSessionPath(const std::string& path) {
    MutexLock lock(sessionPathMutex);
    sessionPath = path;
}

std::string ReadStatusMirror() {
    return ReadMirror(kStatusMirror, kIdleStatus);
}

bool WriteStatusMirror(std::string_view text) {
    return WriteMirror(kStatusMirror, text);
}

std::string ReadEventsMirror() {
    return ReadMirror(kEventsMirror, "[]");
}

bool WriteEventsMirror(std::string_view text) {
    return WriteMirror(kEventsMirror, text);
}

std::string ReadPanelSettings() {
    return ReadMirror(kPanelSettingsMirror, "{}");
}

bool WritePanelSettings(std::string_view text) {
    return WriteMirror(kPanelSettingsMirror, text);
}
