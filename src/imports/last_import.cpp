#include "imports/last_import.h"

#include "base/json_writer.h"
#include "base/mutex.h"
#include "editing/macro_history.h"
#include "editing/profiles.h"
#include "storage/settings_text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

struct LastImport {
    uint64_t id = 0;
    const char* outcome = "none";  // none, imported, pending, failed
    ImportProblem problem = ImportProblem::None;
    ImportFacts facts;
    ImportedProfile profile;
    std::string pendingId;  // while it is pending
};

Mutex lastImportMutex;
LastImport lastImport GUARDED_BY(lastImportMutex);

// Indexed by ImportProblem.
constexpr const char* kProblemWords[] = {"", "notFound", "unreadable", "tooLarge", "oldFormat", "noName"};

// Replaces the last import by a new one.
void Begin(const char* outcome, ImportFacts facts) REQUIRES(lastImportMutex) {
    const uint64_t id = lastImport.id + 1;
    lastImport = LastImport();
    lastImport.id = id;
    lastImport.outcome = outcome;
    lastImport.facts = std::move(facts);
}

bool IsCurrentProfile(uint64_t id) {
    MutexLock lock(macroMutex);
    Profile* current = CurrentProfile();
    return current != nullptr && id != 0 && ProfileId(*current) == id;
}

LastImport CopyOfLastImport() {
    MutexLock lock(lastImportMutex);
    return lastImport;
}

bool IsUsable(const LastImport& last) {
    return !last.facts.settings.empty() && IsCurrentProfile(last.profile.id);
}

}  // namespace

std::string FileNameOf(const std::string& path) {
    const size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

ImportFacts FactsOfImport(const std::string& path, const ParsedMacro& macro) {
    ImportFacts facts{path, macro.name, macro.settings, macro.events.size(), macro.skippedLines, 0};
    for (const UnifiedEvent& event : macro.events) {
        if (std::isfinite(event.time)) {
            facts.seconds = std::max(facts.seconds, event.time);
        }
    }
    return facts;
}

void NoteImportFailed(const std::string& path, ImportProblem problem) {
    MutexLock lock(lastImportMutex);
    Begin("failed", {.path = path, .name = {}, .settings = {}});
    lastImport.problem = problem;
}

void NoteImportDone(ImportFacts facts, const ImportedProfile& profile) {
    MutexLock lock(lastImportMutex);
    Begin("imported", std::move(facts));
    lastImport.profile = profile;
}

void NoteImportPending(ImportFacts facts, const std::string& pendingId) {
    MutexLock lock(lastImportMutex);
    Begin("pending", std::move(facts));
    lastImport.profile.name = lastImport.facts.name;
    lastImport.pendingId = pendingId;
}

void NotePendingConfirmed(std::string_view pendingId, const ImportedProfile& profile) {
    MutexLock lock(lastImportMutex);
    if (!pendingId.empty() && lastImport.pendingId == pendingId) {
        lastImport.outcome = "imported";
        lastImport.profile = profile;
        lastImport.pendingId.clear();
    }
}

void NotePendingDropped(std::string_view pendingId) {
    MutexLock lock(lastImportMutex);
    if (!pendingId.empty() && lastImport.pendingId == pendingId) {
        lastImport.outcome = "none";
        lastImport.facts.settings.clear();
        lastImport.pendingId.clear();
    }
}

std::string LastImportReport() {
    const LastImport last = CopyOfLastImport();
    std::string report;
    JsonWriter json(report);
    json.BeginObject();
    json.IntField("id", static_cast<int64_t>(last.id));
    json.PlainTextField("outcome", last.outcome);
    json.PlainTextField("problem", kProblemWords[static_cast<size_t>(last.problem)]);
    json.TextField("file", FileNameOf(last.facts.path));
    json.TextField("profile", last.profile.name);
    json.IntField("events", static_cast<int64_t>(last.facts.events));
    json.IntField("skippedLines", static_cast<int64_t>(last.facts.skippedLines));
    json.RealField("seconds", last.facts.seconds);
    json.BoolField("fileSettings", !last.facts.settings.empty());
    json.BoolField("settingsUsable", IsUsable(last));
    json.EndObject();
    return report;
}

bool UseImportedSettings() {
    const LastImport last = CopyOfLastImport();
    if (!IsUsable(last)) {
        return false;
    }
    ApplyStoredSettings(last.facts.settings);
    SyncProfileSettings();
    return true;
}

void ResetLastImport() {
    MutexLock lock(lastImportMutex);
    lastImport = LastImport();
}
