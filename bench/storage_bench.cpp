// How fast a large macro is read, written, saved and listed, beside the plain iostream way of doing the same, which is
// kept here as the yardstick. Prints one table of `name | ours | yardstick | ratio`, all measured in this one run.
// Usage: storage_bench
#include "base/json_writer.h"
#include "base/numbers.h"
#include "editing/event_list.h"
#include "model/engine_state.h"
#include "platform/files.h"
#include "storage/data_folder.h"
#include "storage/macro_file.h"
#include "storage/session.h"
#include "storage/session_file.h"
#include "storage/settings_text.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr size_t kSmall = 10000;
constexpr size_t kLarge = 1000000;

// Returns a recording like a user's: mostly pointer moves a few milliseconds apart, some keys, clicks and wheel.
std::vector<UnifiedEvent> Recording(size_t count) {
    std::mt19937 random(1);
    std::vector<UnifiedEvent> events(count);
    double time = 0;
    for (UnifiedEvent& event : events) {
        time += 0.0005 + 0.008 * static_cast<double>(random() % 1000) / 1000;
        event.time = time;
        switch (random() % 16) {
        case 0:
            event.type = EvKey;
            event.virtualKey = static_cast<uint32_t>(65 + random() % 26);
            event.down = random() % 2 == 0;
            break;
        case 1:
            event.type = EvMouseButton;
            event.x = static_cast<int32_t>(random() % 1920);
            event.y = static_cast<int32_t>(random() % 1080);
            event.flags = random() % 2 == 0 ? 2 : 4;
            break;
        case 2:
            event.type = EvScroll;
            event.wheel = random() % 2 == 0 ? 120 : -120;
            break;
        default:
            event.type = EvAbsMove;
            event.x = static_cast<int32_t>(random() % 1920);
            event.y = static_cast<int32_t>(random() % 1080);
        }
    }
    return events;
}

double Milliseconds(const std::function<void()>& body) {
    const auto begin = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

struct Row {
    const char* name;
    double ours = 0;
    double yardstick = 0;
};

// Times both in turn, so that a busy machine slows both. The shortest run of each counts: other load only adds time.
Row Measure(const char* name, const std::function<void()>& ours, const std::function<void()>& yardstick) {
    constexpr int kRounds = 4;
    constexpr int kOurRunsARound = 3;
    Row row{name, 1e12, yardstick ? 1e12 : 0};
    for (int round = 0; round < kRounds; ++round) {
        for (int run = 0; run < kOurRunsARound; ++run) {
            row.ours = std::min(row.ours, Milliseconds(ours));
        }
        if (yardstick) {
            row.yardstick = std::min(row.yardstick, Milliseconds(yardstick));
        }
    }
    return row;
}

// Ends the benchmark if a result is wrong: its times would mean nothing.
void Require(bool good, const char* what) {
    if (!good) {
        std::fprintf(stderr, "storage_bench: wrong result of %s\n", what);
        std::exit(1);
    }
}

// The yardstick: the same formats by getline, string streams, the sto functions and operator<<.

void PlainWriteEvents(std::ostream& out, const std::vector<UnifiedEvent>& events) {
    for (const UnifiedEvent& event : events) {
        out << static_cast<int>(event.type) << ',' << event.time << ',' << event.x << ',' << event.y << ','
            << event.flags << ',' << static_cast<int>(event.virtualKey) << ',' << (event.down ? 1 : 0) << ','
            << event.wheel << '\n';
    }
}

void PlainWriteMacro(const std::string& path, const Profile& profile) {
    std::ofstream out(path);
    out << profile.name << '\n' << "SETTINGS:" << BuildSettingsLine() << '\n';
    PlainWriteEvents(out, profile.events);
}

void PlainSaveSession(const std::string& path) {
    std::ostringstream text;
    text << "SETTINGS:" << BuildSettingsLine() << '\n';
    MutexLock lock(macroMutex);
    text << "CURRENT:" << macroState.currentProfile << '\n';
    for (const Profile& profile : macroState.profiles) {
        text << "PROFILE:" << profile.name << '\n';
        if (!profile.settings.empty()) {
            text << "PROFILESETTINGS:" << profile.settings << '\n';
        }
        PlainWriteEvents(text, profile.events);
    }
    std::ofstream out(path);
    out << text.str();
}

bool PlainReadEvent(const std::string& line, UnifiedEvent* event) {
    std::stringstream fields(line);
    std::string field;
    const auto next = [&] { return static_cast<bool>(std::getline(fields, field, ',')); };
    try {
        next();
        event->type = static_cast<uint32_t>(std::stoi(field));
        next();
        event->time = std::stod(field);
        next();
        event->x = static_cast<int32_t>(std::stol(field));
        next();
        event->y = static_cast<int32_t>(std::stol(field));
        next();
        event->flags = static_cast<uint32_t>(std::stoul(field));
        next();
        event->virtualKey = static_cast<uint32_t>(std::stoi(field));
        next();
        event->down = std::stoi(field) != 0;
        if (next()) {
            event->wheel = std::stoi(field);
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

// Reads either file; its first `headLines` lines are not measured.
std::vector<UnifiedEvent> PlainRead(const std::string& path, int headLines) {
    std::ifstream in(path);
    std::string line;
    std::vector<UnifiedEvent> events;
    for (int i = 0; i < headLines; ++i) {
        std::getline(in, line);
    }
    while (std::getline(in, line)) {
        if (UnifiedEvent event; PlainReadEvent(line, &event)) {
            events.push_back(event);
        }
    }
    return events;
}

std::string PlainEventsJson(const std::vector<UnifiedEvent>& events) {
    std::ostringstream json;
    json << '[';
    for (size_t i = 0; i < events.size(); ++i) {
        json << (i > 0 ? "," : "") << "{\"id\":" << i << ",\"time\":" << std::to_string(events[i].time)
             << ",\"desc\":\"" << EventDescription(events[i]) << "\"}";
    }
    json << ']';
    return json.str();
}

// The event list by JsonWriter, which writes all other reports. The hand-written form must be at least 1.5 times as fast.
std::string WriterEventsJson(const std::vector<UnifiedEvent>& events) {
    constexpr size_t kUsualEventJson = 72;
    constexpr size_t kLongestTime = 400;
    std::string text;
    text.reserve(events.size() * kUsualEventJson);
    JsonWriter json(text);
    json.BeginArray();
    for (size_t i = 0; i < events.size(); ++i) {
        json.BeginObject();
        json.IntField("id", static_cast<int64_t>(i));
        char time[kLongestTime];
        char* const end =
            std::to_chars(time, time + kLongestTime, events[i].time, std::chars_format::fixed, 6).ptr;
        json.Key("time");
        text.append(time, end);
        text += ',';
        json.PlainTextField("desc", EventDescription(events[i]));
        json.EndObject();
    }
    json.EndArray();
    return text;
}

void SetStore(const std::vector<UnifiedEvent>& events) {
    MutexLock lock(macroMutex);
    macroState.profiles = {{DefaultProfileName, BuildProfileSettings(), events}};
    macroState.currentProfile = 0;
}

// Measures all rows at one size. The growth rows need no yardstick.
std::vector<Row> MeasureSize(const fs::path& folder, size_t count, bool withYardstick) {
    const Profile profile{"Bench", "", Recording(count)};
    const std::string ours = (folder / "ours.vrlmacro").string();
    const std::string plain = (folder / "plain.vrlmacro").string();
    const std::string plainSession = (folder / "plain.dat").string();
    const auto yardstick = [withYardstick](const std::function<void()>& body) {
        return withYardstick ? body : std::function<void()>();
    };
    const auto requireSameFiles = [withYardstick](const std::string& a, const std::string& b,
                                                  const char* what) {
        std::string bytesOfA;
        std::string bytesOfB;
        Require(!withYardstick ||
                    (ReadFileBytes(a, &bytesOfA) && ReadFileBytes(b, &bytesOfB) && bytesOfA == bytesOfB),
                what);
    };
    std::vector<Row> rows;

    rows.push_back(Measure(
        "macro file write", [&] { WriteMacroFile(ours, profile); },
        yardstick([&] { PlainWriteMacro(plain, profile); })));
    requireSameFiles(ours, plain, "writing");

    std::vector<UnifiedEvent> events;
    std::vector<UnifiedEvent> plainEvents;
    rows.push_back(Measure(
        "macro file read",
        [&] {
            ParsedMacro parsed;
            Require(ReadMacroFile(ours, &parsed).empty(), "reading");
            events = std::move(parsed.events);
        },
        yardstick([&] { plainEvents = PlainRead(ours, 2); })));
    Require(events.size() == count && (!withYardstick || events == plainEvents), "reading");

    SetStore(profile.events);
    // A save of an unchanged session writes nothing, so each run changes a setting.
    const auto saveChanged = [] {
        autoclickerSettings.fixedX = autoclickerSettings.fixedX + 1;
        SaveSession();
    };
    rows.push_back(Measure("session save", saveChanged, yardstick([&] { PlainSaveSession(plainSession); })));
    // The price of the recovery file: two writes and a checksum in place of one write.
    std::string text;
    Require(ReadFileBytes(SessionPath(), &text), "saving");
    const auto writeBoth = [&text] {
        text.front() = text.front() == 'S' ? 's' : 'S';  // an unchanged text is not written
        Require(WriteSessionFile(text) == FileResult::Done, "a write");
    };
    rows.push_back(Measure("session and recovery file, beside one file", writeBoth, yardstick([&] {
                               Require(WriteStateFileToDisk(plainSession, text) == FileResult::Done,
                                       "a write");
                           })));
    SaveSession();
    rows.push_back(
        Measure("session save, unchanged", SaveSession, yardstick([&] { PlainSaveSession(plainSession); })));
    requireSameFiles(SessionPath(), plainSession, "saving");

    rows.push_back(Measure(
        "session load", [] { Require(LoadSession().loaded, "loading"); },
        yardstick([&] { plainEvents = PlainRead(SessionPath(), 4); })));

    std::string json;
    std::string plainJson;
    rows.push_back(Measure(
        "event list JSON", [&] { AppendMacroEventsJson(profile.events, 0, json); },
        yardstick([&] { plainJson = PlainEventsJson(profile.events); })));
    Require(!withYardstick || json == plainJson, "listing");

    rows.push_back(Measure(
        "event list JSON, beside JsonWriter", [&] { AppendMacroEventsJson(profile.events, 0, json); },
        yardstick([&] { plainJson = WriterEventsJson(profile.events); })));
    Require(!withYardstick || json == plainJson, "listing by the writer");
    return rows;
}

// Prints what one number costs, beside the library function that does the same. A short path of base/numbers.cpp must be
// at least 1.5 times as fast.
void PrintNumberCosts() {
    const std::vector<UnifiedEvent> events = Recording(kLarge);
    std::vector<char> text(kLarge * kStreamDoubleLength);
    std::vector<const char*> starts;
    char* end = text.data();
    for (const UnifiedEvent& event : events) {
        starts.push_back(end);
        end = WriteStreamDouble(end, event.time);
        *end++ = ',';
    }
    char buffer[kFixedDoubleLength];
    double sum = 0;  // keeps the compiler from dropping the work
    const Row rows[] = {
        Measure(
            "read a time",
            [&] {
                for (const char* start : starts) {
                    double value = 0;
                    ScanDouble(start, end, &value);
                    sum += value;
                }
            },
            [&] {
                for (const char* start : starts) {
                    double value = 0;
                    std::from_chars(start, end, value);
                    sum += value;
                }
            }),
        Measure(
            "write a time, six significant digits",
            [&] {
                for (const UnifiedEvent& event : events) {
                    sum += static_cast<double>(WriteStreamDouble(buffer, event.time) - buffer);
                }
            },
            [&] {
                for (const UnifiedEvent& event : events) {
                    sum += static_cast<double>(std::to_chars(buffer, buffer + sizeof(buffer), event.time,
                                                             std::chars_format::general, 6)
                                                   .ptr -
                                               buffer);
                }
            }),
        Measure(
            "write a time, six decimals",
            [&] {
                for (const UnifiedEvent& event : events) {
                    sum += static_cast<double>(WriteFixedDouble(buffer, event.time) - buffer);
                }
            },
            [&] {
                for (const UnifiedEvent& event : events) {
                    sum += static_cast<double>(std::to_chars(buffer, buffer + sizeof(buffer), event.time,
                                                             std::chars_format::fixed, 6)
                                                   .ptr -
                                               buffer);
                }
            }),
    };
    Require(sum > 0, "number");
    std::printf("\nNanoseconds a number | ours | from_chars, to_chars | ratio\n");
    for (const Row& row : rows) {
        // A million numbers: milliseconds of all are nanoseconds of one.
        std::printf("%s | %.0f | %.0f | %.1f\n", row.name, row.ours, row.yardstick, row.yardstick / row.ours);
    }
}

// What a save does while it holds macroMutex, by itself: a copy of the store into memory that is already there.
double MeasureLockHeld() {
    constexpr int kRuns = 10;
    double shortest = 1e12;
    for (int run = 0; run < kRuns; ++run) {
        std::vector<Profile> copy(1);
        copy[0].events.resize(kLarge);
        shortest = std::min(shortest, Milliseconds([&copy] {
                                MutexLock lock(macroMutex);
                                copy = macroState.profiles;
                            }));
    }
    return shortest;
}

// How long the refusal of a huge session and of a huge macro takes. Both are sparse files.
void PrintRefusals(const fs::path& folder) {
    constexpr uintmax_t kTwoGibibytes = uintmax_t{1} << 31;
    const std::string macro = (folder / "huge.vrlmacro").string();
    for (const std::string& path : {SessionPath(), macro}) {
        fs::remove(path);
        WriteFileBytes(path, "Huge\n");
        fs::resize_file(path, kTwoGibibytes);
    }
    fs::remove(DataFilePath("session-recovery.dat"));
    ParsedMacro parsed;
    const double ofMacro =
        Milliseconds([&] { Require(!ReadMacroFile(macro, &parsed).empty(), "a refusal"); });
    SessionLoad load;
    const double ofSession = Milliseconds([&] { load = LoadSession(); });
    Require(!load.loaded && load.damaged && !load.keptAs.empty(), "a refusal");
    std::printf("\nA file of 2 GiB is refused | session %.1f ms | macro %.1f ms\n", ofSession, ofMacro);
}

}  // namespace

int main() {
    const fs::path folder =
        fs::temp_directory_path() / ("varnelle-bench-" + std::to_string(std::random_device()()));
    fs::create_directory(folder);
    setenv("LOCALAPPDATA", folder.c_str(), 1);  // keeps the data of the user untouched
    CreateDataFolder();

    const std::vector<Row> small = MeasureSize(folder, kSmall, false);
    const std::vector<Row> large = MeasureSize(folder, kLarge, true);
    const double held = MeasureLockHeld();

    std::printf("A macro of a million events, shortest run, milliseconds | ours | yardstick | ratio\n");
    double save = 0;
    for (const Row& row : large) {
        std::printf("%s | %.1f | %.1f | %.1f\n", row.name, row.ours, row.yardstick, row.yardstick / row.ours);
        if (std::string_view(row.name) == "session save") {
            save = row.ours;
        }
    }
    std::printf("\nNanoseconds an event | of 10,000 | of 1,000,000 | growth (1 is linear)\n");
    for (size_t i = 0; i < large.size(); ++i) {
        const double each = small[i].ours * 1e6 / kSmall;
        const double eachOfMany = large[i].ours * 1e6 / kLarge;
        std::printf("%s | %.0f | %.0f | %.2f\n", large[i].name, each, eachOfMany, eachOfMany / each);
    }
    PrintNumberCosts();
    std::printf("\nLock held during a session save | %.1f ms | of %.1f ms | %.2f\n", held, save, held / save);
    PrintRefusals(folder);
    fs::remove_all(folder);
    return 0;
}
