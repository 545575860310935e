// The import flow in a running main process: dialogs with scripted answers, notices to the page, files found at start.
#include "app/main_process.h"
#include "imports/last_import.h"
#include "imports/macro_import.h"
#include "windows/main_page.h"

#include "base/json_writer.h"
#include "event_times.h"
#include "model/engine_state.h"
#include "pending_import.h"
#include "platform/key_table.h"
#include "platform/simulated/simulation.h"
#include "storage/data_folder.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

constexpr uint32_t kF6 = 117;
constexpr const char* kHeldText =
    "Held\nSETTINGS:\n3,1.25,0,0,0,91,1,0\n3,1.5,0,0,0,82,1,0\n3,1.75,0,0,0,91,0,0\n3,1.8,0,0,0,82,0,0\n";
constexpr const char* kCleanText = "Clean\nSETTINGS:\n0,0.5,10,10,0,0,0,0\n3,0.75,0,0,0,65,1,0\n";
constexpr const char* kToolSettingsText = "Fast\nSETTINGS:0,0,0,7,1,0,1,10,0,0,0,1,1,1,1,0,1,0,500,119,118,0,"
                                          "117,0,0,0,9,1,10,120,65,65|66,0,0,0,121\n"
                                          "0,0.5,10,10,0,0,0,0\n3,0.75,0,0,0,65,1,0\nbad line\n";
constexpr const char* kToldImported = "if (window.onProfileImported) window.onProfileImported();";
const std::string kUnreadable = JsonText(kUnreadableMacro);
constexpr const char* kNothingHeld = R"({"outcome":"none"})";

class ImportFlowTest : public ::testing::Test {
  protected:
    ImportFlowTest() {
        std::filesystem::create_directories(root_ / "program" / "ui");
        Begin();
        DropPendingImport();
        TakePendingThemeAlert();
    }
    ~ImportFlowTest() override {
        SimEnd();
        ResetEngineState();
        SetSessionPath("");
        DropPendingImport();
    }

    void Begin() {
        ResetEngineState();
        SetSessionPath("");
        SimBegin();
        SimSetDataFolderRoot(root_.string());
        SimSetProgramPath((root_ / "program" / "varnelle").string());
    }
    // Runs a whole life of the main process, with `serve` in the middle.
    void Run(std::function<void()> serve, LaunchOptions options = {}) {
        bool served = false;
        SimOnPageRun([&] {
            served = true;
            SimSettle();
            serve();
        });
        EXPECT_EQ(RunMainProcess(options), 0);
        EXPECT_TRUE(served);
    }

    std::string File(const std::string& name, const std::string& text) const {
        const std::string path = folder_.File(name);
        WriteFile(path, text);
        return path;
    }
    static std::string Call(const std::string& name, const std::string& request = "[]") {
        const SimPageAnswer answer = SimPageCall(name, request);
        EXPECT_TRUE(answer.resolved) << name << ": " << answer.text;
        return answer.text;
    }
    static bool HasProfile(const std::string& name) {
        return Call("getProfiles").find("\"" + name + "\"") != std::string::npos;
    }
    // The scripts that have reached the page since the last question.
    static std::vector<std::string> TakeScripts() {
        Call("getProfiles");  // lets them arrive
        return std::exchange(SimGetPage().evals, {});
    }

    TempFolder folder_;
    const std::filesystem::path root_ = folder_.Path();
};

}  // namespace

TEST_F(ImportFlowTest, AChosenFileIsImportedAndTheReportsFollow) {
    const std::string path = File("a.vrlmacro", kCleanText);
    Run([&] {
        Call("getTrackerStatus");
        EXPECT_EQ(ReadFile(DataFilePath("macroevents.txt")), "[]");
        SimAnswerDialog({FileDialogOutcome::Chosen, path, {}});
        EXPECT_EQ(Call("importProfile"), R"({"outcome":"imported"})");
        EXPECT_TRUE(HasProfile("Clean (Imported)"));
        EXPECT_TRUE(TakeScripts().empty());  // the page knows by the answer
        const std::string status = Call("getTrackerStatus");
        EXPECT_EQ(ReadFile(DataFilePath("status.txt")), status);
        EXPECT_NE(status.find("\"count\":2"), std::string::npos) << status;
        EXPECT_EQ(ReadFile(DataFilePath("macroevents.txt")), Call("getMacroEvents"));
        EXPECT_NE(Call("getMacroEvents").find("Keyboard VK: 65 (DOWN)"), std::string::npos);
        ASSERT_EQ(SimShownDialogs().size(), 1U);
        EXPECT_FALSE(SimShownDialogs()[0].save);
        EXPECT_EQ(SimShownDialogs()[0].filters,
                  (std::vector<std::string>{"Varnelle Macro (*.vrlmacro)|*.vrlmacro", "All Files|*.*"}));
    });
    EXPECT_NE(ReadFile(DataFilePath("session.dat")).find("PROFILE:Clean (Imported)\n"), std::string::npos);
}

TEST_F(ImportFlowTest, AConfirmedPendingImportAppearsInTheReports) {
    const std::string path = File("a.vrlmacro", kHeldText);
    Run([&] {
        Call("getTrackerStatus");
        SimAnswerDialog({FileDialogOutcome::Chosen, path, {}});
        const std::string document = Call("importProfile");
        EXPECT_EQ(document, Call("getPendingMacroImport"));
        EXPECT_FALSE(HasProfile("Held (Imported)"));
        EXPECT_NE(Call("getTrackerStatus").find("\"count\":0"), std::string::npos);
        EXPECT_TRUE(TakeScripts().empty());
        EXPECT_EQ(Call("confirmMacroImport", "[\"" + PendingIdIn(document) + "\"]"), "");
        EXPECT_EQ(TakeScripts(), (std::vector<std::string>{kToldImported}));
        EXPECT_TRUE(HasProfile("Held (Imported)"));
        EXPECT_NE(Call("getTrackerStatus").find("\"count\":4"), std::string::npos);
        EXPECT_NE(ReadFile(DataFilePath("macroevents.txt")).find("Keyboard VK: 82 (UP)"), std::string::npos);
        EXPECT_EQ(Call("confirmMacroImport", "[\"" + PendingIdIn(document) + "\"]"), "");
        EXPECT_TRUE(TakeScripts().empty());
    });
}

TEST_F(ImportFlowTest, RejectingAPendingImportDoesNotNotifyThePage) {
    const std::string path = File("a.vrlmacro", kHeldText);
    Run([&] {
        SimAnswerDialog({FileDialogOutcome::Chosen, path, {}});
        EXPECT_EQ(Call("cancelMacroImport", "[\"" + PendingIdIn(Call("importProfile")) + "\"]"), "");
        EXPECT_EQ(Call("getPendingMacroImport"), kNothingHeld);
        EXPECT_TRUE(TakeScripts().empty());
    });
}

TEST_F(ImportFlowTest, AClosedDialogChangesNothing) {
    Run([&] {
        const std::string before = Call("getProfiles");
        EXPECT_EQ(Call("importProfile"), R"({"outcome":"cancelled"})");
        EXPECT_EQ(Call("exportProfile"), "");
        EXPECT_EQ(Call("getProfiles"), before);
        EXPECT_TRUE(TakeScripts().empty());
        EXPECT_EQ(SimShownDialogs().size(), 2U);
    });
}

TEST_F(ImportFlowTest, WithoutADialogThePersonReadsWhy) {
    Run([&] {
        SimAnswerDialog({FileDialogOutcome::Unavailable, {}, "Install \"zenity\"."});
        EXPECT_EQ(Call("importProfile"), R"({"outcome":"error","message":"Install \"zenity\"."})");
        EXPECT_TRUE(TakeScripts().empty());
        SimAnswerDialog({FileDialogOutcome::Unavailable, {}, "Install \"zenity\"."});
        EXPECT_EQ(Call("exportProfile"), "");
        EXPECT_EQ(TakeScripts(), (std::vector<std::string>{R"(alert("Install \"zenity\".");)"}));
    });
}

TEST_F(ImportFlowTest, WhatIsExportedComesBackTheSame) {
    const std::string path = File("a.vrlmacro", kCleanText);
    const std::string target = (root_ / "out.vrlmacro").string();
    Run([&] {
        Call("updateSpammer", "[0,0,0,77,0,0,1,10,0]");
        SimAnswerDialog({FileDialogOutcome::Chosen, path, {}});
        Call("importProfile");
        const std::string events = Call("getMacroEvents");
        SimAnswerDialog({FileDialogOutcome::Chosen, target, {}});
        EXPECT_EQ(Call("exportProfile"), "");
        ASSERT_EQ(SimShownDialogs().size(), 2U);
        EXPECT_TRUE(SimShownDialogs()[1].save);
        EXPECT_EQ(SimShownDialogs()[1].defaultExtension, "vrlmacro");
        EXPECT_EQ(SimShownDialogs()[1].filters, SimShownDialogs()[0].filters);
        EXPECT_EQ(ReadFile(target).substr(0, 33), "Clean (Imported)\nSETTINGS:0,0,0,7");
        SimAnswerDialog({FileDialogOutcome::Chosen, target, {}});
        EXPECT_EQ(Call("importProfile"), R"({"outcome":"imported"})");
        EXPECT_TRUE(HasProfile("Clean (Imported) (Imported)"));
        EXPECT_EQ(Call("getMacroEvents"), events);
        EXPECT_TRUE(TakeScripts().empty());
    });
}

TEST_F(ImportFlowTest, AnExportIsOfTheMomentInWhichItWasAskedFor) {
    const std::string path = File("a.vrlmacro", kCleanText);
    const std::string target = (root_ / "out.vrlmacro").string();
    Run([&] {
        SimAnswerDialog({FileDialogOutcome::Chosen, path, {}});
        Call("importProfile");
        SimOnDialog([] { Call("clearProfile"); });
        SimAnswerDialog({FileDialogOutcome::Chosen, target, {}});
        EXPECT_EQ(Call("exportProfile"), "");
        EXPECT_NE(ReadFile(target).find("\n3,0.75,0,0,0,65,1,0\n"), std::string::npos);
    });
}

TEST_F(ImportFlowTest, AnExportThatCannotBeOpenedIsSilent) {
    const std::string target = (root_ / "no" / "such" / "out.vrlmacro").string();
    Run([&] {
        SimAnswerDialog({FileDialogOutcome::Chosen, target, {}});
        EXPECT_EQ(Call("exportProfile"), "");
        EXPECT_TRUE(TakeScripts().empty());
        EXPECT_FALSE(std::filesystem::exists(target));
    });
}

TEST_F(ImportFlowTest, AnExportThatBreaksOffRejectsTheCall) {
    const std::string target = (root_ / "out.vrlmacro").string();
    Run([&] {
        SimAnswerDialog({FileDialogOutcome::Chosen, target, {}});
        SimFailFileOperation(2);  // the disk is full
        EXPECT_FALSE(SimPageCall("exportProfile", "[]").resolved);
        EXPECT_NE(Call("getProfiles").find("\"current\":0"), std::string::npos);
    });
}

TEST_F(ImportFlowTest, TheEnginesServeOnWhileADialogIsOpen) {
    Run([&] {
        SimOnDialog([] {
            SimKey(kF6, true);
            SimKey(kF6, false);
            SimRunFor(50);
            EXPECT_TRUE(engineState.autoClicking);
            EXPECT_GT(SimSentButtons(kLeftButton, true), 5U);
            // The dialog is the only one.
            EXPECT_EQ(Call("importProfile"), R"({"outcome":"cancelled"})");
        });
        EXPECT_EQ(Call("importProfile"), R"({"outcome":"cancelled"})");
        EXPECT_EQ(SimShownDialogs().size(), 1U);
    });
}

// The recording goes on in the profile that is current now. What was recorded before stays with the macro that it
// continued and can be taken back there; the imported events keep their times.
TEST_F(ImportFlowTest, AnImportBesideAContinuedRecordingLeavesBothMacrosWhole) {
    const std::string first =
        File("a.vrlmacro", "First\nSETTINGS:\n0,0.5,10,10,0,0,0,0\n0,2,11,11,0,0,0,0\n");
    const std::string second = File("b.vrlmacro", "Second\nSETTINGS:\n0,5,20,20,0,0,0,0\n0,4,21,21,0,0,0,0\n"
                                                  "0,7,22,22,0,0,0,0\n");
    const auto press = [](uint32_t key) {
        SimRunFor(1000);
        SimKey(key, true);
        SimRunFor(250);
        SimKey(key, false);
        SimSettle();
    };
    using Times = std::vector<double>;
    Run([&] {
        EXPECT_EQ(ImportMacroFile(first), R"({"outcome":"imported"})");
        Call("continueRecording");
        SimSettle();
        press('A');
        EXPECT_EQ(ImportMacroFile(second), R"({"outcome":"imported"})");
        EXPECT_EQ(EventTimes(1), (Times{0.5, 2, 2.1, 2.35}));
        press('B');
        Call("stopRecording");
        SimSettle();
        EXPECT_EQ(EventTimes(1), (Times{0.5, 2, 2.1, 2.35}));
        EXPECT_EQ(EventTimes(2), (Times{5, 4, 7, 7.1, 7.35}));
        Call("switchProfile", "[\"1\"]");
        Call("undoContinueRecording");
        SimSettle();
        EXPECT_EQ(EventTimes(1), (Times{0.5, 2}));
        EXPECT_EQ(EventTimes(2), (Times{5, 4, 7, 7.1, 7.35}));
    });
}

TEST_F(ImportFlowTest, AnImportBesideAFreshRecordingKeepsItsTimes) {
    const std::string path = File("a.vrlmacro", "Late\nSETTINGS:\n0,5,20,20,0,0,0,0\n");
    const auto press = [](uint32_t key) {
        SimRunFor(1000);
        SimKey(key, true);
        SimSettle();
    };
    Run([&] {
        Call("startRecording");
        SimSettle();
        press('A');
        EXPECT_EQ(ImportMacroFile(path), R"({"outcome":"imported"})");
        Call("stopRecording");  // with nothing recorded behind it
        SimSettle();
        MutexLock lock(macroMutex);
        ASSERT_EQ(macroState.profiles.size(), 2U);
        ASSERT_EQ(macroState.profiles[0].events.size(), 1U);
        EXPECT_EQ(macroState.profiles[0].events[0].time, 0.0);
        ASSERT_EQ(macroState.profiles[1].events.size(), 1U);
        EXPECT_EQ(macroState.profiles[1].events[0].time, 5.0);
    });
}

TEST_F(ImportFlowTest, ARequestToEndClosesTheDialog) {
    const std::string path = File("a.vrlmacro", kCleanText);
    Run([&] {
        SimAnswerDialog({FileDialogOutcome::Chosen, path, {}});
        SimOnDialog([] { SimRequestEnd(); });
        EXPECT_EQ(Call("importProfile"), R"({"outcome":"cancelled"})");
        EXPECT_EQ(Call("importProfile"), R"({"outcome":"cancelled"})");
        EXPECT_EQ(SimShownDialogs().size(), 1U);  // and no other opens
    });
    EXPECT_EQ(ReadFile(DataFilePath("session.dat")).find("Clean"), std::string::npos);
}

TEST_F(ImportFlowTest, StagedMacrosTellThePage) {
    Run([&] {
        const std::string clean = File("Varnelle/themes/clean.vrlmacro", kCleanText);
        ImportStagedMacro("clean");
        EXPECT_EQ(TakeScripts(), (std::vector<std::string>{kToldImported}));
        EXPECT_TRUE(HasProfile("Clean"));
        EXPECT_FALSE(std::filesystem::exists(clean));

        const std::string held = File("Varnelle/themes/held.vrlmacro", kHeldText);
        ImportStagedMacro("held");
        const std::string document = Call("getPendingMacroImport");
        EXPECT_EQ(TakeScripts(),
                  (std::vector<std::string>{"if (window.onPendingMacroImport) window.onPendingMacroImport(" +
                                            document + ");"}));
        EXPECT_FALSE(HasProfile("Held"));
        EXPECT_FALSE(std::filesystem::exists(held));

        const std::string bad = File("Varnelle/themes/bad.vrlmacro", "\n");
        ImportStagedMacro("bad");
        EXPECT_EQ(TakeScripts(), (std::vector<std::string>{"alert(" + kUnreadable + ");"}));
        EXPECT_EQ(Call("getPendingThemeAlert"), "\"\"");
        EXPECT_FALSE(std::filesystem::exists(bad));

        ImportStagedMacro("gone");
        EXPECT_TRUE(TakeScripts().empty());
        EXPECT_EQ(Call("getPendingMacroImport"), document);
    });
}

TEST_F(ImportFlowTest, AStagedMacroThatCannotBeReadOrDeletedIsSaid) {
    Run([&] {
        const std::string path = File("Varnelle/themes/a.vrlmacro", kCleanText);
        SimFailFileOperation(2);  // 1 looks for it, 2 reads, 3 deletes
        ImportStagedMacro("a");
        EXPECT_EQ(TakeScripts(), (std::vector<std::string>{"alert(" + kUnreadable + ");"}));
        EXPECT_FALSE(std::filesystem::exists(path));
        File("Varnelle/themes/a.vrlmacro", kCleanText);
        SimFailFileOperation(3);
        ImportStagedMacro("a");
        EXPECT_TRUE(HasProfile("Clean"));
        EXPECT_TRUE(std::filesystem::exists(path));
    });
}

TEST_F(ImportFlowTest, AMacroOfTheCommandLineIsThereWhenThePageComes) {
    LaunchOptions options;
    options.openMacroPath = File("a.vrlmacro", kCleanText);
    Run(
        [&] {
            EXPECT_NE(Call("getProfiles").find(R"("current":1,"names":["Default Tracking Profile","Clean"])"),
                      std::string::npos);
            EXPECT_EQ(Call("getPendingThemeAlert"), "\"\"");
            EXPECT_TRUE(TakeScripts().empty());
        },
        options);
    EXPECT_TRUE(std::filesystem::exists(options.openMacroPath));
}

TEST_F(ImportFlowTest, APendingImportOfTheCommandLineWaitsForThePageAndEndsWithTheProgram) {
    LaunchOptions options;
    options.openMacroPath = File("a.vrlmacro", kHeldText);
    Run(
        [&] {
            EXPECT_FALSE(HasProfile("Held"));
            EXPECT_EQ(PendingIdIn(Call("getPendingMacroImport")).size(), 32U);
            Call("confirmMacroImport", "[\"" + PendingId() + "\"]");
            EXPECT_TRUE(HasProfile("Held"));
            EXPECT_EQ(TakeScripts(), (std::vector<std::string>{kToldImported}));
        },
        options);
    EXPECT_NE(ReadFile(DataFilePath("session.dat")).find("PROFILE:Held\n"), std::string::npos);
}

TEST_F(ImportFlowTest, APendingImportIsNotSaved) {
    LaunchOptions options;
    options.openMacroPath = File("a.vrlmacro", kHeldText);
    Run([] { EXPECT_EQ(PendingId().size(), 32U); }, options);
    EXPECT_EQ(ReadFile(DataFilePath("session.dat")).find("Held"), std::string::npos);
}

TEST_F(ImportFlowTest, ABadMacroOfTheCommandLineIsThePagesFirstMessage) {
    LaunchOptions options;
    options.openMacroPath = (root_ / "a.vrlmacro C:\\b.vrlmacro").string();
    Run(
        [&] {
            EXPECT_EQ(Call("getPendingThemeAlert"), kUnreadable);
            EXPECT_EQ(Call("getPendingThemeAlert"), "\"\"");
            EXPECT_EQ(Call("getPendingMacroImport"), kNothingHeld);
            EXPECT_TRUE(TakeScripts().empty());
        },
        options);
}

TEST_F(ImportFlowTest, TheLastImportSaysWhatCameIn) {
    ResetLastImport();
    const std::string clean = File("a.vrlmacro", kToolSettingsText);
    const std::string held = File("held.vrlmacro", kHeldText);
    const std::string empty = File("empty.vrlmacro", "Empty\nno event\n\n");
    const std::string nameless = File("nameless.vrlmacro", "");
    Run([&] {
        const auto import = [](const std::string& path) {
            SimAnswerDialog({FileDialogOutcome::Chosen, path, {}});
            return Call("importProfile");
        };
        EXPECT_EQ(
            Call("getLastImport"),
            R"({"id":0,"outcome":"none","problem":"","file":"","profile":"","events":0,"skippedLines":0,)"
            R"("seconds":0,"fileSettings":false,"settingsUsable":false})");
        import(clean);
        EXPECT_EQ(
            Call("getLastImport"),
            R"({"id":1,"outcome":"imported","problem":"","file":"a.vrlmacro","profile":)"
            R"j("Fast (Imported)","events":2,"skippedLines":1,"seconds":0.75,"fileSettings":true,"settingsUsable":true})j");
        import(empty);
        EXPECT_EQ(
            Call("getLastImport"),
            R"({"id":2,"outcome":"imported","problem":"","file":"empty.vrlmacro",)"
            R"j("profile":"Empty (Imported)","events":0,"skippedLines":1,"seconds":0,"fileSettings":false,)j"
            R"("settingsUsable":false})");
        const std::string pending = import(held);
        EXPECT_NE(
            Call("getLastImport").find(R"("id":3,"outcome":"pending","problem":"","file":"held.vrlmacro")"),
            std::string::npos);
        Call("confirmMacroImport", "[\"" + PendingIdIn(pending) + "\"]");
        EXPECT_NE(Call("getLastImport").find(R"("id":3,"outcome":"imported")"), std::string::npos);
        Call("cancelMacroImport", "[\"" + PendingIdIn(import(held)) + "\"]");
        EXPECT_NE(Call("getLastImport").find(R"("id":4,"outcome":"none")"), std::string::npos);
        import(nameless);
        EXPECT_NE(Call("getLastImport").find(R"("id":5,"outcome":"failed","problem":"noName")"),
                  std::string::npos);
        import(folder_.File("missing.vrlmacro"));
        EXPECT_NE(Call("getLastImport").find(R"("id":6,"outcome":"failed","problem":"notFound")"),
                  std::string::npos);
        import(folder_.File("old.MCR"));
        EXPECT_NE(Call("getLastImport").find(R"("id":7,"outcome":"failed","problem":"oldFormat")"),
                  std::string::npos);
        Call("importProfile");  // a closed dialog
        EXPECT_NE(Call("getLastImport").find(R"({"id":7,)"), std::string::npos);
    });
}

TEST_F(ImportFlowTest, AMissingFileOfTheCommandLineIsNotCalledCorruptInTheLastImport) {
    ResetLastImport();
    LaunchOptions options;
    options.openMacroPath = folder_.File("no.vrlmacro");
    Run(
        [&] {
            EXPECT_EQ(Call("getPendingThemeAlert"), kUnreadable);
            EXPECT_NE(
                Call("getLastImport").find(R"("outcome":"failed","problem":"notFound","file":"no.vrlmacro")"),
                std::string::npos);
        },
        options);
}

TEST_F(ImportFlowTest, ImportedSettingsCanBeUsedAfterOneHasChanged) {
    ResetLastImport();
    const std::string path = File("a.vrlmacro", kToolSettingsText);
    Run([&] {
        EXPECT_EQ(Call("useImportedSettings"), R"({"done":false,"reason":"unknown"})");
        SimAnswerDialog({FileDialogOutcome::Chosen, path, {}});
        Call("importProfile");
        EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 5) << "the tools keep their settings";
        Call("updateSpammer", "[\"0,0,0,99,0,0,1,10,0\"]");
        Call("renameProfile", "[\"1,Other\"]");
        EXPECT_EQ(Call("useImportedSettings"), R"({"done":true})");
        EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 7);
        EXPECT_EQ(keySpammerSettings.targetCount, 2);
        Call("switchProfile", "[\"0\"]");
        EXPECT_EQ(Call("useImportedSettings"), R"({"done":false,"reason":"unknown"})");
        Call("switchProfile", "[\"1\"]");
        EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 7) << "the profile has them too";
    });
}

TEST_F(ImportFlowTest, AnExportProposesTheNameOfTheProfileAndReportsTheFile) {
    const std::string path = folder_.File("written.vrlmacro");
    Run([&] {
        Call("addProfile", "[\"Farm: east/west?\"]");
        SimAnswerDialog({FileDialogOutcome::Chosen, path, {}});
        EXPECT_EQ(Call("exportMacro"), R"({"outcome":"written","file":"written.vrlmacro","message":""})");
        ASSERT_EQ(SimShownDialogs().size(), 1U);
        EXPECT_TRUE(SimShownDialogs()[0].save);
        EXPECT_EQ(SimShownDialogs()[0].proposedName, "Farm_ east_west_.vrlmacro");
        const std::string exported = ReadFile(path);
        EXPECT_EQ(exported.substr(0, exported.find('\n')), "Farm: east/west?");
        EXPECT_EQ(Call("exportMacro"), R"({"outcome":"cancelled","file":"","message":""})");
        SimAnswerDialog({FileDialogOutcome::Chosen, folder_.Path(), {}});  // a folder cannot be written
        EXPECT_EQ(Call("exportMacro").find(R"({"outcome":"failed")"), 0U);
        SimAnswerDialog({FileDialogOutcome::Unavailable, {}, "No dialog."});
        EXPECT_EQ(Call("exportMacro"), R"({"outcome":"unavailable","file":"","message":"No dialog."})");
        EXPECT_TRUE(TakeScripts().empty());
        SimAnswerDialog({FileDialogOutcome::Chosen, path, {}});
        EXPECT_EQ(Call("exportProfile"), "");
        EXPECT_EQ(SimShownDialogs().back().proposedName, "");
        EXPECT_EQ(ReadFile(path), exported);
    });
}

TEST_F(ImportFlowTest, AProposedFileNameIsShortAndNeverEmpty) {
    Run([&] {
        std::string name;
        for (int i = 0; i < 60; ++i) {
            name += "\u00e9";
        }
        Call("addProfile", "[\"" + name + "\"]");
        Call("exportMacro");
        EXPECT_EQ(SimShownDialogs().back().proposedName, name.substr(0, 100) + ".vrlmacro");
        Call("addProfile", "[\" . \"]");
        Call("exportMacro");
        EXPECT_EQ(SimShownDialogs().back().proposedName, "Macro.vrlmacro");
    });
}

TEST_F(ImportFlowTest, AboutNamesTheSystemAndTheDataFolder) {
    Run([&] {
        const std::string about = Call("getAbout");
        EXPECT_EQ(
            about.find("{\"version\":\"1.0.1\",\"platform\":\"linux\",\"session\":\"x11\",\"dataFolder\":" +
                       JsonText(DataFolderPath())),
            0U)
            << about;
        EXPECT_EQ(about.find("mingw"), std::string::npos);
        SimGetShell().session = SessionKind::Wayland;
        EXPECT_NE(Call("getAbout").find(R"("session":"wayland")"), std::string::npos);
        SimGetShell().session = SessionKind::Windows;
        EXPECT_NE(Call("getAbout").find(R"("platform":"windows","session":"windows")"), std::string::npos);
        EXPECT_NE(Call("getAbout").find("mingw"), std::string::npos);
        SimGetShell().session = SessionKind::X11;
        EXPECT_EQ(Call("openDataFolder"), R"({"done":true})");
        EXPECT_EQ(SimGetShell().openedFolders, std::vector<std::string>{DataFolderPath()});
    });
}
