// The autostart entry and opening an address. Run by tests/linux/run.sh.
#include "test_desktop.h"

#include "platform/files.h"
#include "platform/linux/autostart_entry.h"
#include "platform/process.h"
#include "platform/shell.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

// A separate home folder, settings folder and search path for each test.
class Shell : public testing::Test {
  protected:
    Shell() {
        char name[] = "/tmp/varnelle-shell.XXXXXX";
        folder = mkdtemp(name);
        path = std::getenv("PATH");
        setenv("XDG_CONFIG_HOME", (folder + "/config").c_str(), 1);
    }
    ~Shell() override {
        unsetenv("XDG_CONFIG_HOME");
        setenv("HOME", home.c_str(), 1);
        setenv("PATH", path.c_str(), 1);
        fs::remove_all(folder);
    }

    static std::string Content(const std::string& file) {
        std::string bytes;
        ReadFileBytes(file, &bytes);
        return bytes;
    }

    // Writes an executable shell script.
    static void WriteScript(const std::string& file, const std::string& body) {
        ASSERT_TRUE(WriteFileBytes(file, "#!/bin/sh\n" + body));
        ASSERT_EQ(chmod(file.c_str(), 0755), 0);
    }

    std::string Entry() const { return folder + "/config/autostart/varnelle.desktop"; }

    std::string folder;
    std::string path;
    std::string home = std::getenv("HOME");
};

TEST_F(Shell, TheAutostartEntryIsWrittenAndRemoved) {
    SetLaunchAtStartup(false);
    EXPECT_FALSE(FileExists(folder + "/config")) << "nothing is made to have nothing";
    SetLaunchAtStartup(true);
    const std::string entry = Content(Entry());
    EXPECT_EQ(entry, "[Desktop Entry]\nType=Application\nName=Varnelle\nComment=Input automation\nExec=\"" +
                         ProgramPath() + "\"\nTerminal=false\n");
    SetLaunchAtStartup(false);
    EXPECT_FALSE(FileExists(Entry()));
    SetLaunchAtStartup(false);
    EXPECT_TRUE(FileExists(folder + "/config/autostart"));
}

TEST_F(Shell, ACorrectEntryIsNotChanged) {
    SetLaunchAtStartup(true);
    // Additions of the user or the desktop stay too.
    const std::string entry =
        Content(Entry()) + "X-GNOME-Autostart-Delay=20\n\n[Desktop Action Other]\nExec=other\n";
    ASSERT_TRUE(WriteFileBytes(Entry(), entry));
    struct stat before {};
    struct stat after {};
    ASSERT_EQ(stat(Entry().c_str(), &before), 0);
    SetLaunchAtStartup(true);
    ASSERT_EQ(stat(Entry().c_str(), &after), 0);
    EXPECT_EQ(Content(Entry()), entry);
    EXPECT_EQ(before.st_mtim.tv_sec, after.st_mtim.tv_sec);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(Shell, AnEntryForAnotherPathIsCorrected) {
    fs::create_directories(folder + "/config/autostart");
    const std::string right = AutostartEntryText(ProgramPath());
    for (const std::string& stale :
         {AutostartEntryText("/elsewhere/varnelle"), std::string(), std::string("[Desktop Entry]\n"),
          std::string("Exec=\"" + ProgramPath() + "\"\nType=Application\n"),
          "[Desktop Action X]\nType=Application\nExec=\"" + ProgramPath() + "\"\n",
          "[Desktop Entry]\nType=Link\nExec=\"" + ProgramPath() + "\"\n",
          "[Desktop Entry]\nType=Application\nExec=\"" + ProgramPath() + "\" --old\n",
          std::string("[Desktop Entry]\n[Other]\nHidden=true\n"), std::string(100000, '\0')}) {
        ASSERT_TRUE(WriteFileBytes(Entry(), stale));
        SetLaunchAtStartup(true);
        EXPECT_EQ(Content(Entry()), right) << stale;
    }
}

TEST_F(Shell, AnEntryThatTheUserSwitchedOffStaysOff) {
    fs::create_directories(folder + "/config/autostart");
    for (const char* line : {"Hidden=true\n", "Hidden = true\r\n", "X-GNOME-Autostart-enabled=false\n"}) {
        const std::string entry = AutostartEntryText("/elsewhere/varnelle") + line;
        ASSERT_TRUE(WriteFileBytes(Entry(), entry));
        SetLaunchAtStartup(true);
        EXPECT_EQ(Content(Entry()), entry);
        // Switching off and on again in the program enables it.
        SetLaunchAtStartup(false);
        EXPECT_FALSE(FileExists(Entry()));
        SetLaunchAtStartup(true);
        EXPECT_EQ(Content(Entry()), AutostartEntryText(ProgramPath()));
    }
    ASSERT_TRUE(WriteFileBytes(Entry(), AutostartEntryText("/elsewhere/varnelle") + "Hidden=false\n"));
    SetLaunchAtStartup(true);
    EXPECT_EQ(Content(Entry()), AutostartEntryText(ProgramPath()));
}

TEST_F(Shell, TheSettingsFolderFollowsTheEnvironment) {
    setenv("HOME", (folder + "/home").c_str(), 1);
    for (const char* unusable : {"", "relative/folder"}) {
        setenv("XDG_CONFIG_HOME", unusable, 1);
        SetLaunchAtStartup(true);
        const std::string entry = folder + "/home/.config/autostart/varnelle.desktop";
        EXPECT_TRUE(FileExists(entry)) << unusable;
        SetLaunchAtStartup(false);
        EXPECT_FALSE(FileExists(entry)) << unusable;
    }
    EXPECT_FALSE(FileExists("relative"));
    unsetenv("HOME");
    SetLaunchAtStartup(true);  // nowhere to write it
    setenv("HOME", home.c_str(), 1);
    setenv("XDG_CONFIG_HOME", (folder + "/file").c_str(), 1);
    ASSERT_TRUE(WriteFileBytes(folder + "/file", "in the way"));
    SetLaunchAtStartup(true);
    SetLaunchAtStartup(false);
    EXPECT_EQ(Content(folder + "/file"), "in the way");
}

TEST_F(Shell, ThePathIsQuotedForTheDesktop) {
    const struct {
        const char* path;
        const char* exec;
    } rows[] = {
        {"/opt/varnelle", R"(Exec="/opt/varnelle")"},
        {"/opt/my programs/varnelle", R"(Exec="/opt/my programs/varnelle")"},
        {"/opt/100%/%u/varnelle", R"(Exec=nice -n 0 "/opt/100%%/%%u/varnelle")"},
        {R"(/opt/say "hi"/varnelle)", R"(Exec="/opt/say \\"hi\\"/varnelle")"},
        {R"(/opt/a\b/varnelle)", R"(Exec="/opt/a\\\\b/varnelle")"},
        {"/opt/$HOME/`id`/varnelle", R"(Exec="/opt/\\$HOME/\\`id\\`/varnelle")"},
        {"/opt/it's;&|<>*?#()~/varnelle", R"(Exec="/opt/it's;&|<>*?#()~/varnelle")"},
        {"/opt/a\tb\nc\rd/varnelle", R"(Exec="/opt/a\tb\nc\rd/varnelle")"},
        {"/opt/ünï/varnelle", R"(Exec="/opt/ünï/varnelle")"},
    };
    for (const auto& row : rows) {
        const std::string entry = AutostartEntryText(row.path);
        EXPECT_NE(entry.find(std::string("\n") + row.exec + "\n"), std::string::npos) << entry;
        EXPECT_TRUE(AutostartEntryStands(entry, row.path)) << row.path;
        EXPECT_FALSE(AutostartEntryStands(entry, std::string(row.path) + "x")) << row.path;
    }
}

// Parsed by the desktop's own library.
TEST_F(Shell, ADesktopStartsTheProgramFromItsEntry) {
    if (std::system("command -v gio >/dev/null") != 0) {
        GTEST_SKIP() << "gio (libglib2.0-bin) is not installed";
    }
    int number = 0;
    for (const char* name : {"plain", "two words", "100% %f %%u", "say \"hi\"", "back\\slash\\\\",
                             "$HOME `id`", "it's;&|<>*?#()~", "tab\tand\nline", "ünï", "a=b", "50%=half"}) {
        const std::string program = folder + "/" + name + "/varnelle";
        const std::string marker = folder + "/started-" + std::to_string(++number);
        fs::create_directories(folder + "/" + name);
        WriteScript(program, "echo \"$#\" >'" + marker + "'\n");
        const std::string entry = folder + "/entry-" + std::to_string(number) + ".desktop";
        ASSERT_TRUE(WriteFileBytes(entry, AutostartEntryText(program)));
        EXPECT_EQ(std::system(("gio launch " + entry).c_str()), 0) << name;
        EXPECT_TRUE(WaitFor([&] { return Content(marker) == "0\n"; })) << name << ": " << Content(marker);
    }
}

TEST_F(Shell, AnAddressGoesToTheDesktopsOpenerAsOneArgument) {
    const std::string opened = folder + "/opened";
    WriteScript(folder + "/xdg-open", "{ echo $#; printf '%s\\n' \"$1\"; grep -E '^Sig(Blk|Ign)' "
                                      "/proc/self/status; ls /proc/self/fd; } >'" +
                                          opened + ".part'\nmv '" + opened + ".part' '" + opened + "'\n");
    setenv("PATH", (folder + ":" + path).c_str(), 1);
    const std::string target = "https://docs.varnelle.example/?a=1&b=$HOME;`id` \"x\" 'y'";
    const int kept = dup(0);  // an open file that the other program must not inherit
    for (const int ours : {SIGPIPE, SIGXFSZ}) {
        std::signal(ours, SIG_IGN);
    }
    OpenTarget(target);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "nothing is left to wait for";
    EXPECT_EQ(errno, ECHILD);
    ASSERT_TRUE(WaitFor([&] { return FileExists(opened); }));
    for (const int ours : {SIGPIPE, SIGXFSZ}) {
        std::signal(ours, SIG_DFL);
    }
    close(kept);
    const std::string text = Content(opened);
    EXPECT_EQ(text.substr(0, text.find("Sig")), "1\n" + target + "\n");
    EXPECT_NE(text.find("SigBlk:\t0000000000000000\n"), std::string::npos) << text;
    // The program ignores the signals of a broken pipe and a full file. The browser must not inherit that.
    EXPECT_NE(text.find("SigIgn:\t0000000000000000\n"), std::string::npos) << text;
    EXPECT_TRUE(text.ends_with("\n0\n1\n2\n3\n")) << "its standard files and the folder it lists: " << text;
}

TEST_F(Shell, AFolderGoesToTheDesktopsOpener) {
    const std::string opened = folder + "/opened";
    WriteScript(folder + "/xdg-open",
                "printf '%s\\n' \"$1\" >'" + opened + ".part'\nmv '" + opened + ".part' '" + opened + "'\n");
    setenv("PATH", (folder + ":" + path).c_str(), 1);
    OpenFolder("/some where/$HOME");
    ASSERT_TRUE(WaitFor([&] { return FileExists(opened); }));
    EXPECT_EQ(Content(opened), "/some where/$HOME\n");
}

TEST_F(Shell, TheSessionIsWaylandIfTheDesktopSaysSo) {
    const struct {
        const char* type;
        const char* display;
        SessionKind expected;
    } rows[] = {
        {nullptr, nullptr, SessionKind::X11},
        {"x11", nullptr, SessionKind::X11},
        {"x11", "", SessionKind::X11},
        {"wayland", nullptr, SessionKind::Wayland},
        {nullptr, "wayland-0", SessionKind::Wayland},
        {"tty", "wayland-1", SessionKind::Wayland},
    };
    const auto put = [](const char* name, const char* value) {
        value == nullptr ? unsetenv(name) : setenv(name, value, 1);
    };
    for (const auto& row : rows) {
        put("XDG_SESSION_TYPE", row.type);
        put("WAYLAND_DISPLAY", row.display);
        EXPECT_EQ(ReadSessionKind(), row.expected)
            << (row.type == nullptr ? "-" : row.type) << " " << (row.display == nullptr ? "-" : row.display);
    }
    unsetenv("XDG_SESSION_TYPE");
    unsetenv("WAYLAND_DISPLAY");
}

TEST_F(Shell, WithoutAnOpenerNothingHappens) {
    setenv("PATH", folder.c_str(), 1);
    OpenTarget("https://docs.varnelle.example/");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
