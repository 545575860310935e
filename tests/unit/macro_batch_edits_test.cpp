#include "editing/macro_batch_edits.h"

#include "model/engine_state.h"
#include "test_support.h"

#include <cmath>
#include <limits>

namespace {

using Events = std::vector<UnifiedEvent>;

UnifiedEvent Key(double time, uint32_t key = 65, bool down = true) {
    return {.type = EvKey, .time = time, .virtualKey = key, .down = down};
}

UnifiedEvent Button(double time, uint32_t flags, int32_t x = 0, int32_t y = 0) {
    return {.type = EvMouseButton, .time = time, .x = x, .y = y, .flags = flags};
}

class MacroBatchEditsTest : public EngineStateTest {
  protected:
    MacroBatchEditsTest() { SetMacro({Key(0), Key(1), Key(2), Key(3), Key(4)}); }

    static void SetMacro(Events events) {
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, {}, std::move(events)}};
        MarkMacroChanged();
    }
    static std::vector<double> Times() {
        MutexLock lock(macroMutex);
        std::vector<double> times;
        for (const UnifiedEvent& event : macroState.profiles[0].events) {
            times.push_back(event.time);
        }
        return times;
    }
    static Events Macro() {
        MutexLock lock(macroMutex);
        return macroState.profiles[0].events;
    }
    static uint64_t Revision() {
        MutexLock lock(macroMutex);
        return macroState.revision;
    }
    static size_t Steps() {
        MutexLock lock(macroMutex);
        return macroState.history.undo.size();
    }
    // Puts the present revision before the arguments.
    static std::string Now(const std::string& arguments) {
        return std::to_string(Revision()) + (arguments.empty() ? "" : ",") + arguments;
    }
};

using Edit = EditResult (*)(std::string_view);

}  // namespace

TEST_F(MacroBatchEditsTest, DeletesRangesInOneStep) {
    const EditResult result = DeleteMacroEvents(Now("0,2-3"));
    EXPECT_EQ(result.refusal, Refusal::None);
    EXPECT_EQ(result.changed, 3U);
    EXPECT_EQ(result.revision, Revision());
    EXPECT_EQ(Times(), (std::vector<double>{1, 4}));
    EXPECT_EQ(Steps(), 1U);
    EXPECT_EQ(DeleteMacroEvents(Now("0-1")).changed, 2U);
    EXPECT_TRUE(Macro().empty());
    EXPECT_EQ(Steps(), 2U) << "each batch is a step";
}

TEST_F(MacroBatchEditsTest, ShiftsTimesNotBelowZero) {
    const EditResult result = ShiftMacroEvents(Now("-1.5,1-2,4"));
    EXPECT_EQ(result.changed, 3U);
    EXPECT_EQ(Times(), (std::vector<double>{0, 0, 0.5, 3, 2.5}));
    EXPECT_EQ(Steps(), 1U);
    SetMacro({Key(std::nan("")), Key(std::numeric_limits<double>::infinity())});
    EXPECT_EQ(ShiftMacroEvents(Now("-1,0-1")).changed, 2U);
    EXPECT_TRUE(std::isnan(Times()[0]));
    EXPECT_TRUE(std::isinf(Times()[1]));
}

TEST_F(MacroBatchEditsTest, SetsTimes) {
    EXPECT_EQ(RetimeMacroEvents(Now("4,0.25,0,9")).changed, 2U);
    EXPECT_EQ(Times(), (std::vector<double>{9, 1, 2, 3, 0.25}));
    EXPECT_EQ(Steps(), 1U);
}

TEST_F(MacroBatchEditsTest, MalformedArgumentsChangeNothing) {
    const Events before = Macro();
    const uint64_t revision = Revision();
    for (const char* arguments : {"", "x", "5", "0-5", "2-1", "-1", "1-", "0,0", "1-3,2", "3,1", "0,x", "0 ",
                                  "+0", "0.0", "18446744073709551615", "0-18446744073709551615", "0,,1"}) {
        EXPECT_EQ(DeleteMacroEvents(Now(arguments)).refusal, Refusal::Argument) << arguments;
        EXPECT_EQ(ShiftMacroEvents(Now("1," + std::string(arguments))).refusal, Refusal::Argument)
            << arguments;
    }
    for (const char* arguments : {"x,0", "nan,0", "inf,0", "1e999,0", ",0", "1x,0"}) {
        EXPECT_EQ(ShiftMacroEvents(Now(arguments)).refusal, Refusal::Argument) << arguments;
    }
    for (const char* arguments :
         {"", "0", "0,x", "5,1", "-1,1", "0,-1", "0,1,1", "0,nan", "0,inf", "0,1,1,x"}) {
        EXPECT_EQ(RetimeMacroEvents(Now(arguments)).refusal, Refusal::Argument) << arguments;
    }
    for (const char* arguments : {"", "x", "1x", "-1"}) {
        EXPECT_EQ(AddMissingReleases(arguments).refusal, Refusal::Argument) << arguments;
    }
    EXPECT_EQ(Macro(), before);
    EXPECT_EQ(Revision(), revision);
    EXPECT_EQ(Steps(), 0U);
}

TEST_F(MacroBatchEditsTest, AreRefusedForAnotherRevisionAndABusyMacro) {
    const Events before = Macro();
    for (const auto& [edit, arguments] : {std::pair<Edit, std::string>{DeleteMacroEvents, ",0"},
                                          {ShiftMacroEvents, ",1,0"},
                                          {RetimeMacroEvents, ",0,1"},
                                          {AddMissingReleases, ""}}) {
        EXPECT_EQ(edit(std::to_string(Revision() - 1) + arguments).refusal, Refusal::Revision);
        EXPECT_EQ(edit(std::to_string(Revision() + 1) + arguments).refusal, Refusal::Revision);
        engineState.recording = true;
        EXPECT_EQ(edit(std::to_string(Revision()) + arguments).refusal, Refusal::Recording);
        engineState.recording = false;
        engineState.playing = true;
        EXPECT_EQ(edit(std::to_string(Revision()) + arguments).refusal, Refusal::Playing);
        engineState.playing = false;
    }
    EXPECT_EQ(Macro(), before);
}

TEST_F(MacroBatchEditsTest, AddsTheReleasesInTheOrderOfThePresses) {
    SetMacro({Button(0.1, 8, 5, 6),
              Key(0.2, 66),
              Key(0.3, 65),
              Key(0.4, 66),
              Key(0.5, 67),
              Key(0.6, 67, false),
              Button(0.7, 2),
              Button(0.8, 4),
              Button(0.9, 32),
              {.type = EvAbsMove, .time = 3.5, .x = 30, .y = 40},
              {.type = EvRelMove, .time = 2, .x = 1, .y = 1},
              Button(1, 128, 31, 41)});
    const size_t before = Macro().size();
    EXPECT_EQ(AddMissingReleases(Now("")).changed, 4U);
    Events added = Macro();
    added.erase(added.begin(), added.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ(added, (Events{Button(3.5, 16, 31, 41), Key(3.5, 66, false), Key(3.5, 65, false),
                             Button(3.5, 64, 31, 41)}));
    EXPECT_EQ(Steps(), 1U);
    const uint64_t revision = Revision();
    const EditResult again = AddMissingReleases(Now(""));
    EXPECT_EQ(again.refusal, Refusal::None);
    EXPECT_EQ(again.changed, 0U);
    EXPECT_EQ(Revision(), revision);
    EXPECT_EQ(Steps(), 1U);
}

TEST_F(MacroBatchEditsTest, ReleasesOfATimelessMacroAreAtItsStart) {
    SetMacro({Key(std::nan("")), Key(-3, 66)});
    EXPECT_EQ(AddMissingReleases(Now("")).changed, 2U);
    EXPECT_EQ(Macro().back(), Key(0, 66, false));
}

TEST_F(MacroBatchEditsTest, AnEmptyMacroHasNothingToEdit) {
    SetMacro({});
    EXPECT_EQ(DeleteMacroEvents(Now("0")).refusal, Refusal::Argument);
    EXPECT_EQ(AddMissingReleases(Now("")).changed, 0U);
}
