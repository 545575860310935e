// The session on the disk: what a save leaves behind, and what a start makes of damaged files.
#include "storage/session_file.h"

#include "editing/profiles.h"
#include "model/engine_state.h"
#include "platform/files.h"
#include "storage/data_folder.h"
#include "storage/session.h"
#include "unit/test_support.h"

#include <filesystem>
#include <string>
#include <vector>

#ifndef _WIN32
#include <csignal>
#include <random>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

namespace fs = std::filesystem;

class SessionFileTest : public DataFolderTest {
  protected:
    SessionFileTest() { CreateDataFolder(); }

    static std::string Recovery() { return DataFilePath("session-recovery.dat"); }

    static void SetProfile(const std::string& name, size_t events = 3) {
        MutexLock lock(macroMutex);
        macroState.profiles = {
            {name, "", std::vector<UnifiedEvent>(events, {EvKey, 1, 0, 0, 0, 65, true, 0})}};
        macroState.currentProfile = 0;
    }

    static std::string CurrentName() {
        MutexLock lock(macroMutex);
        const Profile* profile = CurrentProfile();
        return profile == nullptr ? "none" : profile->name;
    }

    static size_t CurrentEvents() {
        MutexLock lock(macroMutex);
        const Profile* profile = CurrentProfile();
        return profile == nullptr ? 0 : profile->events.size();
    }

    static SessionLoad Restart() {
        ResetEngineState();
        return LoadSession();
    }

    // The files whose names begin with "session-damaged-".
    static std::vector<std::string> DamagedFiles() {
        std::vector<std::string> paths;
        for (const auto& entry : fs::directory_iterator(DataFolderPath())) {
            if (entry.path().filename().string().rfind("session-damaged-", 0) == 0) {
                paths.push_back(entry.path().string());
            }
        }
        return paths;
    }
};

TEST_F(SessionFileTest, SaveLeavesTheSessionAndADoneRecoveryFile) {
    SetProfile("Work");
    SaveSession();
    EXPECT_EQ(LastSaveProblem(), SaveProblem::None);
    std::string text;
    EXPECT_EQ(ReadRecoveryFile(&text), RecoveryState::Done);
    EXPECT_EQ(text, ReadFile(SessionPath()));
    EXPECT_FALSE(FileExists(DataFilePath("session-recovery.tmp")));
}

TEST_F(SessionFileTest, SaveOfTheSameTextWritesNothing) {
    SetProfile("Work");
    SaveSession();
    FileStamp first;
    ASSERT_TRUE(ReadFileStamp(SessionPath(), &first));
    // A write would replace the recovery file that is missing now.
    ASSERT_TRUE(RemoveFile(Recovery()));
    SaveSession();
    EXPECT_FALSE(FileExists(Recovery()));
    SetProfile("Changed");
    SaveSession();
    EXPECT_TRUE(FileExists(Recovery()));
    EXPECT_NE(ReadFile(SessionPath()).find("PROFILE:Changed"), std::string::npos);
}

TEST_F(SessionFileTest, SaveWritesAgainOverAFileThatAnotherProgramChanged) {
    SetProfile("Work");
    SaveSession();
    const std::string text = ReadFile(SessionPath());
    WriteFile(SessionPath(), "other");
    SaveSession();
    EXPECT_EQ(ReadFile(SessionPath()), text);
    ASSERT_TRUE(RemoveFile(SessionPath()));
    SaveSession();
    EXPECT_EQ(ReadFile(SessionPath()), text);
}

TEST_F(SessionFileTest, PendingRecoveryReplacesAHalfWrittenSession) {
    SetProfile("Newer", 200);
    SaveSession();
    const std::string newer = ReadFile(SessionPath());
    std::string recovery = ReadFile(Recovery());
    const size_t stateAt = recovery.find(" D ") + 1;
    recovery[stateAt] = 'P';
    for (const size_t length : {size_t{0}, size_t{1}, newer.size() / 2, newer.size() - 1, newer.size()}) {
        WriteFile(Recovery(), recovery);
        WriteFile(SessionPath(), newer.substr(0, length));
        const SessionLoad load = Restart();
        EXPECT_TRUE(load.loaded);
        EXPECT_FALSE(load.damaged);
        EXPECT_EQ(CurrentName(), "Newer");
        EXPECT_EQ(CurrentEvents(), 200U);
    }
    fs::remove(SessionPath());
    EXPECT_TRUE(Restart().loaded);
}

TEST_F(SessionFileTest, DoneRecoveryLeavesASessionThatTheUserEdited) {
    SetProfile("Saved");
    SaveSession();
    std::string text = ReadFile(SessionPath());
    text.replace(text.find("Saved"), 5, "Edited");
    WriteFile(SessionPath(), text);
    EXPECT_TRUE(Restart().loaded);
    EXPECT_EQ(CurrentName(), "Edited");
    fs::remove(SessionPath());
    EXPECT_FALSE(Restart().loaded) << "the user removed the session on purpose";
}

TEST_F(SessionFileTest, DoneRecoveryReplacesADamagedSession) {
    SetProfile("Saved", 50);
    SaveSession();
    const std::string text = ReadFile(SessionPath());
    WriteFile(SessionPath(), text.substr(0, text.size() / 2));
    const SessionLoad load = Restart();
    EXPECT_TRUE(load.loaded);
    EXPECT_TRUE(load.damaged);
    EXPECT_EQ(ReadFile(load.keptAs), text.substr(0, text.size() / 2));
    EXPECT_EQ(CurrentEvents(), 50U);
}

TEST_F(SessionFileTest, RecoveryFileWithAnyByteChangedIsIgnored) {
    SetProfile("Saved");
    SaveSession();
    const std::string whole = ReadFile(Recovery());
    for (size_t i = 0; i < whole.size(); ++i) {
        std::string changed = whole;
        changed[i] = static_cast<char>(changed[i] ^ 1);
        std::string_view text;
        EXPECT_EQ(ParseRecovery(changed, &text), RecoveryState::None) << i;
    }
    for (size_t length = 0; length < whole.size(); ++length) {
        std::string_view text;
        EXPECT_EQ(ParseRecovery(whole.substr(0, length), &text), RecoveryState::None) << length;
    }
}

TEST_F(SessionFileTest, DamagedSessionIsKeptAndWhatCanBeReadIsLoaded) {
    const std::string begin = "SETTINGS:\nCURRENT:0\nPROFILE:Kept\n3,1,0,0,0,65,1,0\n";
    const std::string damaged[] = {"",
                                   "not a session\n",
                                   "SETTINGS:\n",
                                   begin + "3,2,0,0",
                                   begin + "what\n",
                                   begin + std::string(100, '\0')};
    for (const std::string& text : damaged) {
        SCOPED_TRACE(text);
        fs::remove_all(DataFolderPath());
        CreateDataFolder();
        WriteFile(SessionPath(), text);
        const SessionLoad load = Restart();
        EXPECT_TRUE(load.damaged);
        EXPECT_EQ(load.loaded, text.find("PROFILE") != std::string::npos);
        EXPECT_EQ(ReadFile(load.keptAs), text);
        EXPECT_FALSE(FileExists(SessionPath()));
        if (load.loaded) {
            EXPECT_EQ(CurrentName(), "Kept");
            SaveSession();
            EXPECT_FALSE(Restart().damaged);
        }
        EXPECT_EQ(DamagedFiles(), std::vector<std::string>{load.keptAs});
    }
}

TEST_F(SessionFileTest, SessionOfTwoGibibytesIsRefusedAndKept) {
    WriteFile(SessionPath(), "SETTINGS:\nCURRENT:0\nPROFILE:Large\n");
    fs::resize_file(SessionPath(), uint64_t{2} << 30);
    const SessionLoad load = Restart();
    EXPECT_TRUE(load.damaged);
    EXPECT_FALSE(load.loaded);
    EXPECT_EQ(fs::file_size(load.keptAs), uint64_t{2} << 30);
    std::string bytes;
    EXPECT_EQ(ReadFileLimited(load.keptAs, kLargestFile, FileLinks::Follow, &bytes), FileResult::TooLarge);
}

TEST_F(SessionFileTest, FolderInTheSessionsPlaceIsMovedAway) {
    fs::create_directory(SessionPath());
    const SessionLoad load = Restart();
    EXPECT_TRUE(load.damaged);
    EXPECT_TRUE(fs::is_directory(load.keptAs));
    SetProfile("Work");
    SaveSession();
    EXPECT_EQ(LastSaveProblem(), SaveProblem::None);
}

TEST_F(SessionFileTest, WriteOverAFolderReportsAProblem) {
    SetProfile("Work");
    fs::create_directory(Recovery());
    SaveSession();
    EXPECT_EQ(LastSaveProblem(), SaveProblem::Failed);
    fs::remove(Recovery());
    SaveSession();
    EXPECT_EQ(LastSaveProblem(), SaveProblem::None);
}

#ifndef _WIN32

TEST_F(SessionFileTest, StateFilesAreReadableForTheUserAlone) {
    const auto mode = [](const std::string& path) {
        struct stat status {};
        return stat(path.c_str(), &status) == 0 ? status.st_mode & 0777 : 0;
    };
    WriteFile(SessionPath(), "old");
    ASSERT_EQ(chmod(SessionPath().c_str(), 0644), 0);
    ASSERT_EQ(chmod(DataFolderPath().c_str(), 0755), 0);
    SetProfile("Work");
    SaveSession();
    WriteStatusMirror("{}");
    EXPECT_EQ(mode(SessionPath()), 0600U);
    EXPECT_EQ(mode(Recovery()), 0600U);
    EXPECT_EQ(mode(DataFilePath("status.txt")), 0600U);
    EXPECT_EQ(mode(DataFolderPath()), 0700U);
}

TEST_F(SessionFileTest, LinksInTheDataFolderAreNotFollowed) {
    const std::string target = DataFolderPath() + "/../target";
    WriteFile(target, "SETTINGS:\nCURRENT:0\nPROFILE:Elsewhere\n");
    const std::string before = ReadFile(target);
    ASSERT_EQ(symlink(target.c_str(), SessionPath().c_str()), 0);
    const SessionLoad load = Restart();
    EXPECT_TRUE(load.damaged);
    EXPECT_FALSE(load.loaded);
    SetProfile("Work");
    SaveSession();
    EXPECT_EQ(LastSaveProblem(), SaveProblem::None);
    ASSERT_EQ(symlink(target.c_str(), DataFilePath("status.txt").c_str()), 0);
    WriteStatusMirror("{\"overwritten\":true}");
    EXPECT_EQ(ReadFile(target), before);
}

TEST_F(SessionFileTest, PipesAreRefusedWithoutWaiting) {
    ASSERT_EQ(mkfifo(SessionPath().c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(DataFilePath("status.txt").c_str(), 0600), 0);
    EXPECT_TRUE(Restart().damaged);
    EXPECT_NE(ReadStatusMirror(), "");
    WriteStatusMirror("{}");
    std::string bytes;
    EXPECT_EQ(ReadFileLimited(DataFilePath("status.txt"), kLargestFile, FileLinks::Refuse, &bytes),
              FileResult::NotAFile);
}

// The limit stands for a disk that is full after so many bytes: a write beyond it is short or fails.
TEST_F(SessionFileTest, NothingSavedIsLostWhereverTheDiskIsFull) {
    std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit unlimited {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    SetProfile("First", 500);
    SaveSession();
    std::mt19937 random(20261122);
    std::string saved = "First";
    for (int round = 0; round < 100; ++round) {
        const std::string name = "Round " + std::to_string(round);
        SetProfile(name, 500 + static_cast<size_t>(round));
        struct rlimit limit = unlimited;
        limit.rlim_cur = random() % 14000;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        SaveSession();
        const SaveProblem problem = LastSaveProblem();
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &unlimited), 0);
        const SessionLoad load = Restart();
        ASSERT_TRUE(load.loaded);
        if (problem == SaveProblem::None) {
            saved = name;
        }
        ASSERT_TRUE(CurrentName() == saved || CurrentName() == name) << CurrentName() << " after " << name;
        saved = CurrentName();
    }
}

#endif

}  // namespace
