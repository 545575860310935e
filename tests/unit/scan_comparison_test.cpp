// Compares the scanner with its reference on random macros of the keys and the distances that scenarios check.
#include "random_sample.h"
#include "scan/scenarios.h"
#include "unit/reference_scanner.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <random>
#include <set>
#include <string>

namespace {

constexpr int kMacros = RandomRounds(24000);
constexpr int kLongMacros = RandomRounds(240);

class MacroMaker {
  public:
    explicit MacroMaker(uint32_t seed) : random_(seed) {}

    // Returns a uniform random number below `count`.
    uint32_t Below(uint32_t count) { return static_cast<uint32_t>(random_() % count); }

    std::vector<UnifiedEvent> Mixed() {
        events_.clear();
        time_ = 0;
        const uint32_t pace = Below(4);
        for (uint32_t left = Below(60); left > 0; --left) {
            Wait(pace);
            Event();
        }
        return events_;
    }

    // Returns a macro that repeats one first step, with a few other keys between, and an end that only some starts reach
    // in time.
    std::vector<UnifiedEvent> Repeating() {
        static constexpr uint32_t kFirst[] = {67, 88, 76, 65, 117, 44, 87, 82};
        events_.clear();
        time_ = 0;
        const uint32_t vk = kFirst[Below(8)];
        const uint32_t modifier = Below(4) == 0 ? 91 : 17;
        const bool bare = vk == 117 || vk == 44;
        const uint32_t presses = Below(3) == 0 ? Below(1200) : 496 + Below(9);
        for (uint32_t i = 0; i < presses; ++i) {
            if (!bare) {
                Key(modifier, true);
            }
            Key(vk, true);
            if (!bare) {
                Key(modifier, false);
            }
            time_ += Below(3) == 0 ? 61.0 : 31.0;
            if (Below(50) == 0) {
                Event();
            }
        }
        time_ -= Below(2) == 0 ? 31.0 : 0.0;
        for (uint32_t left = Below(12); left > 0; --left) {
            Wait(Below(4));
            Event();
        }
        return events_;
    }

  private:
    void Key(uint32_t vk, bool down) {
        UnifiedEvent event;
        event.type = EvKey;
        event.virtualKey = vk;
        event.down = down;
        event.time = time_;
        events_.push_back(event);
    }

    void Wait(uint32_t pace) {
        static constexpr double kLimits[] = {5.0,  10.0,  30.0,   60.0,   5.0 / 7, 0.625, 2.5,
                                             15.0, 5.001, 10.001, 30.001, 60.001,  20.0,  1.0};
        switch (Below(pace == 0 ? 3 : 12)) {
        case 0:
            time_ += kLimits[Below(std::size(kLimits))];
            break;
        case 1:
            if (pace == 3) {
                time_ -= kLimits[Below(std::size(kLimits))];
            }
            break;
        case 2:
            if (pace == 3 && Below(8) == 0) {
                static constexpr double kOdd[] = {
                    std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                    -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::max(), 0.0};
                time_ = kOdd[Below(std::size(kOdd))];
            }
            break;
        default:
            time_ += 0.5 * Below(2);
        }
    }

    // Adds the press of a key, alone or with modifiers that are usually released again; sometimes another event.
    void Event() {
        static constexpr uint32_t kKeys[] = {13, 13, 13, 86, 86, 67, 88, 82, 46, 8,   9,   27,
                                             44, 65, 76, 83, 87, 89, 71, 73, 84, 115, 117, 66};
        static constexpr uint32_t kModifiers[] = {17,  162, 163, 18, 164, 165, 16,
                                                  160, 161, 91,  92, 17,  18,  91};
        switch (Below(16)) {
        case 0: {
            UnifiedEvent other;
            other.type = Below(7);
            other.virtualKey = kKeys[Below(std::size(kKeys))];
            other.down = true;
            other.time = time_;
            events_.push_back(other);
            return;
        }
        case 1:
            Key(kModifiers[Below(std::size(kModifiers))], Below(3) == 0);
            return;
        case 2:
            Key(Below(256), Below(2) == 0);
            return;
        case 3:
            for (uint32_t left = 6 + Below(4); left > 0; --left) {
                Key(65 + Below(26), true);
                time_ += Below(2) == 0 ? 0.25 : 5.0 / 7;
            }
            return;
        case 4:
        case 5:
            for (uint32_t left = 2 + Below(3); left > 0; --left) {
                Key(18, true);
                Key(9, true);
                Key(18, false);
                Wait(0);
            }
            return;
        default:
            break;
        }
        const uint32_t held = Below(4);
        std::vector<uint32_t> modifiers;
        for (uint32_t i = 0; i < (held == 3 ? 2 : held == 0 ? 0 : 1); ++i) {
            modifiers.push_back(kModifiers[Below(std::size(kModifiers))]);
            Key(modifiers.back(), true);
        }
        Key(kKeys[Below(std::size(kKeys))], true);
        for (const uint32_t modifier : modifiers) {
            if (Below(20) != 0) {
                Key(modifier, false);
            }
        }
    }

    std::mt19937 random_;
    std::vector<UnifiedEvent> events_;
    double time_ = 0;
};

bool SameTime(double a, double b) {
    return a == b || (std::isnan(a) && std::isnan(b));
}

// Compares each scenario and the report. Returns the ids of the scenarios that matched.
std::set<std::string> Compare(const std::vector<UnifiedEvent>& events) {
    std::set<std::string> matched;
    const std::vector<MacroScan::KeyEv> keys = MacroScan::NormaliseKeys(events);
    const std::vector<ReferenceScanner::Key> referenceKeys = ReferenceScanner::Normalise(events);
    const auto& scenarios = MacroScan::Scenarios();
    for (size_t i = 0; i < scenarios.size(); ++i) {
        const ReferenceScanner::Scenario& scenario = ReferenceScanner::Scenarios().at(i);
        EXPECT_EQ(scenarios[i].id, scenario.id);
        EXPECT_EQ(scenarios[i].severity, scenario.severity);
        const MacroScan::SeqResult actual = scenarios[i].match(keys);
        const MacroScan::SeqResult expected = scenario.match(referenceKeys);
        EXPECT_EQ(actual.matched, expected.matched) << scenario.id;
        EXPECT_TRUE(SameTime(actual.atSec, expected.atSec)) << scenario.id << actual.atSec << expected.atSec;
        if (expected.matched) {
            matched.insert(scenario.id);
        }
    }
    EXPECT_EQ(MacroScan::ScanReportJson(MacroScan::ScanMacro(events)), ReferenceScanner::ReportJson(events));
    return matched;
}

}  // namespace

TEST(ScanComparison, ScenariosAgreeWithTheReferenceOnRandomMacros) {
    MacroMaker maker(7);
    std::map<std::string, int> matches;
    for (int i = 0; i < kMacros && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        for (const std::string& id : Compare(maker.Mixed())) {
            ++matches[id];
        }
    }
    // Each scenario matches often and fails often.
    for (const ReferenceScanner::Scenario& scenario : ReferenceScanner::Scenarios()) {
        EXPECT_GT(matches[scenario.id], kMacros / 200) << scenario.id;
        EXPECT_LT(matches[scenario.id], kMacros - kMacros / 200) << scenario.id;
    }
}

TEST(ScanComparison, ScenariosAgreeBeyondTheLimitOfAttempts) {
    MacroMaker maker(11);
    for (int i = 0; i < kLongMacros && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        Compare(maker.Repeating());
    }
}

// Predicates and spans that no scenario has, on few kinds of keys, so that long and short ranges overlap.
TEST(ScanComparison, MatchersAgreeWithTheReferenceOnRandomSteps) {
    MacroMaker maker(13);
    int matched = 0;
    for (int i = 0; i < kMacros && !HasFailure(); ++i) {
        SCOPED_TRACE(i);
        std::vector<UnifiedEvent> events(maker.Below(40));
        for (UnifiedEvent& event : events) {
            event.type = EvKey;
            event.down = true;
            event.virtualKey = 65 + maker.Below(3);
            event.time = maker.Below(40) == 0 ? std::nan("") : maker.Below(30);
        }
        std::vector<MacroScan::KeyPredicate> steps(1 + maker.Below(4));
        for (MacroScan::KeyPredicate& step : steps) {
            step = MacroScan::Combo({}, static_cast<int32_t>(65 + maker.Below(3)));
        }
        const double span = maker.Below(12);
        const auto keys = MacroScan::NormaliseKeys(events);
        const auto referenceKeys = ReferenceScanner::Normalise(events);
        const auto actual = MacroScan::MatchSequence(keys, steps, span);
        const auto expected = ReferenceScanner::Sequence(referenceKeys, steps, &span);
        EXPECT_EQ(actual.matched, expected.matched);
        EXPECT_TRUE(SameTime(actual.atSec, expected.atSec));
        matched += expected.matched ? 1 : 0;
        const size_t count = 1 + maker.Below(4);
        const auto actualWithin = MacroScan::CountWithin(keys, steps[0], count, span);
        const auto referenceWithin = ReferenceScanner::Within(referenceKeys, steps[0], count, span);
        EXPECT_EQ(actualWithin.matched, referenceWithin.matched);
        EXPECT_TRUE(SameTime(actualWithin.atSec, referenceWithin.atSec));
    }
    EXPECT_GT(matched, kMacros / 10);
    EXPECT_LT(matched, kMacros - kMacros / 10);
}
