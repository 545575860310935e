// What a scan costs for each key press, on the worst kind of macro found for each scenario: one that keeps it looking
// to the end and never matches. Beside it the plain form that tries every start from scratch, which is far too slow for
// a million presses and is measured on 10 thousand. Growth is the cost of a press at a million against 10 thousand.
// Usage: scan_bench
#include "../tests/unit/scan_literal.cpp"

#include "scan/scenarios.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <vector>

namespace {

constexpr size_t kSmall = 10000;
constexpr size_t kLarge = 1000000;
constexpr int kRounds = 3;

struct Worst {
    uint32_t modifier;  // held all the way; 0 for none
    uint32_t vk;        // pressed again and again
    double step;        // seconds between presses
};

// In the order of the scenarios. The last one matches any key with Windows held, so nothing is held there.
constexpr Worst kWorst[] = {
    {91, 82, 0.01}, {91, 82, 0.01}, {91, 88, 0.01}, {0, 91, 0.01},  {17, 67, 0.01}, {0, 44, 0.01},
    {17, 65, 0.01}, {16, 65, 0.01}, {17, 65, 0.01}, {17, 76, 0.01}, {17, 67, 0.01}, {0, 65, 1.0},
    {17, 87, 31.0}, {17, 27, 0.01}, {18, 9, 6.0},   {0, 65, 0.01},
};

std::vector<UnifiedEvent> Presses(const Worst& worst, size_t count) {
    std::vector<UnifiedEvent> events;
    UnifiedEvent event;
    event.type = EvKey;
    event.down = true;
    if (worst.modifier != 0) {
        event.vk = worst.modifier;
        events.push_back(event);
    }
    event.vk = worst.vk;
    while (events.size() < count) {
        event.time += worst.step;
        events.push_back(event);
    }
    return events;
}

// Nanoseconds for each press: the shortest of the rounds, since a busy machine only ever adds.
double PerPress(size_t count, const std::function<bool()>& scan) {
    double best = 0;
    for (int round = 0; round < kRounds; ++round) {
        const auto begin = std::chrono::steady_clock::now();
        if (scan()) {
            std::fprintf(stderr, "scan_bench: a macro that must not match does\n");
            std::exit(1);
        }
        const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - begin;
        best = round == 0 ? taken.count() : std::min(best, taken.count());
    }
    return best / static_cast<double>(count);
}

double Ours(size_t row, size_t count) {
    const std::vector<UnifiedEvent> events = Presses(kWorst[row], count);
    const auto keys = MacroScan::NormaliseKeys(events);
    return PerPress(count, [&] { return MacroScan::Scenarios()[row].match(keys).matched; });
}

double Plain(size_t row, size_t count) {
    const auto keys = LiteralScan::Normalise(Presses(kWorst[row], count));
    return PerPress(count, [&] { return LiteralScan::Triggers()[row].match(keys).matched; });
}

}  // namespace

int main() {
    std::printf("%-20s | %12s | %12s | %15s | %s\n", "ns for each press", "10 thousand", "a million",
                "plain, 10 thous.", "growth");
    for (size_t row = 0; row < MacroScan::Scenarios().size(); ++row) {
        const double small = Ours(row, kSmall);
        const double large = Ours(row, kLarge);
        std::printf("%-20s | %12.1f | %12.1f | %15.1f | %.2f\n", MacroScan::Scenarios()[row].id.c_str(),
                    small, large, Plain(row, kSmall), large / small);
    }
    return 0;
}
