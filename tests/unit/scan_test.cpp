#include "scan/report.h"
#include "scan/scenarios.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace {

using MacroScan::AnyOf;
using MacroScan::Combo;
using MacroScan::HeldMods;
using MacroScan::KeyEv;
using MacroScan::KeyPredicate;
using MacroScan::ModAlt;
using MacroScan::ModCtrl;
using MacroScan::ModShift;
using MacroScan::ModWin;
using MacroScan::SeqResult;

constexpr uint32_t kCtrl = 162;
constexpr uint32_t kAlt = 164;
constexpr uint32_t kShift = 160;
constexpr uint32_t kWin = 91;

UnifiedEvent Event(double time, uint32_t vk, bool down) {
    UnifiedEvent event;
    event.type = EvKey;
    event.time = time;
    event.virtualKey = vk;
    event.down = down;
    return event;
}

class Macro {
  public:
    Macro& Down(double time, uint32_t vk) {
        events.push_back(Event(time, vk, true));
        return *this;
    }
    Macro& Up(double time, uint32_t vk) {
        events.push_back(Event(time, vk, false));
        return *this;
    }
    // Adds the modifiers down, the key down and up, and the modifiers up, all at one time.
    Macro& Tap(double time, std::initializer_list<uint32_t> modifiers, uint32_t vk) {
        for (const uint32_t modifier : modifiers) {
            Down(time, modifier);
        }
        Down(time, vk).Up(time, vk);
        for (const uint32_t modifier : modifiers) {
            Up(time, modifier);
        }
        return *this;
    }
    std::string Json() const { return ScanReportJson(MacroScan::ScanMacro(events)); }
    // Returns the ids of all scenarios that match, in table order and before suppression.
    std::string Matches() const {
        std::string ids;
        const std::vector<KeyEv> keys = MacroScan::NormaliseKeys(events);
        for (const MacroScan::Scenario& scenario : MacroScan::Scenarios()) {
            const SeqResult result = scenario.match(keys);
            EXPECT_TRUE(result.matched || result.atSec == 0);
            ids += result.matched ? (ids.empty() ? "" : " ") + scenario.id : "";
        }
        return ids;
    }

    std::vector<UnifiedEvent> events;
};

SeqResult Sequence(const Macro& macro, const std::vector<KeyPredicate>& steps,
                   std::optional<double> maxSpan = std::nullopt) {
    return MatchSequence(MacroScan::NormaliseKeys(macro.events), steps, maxSpan);
}

std::string One(const char* id, const char* severity, const char* time) {
    return std::string(R"({"id":")") + id + R"(","severity":")" + severity + R"(","atSec":)" + time + "}";
}

std::string Report(const char* level, const std::string& matches) {
    return std::string(R"({"level":")") + level + R"(","matches":[)" + matches + "]}";
}

}  // namespace

TEST(ScanKeys, AnEmptyMacroAndMouseEventsHaveNoKeys) {
    Macro macro;
    EXPECT_TRUE(MacroScan::NormaliseKeys(macro.events).empty());
    for (const uint32_t type : {0U, 1U, 2U, 4U, 5U, 6U}) {
        UnifiedEvent event = Event(1, 44, true);
        event.type = type;
        macro.events.push_back(event);
    }
    EXPECT_TRUE(MacroScan::NormaliseKeys(macro.events).empty());
    EXPECT_EQ(macro.Matches(), "");
    EXPECT_EQ(macro.Json(), Report("none", ""));
    EXPECT_EQ(Macro().Json(), Report("none", ""));
    EXPECT_FALSE(MacroScan::FindTypingBurst({}).found);
    EXPECT_FALSE(MacroScan::CountWithin({}, Combo({}, 65), 1, 1).matched);
}

TEST(ScanKeys, APressHasTheModifiersHeldBeforeIt) {
    Macro macro;
    macro.Down(0, kCtrl).Down(1, 67).Up(2, kCtrl).Down(3, 67);
    const auto keys = MacroScan::NormaliseKeys(macro.events);
    ASSERT_EQ(keys.size(), 3U);
    EXPECT_FALSE(keys[0].held.ctrl);  // its own press is not yet held
    EXPECT_TRUE(keys[1].held.ctrl);
    EXPECT_FALSE(keys[2].held.ctrl);
    EXPECT_EQ(&keys[1].event, &macro.events[1]);
}

TEST(ScanKeys, OneReleaseEndsBothSidesOfAFamily) {
    Macro macro;
    macro.Down(0, 162).Down(0, 163).Up(0, 163).Down(1, 67);
    const auto keys = MacroScan::NormaliseKeys(macro.events);
    ASSERT_EQ(keys.size(), 3U);
    EXPECT_TRUE(keys[1].held.ctrl);
    EXPECT_FALSE(keys[2].held.ctrl);
}

TEST(ScanKeys, AReleaseWithoutAPressIsIgnored) {
    Macro macro;
    macro.Up(0, kShift).Down(1, 65).Down(1, 65);
    const auto keys = MacroScan::NormaliseKeys(macro.events);
    ASSERT_EQ(keys.size(), 2U);  // a repeated press counts
    EXPECT_FALSE(keys[0].held.shift);
}

TEST(ScanKeys, EveryKeyHasItsModifierFamily) {
    for (uint32_t vk = 0; vk < 300; ++vk) {
        const bool ctrl = vk == 17 || vk == 162 || vk == 163;
        const bool alt = vk == 18 || vk == 164 || vk == 165;
        const bool shift = vk == 16 || vk == 160 || vk == 161;
        const bool win = vk == 91 || vk == 92;
        EXPECT_EQ(MacroScan::FamilyOfKey(vk), ctrl ? 1 : alt ? 2 : shift ? 3 : win ? 4 : 0) << vk;
    }
}

TEST(ScanPredicates, AComboMatchesExactlyItsModifiers) {
    const UnifiedEvent c = Event(0, 67, true);
    for (int bits = 0; bits < 16; ++bits) {
        const HeldMods held{(bits & 1) != 0, (bits & 2) != 0, (bits & 4) != 0, (bits & 8) != 0};
        EXPECT_EQ(Combo({ModCtrl}, 67)(c, held), bits == 1);
        EXPECT_EQ(Combo({ModShift, ModAlt}, 67)(c, held), bits == 6);
        EXPECT_EQ(Combo({ModWin}, 67)(c, held), bits == 8);
        EXPECT_EQ(Combo({}, 67)(c, held), bits == 0);
        EXPECT_FALSE(Combo({}, 68)(c, held));
        EXPECT_EQ(MacroScan::IsTypingKey(c, held), bits == 0 || bits == 4);
        EXPECT_EQ(MacroScan::IsBareWinKey(Event(0, 91, true), held), bits == 0 || bits == 8);
        EXPECT_EQ(MacroScan::IsBareWinKey(Event(0, 92, true), held), bits == 0 || bits == 8);
        EXPECT_FALSE(MacroScan::IsBareWinKey(Event(0, 93, true), held));
    }
    EXPECT_TRUE(Combo({}, -1)(Event(0, 4294967295U, true), {}));
}

TEST(ScanPredicates, TypingKeysAreThoseThatProduceText) {
    int typing = 0;
    for (uint32_t vk = 0; vk < 300; ++vk) {
        typing += MacroScan::IsTypingKey(Event(0, vk, true), {}) ? 1 : 0;
    }
    EXPECT_EQ(typing, 10 + 26 + 1 + 10 + 7 + 5);
    for (const uint32_t vk : {48U, 57U, 65U, 90U, 32U, 96U, 105U, 186U, 192U, 219U, 223U}) {
        EXPECT_TRUE(MacroScan::IsTypingKey(Event(0, vk, true), {})) << vk;
    }
}

TEST(ScanPredicates, AnyOfStopsAtTheFirstMatch) {
    EXPECT_FALSE(AnyOf({})(Event(0, 65, true), {}));
    std::string calls;
    const auto predicate = [&calls](char name, bool result) {
        return [&calls, name, result](const UnifiedEvent&, const HeldMods&) {
            calls += name;
            return result;
        };
    };
    EXPECT_TRUE(
        AnyOf({predicate('a', false), predicate('b', true), predicate('c', true)})(Event(0, 65, true), {}));
    EXPECT_EQ(calls, "ab");
}

TEST(ScanSequence, MatchesWithinTheSpanAndTriesTheNextStart) {
    const std::vector<KeyPredicate> steps = {Combo({}, 65), Combo({}, 66)};
    EXPECT_TRUE(Sequence(Macro().Down(0, 65).Down(30.0, 66), steps, 30.0).matched);
    EXPECT_FALSE(Sequence(Macro().Down(0, 65).Down(30.001, 66), steps, 30.0).matched);
    const SeqResult second = Sequence(Macro().Down(0, 65).Down(1, 65).Down(30.001, 66), steps, 30.0);
    EXPECT_TRUE(second.matched);
    EXPECT_EQ(second.atSec, 1);
    // A late key between the steps ends the attempt too.
    EXPECT_FALSE(Sequence(Macro().Down(0, 65).Down(31, 67).Down(2, 66), steps, 30.0).matched);
    // Times that run backwards are within the span.
    EXPECT_TRUE(Sequence(Macro().Down(100, 65).Down(2, 66), steps, 30.0).matched);
    const double odd = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(Sequence(Macro().Down(0, 65).Down(odd, 66), steps, 30.0).matched);
    EXPECT_TRUE(Sequence(Macro().Down(odd, 65).Down(100, 66), steps, 30.0).matched);
}

TEST(ScanSequence, AllowsOtherKeysBetweenAndOneStepPerKey) {
    const std::vector<KeyPredicate> steps = {Combo({}, 65), Combo({}, 65), Combo({}, 66)};
    EXPECT_FALSE(Sequence(Macro().Down(0, 65).Down(1, 66), steps).matched);
    const SeqResult result =
        Sequence(Macro().Down(3, 67).Down(4, 65).Down(5, 66).Down(6, 65).Down(7, 66), steps);
    EXPECT_TRUE(result.matched);
    EXPECT_EQ(result.atSec, 4);
    EXPECT_TRUE(Sequence(Macro().Down(3, 65), {Combo({}, 65)}, 0.0).matched);
    EXPECT_FALSE(Sequence(Macro().Down(3, 65), {}).matched);
}

TEST(ScanSequence, GivesUpAfterFiveHundredAttempts) {
    const std::vector<KeyPredicate> steps = {Combo({}, 65), Combo({}, 66)};
    for (const int failing : {498, 499, 500, 501, 5000}) {
        Macro macro;
        double time = 0;
        for (int i = 0; i < failing; ++i, time += 100) {
            macro.Down(time, 65).Down(time, 67);
        }
        macro.Down(time, 65).Down(time + 1, 66);
        const SeqResult result = Sequence(macro, steps, 30.0);
        EXPECT_EQ(result.matched, failing < 500) << failing;
        EXPECT_EQ(result.atSec, failing < 500 ? time : 0) << failing;
        EXPECT_TRUE(Sequence(macro, steps).matched);
    }
}

TEST(ScanCount, FindsTheFirstWindowWithinTheSpan) {
    Macro macro;
    macro.Down(0, 65).Down(1, 66).Down(40, 65).Down(60, 65);
    const auto keys = MacroScan::NormaliseKeys(macro.events);
    const SeqResult result = MacroScan::CountWithin(keys, Combo({}, 65), 2, 30);
    EXPECT_TRUE(result.matched);
    EXPECT_EQ(result.atSec, 40);
    EXPECT_TRUE(MacroScan::CountWithin(keys, Combo({}, 65), 2, 20).matched);
    EXPECT_FALSE(MacroScan::CountWithin(keys, Combo({}, 65), 2, 19.999).matched);
    EXPECT_FALSE(MacroScan::CountWithin(keys, Combo({}, 65), 4, 1000).matched);
    EXPECT_FALSE(MacroScan::CountWithin(keys, Combo({}, 65), 0, 1000).matched);
}

TEST(ScanBurst, FindsEightKeysWithinFiveSeconds) {
    const auto burst = [](const Macro& macro) {
        return MacroScan::FindTypingBurst(MacroScan::NormaliseKeys(macro.events));
    };
    Macro exact;
    for (int i = 0; i < 7; ++i) {
        exact.Down(2 + 0.5 * i, 65);
    }
    EXPECT_FALSE(burst(exact).found);
    Macro late = exact;
    late.Down(7.001, 65);
    EXPECT_FALSE(burst(late).found);
    exact.Down(3, 13).Down(7.0, 65).Down(7.0, 65);
    EXPECT_TRUE(burst(exact).found);
    EXPECT_EQ(burst(exact).atSec, 2);
    EXPECT_EQ(burst(exact).lastIndex, 8U);

    Macro ten;
    for (const double time : {0.0, 0.5, 2.0, 3.0, 4.0, 5.0, 5.5, 6.0, 6.5, 7.0}) {
        ten.Down(time, 66);
    }
    EXPECT_TRUE(burst(ten).found);
    EXPECT_EQ(burst(ten).atSec, 2.0);
    EXPECT_EQ(burst(ten).lastIndex, 9U);
}

TEST(ScanScenarios, TheTableHasTheseScenarios) {
    struct Row {
        const char* id;
        const char* severity;
        const char* title;
        const char* message;
    };
    const Row rows[] = {
        {"run-command", "DANGER", "Opens Run and executes",
         "Opens the Windows Run box, types something and presses Enter. This can start programs or run "
         "commands on your PC."},
        {"admin-approve", "DANGER", "Approves admin permission",
         "Tries to run something as administrator and may approve the permission prompt."},
        {"power-menu", "DANGER", "Opens the power menu",
         "Opens the Windows power menu and picks an item such as Terminal or Task Manager."},
        {"start-launch", "DANGER", "Searches and launches",
         "Searches the Start menu and launches whatever it finds."},
        {"copy-paste-send", "DANGER", "Copies, pastes and sends",
         "Copies something, pastes it somewhere else and presses Enter. It could send private text such as "
         "passwords or messages."},
        {"screenshot-paste", "DANGER", "Screenshots and pastes",
         "Takes a screenshot and pastes it somewhere. It could share what is on your screen."},
        {"select-all-delete", "DANGER", "Selects all and deletes", "Selects everything and deletes it."},
        {"permanent-delete", "DANGER", "Permanently deletes",
         "Permanently deletes the selection and skips the Recycle Bin."},
        {"wipe-and-save", "DANGER", "Replaces and overwrites a file",
         "Replaces a document's contents and saves over it."},
        {"open-address", "CAUTION", "Opens a web address", "Types a web address and opens it."},
        {"copy-paste", "CAUTION", "Copies and pastes", "Copies something and pastes it into another place."},
        {"type-and-send", "CAUTION", "Types and presses Enter",
         "Types text and presses Enter. It could send a message or submit a form."},
        {"close-windows", "CAUTION", "Closes windows",
         "Closes windows or tabs. You could lose unsaved work."},
        {"task-manager", "CAUTION", "Opens Task Manager", "Opens Task Manager or the security screen."},
        {"switch-windows", "CAUTION", "Switches windows",
         "Switches between your open windows, so its keys and clicks may land somewhere unexpected."},
        {"system-keys", "CAUTION", "Uses Windows shortcuts", "Uses Windows system shortcuts."},
    };
    const auto& scenarios = MacroScan::Scenarios();
    ASSERT_EQ(scenarios.size(), std::size(rows));
    for (size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(scenarios[i].id, rows[i].id);
        EXPECT_EQ(scenarios[i].severity, rows[i].severity) << rows[i].id;
        EXPECT_EQ(scenarios[i].title, rows[i].title) << rows[i].id;
        EXPECT_EQ(scenarios[i].message, rows[i].message) << rows[i].id;
    }
}

TEST(ScanScenarios, AKeyWithShiftCountsAsTyping) {
    EXPECT_EQ(Macro().Tap(0, {kWin}, 82).Tap(900, {}, 65).Tap(900, {}, 13).Matches(),
              "run-command start-launch system-keys");
    EXPECT_EQ(Macro().Tap(0, {kShift}, 82).Tap(1, {}, 13).Matches(), "");
}

TEST(ScanScenarios, AdminApprovalNeedsTheRunBoxOrTheStartMenu) {
    EXPECT_EQ(Macro().Tap(0, {kWin}, 82).Tap(9, {kAlt}, 89).Matches(), "admin-approve system-keys");
    EXPECT_EQ(Macro().Tap(0, {}, kWin).Tap(1, {}, 65).Tap(9, {kCtrl, kShift}, 13).Matches(), "admin-approve");
    EXPECT_EQ(Macro().Tap(0, {}, kWin).Tap(9, {kCtrl, kShift}, 13).Matches(), "");
    Macro second;  // the Run box counts although the Start menu comes first
    second.Tap(0, {}, kWin).Tap(1, {}, 65).Tap(5, {kWin}, 82).Tap(9, {kAlt}, 89);
    EXPECT_NE(second.Json().find(One("admin-approve", "DANGER", "5")), std::string::npos);
}

TEST(ScanScenarios, PowerMenuNeedsAnItem) {
    for (const uint32_t item : {73U, 65U, 84U, 71U}) {
        EXPECT_EQ(Macro().Tap(0, {kWin}, 88).Tap(1, {}, item).Matches(), "power-menu system-keys");
        EXPECT_EQ(Macro().Tap(0, {kWin}, 88).Tap(1, {kShift}, item).Matches(), "system-keys");
    }
    EXPECT_EQ(Macro().Tap(0, {kWin}, 88).Tap(1, {}, 66).Matches(), "system-keys");
}

TEST(ScanScenarios, StartMenuNeedsTypingAndEnter) {
    EXPECT_EQ(Macro().Tap(0, {}, kWin).Tap(1, {}, 65).Tap(2, {}, 66).Tap(3, {}, 13).Matches(),
              "start-launch");
    EXPECT_EQ(Macro().Tap(0, {}, kWin).Matches(), "");
    EXPECT_EQ(Macro().Down(0, 91).Down(0, 92).Matches(), "");
}

TEST(ScanScenarios, CopyAndPasteMatchesWithinAMinuteOrWithEnter) {
    EXPECT_EQ(Macro().Tap(0, {kCtrl, kShift}, 67).Tap(1, {kCtrl}, 86).Tap(2, {}, 13).Matches(), "");
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 67).Tap(61, {kCtrl}, 86).Matches(), "");
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 67).Tap(61, {kCtrl}, 86).Tap(62, {}, 13).Matches(), "copy-paste-send");
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 88).Tap(60, {kCtrl}, 86).Matches(), "copy-paste");
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 67).Tap(1, {kCtrl}, 86).Tap(2, {kCtrl}, 13).Matches(), "copy-paste");
}

TEST(ScanScenarios, ScreenshotNeedsAPaste) {
    EXPECT_EQ(Macro().Tap(0, {}, 44).Tap(1, {kCtrl}, 86).Matches(), "screenshot-paste");
    EXPECT_EQ(Macro().Tap(0, {kAlt}, 44).Tap(1, {kCtrl}, 86).Matches(), "screenshot-paste");
    EXPECT_EQ(Macro().Tap(0, {kWin, kShift}, 83).Tap(1, {kCtrl}, 86).Matches(),
              "screenshot-paste system-keys");
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 44).Tap(1, {kCtrl}, 86).Matches(), "");
}

TEST(ScanScenarios, DeletingAndOverwritingNeedTheirShortcuts) {
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 65).Tap(1, {}, 46).Matches(), "select-all-delete");
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 65).Tap(1, {}, 8).Tap(2, {kCtrl}, 83).Matches(),
              "select-all-delete wipe-and-save");
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 65).Tap(1, {kShift}, 66).Tap(2, {kCtrl}, 83).Matches(),
              "wipe-and-save");
    EXPECT_EQ(Macro().Tap(0, {kShift}, 46).Matches(), "permanent-delete");
    EXPECT_EQ(Macro().Tap(0, {}, 46).Matches(), "");
}

TEST(ScanScenarios, OpenAddressMatchesWithinThirtySeconds) {
    EXPECT_EQ(Macro().Tap(0, {}, 117).Tap(1, {}, 65).Tap(30.0, {}, 13).Matches(), "open-address");
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 76).Tap(1, {}, 65).Tap(29, {}, 13).Matches(), "open-address");
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 76).Tap(31, {}, 65).Tap(31, {}, 13).Matches(), "");
}

TEST(ScanScenarios, TypeAndSendNeedsEnterWithinTenSecondsOfTheFirstBurst) {
    const auto typed = [](double from, Macro macro) {
        for (int i = 0; i < 8; ++i) {
            macro.Tap(from + 0.5 * i, {}, 65);
        }
        return macro;
    };
    EXPECT_EQ(typed(0, {}).Tap(10.0, {}, 13).Matches(), "type-and-send");
    EXPECT_EQ(typed(0, {}).Tap(10.001, {}, 13).Matches(), "");
    EXPECT_EQ(typed(0, {}).Tap(11, {}, 66).Tap(5, {}, 13).Matches(), "");  // the late key ends the search
    EXPECT_EQ(typed(100, typed(0, {}).Tap(50, {}, 13)).Tap(104, {}, 13).Matches(), "");
    EXPECT_EQ(typed(0, {}).Tap(5, {kShift}, 13).Matches(), "");
    EXPECT_EQ(Macro().Tap(0, {}, 65).Tap(1, {}, 13).Matches(), "");
}

TEST(ScanScenarios, ClosingAndSwitchingNeedSeveralPresses) {
    EXPECT_EQ(Macro().Tap(0, {kAlt}, 115).Matches(), "");
    EXPECT_EQ(Macro().Tap(0, {kAlt}, 115).Tap(30, {kCtrl}, 87).Matches(), "close-windows");
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 87).Tap(30.001, {kCtrl}, 87).Matches(), "");
    EXPECT_EQ(Macro().Tap(0, {kAlt}, 9).Tap(1, {kAlt}, 9).Matches(), "");
    EXPECT_EQ(Macro().Tap(0, {kAlt}, 9).Tap(1, {kAlt}, 9).Tap(10, {kAlt}, 9).Matches(), "switch-windows");
    EXPECT_EQ(Macro().Tap(0, {kAlt}, 9).Tap(1, {kAlt}, 9).Tap(10.001, {kAlt}, 9).Matches(), "");
    EXPECT_EQ(Macro().Tap(0, {kAlt}, 9).Tap(1, {kAlt}, 9).Tap(2, {kAlt, kShift}, 9).Matches(), "");
    EXPECT_EQ(Macro().Tap(0, {kCtrl, kShift}, 27).Matches(), "task-manager");
    EXPECT_EQ(Macro().Tap(0, {kCtrl, kAlt}, 46).Matches(), "task-manager");
}

TEST(ScanReport, DangerComesFirst) {
    EXPECT_EQ(
        Macro().Tap(3, {kCtrl, kShift}, 27).Tap(9, {kShift}, 46).Json(),
        Report("danger", One("permanent-delete", "DANGER", "9") + "," + One("task-manager", "CAUTION", "3")));
}

TEST(ScanReport, AFindingSuppressesTheLesserOne) {
    EXPECT_EQ(
        Macro().Tap(1.25, {kWin}, 82).Tap(2, {}, 65).Tap(3, {}, 13).Json(),
        Report("danger", One("run-command", "DANGER", "1.25") + "," + One("start-launch", "DANGER", "1.25")));
    // With Shift held the Windows key is not bare: only the Run box is left.
    EXPECT_EQ(Macro()
                  .Down(0, kShift)
                  .Down(1, kWin)
                  .Up(1, kShift)
                  .Down(2, 82)
                  .Up(2, kWin)
                  .Tap(3, {}, 65)
                  .Tap(4, {}, 13)
                  .Json(),
              Report("danger", One("run-command", "DANGER", "2")));
    EXPECT_EQ(Macro().Tap(0, {kWin}, 88).Tap(1, {}, 73).Json(),
              Report("danger", One("power-menu", "DANGER", "0") + "," + One("system-keys", "CAUTION", "0")));
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 67).Tap(1, {kCtrl}, 86).Tap(2, {}, 13).Json(),
              Report("danger", One("copy-paste-send", "DANGER", "0")));
    EXPECT_EQ(Macro().Tap(0, {kCtrl}, 67).Tap(1, {kCtrl}, 86).Json(),
              Report("caution", One("copy-paste", "CAUTION", "0")));
}

TEST(ScanReport, EqualTimesAreSortedById) {
    EXPECT_EQ(
        Macro().Tap(5, {kWin}, 66).Tap(5, {kCtrl, kShift}, 27).Tap(4, {kAlt}, 115).Tap(5, {kAlt}, 115).Json(),
        Report("caution", One("close-windows", "CAUTION", "4") + "," + One("system-keys", "CAUTION", "5") +
                              "," + One("task-manager", "CAUTION", "5")));
}

TEST(ScanReport, ReportsTheFirstOccurrenceWithSixDigits) {
    const Macro macro = Macro().Tap(1234.5678, {kShift}, 46).Tap(2000, {kShift}, 46);
    EXPECT_EQ(macro.Json(), Report("danger", One("permanent-delete", "DANGER", "1234.57")));
    const MacroScan::ScanReport report = MacroScan::ScanMacro(macro.events);
    ASSERT_EQ(report.matches.size(), 1U);
    EXPECT_EQ(report.matches[0].title, "Permanently deletes");
    EXPECT_EQ(report.matches[0].message, "Permanently deletes the selection and skips the Recycle Bin.");
    EXPECT_EQ(report.matches[0].atSec, 1234.5678);
}
