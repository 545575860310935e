#include "app/progress_reports.h"

#include "base/json_writer.h"
#include "base/numbers.h"
#include "base/text.h"
#include "engines/hotkeys.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/clock.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

// Position of the playback in the macro's own time, seconds. A speed may be any number.
double PlaybackSeconds() {
    const int64_t ticks = ReadPerformanceCounter() - engineState.playRoundCounter;
    const double seconds =
        static_cast<double>(ticks) / static_cast<double>(engineState.counterFrequency.load());
    const double position = seconds * static_cast<double>(macroSettings.playbackSpeed.Get());
    return std::isfinite(position) ? std::max(position, 0.0) : 0.0;
}

struct MacroRows {
    uint64_t revision = 0;
    uint64_t rewritten = 0;
    size_t total = 0;
    std::vector<UnifiedEvent> events;
};

// Copies events of the current macro. Memory is reserved before the lock that copies, since a recording waits for it.
MacroRows CopyRows(size_t first, size_t count) {
    constexpr size_t kGrowth = 64;  // a recording may be adding events
    const auto countOf = [first, count](size_t total) {
        return std::min(count, total - std::min(first, total));
    };
    MacroRows rows;
    size_t needed = 0;
    {
        MutexLock lock(macroMutex);
        const Profile* profile = CurrentProfile();
        needed = profile == nullptr ? 0 : countOf(profile->events.size());
    }
    rows.events.reserve(needed + kGrowth);
    MutexLock lock(macroMutex);
    rows.revision = macroState.revision;
    rows.rewritten = macroState.rewrittenRevision;
    if (const Profile* profile = CurrentProfile()) {
        rows.total = profile->events.size();
        const auto begin = profile->events.begin() + static_cast<std::ptrdiff_t>(std::min(first, rows.total));
        rows.events.assign(begin, begin + static_cast<std::ptrdiff_t>(countOf(rows.total)));
    }
    return rows;
}

// Appends one row. By hand in place of JsonWriter: a macro may have a million events.
void AppendRow(std::string& out, const UnifiedEvent& event) {
    char row[8 * (kIntLength + 1) + kFixedDoubleLength + 2];
    char* at = row;
    const auto put = [&at](int64_t value) {
        *at++ = ',';
        at = WriteInt(at, value);
    };
    *at++ = '[';
    at = WriteInt(at, event.type);
    if (std::isfinite(event.time)) {
        *at++ = ',';
        at = WriteFixedDouble(at, event.time);
    } else {
        at = std::copy_n(",null", 5, at);
    }
    put(event.x);
    put(event.y);
    put(event.flags);
    put(event.virtualKey);
    put(event.down ? 1 : 0);
    put(event.wheel);
    *at++ = ']';
    out.append(row, at);
}

}  // namespace

std::string ProgressReport() {
    const bool recording = engineState.recording;
    const bool playing = engineState.playing && engineState.playRound > 0;
    std::string report;
    JsonWriter json(report);
    json.BeginObject();
    json.IntField("revision", static_cast<int64_t>(engineState.macroRevision.load()));
    json.IntField("rewritten", static_cast<int64_t>(engineState.macroRewrittenRevision.load()));
    json.IntField("clicks", engineState.autoClicking ? engineState.autoclickerCount.load() : 0);
    json.IntField("presses", engineState.keySpamming ? engineState.keySpammerCount.load() : 0);
    json.IntField("playRound", playing ? engineState.playRound.load() : 0);
    json.RealField("playSeconds", playing ? PlaybackSeconds() : 0.0);
    json.IntField("playEvent", playing ? engineState.playedEvents.load() : 0);
    json.RealField("recordSeconds", recording ? RecordingSeconds(ReadPerformanceCounter()) : 0.0);
    json.IntField("recordEvents", recording ? engineState.recordedEvents.load() : 0);
    json.BoolField("picking", engineState.pickingLocation);
    json.EndObject();
    return report;
}

std::string KeyNamesReport() {
    constexpr uint32_t kLastVirtualKey = 255;
    std::string report;
    JsonWriter json(report);
    json.BeginObject();
    for (uint32_t virtualKey = 1; virtualKey <= kLastVirtualKey; ++virtualKey) {
        const std::string name = EventKeyName(virtualKey);
        if (!name.empty()) {
            json.TextField(std::to_string(virtualKey), name);
        }
    }
    json.EndObject();
    return report;
}

std::string MacroRowsReport(std::string_view arguments) {
    const std::vector<std::string_view> fields = SplitParts(arguments, ',');
    int32_t first = 0;
    int32_t count = std::numeric_limits<int32_t>::max();
    if (!fields.empty()) {
        ParseInt(fields[0], &first);
    }
    if (fields.size() > 1) {
        ParseInt(fields[1], &count);
    }
    first = std::max(first, 0);
    const MacroRows rows = CopyRows(static_cast<size_t>(first), static_cast<size_t>(std::max(count, 0)));

    constexpr size_t kUsualRow = 40;
    std::string report;
    report.reserve(rows.events.size() * kUsualRow + 128);
    JsonWriter json(report);
    json.BeginObject();
    json.IntField("revision", static_cast<int64_t>(rows.revision));
    json.IntField("rewritten", static_cast<int64_t>(rows.rewritten));
    json.IntField("first", first);
    json.IntField("total", static_cast<int64_t>(rows.total));
    json.BeginArrayField("rows");
    for (size_t i = 0; i < rows.events.size(); ++i) {
        if (i > 0) {
            report += ',';
        }
        AppendRow(report, rows.events[i]);
    }
    json.EndArray();
    json.EndObject();
    return report;
}
