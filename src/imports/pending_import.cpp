#include "imports/pending_import.h"

#include "base/json_writer.h"
#include "base/mutex.h"
#include "editing/macro_history.h"
#include "editing/profiles.h"
#include "engines/recorder.h"
#include "imports/last_import.h"
#include "imports/page_notice.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <utility>

namespace {

// Lock order: pendingMutex, then macroMutex, never the other way round. The page's lock may be taken under both.
Mutex pendingMutex;

struct PendingMacroImport {
    bool active = false;    // an import is pending; otherwise all fields are empty
    std::string pendingId;  // the id that the page must pass back
    std::string name;
    std::string settings;  // profile settings text, possibly empty
    std::vector<UnifiedEvent> events;
    std::string level;
    std::vector<MacroScan::ScanMatch> matches;
};
PendingMacroImport pendingMacroImport GUARDED_BY(pendingMutex);

// Returns 32 hex digits, each the top 4 bits of a random number.
std::string DrawPendingId() REQUIRES(pendingMutex) {
    static std::mt19937_64 generator{std::random_device{}()};
    constexpr int kLength = 32;
    std::string id;
    id.reserve(kLength);
    for (int i = 0; i < kLength; ++i) {
        id += "0123456789abcdef"[generator() >> 60];
    }
    return id;
}

std::string PendingDocument(const std::string& pendingId, const std::string& level,
                            const std::vector<MacroScan::ScanMatch>& matches) {
    std::string document;
    JsonWriter json(document);
    json.BeginObject();
    json.PlainTextField("outcome", "pending");
    json.PlainTextField("pendingId", pendingId);
    json.PlainTextField("level", level);
    json.BeginArrayField("matches");
    for (const MacroScan::ScanMatch& match : matches) {
        json.BeginObject();
        json.PlainTextField("severity", match.severity);
        json.TextField("message", match.message);
        // A file may contain any time, and JSON has no number for some: those findings get time 0.
        json.RealField("atSec", std::isfinite(match.atSec) ? match.atSec : 0.0);
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    return document;
}

using SummaryLane = std::array<int64_t, kSummaryParts>;

// A file may contain any time. An event that has no position in the summary counts at the start.
bool IsPlaceable(double time) {
    return std::isfinite(time) && time > 0;
}

void WriteLane(JsonWriter& json, std::string_view name, const SummaryLane& lane) {
    json.BeginArrayField(name);
    for (const int64_t count : lane) {
        json.Int(count);
    }
    json.EndArray();
}

std::string SummaryDocument(const PendingMacroImport& held) {
    double seconds = 0;
    for (const UnifiedEvent& event : held.events) {
        if (IsPlaceable(event.time)) {
            seconds = std::max(seconds, event.time);
        }
    }
    SummaryLane moves{};
    SummaryLane clicks{};
    SummaryLane keys{};
    for (const UnifiedEvent& event : held.events) {
        const double part = IsPlaceable(event.time) ? event.time / seconds * kSummaryParts : 0;
        const size_t index = static_cast<size_t>(std::min(part, kSummaryParts - 1.0));
        switch (event.type) {
        case EvAbsMove:
        case EvRelMove:
            ++moves[index];
            break;
        case EvMouseButton:
        case EvScroll:
            ++clicks[index];
            break;
        case EvKey:
            ++keys[index];
            break;
        default:
            break;
        }
    }
    std::string document;
    JsonWriter json(document);
    json.BeginObject();
    json.PlainTextField("pendingId", held.pendingId);
    json.TextField("name", held.name);
    json.IntField("events", static_cast<int64_t>(held.events.size()));
    json.RealField("seconds", seconds);
    WriteLane(json, "moves", moves);
    WriteLane(json, "clicks", clicks);
    WriteLane(json, "keys", keys);
    json.EndObject();
    return document;
}

bool IsPending(std::string_view id) REQUIRES(pendingMutex) {
    return pendingMacroImport.active && pendingMacroImport.pendingId == id;
}

// A running recording goes on in the new profile, after the imported events, which stay unchanged.
ImportedProfile AddImported(ParsedMacro macro) {
    const double clickGap = ClickGapSeconds();
    const size_t imported = macro.events.size();
    MutexLock lock(macroMutex);
    const int32_t before = macroState.currentProfile;
    AppendProfile(std::move(macro));  // without memory for it the recording goes on where it is
    MoveRecording(before, imported, clickGap);
    Profile& added = *CurrentProfile();
    return {added.name, ProfileId(added)};
}

}  // namespace

OfferResult OfferMacro(ParsedMacro macro, const std::string& path) {
    OfferResult result;
    MacroScan::ScanReport report = MacroScan::ScanMacro(macro.events);
    result.level = std::move(report.level);
    result.matches = std::move(report.matches);
    ImportFacts facts = FactsOfImport(path, macro);
    if (result.matches.empty()) {
        NoteImportDone(std::move(facts), AddImported(std::move(macro)));
        result.committed = true;
        return result;
    }
    MutexLock lock(pendingMutex);
    result.pendingId = DrawPendingId();
    NoteImportPending(std::move(facts), result.pendingId);
    pendingMacroImport = {true,
                          result.pendingId,
                          std::move(macro.name),
                          std::move(macro.settings),
                          std::move(macro.events),
                          result.level,
                          result.matches};
    return result;
}

std::string OfferDocument(const OfferResult& offer) {
    return offer.committed ? R"({"outcome":"imported"})"
                           : PendingDocument(offer.pendingId, offer.level, offer.matches);
}

void ConfirmMacroImport(std::string_view id) {
    MutexLock lock(pendingMutex);
    if (!IsPending(id)) {
        return;
    }
    PendingMacroImport confirmed = std::exchange(pendingMacroImport, {});
    NotePendingConfirmed(id, AddImported({std::move(confirmed.name), std::move(confirmed.settings),
                                          std::move(confirmed.events)}));
    NotifyPageProfileImported();
}

void CancelMacroImport(std::string_view id) {
    MutexLock lock(pendingMutex);
    if (IsPending(id)) {
        pendingMacroImport = {};
        NotePendingDropped(id);
    }
}

std::string GetPendingMacroImport() {
    MutexLock lock(pendingMutex);
    if (!pendingMacroImport.active) {
        return R"({"outcome":"none"})";
    }
    return PendingDocument(pendingMacroImport.pendingId, pendingMacroImport.level,
                           pendingMacroImport.matches);
}

std::string GetPendingMacroSummary() {
    MutexLock lock(pendingMutex);
    return pendingMacroImport.active ? SummaryDocument(pendingMacroImport) : "{}";
}
