// Whatever loads and saves, with each of its file operations failing in turn: refused, half done, once and from there
// on. Nothing crashes, nothing that was loaded is lost, the answer is the documented one, and once the disk is well
// again everything is as if nothing had been. The tests themselves look at the disk past the double, so that looking
// is never the operation that fails.
#include "app/main_process.h"
#include "app/reports.h"
#include "editing/event_list.h"
#include "editing/macro_edits.h"
#include "editing/profiles.h"
#include "engines/recorder.h"
#include "imports/macro_import.h"
#include "imports/self_check.h"
#include "model/engine_state.h"
#include "pending_import.h"
#include "platform/files.h"
#include "platform/simulated/simulation.h"
#include "storage/data_folder.h"
#include "storage/macro_file.h"
#include "storage/session.h"
#include "storage/settings_text.h"
#include "temp_folder.h"
#include "windows/main_page.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <ios>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

struct Failure {
    int number;  // of the operation that fails
    SimFileFault fault;
    bool forGood;
};

class FileFaults : public testing::Test {
  protected:
    FileFaults() { Begin(); }

    ~FileFaults() override {
        SimFailFileOperation(0);
        SimEnd();
        ResetEngineState();
        SetSessionPath("");
    }

    void Begin() {
        ResetEngineState();
        SetSessionPath("");
        SimBegin();
        fs::remove_all(root_);
        fs::create_directories(root_ / "program" / "ui");
        SimSetDataFolderRoot(root_.string());
        SimSetProgramPath((root_ / "program" / "varnelle").string());
    }

    // Runs `attempt` from a fresh start for every failure that it can meet, each time between `prepare` and `check`.
    // Returns the number of operations of `attempt` if none fails.
    int ForEachFailure(const std::function<void()>& prepare, const std::function<void()>& attempt,
                       const std::function<void(const Failure&)>& check) {
        Begin();
        prepare();
        const int before = SimFileOperations();
        attempt();
        const int count = SimFileOperations() - before;
        for (const SimFileFault fault : {SimFileFault::Refused, SimFileFault::HalfDone}) {
            for (const bool forGood : {false, true}) {
                for (int number = 1; number <= count; ++number) {
                    SCOPED_TRACE("operation " + std::to_string(number) +
                                 (fault == SimFileFault::Refused ? ", refused" : ", half done") +
                                 (forGood ? ", all later ones too" : ""));
                    Begin();
                    prepare();
                    SimFailFileOperation(number, fault, forGood);
                    attempt();
                    SimFailFileOperation(0);
                    check({number, fault, forGood});
                }
            }
        }
        return count;
    }

    std::string Folder(const char* name) const { return (root_ / name).string(); }

    std::set<std::string> FilesInDataFolder() const {
        std::set<std::string> names;
        std::error_code none;
        for (const auto& entry : fs::directory_iterator(root_ / "Varnelle", none)) {
            names.insert(entry.path().filename().string());
        }
        return names;
    }

    TempFolder folder_;
    const fs::path root_ = folder_.Path();
};

Profile SomeProfile(const std::string& name, uint32_t vk) {
    Profile profile{name, "", {}};
    for (int i = 0; i < 20; ++i) {
        UnifiedEvent event;
        event.type = EvKey;
        event.time = i;
        event.virtualKey = vk;
        event.down = i % 2 == 0;
        profile.events.push_back(event);
    }
    return profile;
}

// One profile and a click interval to know it by.
void SetState(const std::string& name, int32_t interval) {
    ResetEngineState();
    autoclickerSettings.intervalMilliseconds = interval;
    MutexLock lock(macroMutex);
    macroState.profiles = {SomeProfile(name, static_cast<uint32_t>(interval))};
    macroState.profiles[0].settings = BuildProfileSettings();
    macroState.currentProfile = 0;
    MarkMacroChanged();
}

// Everything that a session file would hold.
std::string State() {
    std::string text = BuildSettingsLine();
    MutexLock lock(macroMutex);
    text += ' ' + std::to_string(macroState.currentProfile) + '\n';
    for (const Profile& profile : macroState.profiles) {
        text += profile.name + '\n' + profile.settings + '\n';
        AppendEventLines(text, profile.events);
    }
    return text;
}

}  // namespace

// The state that the next start would have.
std::string StateAfterRestart() {
    ResetEngineState();
    if (!LoadSession().loaded) {
        return "nothing loaded";
    }
    return State();
}

TEST_F(FileFaults, SaveThatFailsLeavesTheOldOrTheNewSession) {
    std::string oldState;
    std::string newState;
    const auto prepare = [&] {
        SetState("Older", 11);
        oldState = State();
        SaveSession();
        SetState("Newer", 12);
        newState = State();
    };
    const int count = ForEachFailure(prepare, SaveSession, [&](const Failure&) {
        EXPECT_EQ(State(), newState);
        const SaveProblem problem = LastSaveProblem();
        const std::string restarted = StateAfterRestart();
        EXPECT_TRUE(restarted == oldState || restarted == newState) << restarted;
        if (problem == SaveProblem::None) {
            EXPECT_EQ(restarted, newState);
        }
        SetState("Newer", 12);
        SaveSession();
        EXPECT_EQ(LastSaveProblem(), SaveProblem::None);
        EXPECT_EQ(FilesInDataFolder(), (std::set<std::string>{"session-recovery.dat", "session.dat"}));
        EXPECT_EQ(StateAfterRestart(), newState);
    });
    EXPECT_GE(count, 5);  // the recovery file and its replacement, the session file, the mark, the stamp
}

TEST_F(FileFaults, SaveReportsAFullDiskUntilALaterSaveSucceeds) {
    SetState("Work", 13);
    SimFailFileOperation(1, SimFileFault::Refused, true);
    SaveSession();
    EXPECT_EQ(LastSaveProblem(), SaveProblem::DiskFull);
    SaveSession();
    EXPECT_EQ(LastSaveProblem(), SaveProblem::DiskFull);
    SimFailFileOperation(0);
    SaveSession();
    EXPECT_EQ(LastSaveProblem(), SaveProblem::None);
}

TEST_F(FileFaults, DamagedSessionIsNeverOverwritten) {
    const std::string damaged =
        "SETTINGS:\nCURRENT:0\nPROFILE:Kept\n3,1,0,0,0,65,1,0\n" + std::string(3, '\0');
    const auto prepare = [&] { WriteFile(Folder("Varnelle/session.dat"), damaged); };
    const auto attempt = [] {
        if (!LoadSession().loaded) {
            EnsureDefaultProfile();
        }
        SaveSession();
        SaveSession();
    };
    const int count = ForEachFailure(prepare, attempt, [&](const Failure&) {
        bool isKept = false;
        for (const std::string& name : FilesInDataFolder()) {
            isKept = isKept || ReadFile(Folder(("Varnelle/" + name).c_str())) == damaged;
        }
        EXPECT_TRUE(isKept);
    });
    EXPECT_GE(count, 6);
}

TEST_F(FileFaults, LoadThatFailsLosesNothing) {
    std::string saved;
    SessionLoad load;
    const auto prepare = [&] {
        SetState("In the file", 21);
        saved = State();
        SaveSession();
        SetState("Already there", 22);
    };
    const int count = ForEachFailure(
        prepare, [&] { load = LoadSession(); },
        [&](const Failure&) {
            if (load.loaded) {
                EXPECT_EQ(State(), saved);
            }
            // A session that cannot be read is moved out of the way; the recovery file has the same text.
            bool isKept = false;
            for (const std::string& name : FilesInDataFolder()) {
                isKept =
                    isKept || ReadFile(Folder(("Varnelle/" + name).c_str())).find("PROFILE:In the file\n") !=
                                  std::string::npos;
            }
            EXPECT_TRUE(isKept);
        });
    EXPECT_GE(count, 2);
}

// Wherever an older version left the session: after a start it is still whole in one place, and the program has a
// store.
TEST_F(FileFaults, AStartKeepsTheSessionWholeSomewhere) {
    SetState("Kept", 31);
    SaveSession();
    const std::string session = ReadFile(SessionPath());
    for (const char* place : {"Varnelle/session.dat", "Varnelle/session.vrlmacro", "Varnelle/session.mcr",
                              "program/session.mcr"}) {
        SCOPED_TRACE(place);
        const auto start = [] {
            MigrateSessionFile();
            if (!LoadSession().loaded) {
                EnsureDefaultProfile();
            }
        };
        const auto prepare = [&] { WriteFile(Folder(place), session); };
        const int count = ForEachFailure(prepare, start, [&](const Failure&) {
            {
                MutexLock lock(macroMutex);
                ASSERT_NE(CurrentProfile(), nullptr);
            }
            EXPECT_TRUE(ReadFile(Folder(place)) == session ||
                        ReadFile(Folder("Varnelle/session.dat")) == session);
            // The next start finds it.
            ResetEngineState();
            start();
            MutexLock lock(macroMutex);
            ASSERT_NE(CurrentProfile(), nullptr);
            EXPECT_EQ(CurrentProfile()->name, "Kept");
        });
        EXPECT_GE(count, 3);
    }
}

TEST_F(FileFaults, AnAtomicWriteNeverShowsHalf) {
    const std::string oldBytes(100, 'o');
    const std::string newBytes(200, 'n');
    std::string path;
    bool done = false;
    const auto prepare = [&] {
        path = Folder("Varnelle/exchange.txt");
        WriteFile(path, oldBytes);
    };
    const int count = ForEachFailure(
        prepare, [&] { done = AtomicWriteFile(path, newBytes); },
        [&](const Failure& failure) {
            const std::string bytes = ReadFile(path);
            if (done) {
                EXPECT_EQ(bytes, newBytes);
            } else {
                EXPECT_TRUE(bytes.empty() || bytes == oldBytes || bytes == newBytes);
            }
            if (!failure.forGood && failure.number <= 4) {
                EXPECT_FALSE(fs::exists(path + ".tmp"));
            }
            EXPECT_TRUE(AtomicWriteFile(path, newBytes));
            EXPECT_EQ(ReadFile(path), newBytes);
            EXPECT_FALSE(fs::exists(path + ".tmp"));
        });
    EXPECT_EQ(count, 4);
}

TEST_F(FileFaults, AMacroThatCannotBeReadLeavesTheRecordAlone) {
    const std::string path = Folder("some.vrlmacro");
    ParsedMacro macro;
    std::string error;
    std::string state;
    const auto prepare = [&] {
        SetState("Live", 41);
        WriteMacroFile(path, SomeProfile("Written", 65));
        SetState("Live", 42);
        state = State();
        macro = ParsedMacro{"before", "settings", {UnifiedEvent()}};
    };
    const int count = ForEachFailure(
        prepare, [&] { error = ReadMacroFile(path, &macro); },
        [&](const Failure&) {
            EXPECT_EQ(error, "Couldn't open that macro file.");
            EXPECT_EQ(macro.name, "before");
            EXPECT_EQ(macro.settings, "settings");
            EXPECT_EQ(macro.events.size(), 1U);
            EXPECT_EQ(State(), state);
            EXPECT_EQ(ReadMacroFile(path, &macro), "");
            EXPECT_EQ(macro.name, "Written");
            EXPECT_EQ(macro.events.size(), 20U);
        });
    EXPECT_EQ(count, 1);
}

TEST_F(FileFaults, AMacroThatCannotBeOpenedForWritingStaysAFullDiskIsAnError) {
    const std::string path = Folder("some.vrlmacro");
    std::string before;
    std::string state;
    bool thrown = false;
    const auto prepare = [&] {
        SetState("Live", 51);
        WriteMacroFile(path, SomeProfile("Before", 65));
        before = ReadFile(path);
        state = State();
        thrown = false;
    };
    const auto attempt = [&] {
        try {
            WriteMacroFile(path, SomeProfile("After", 66));
        } catch (const std::ios_base::failure&) {
            thrown = true;
        }
    };
    const int count = ForEachFailure(prepare, attempt, [&](const Failure& failure) {
        EXPECT_EQ(thrown, failure.number == 2);
        if (failure.number == 1 && failure.fault == SimFileFault::Refused) {
            EXPECT_EQ(ReadFile(path), before);
        }
        EXPECT_EQ(State(), state);
        WriteMacroFile(path, SomeProfile("After", 66));
        ParsedMacro macro;
        EXPECT_EQ(ReadMacroFile(path, &macro), "");
        EXPECT_EQ(macro.name, "After");
        EXPECT_EQ(macro.events.size(), 20U);
    });
    EXPECT_EQ(count, 2);
}

TEST_F(FileFaults, AMirrorThatCannotBeReadGivesItsConstant) {
    std::string answer;
    const struct {
        std::string (*read)();
        bool (*write)(std::string_view);
    } mirrors[] = {
        {ReadStatusMirror, WriteStatusMirror},
        {ReadEventsMirror, WriteEventsMirror},
        {ReadPanelSettings, WritePanelSettings},
    };
    for (const auto& mirror : mirrors) {
        const std::string constant = mirror.read();
        const auto prepare = [&] { mirror.write("[\"a line that is no constant\"]"); };
        EXPECT_EQ(ForEachFailure(
                      prepare, [&] { answer = mirror.read(); },
                      [&](const Failure&) { EXPECT_EQ(answer, constant); }),
                  1);
        EXPECT_EQ(ForEachFailure([] {}, prepare,
                                 [&](const Failure&) {
                                     mirror.write("[1]");
                                     EXPECT_EQ(mirror.read(), "[1]");
                                 }),
                  2);
    }
}

TEST_F(FileFaults, AMirrorThatCannotBeWrittenIsWrittenByTheNextPoll) {
    std::string list;
    std::string report;
    // Longer than what each poll writes without need.
    const auto prepare = [&] {
        SetState("Large", 61);
        PollStatus();
        MutexLock lock(macroMutex);
        macroState.profiles[0].events.resize(20000);
        MarkMacroChanged();
        list = MacroEventsJson(macroState.profiles[0].events);
    };
    const auto check = [&](const Failure&) {
        EXPECT_NE(report.find("\"count\":20000,"), std::string::npos);
        EXPECT_EQ(PollStatus(), report);
        EXPECT_EQ(ReadFile(Folder("Varnelle/status.txt")), report);
        EXPECT_EQ(ReadFile(Folder("Varnelle/macroevents.txt")), list);
    };
    EXPECT_GE(ForEachFailure(
                  prepare, [&] { report = PollStatus(); }, check),
              5);
    // The same after an edit and after a report of the list.
    EXPECT_GE(ForEachFailure(
                  prepare,
                  [&] {
                      DeleteEvent("20000");
                      ReportMacroEvents();
                      report = PollStatus();
                  },
                  check),
              9);
    // The same for a recording whose list grows in the file.
    const auto prepareRecording = [&] {
        prepare();
        {
            MutexLock lock(macroMutex);
            macroState.profiles[0].events.pop_back();
            MarkMacroChanged();
        }
        PollStatus();
        engineState.recording = true;
    };
    EXPECT_GE(ForEachFailure(
                  prepareRecording,
                  [&] {
                      AppendRecordedEvent({});
                      report = PollStatus();
                  },
                  check),
              5);
}

namespace {

// Nothing that the scan minds, with settings.
const char* const kHarmless = "Harmless\nSETTINGS:1,2,3,77,1,1,0,9,1,100,200,0,0,0,0,1,3.0,1,500,65,66,0,67\n"
                              "0,0.5,10,10,0,0,0\n";
// Something with the Windows key held.
const char* const kRisky = "Risky\n3,1,0,0,0,91,1,0\n3,2,0,0,0,82,1,0\n";

size_t ProfileCount() {
    MutexLock lock(macroMutex);
    return macroState.profiles.size();
}

std::string CurrentName() {
    MutexLock lock(macroMutex);
    return CurrentProfile() != nullptr ? CurrentProfile()->name : "";
}

}  // namespace

// By the dialog. What is held from before stays held.
TEST_F(FileFaults, AnImportThatFailsChangesNothing) {
    const std::string path = Folder("some.vrlmacro");
    std::string answer;
    std::string state;
    std::string held;
    const auto prepare = [&] {
        DropPendingImport();
        SetState("Live", 71);
        WriteFile(path, kRisky);
        ImportMacroFile(path);
        held = GetPendingMacroImport();
        ASSERT_NE(held.find("pendingId"), std::string::npos) << held;
        WriteFile(path, kHarmless);
        state = State();
    };
    const int count = ForEachFailure(
        prepare, [&] { answer = ImportMacroFile(path); },
        [&](const Failure&) {
            EXPECT_EQ(answer, R"({"outcome":"error","message":"Couldn't open that macro file."})");
            EXPECT_EQ(State(), state);
            EXPECT_EQ(GetPendingMacroImport(), held);
            EXPECT_EQ(ReadFile(path), kHarmless);
            EXPECT_EQ(ImportMacroFile(path), R"({"outcome":"imported"})");
            EXPECT_EQ(CurrentName(), "Harmless (Imported)");
            EXPECT_EQ(GetPendingMacroImport(), held);
        });
    EXPECT_EQ(count, 1);
    DropPendingImport();
}

TEST_F(FileFaults, AStagedMacroIsImportedOrSaidToBeUnreadable) {
    std::string path;
    std::string state;
    const auto prepare = [&] {
        SetState("Live", 72);
        path = Folder("Varnelle/themes/stem.vrlmacro");
        WriteFile(path, kHarmless);
        state = State();
        TakePendingThemeAlert();
    };
    const int count = ForEachFailure(
        prepare, [] { ImportStagedMacro("stem"); },
        [&](const Failure& failure) {
            const std::string alert = TakePendingThemeAlert();
            if (failure.number == 1) {  // to all appearance there is none
                EXPECT_EQ(alert, "");
                EXPECT_EQ(State(), state);
                EXPECT_EQ(ReadFile(path), kHarmless);
            } else if (failure.number == 2) {
                EXPECT_EQ(alert, kUnreadableMacro);
                EXPECT_EQ(State(), state);
                EXPECT_EQ(fs::exists(path), failure.forGood);
            } else {
                EXPECT_EQ(alert, "");
                EXPECT_EQ(ProfileCount(), 2U);
                EXPECT_EQ(CurrentName(), "Harmless");
                EXPECT_TRUE(fs::exists(path));
            }
        });
    EXPECT_EQ(count, 3);
}

TEST_F(FileFaults, AMacroOfTheCommandLineIsImportedOrSaidToBeUnreadable) {
    const std::string path = Folder("some.vrlmacro");
    std::string state;
    const auto prepare = [&] {
        SetState("Live", 73);
        WriteFile(path, kHarmless);
        state = State();
        TakePendingThemeAlert();
    };
    const int count = ForEachFailure(
        prepare, [&] { ImportFromCommandLine(path); },
        [&](const Failure&) {
            EXPECT_EQ(TakePendingThemeAlert(), kUnreadableMacro);
            EXPECT_EQ(State(), state);
            EXPECT_EQ(ReadFile(path), kHarmless);
        });
    EXPECT_EQ(count, 1);
}

TEST_F(FileFaults, AnExportThatFailsLeavesTheWork) {
    const std::string path = Folder("exported.vrlmacro");
    std::string state;
    bool thrown = false;
    const auto prepare = [&] {
        SetState("Live", 74);
        WriteFile(path, "an older export");
        state = State();
        FileDialogResult chosen;
        chosen.outcome = FileDialogOutcome::Chosen;
        chosen.path = path;
        SimAnswerDialog(chosen);
        thrown = false;
    };
    const auto attempt = [&] {
        try {
            ExportProfile();
        } catch (const std::ios_base::failure&) {
            thrown = true;
        }
    };
    const int count = ForEachFailure(prepare, attempt, [&](const Failure& failure) {
        EXPECT_EQ(thrown, failure.number == 2);
        EXPECT_EQ(State(), state);
        if (failure.number == 1 && failure.fault == SimFileFault::Refused) {
            EXPECT_EQ(ReadFile(path), "an older export");
        }
    });
    EXPECT_EQ(count, 2);
    ParsedMacro macro;
    prepare();
    attempt();
    EXPECT_EQ(ReadMacroFile(path, &macro), "");
    EXPECT_EQ(macro.name, "Live");
}

TEST_F(FileFaults, TheSelfCheckTellsWhatItCouldNotTry) {
    const std::string path = Folder("sample.vrlmacro");
    std::string log;
    std::string state;
    bool passed = false;
    const auto prepare = [&] {
        SetState("Live", 75);
        state = State();
        log.clear();
    };
    const int count = ForEachFailure(
        prepare, [&] { passed = ImportSelfCheck(path, &log); },
        [&](const Failure& failure) {
            const bool onlyRemoval = failure.number % 3 == 0 && (!failure.forGood || failure.number == 9);
            EXPECT_EQ(passed, onlyRemoval) << log;
            EXPECT_EQ(log.find("FAIL ") == std::string::npos, passed) << log;
            EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 6);
            EXPECT_EQ(State(), state);
            if (!failure.forGood && failure.number != 9) {
                EXPECT_FALSE(fs::exists(path));
            }
        });
    EXPECT_EQ(count, 9);
}

// The main process from start to end with each of its file operations failing: it always starts with its hotkeys,
// serves its page commands, ends, and the next run has the work if the disk was well when it was last saved.
TEST_F(FileFaults, TheMasterLivesThrough) {
    SetState("Work", 61);
    SaveSession();
    const std::string session = ReadFile(SessionPath());
    int exitCode = -1;
    bool served = false;
    const auto prepare = [&] {
        WriteFile(Folder("program/ui/index.html"), "<p>page</p>");
        WriteFile(Folder("program/theme.txt"), "dark");
        WriteFile(Folder("Varnelle/session.dat"), session);
        served = false;
        SimOnPageRun([&] {
            SimSettle();
            EXPECT_TRUE(SimHooksInstalled());
            EXPECT_FALSE(SimPageCall("getTrackerStatus", "[]").text.empty());
            SimPageCall("addProfile", "[\"Added\"]");
            SimRunFor(6000);
            EXPECT_NE(SimPageCall("getProfiles", "[]").text.find("\"Added\""), std::string::npos);
            served = true;
        });
    };
    const int count = ForEachFailure(
        prepare, [&] { exitCode = RunMainProcess({}); },
        [&](const Failure& failure) {
            EXPECT_EQ(exitCode, 0);
            EXPECT_TRUE(served);
            EXPECT_EQ(SimLiveThreads(), 0);
            const std::string after = ReadFile(Folder("Varnelle/session.dat"));
            if (!failure.forGood && failure.fault == SimFileFault::Refused) {
                EXPECT_NE(after.find("PROFILE:Added\n"), std::string::npos);
            }
            if (failure.forGood && failure.fault == SimFileFault::Refused && failure.number <= 4) {
                EXPECT_EQ(after, session);  // nothing could be written at all
            }
        });
    EXPECT_GE(count, 10);
}
