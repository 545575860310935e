#include "storage/data_folder.h"

#include "platform/files.h"
#include "platform/process.h"
#include "unit/test_support.h"

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;

constexpr const char* kIdleStatus =
    R"({"state":"Idle","count":0,"restore":[],"hkRec":"","hkPlay":"","hkAuto":"","hkKeySpam":"","keySpamTargets":[],"keySpamChord":false,"ksCap":0,"reassigning":"","panelHover":false,"autoClicking":false,"keySpamming":false})";

std::string Joined(const std::string& folder, const std::string& name) {
    return folder + kPathSeparator + name;
}

// A file in the folder of the test program, where older versions kept theirs.
class ProgramFile {
  public:
    ProgramFile(const char* name, std::string_view bytes) : path_(Joined(ProgramDirectory(), name)) {
        WriteFile(path_, bytes);
    }
    ~ProgramFile() {
        std::error_code ignored;
        fs::remove(path_, ignored);
    }
    ProgramFile(const ProgramFile&) = delete;
    ProgramFile& operator=(const ProgramFile&) = delete;
    const std::string& Path() const { return path_; }

  private:
    std::string path_;
};

TEST_F(DataFolderTest, IsInLocalAppData) {
    EXPECT_EQ(DataFolderPath(), Joined(root_.Path(), "Varnelle"));
    EXPECT_EQ(DataFilePath("a.txt"), Joined(Joined(root_.Path(), "Varnelle"), "a.txt"));
    const std::string other = root_.File("other");
    localAppData_.Put(other.c_str());
    EXPECT_EQ(DataFolderPath(), Joined(other, "Varnelle")) << "computed again by each call";
}

TEST_F(DataFolderTest, IsRelativeWithoutAUsableVariable) {
    const std::string expected = Joined(".", "Varnelle");
    const ScopedEnv noXdg("XDG_DATA_HOME", nullptr);
    const ScopedEnv noHome("HOME", nullptr);
    localAppData_.Put(nullptr);
    EXPECT_EQ(DataFolderPath(), expected);
    localAppData_.Put(std::string(260, 'x').c_str());
    EXPECT_EQ(DataFolderPath(), expected);
    const std::string longest(259, 'x');
    localAppData_.Put(longest.c_str());
    EXPECT_EQ(DataFolderPath(), Joined(longest, "Varnelle"));
}

TEST_F(DataFolderTest, WritersCreateItAndCreatingItTwiceSucceeds) {
    EXPECT_FALSE(FileExists(DataFolderPath()));
    CreateDataFolder();
    CreateDataFolder();
    EXPECT_TRUE(fs::is_directory(DataFolderPath()));
}

TEST_F(DataFolderTest, ReturnsTheFirstLineOfAMirror) {
    WriteStatusMirror(R"({"state":"Playing"})");
    EXPECT_EQ(ReadFile(DataFilePath("status.txt")), R"({"state":"Playing"})")
        << "as it was given, no line end";
    EXPECT_EQ(ReadStatusMirror(), R"({"state":"Playing"})");
    WriteEventsMirror("[1]");
    EXPECT_EQ(ReadFile(DataFilePath("macroevents.txt")), "[1]");
    EXPECT_EQ(ReadEventsMirror(), "[1]");
    WritePanelSettings("{\"sh\":1}");
    EXPECT_EQ(ReadFile(DataFilePath("panelsettings.txt")), "{\"sh\":1}");
    EXPECT_EQ(ReadPanelSettings(), "{\"sh\":1}");
    WriteFile(DataFilePath("macroevents.txt"), "[2]\r\n[3]\r\n");
    EXPECT_EQ(ReadEventsMirror(), "[2]");
    WriteEventsMirror("[]");
    EXPECT_EQ(ReadEventsMirror(), "[]") << "the shorter text replaces the longer one";
}

TEST_F(DataFolderTest, ReturnsTheIdleTextsForMissingAndEmptyMirrors) {
    EXPECT_EQ(ReadStatusMirror(), kIdleStatus);
    EXPECT_EQ(ReadEventsMirror(), "[]");
    EXPECT_EQ(ReadPanelSettings(), "{}");
    CreateDataFolder();
    for (const char* content : {"", "\n", "\r\n", "\nsecond"}) {
        for (const char* name : {"status.txt", "macroevents.txt", "panelsettings.txt"}) {
            WriteFile(DataFilePath(name), content);
        }
        EXPECT_EQ(ReadStatusMirror(), kIdleStatus);
        EXPECT_EQ(ReadEventsMirror(), "[]");
        EXPECT_EQ(ReadPanelSettings(), "{}");
    }
}

TEST_F(DataFolderTest, IgnoresAMirrorThatCannotBeWritten) {
    WriteFile(root_.File("file"), "in the way");
    localAppData_.Put(root_.File("file").c_str());
    WriteStatusMirror("{}");
    WriteEventsMirror("[1]");
    WritePanelSettings("{}");
    EXPECT_EQ(ReadEventsMirror(), "[]");
    EXPECT_EQ(ReadFile(root_.File("file")), "in the way");
}

TEST_F(DataFolderTest, AtomicWriteReplacesTheFile) {
    const std::string path = root_.File("exchange.txt");
    EXPECT_TRUE(AtomicWriteFile(path, "first\n\r\n\0x"));
    EXPECT_TRUE(AtomicWriteFile(path, std::string("a\0b\n", 4)));
    EXPECT_EQ(ReadFile(path), std::string("a\0b\n", 4)) << "byte for byte, also on Windows";
    EXPECT_TRUE(AtomicWriteFile(path, ""));
    EXPECT_TRUE(FileExists(path));
    EXPECT_EQ(ReadFile(path), "");
    EXPECT_FALSE(FileExists(path + ".tmp"));
}

TEST_F(DataFolderTest, AtomicWriteReplacesALeftOverTemporaryFile) {
    const std::string path = root_.File("exchange.txt");
    WriteFile(path + ".tmp", "half of an older wri");
    EXPECT_TRUE(AtomicWriteFile(path, "new"));
    EXPECT_EQ(ReadFile(path), "new");
    EXPECT_FALSE(FileExists(path + ".tmp"));
}

TEST_F(DataFolderTest, AtomicWriteOntoAReadOnlyTargetFailsAndLeavesNothing) {
    const std::string path = root_.File("exchange.txt");
    WriteFile(path, "protected");
    fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    EXPECT_FALSE(AtomicWriteFile(path, "new"));
    EXPECT_EQ(ReadFile(path), "protected");
    EXPECT_FALSE(FileExists(path + ".tmp"));
    fs::permissions(path, fs::perms::owner_write, fs::perm_options::add);
}

TEST_F(DataFolderTest, AtomicWriteOntoAFolderFailsAndLeavesNothing) {
    const std::string path = root_.File("folder");
    fs::create_directory(path);
    WriteFile(Joined(path, "inside"), "x");
    EXPECT_FALSE(AtomicWriteFile(path, "new"));
    EXPECT_TRUE(FileExists(Joined(path, "inside")));
    EXPECT_FALSE(FileExists(path + ".tmp"));
}

TEST_F(DataFolderTest, AtomicWriteWithoutItsFolderFails) {
    EXPECT_FALSE(AtomicWriteFile(root_.File("missing/exchange.txt"), "new"));
}

TEST_F(DataFolderTest, AReaderNeverSeesAPartOfAnAtomicWrite) {
    const std::string path = root_.File("exchange.txt");
    const std::string small(10, 's');
    const std::string large(300000, 'l');
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int i = 0; i < 100; ++i) {
            AtomicWriteFile(path, i % 2 == 0 ? large : small);
        }
        done = true;
    });
    bool half = false;
    while (!done && !half) {
        std::string bytes;
        if (ReadFileBytes(path, &bytes)) {
            half = bytes != small && bytes != large;
        }
    }
    writer.join();
    EXPECT_FALSE(half);
}

TEST_F(DataFolderTest, TheSessionIsInTheFolder) {
    EXPECT_EQ(SessionPath(), DataFilePath("session.dat"));
    MigrateSessionFile();
    EXPECT_EQ(SessionPath(), DataFilePath("session.dat"));
    EXPECT_TRUE(FileExists(DataFolderPath()));
    EXPECT_FALSE(FileExists(SessionPath()));
    const std::string before = SessionPath();
    localAppData_.Put(root_.File("elsewhere").c_str());
    EXPECT_EQ(SessionPath(), before) << "kept for all later saves and loads of this run";
}

TEST_F(DataFolderTest, AnExistingSessionKeepsOlderFilesInPlace) {
    CreateDataFolder();
    const ProgramFile beside("session.mcr", "beside");
    WriteFile(DataFilePath("session.dat"), "current");
    WriteFile(DataFilePath("session.vrlmacro"), "older");
    WriteFile(DataFilePath("session.mcr"), "oldest");
    MigrateSessionFile();
    EXPECT_EQ(ReadFile(DataFilePath("session.dat")), "current");
    EXPECT_EQ(ReadFile(DataFilePath("session.vrlmacro")), "older");
    EXPECT_EQ(ReadFile(DataFilePath("session.mcr")), "oldest");
    EXPECT_EQ(ReadFile(beside.Path()), "beside");
}

TEST_F(DataFolderTest, TheFirstOlderSessionIsMovedAndTheOthersStay) {
    CreateDataFolder();
    const ProgramFile beside("session.mcr", "beside");
    WriteFile(DataFilePath("session.vrlmacro"), "older");
    WriteFile(DataFilePath("session.mcr"), "oldest");
    MigrateSessionFile();
    EXPECT_EQ(ReadFile(DataFilePath("session.dat")), "older");
    EXPECT_FALSE(FileExists(DataFilePath("session.vrlmacro")));
    EXPECT_EQ(ReadFile(DataFilePath("session.mcr")), "oldest");

    fs::remove(DataFilePath("session.dat"));
    MigrateSessionFile();
    EXPECT_EQ(ReadFile(DataFilePath("session.dat")), "oldest");
    EXPECT_EQ(ReadFile(beside.Path()), "beside");

    fs::remove(DataFilePath("session.dat"));
    MigrateSessionFile();
    EXPECT_EQ(ReadFile(DataFilePath("session.dat")), "beside");
    EXPECT_FALSE(FileExists(beside.Path()));
}

TEST_F(DataFolderTest, AnOlderSessionThatCannotBeMovedIsUsedInPlace) {
    const ProgramFile beside("session.mcr", "beside");
    WriteFile(root_.File("file"), "in the way");
    localAppData_.Put(root_.File("file").c_str());
    MigrateSessionFile();
    EXPECT_EQ(SessionPath(), beside.Path());
    EXPECT_EQ(ReadFile(beside.Path()), "beside");
}

TEST_F(DataFolderTest, MovesStateFilesOnlyIfTheTargetDoesNotExist) {
    CreateDataFolder();
    const std::string target = DataFilePath("theme.txt");
    MigrateStateFile(target, "theme.txt");
    EXPECT_FALSE(FileExists(target)) << "there is none to move";
    const ProgramFile beside("theme.txt", "ocean");
    MigrateStateFile(target, "theme.txt");
    EXPECT_EQ(ReadFile(target), "ocean");
    EXPECT_FALSE(FileExists(beside.Path()));
    const ProgramFile again("theme.txt", "forest");
    MigrateStateFile(target, "theme.txt");
    EXPECT_EQ(ReadFile(target), "ocean");
    EXPECT_EQ(ReadFile(again.Path()), "forest");
}

TEST_F(DataFolderTest, DeletesOldMirrorsInTheProgramFolder) {
    const ProgramFile beside("status.txt", "{}");
    DeleteFromProgramFolder("status.txt");
    EXPECT_FALSE(FileExists(beside.Path()));
    DeleteFromProgramFolder("status.txt");
}

}  // namespace
