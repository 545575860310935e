// Measures the cost of a scan for each key press, on the worst macro found for each scenario: one that keeps the scan
// busy to the end and never matches. Compares it with the plain form that tries every start from scratch; that form is
// far too slow for a million presses and is measured on 10 thousand. Growth is the cost of a press at a million against
// 10 thousand. A factor of up to about two comes from the memory, because a million presses do not fit in the
// processor's cache. In the rows "late" and "fall" the macro contains the whole pattern, but the end of each occurrence
// exceeds the scenario's limit in seconds.
// Usage: scan_bench
#include "../tests/unit/reference_scanner.cpp"

#include "scan/scenarios.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <vector>

namespace {

constexpr size_t kSmall = 10000;
constexpr size_t kLarge = 1000000;
constexpr int kRounds = 3;

struct Worst {
    uint32_t modifier;  // held throughout; 0 for none
    uint32_t vk;        // pressed repeatedly
    double step;        // seconds between presses
};

// In the order of the scenarios. The last one matches any key with Windows held, so its row holds nothing.
constexpr Worst kWorst[] = {
    {91, 82, 0.01}, {91, 82, 0.01}, {91, 88, 0.01}, {0, 91, 0.01},  {17, 67, 0.01}, {0, 44, 0.01},
    {17, 65, 0.01}, {16, 65, 0.01}, {17, 65, 0.01}, {17, 76, 0.01}, {17, 67, 0.01}, {0, 65, 1.0},
    {17, 87, 31.0}, {17, 27, 0.01}, {18, 9, 6.0},   {0, 65, 0.01},
};

constexpr double kTooLate = 1000;  // seconds, beyond every limit

struct Late {
    const char* id;             // of the scenario
    const char* name;           // of the row
    uint32_t modifier;          // held throughout; 0 for none
    uint32_t vk;                // pressed repeatedly at one time
    std::vector<uint32_t> end;  // pressed once, too late
    bool falling;               // all but the first presses are too late, each one less than the one before
};

const std::vector<Late> kLate = {
    {"open-address", "open-address, late", 0, 117, {65, 13}, false},
    {"open-address", "open-address, fall", 0, 117, {65, 13}, true},
    {"copy-paste", "copy-paste, late", 17, 67, {86}, false},
    {"copy-paste", "copy-paste, fall", 17, 67, {86}, true},
    {"type-and-send", "type-and-send, late", 0, 65, {13}, false},
};

std::vector<UnifiedEvent> Presses(const Worst& worst, size_t count) {
    std::vector<UnifiedEvent> events;
    UnifiedEvent event;
    event.type = EvKey;
    event.down = true;
    if (worst.modifier != 0) {
        event.virtualKey = worst.modifier;
        events.push_back(event);
    }
    event.virtualKey = worst.vk;
    while (events.size() < count) {
        event.time += worst.step;
        events.push_back(event);
    }
    return events;
}

std::vector<UnifiedEvent> Presses(const Late& late, size_t count) {
    constexpr size_t kBeginnings = 501;  // behind the modifier
    std::vector<UnifiedEvent> events = Presses(Worst{late.modifier, late.vk, 0}, count - late.end.size());
    double time = kTooLate * 2;
    for (size_t i = kBeginnings; late.falling && i < events.size(); ++i) {
        // No longer a start of the pattern: all starts are used up.
        events[i].time = time;
        time -= kTooLate / static_cast<double>(kLarge);
    }
    for (const uint32_t vk : late.end) {
        UnifiedEvent event = events.back();
        event.virtualKey = vk;
        event.time = kTooLate;
        events.push_back(event);
    }
    return events;
}

// Returns nanoseconds of processor time for each press. Scans a short list often enough to measure it. The shortest
// round counts, because a busy machine only adds time.
double PerPress(size_t count, size_t times, const std::function<bool()>& scan) {
    double best = 0;
    for (int round = 0; round < kRounds; ++round) {
        const std::clock_t begin = std::clock();
        for (size_t i = 0; i < times; ++i) {
            if (scan()) {
                std::fprintf(stderr, "scan_bench: a macro that must not match does\n");
                std::exit(1);
            }
        }
        const double taken = 1e9 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
        best = round == 0 ? taken : std::min(best, taken);
    }
    return best / static_cast<double>(count * times);
}

void PrintRow(const char* name, size_t scenario,
              const std::function<std::vector<UnifiedEvent>(size_t)>& presses) {
    const auto ours = [&](size_t count) {
        const std::vector<UnifiedEvent> events = presses(count);
        const auto keys = MacroScan::NormaliseKeys(events);
        return PerPress(count, kLarge / count,
                        [&] { return MacroScan::Scenarios()[scenario].match(keys).matched; });
    };
    const auto keys = ReferenceScanner::Normalise(presses(kSmall));
    const double plain =
        PerPress(kSmall, 1, [&] { return ReferenceScanner::Scenarios()[scenario].match(keys).matched; });
    const double small = ours(kSmall);
    const double large = ours(kLarge);
    std::printf("%-20s | %12.1f | %12.1f | %15.1f | %.2f\n", name, small, large, plain, large / small);
}

}  // namespace

int main() {
    std::printf("%-20s | %12s | %12s | %15s | %s\n", "ns for each press", "10 thousand", "a million",
                "plain, 10 thous.", "growth");
    const auto& scenarios = MacroScan::Scenarios();
    for (size_t i = 0; i < scenarios.size(); ++i) {
        PrintRow(scenarios[i].id.c_str(), i, [&](size_t count) { return Presses(kWorst[i], count); });
    }
    for (const Late& late : kLate) {
        const auto found = std::find_if(scenarios.begin(), scenarios.end(),
                                        [&](const auto& scenario) { return scenario.id == late.id; });
        PrintRow(late.name, static_cast<size_t>(found - scenarios.begin()),
                 [&](size_t count) { return Presses(late, count); });
    }
    return 0;
}
