#include "editing/macro_history.h"

#include "editing/macro_edits.h"
#include "editing/profiles.h"
#include "engines/recorder.h"
#include "platform/clock.h"
#include "storage/settings_text.h"
#include "test_support.h"

#include <functional>

namespace {

constexpr const char* kFast = "0,0,0,1,1,1,0,3,1,7,8,0,0,0,2,0,4,65,65|66,1";

using Events = std::vector<UnifiedEvent>;

Events Keys(std::initializer_list<uint32_t> keys) {
    Events events;
    for (const uint32_t key : keys) {
        events.push_back({.type = EvKey, .time = 0.5, .virtualKey = key, .down = true});
    }
    return events;
}

// Moves that thinning out reduces to the first and the last.
Events CloseMoves(int32_t count) {
    Events events;
    for (int32_t i = 0; i < count; ++i) {
        events.push_back({.type = EvAbsMove, .x = i % 2});
    }
    return events;
}

class MacroHistoryTest : public DataFolderTest {
  protected:
    MacroHistoryTest() {
        CreateDataFolder();
        engineState.counterFrequency = ReadPerformanceFrequency();
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, {}, {}}, Profile{"Farm", {}, Keys({1, 2, 3})},
                               Profile{"Other", kFast, Keys({9})}};
        macroState.currentProfile = 1;
        MarkMacroChanged();
    }

    static Events Macro() {
        MutexLock lock(macroMutex);
        return CurrentProfile()->events;
    }
    static void SetMacro(Events events) {
        MutexLock lock(macroMutex);
        CurrentProfile()->events = std::move(events);
        MarkMacroChanged();
    }
    static std::string CurrentName() {
        MutexLock lock(macroMutex);
        return CurrentProfile()->name;
    }
    static MacroHistory History() {
        MutexLock lock(macroMutex);
        return macroState.history;
    }
    // Replaces the macro as a recording of these events does.
    static void Record(const Events& events) {
        BeginFreshRecording();
        engineState.recording = false;
        SetMacro(events);
    }
    static std::vector<uint64_t> StepIds() {
        MutexLock lock(macroMutex);
        std::vector<uint64_t> ids;
        for (const MacroStep& step : macroState.history.undo) {
            ids.push_back(step.id);
        }
        return ids;
    }
    static uint64_t NewestUndo() { return History().undo.back().id; }
    static uint64_t NextRedo() { return History().redo.back().id; }
};

}  // namespace

TEST_F(MacroHistoryTest, BeginsEmpty) {
    EXPECT_EQ(MacroHistoryReport(), R"({"undo":[],"redo":[]})");
    EXPECT_EQ(RestoreMacro(0), Refusal::Unknown);
    EXPECT_EQ(RestoreMacro(1), Refusal::Unknown);
}

TEST_F(MacroHistoryTest, ARecordingIsUndoneAndRedone) {
    Record(Keys({7}));
    EXPECT_EQ(
        MacroHistoryReport(),
        R"({"undo":[{"id":1,"reason":"recording","profile":"Farm","current":true,"events":3}],"redo":[]})");
    EXPECT_EQ(RestoreMacro(1), Refusal::None);
    EXPECT_EQ(Macro(), Keys({1, 2, 3}));
    EXPECT_EQ(
        MacroHistoryReport(),
        R"({"undo":[],"redo":[{"id":1,"reason":"recording","profile":"Farm","current":true,"events":1}]})");
    EXPECT_EQ(RestoreMacro(1), Refusal::None);
    EXPECT_EQ(Macro(), Keys({7}));
    EXPECT_EQ(RestoreMacro(1), Refusal::None);
    EXPECT_EQ(Macro(), Keys({1, 2, 3}));
}

TEST_F(MacroHistoryTest, TheOldEventsAreMovedNotCopied) {
    const UnifiedEvent* memory = nullptr;
    {
        MutexLock lock(macroMutex);
        memory = CurrentProfile()->events.data();
    }
    BeginFreshRecording();
    MutexLock lock(macroMutex);
    EXPECT_EQ(macroState.history.undo.back().events.data(), memory);
}

TEST_F(MacroHistoryTest, AnOlderStepTakesTheNewerOnesOfItsProfileAlong) {
    Record(Keys({4}));
    SwitchProfile("2");
    Record(Keys({8}));
    SwitchProfile("1");
    Record(Keys({5}));
    EXPECT_EQ(RestoreMacro(1), Refusal::None);
    EXPECT_EQ(Macro(), Keys({1, 2, 3}));
    EXPECT_EQ(History().undo.size(), 1U) << "the step of the other profile stays";
    EXPECT_EQ(RestoreMacro(3), Refusal::None);
    EXPECT_EQ(Macro(), Keys({5}));
    EXPECT_EQ(RestoreMacro(2), Refusal::None);
    EXPECT_EQ(CurrentName(), "Other");
    EXPECT_EQ(Macro(), Keys({9}));
    EXPECT_EQ(BuildProfileSettings(), kFast) << "its profile became current, with its settings";
}

TEST_F(MacroHistoryTest, ANewChangeDropsTheRedoOfItsProfileOnly) {
    Record(Keys({4}));
    SwitchProfile("2");
    Record(Keys({8}));
    RestoreMacro(1);
    RestoreMacro(2);
    ASSERT_EQ(History().redo.size(), 2U);
    SwitchProfile("1");
    BeginContinuedRecording();
    engineState.recording = false;
    ASSERT_EQ(History().redo.size(), 1U);
    EXPECT_EQ(NextRedo(), 2U);
    SwitchProfile("2");
    Record(Keys({6}));
    EXPECT_TRUE(History().redo.empty());
}

TEST_F(MacroHistoryTest, ClearBringsBackTheSettingsToo) {
    ApplyProfileSettings(kFast);
    ClearProfile();
    const std::string defaults = BuildProfileSettings();
    ASSERT_NE(defaults, kFast);
    EXPECT_EQ(RestoreMacro(NewestUndo()), Refusal::None);
    EXPECT_EQ(Macro(), Keys({1, 2, 3}));
    EXPECT_EQ(BuildProfileSettings(), kFast);
    EXPECT_EQ(RestoreMacro(NextRedo()), Refusal::None);
    EXPECT_TRUE(Macro().empty());
    EXPECT_EQ(BuildProfileSettings(), defaults);
}

TEST_F(MacroHistoryTest, ADeletedProfileComesBackAtItsPlace) {
    ApplyProfileSettings(kFast);
    Record(Keys({4}));
    DeleteProfile();
    EXPECT_EQ(CurrentName(), "Other");
    EXPECT_EQ(History().undo.front().events.size(), 3U);
    EXPECT_NE(MacroHistoryReport().find(
                  R"({"id":2,"reason":"deleteProfile","profile":"Farm","current":false,"events":1},)"
                  R"({"id":1,"reason":"recording","profile":"Farm","current":false,"events":3})"),
              std::string::npos);
    EXPECT_EQ(RestoreMacro(1), Refusal::None) << "the profile comes back on the way";
    EXPECT_EQ(CurrentName(), "Farm");
    EXPECT_EQ(Macro(), Keys({1, 2, 3}));
    EXPECT_EQ(BuildProfileSettings(), kFast);
    EXPECT_NE(GetProfiles().find(R"("current":1,"names":["Default Tracking Profile","Farm","Other"])"),
              std::string::npos);
    EXPECT_EQ(RestoreMacro(2), Refusal::None) << "and goes again";
    EXPECT_NE(GetProfiles().find(R"("current":1,"names":["Default Tracking Profile","Other"])"),
              std::string::npos);
    EXPECT_EQ(RestoreMacro(2), Refusal::None);
    EXPECT_EQ(Macro(), Keys({4}));
}

TEST_F(MacroHistoryTest, DeletingTheDefaultProfileIsAClear) {
    SwitchProfile("0");
    SetMacro(Keys({5}));
    DeleteProfile();
    EXPECT_EQ(History().undo.back().reason, HistoryReason::Clear);
    RestoreMacro(NewestUndo());
    EXPECT_EQ(Macro(), Keys({5}));
}

TEST_F(MacroHistoryTest, UndoingAnEditLeavesTheToolSettings) {
    ApplyProfileSettings(kFast);
    DeleteEvent("0");
    RestoreMacro(NewestUndo());
    EXPECT_EQ(Macro(), Keys({1, 2, 3}));
    EXPECT_EQ(BuildProfileSettings(), kFast);
}

TEST_F(MacroHistoryTest, ThinningOutIsAStepIfItDropsEvents) {
    OptimizeMacro();
    EXPECT_TRUE(History().undo.empty());
    SetMacro(CloseMoves(10));
    OptimizeMacro();
    EXPECT_EQ(Macro().size(), 2U);
    EXPECT_EQ(History().undo.back().reason, HistoryReason::Optimise);
    RestoreMacro(NewestUndo());
    EXPECT_EQ(Macro(), CloseMoves(10));
}

TEST_F(MacroHistoryTest, SingleEditsInARowAreOneStep) {
    DeleteEvent("0");
    UpdateEventTime("0,7");
    DeleteEvent("1");
    ASSERT_EQ(History().undo.size(), 1U);
    EXPECT_EQ(History().undo.back().events, Keys({1, 2, 3}));
    SwitchProfile("1");  // another change of what is current ends the batch
    DeleteEvent("0");
    EXPECT_EQ(History().undo.size(), 2U);
    RestoreMacro(NewestUndo());
    SetMacro(Keys({1, 2}));
    DeleteEvent("0");
    EXPECT_EQ(History().undo.size(), 2U) << "a restored macro begins a new batch";
}

TEST_F(MacroHistoryTest, AnEditThatChangesNothingIsNoStep) {
    DeleteEvent("3");
    UpdateEventTime("-1,5");
    EXPECT_TRUE(History().undo.empty());
}

TEST_F(MacroHistoryTest, EditsDuringARecordingAreNoSteps) {
    SetMacro(CloseMoves(10));
    engineState.recording = true;
    OptimizeMacro();
    DeleteEvent("0");
    EXPECT_TRUE(History().undo.empty());
    EXPECT_EQ(Macro().size(), 1U);
}

TEST_F(MacroHistoryTest, AnEmptyMacroLeavesNoStepExceptForItsProfile) {
    SetMacro({});
    Record(Keys({1}));
    EXPECT_TRUE(History().undo.empty());
    SetMacro({});
    ClearProfile();
    EXPECT_TRUE(History().undo.empty()) << "neither events nor settings have changed";
    ApplyProfileSettings(kFast);
    ClearProfile();
    DeleteProfile();
    EXPECT_EQ(History().undo.size(), 2U);
}

TEST_F(MacroHistoryTest, IsRefusedWhileTheMacroIsInUse) {
    Record(Keys({7}));
    engineState.recording = true;
    EXPECT_EQ(RestoreMacro(1), Refusal::Recording);
    engineState.recording = false;
    engineState.playing = true;
    EXPECT_EQ(RestoreMacro(1), Refusal::Playing);
    EXPECT_EQ(Macro(), Keys({7}));
}

TEST_F(MacroHistoryTest, KeepsTwentySteps) {
    for (uint32_t i = 0; i < 25; ++i) {
        Record(Keys({100 + i}));
    }
    EXPECT_EQ(History().undo.size(), kMostHistorySteps);
    EXPECT_EQ(RestoreMacro(5), Refusal::Unknown);
    EXPECT_EQ(RestoreMacro(6), Refusal::None);
    EXPECT_EQ(Macro(), Keys({104}));
    EXPECT_EQ(History().redo.size(), kMostHistorySteps);
    EXPECT_EQ(RestoreMacro(25), Refusal::None);
    EXPECT_EQ(Macro(), Keys({124}));
}

TEST_F(MacroHistoryTest, DropsTheOldestStepsWhenTheyNeedTooMuchMemory) {
    const size_t most = kMostHistoryBytes / sizeof(UnifiedEvent);
    // Replaces a macro whose list has this much memory. Memory that nobody touches costs nothing.
    const auto replaceLarge = [](size_t capacity) {
        Events events;
        events.reserve(capacity);
        events.push_back({});
        SetMacro(std::move(events));
        BeginFreshRecording();
        engineState.recording = false;
    };
    Record(Keys({4}));
    replaceLarge(most / 2);
    EXPECT_EQ(StepIds(), (std::vector<uint64_t>{1, 2}));
    replaceLarge(most / 3);
    EXPECT_EQ(StepIds(), (std::vector<uint64_t>{1, 2, 3}));
    replaceLarge(most / 3);
    EXPECT_EQ(StepIds(), (std::vector<uint64_t>{3, 4}));
    replaceLarge(most + 1);
    EXPECT_EQ(StepIds(), (std::vector<uint64_t>{3, 4})) << "it would displace all others and not fit itself";
}

TEST_F(MacroHistoryTest, TheStepsOfAProfileEndWithItsDeletion) {
    Record(Keys({4}));
    DeleteProfile();
    for (uint32_t i = 0; i < kMostHistorySteps - 1; ++i) {
        Record(Keys({100 + i}));
    }
    // The deletion is the oldest step now.
    EXPECT_EQ(History().undo.front().reason, HistoryReason::DeleteProfile);
    Record(Keys({7}));
    EXPECT_EQ(History().undo.front().reason, HistoryReason::Recording);
    EXPECT_EQ(RestoreMacro(2), Refusal::Unknown);
}

TEST_F(MacroHistoryTest, AnUndoneContinuationCanBeRestored) {
    BeginContinuedRecording();
    SetMacro(Keys({1, 2, 3, 4}));
    engineState.recording = false;
    FinishRecording();
    UndoContinuedRecording();
    EXPECT_EQ(Macro().size(), 3U);
    EXPECT_EQ(History().undo.back().reason, HistoryReason::UndoContinue);
    RestoreMacro(NewestUndo());
    EXPECT_EQ(Macro().size(), 4U);
}
