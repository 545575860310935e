// File dialogs of other processes: fakes of the desktop's portal and of zenity, so that each outcome is tested. The tests
// in tests/program use real ones. Run by tests/linux/run.sh.
#include "test_desktop.h"

#include "platform/dialogs.h"
#include "platform/linux/bus_library.h"
#include "platform/linux/dialog_loop.h"
#include "platform/linux/dialog_portal.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr FileDialogFilter kFilters[] = {{"Macro (*.vrlmacro)", "*.vrlmacro"}, {"All Files", "*.*"}};

size_t OpenFiles() {
    size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        ++count;
    }
    return count;
}

bool HasChildren() {
    return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD;
}

// Its own folder, a PATH with only the files of the test, and no desktop.
class Dialogs : public testing::Test {
  protected:
    void SetUp() override {
        char name[] = "/tmp/varnelle-dialogs.XXXXXX";
        folder = mkdtemp(name);
        std::filesystem::create_directories(folder + "/bin");
        setenv("PATH", (folder + "/bin").c_str(), 1);
        setenv("HOME", folder.c_str(), 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + folder + "/no-bus").c_str(), 1);
        AllowFileDialogs(true);
    }
    void TearDown() override {
        AllowFileDialogs(true);
        setenv("PATH", path.c_str(), 1);
        std::filesystem::remove_all(folder);
    }

    // `script` is the body of the fake zenity. The file "asked" has its arguments, one per line, call after call.
    void PutHelper(const std::string& script) const {
        const std::string file = folder + "/bin/zenity";
        std::ofstream(file) << "#!/bin/bash\nPATH=/usr/bin:/bin\nfor argument in \"$@\"; do printf '%s\\n' "
                               "\"$argument\"; done >>"
                            << folder << "/asked\n"
                            << script << "\n";
        chmod(file.c_str(), 0755);
    }
    std::string Read(const std::string& name) const {
        std::ifstream in(folder + "/" + name);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
    void Touch(const std::string& name) const { std::ofstream(folder + "/" + name) << "x"; }

    std::string folder;
    const std::string path = std::getenv("PATH");
};

using Helper = Dialogs;

TEST_F(Dialogs, WithoutADialogTheUserReadsWhatToInstall) {
    for (const FileDialogResult& result :
         {AskForFileToOpen(kFilters), AskForFileToSave(kFilters, "vrlmacro")}) {
        EXPECT_EQ(result.outcome, FileDialogOutcome::Unavailable);
        EXPECT_EQ(result.path, "");
        EXPECT_EQ(result.problem,
                  "Varnelle cannot ask for a file because this desktop offers no file dialog; install the "
                  "package zenity, or xdg-desktop-portal with its part for your desktop, and try again.");
    }
}

TEST_F(Dialogs, APatternIgnoresCase) {
    EXPECT_EQ(DialogGlob("*.vrl1"), "*.[vV][rR][lL]1");
    EXPECT_EQ(DialogGlob("*.*"), "*");
}

TEST_F(Dialogs, AFileUriBecomesAPath) {
    EXPECT_EQ(PathOfFileUri("file:///a/b%20c%C3%a9"), "/a/b c\xC3\xA9");
    EXPECT_EQ(PathOfFileUri("file://localhost/a"), "/a");
    EXPECT_EQ(PathOfFileUri("file:///100%25"), "/100%");
    for (const char* wrong : {"", "file:", "file://", "file://elsewhere/a", "http:///a", "/a", "file:///a%",
                              "file:///a%2", "file:///a%zz", "file:///a%00b"}) {
        EXPECT_EQ(PathOfFileUri(wrong), "") << wrong;
    }
}

TEST_F(Helper, AsksForAFileToOpen) {
    PutHelper("echo /a/b.vrlmacro");
    const FileDialogResult result = AskForFileToOpen(kFilters);
    EXPECT_EQ(result.outcome, FileDialogOutcome::Chosen);
    EXPECT_EQ(result.path, "/a/b.vrlmacro");
    EXPECT_EQ(Read("asked").substr(0, 30), "--file-selection\n--title=Open\n");
    EXPECT_NE(Read("asked").find("--file-filter=Macro (*.vrlmacro) | "
                                 "*.[vV][rR][lL][mM][aA][cC][rR][oO]\n--file-filter=All Files | *\n"),
              std::string::npos);
    EXPECT_EQ(Read("asked").find("--save"), std::string::npos);
}

TEST_F(Helper, StartsInTheLastFolderOfTheUser) {
    PutHelper("echo /some/where/a.vrlmacro");
    AskForFileToOpen(kFilters);
    AskForFileToOpen(kFilters);
    EXPECT_NE(Read("asked").find("--filename=/some/where/\n"), std::string::npos);
}

TEST_F(Helper, ANameIsPassedUnchanged) {
    for (const std::string name :
         {"/a b/$(touch x);`y`'\".vrlmacro", "/-rf.x", "/line\nbreak.x", "/caf\xC3\xA9.x", "/\xFF.x"}) {
        std::ofstream(folder + "/name", std::ios::binary) << name;
        PutHelper("cat " + folder + "/name; echo");
        EXPECT_EQ(AskForFileToOpen(kFilters).path, name);
    }
}

TEST_F(Helper, AClosedDialogReturnsCancelled) {
    for (const char* script : {"exit 1", "exit 0", "echo /not/this; exit 1"}) {
        PutHelper(script);
        const FileDialogResult result = AskForFileToOpen(kFilters);
        EXPECT_EQ(result.outcome, FileDialogOutcome::Cancelled) << script;
        EXPECT_EQ(result.path + result.problem, "") << script;
    }
}

TEST_F(Helper, AFailedDialogIsReported) {
    for (const char* script :
         {"exit 255", "kill -9 $$", "kill -TERM $$", "echo /a; kill -SEGV $$", "exit 127"}) {
        PutHelper(script);
        const FileDialogResult result = AskForFileToOpen(kFilters);
        EXPECT_EQ(result.outcome, FileDialogOutcome::Unavailable) << script;
        EXPECT_EQ(result.problem, "The file dialog (zenity) broke off. Please try again.") << script;
    }
    // The file is no program.
    std::ofstream(folder + "/bin/zenity") << "#!/no/such/program\n";
    EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Unavailable);
}

TEST_F(Helper, ARemainingChildDoesNotDelayTheResult) {
    // The child keeps the pipe open for as long as the test may last. The file ends it.
    PutHelper("(until [ -e " + folder + "/over ]; do sleep 0.05; done) & echo /a.x");
    EXPECT_EQ(AskForFileToOpen(kFilters).path, "/a.x");
    Touch("over");
    // The reverse: the pipe is closed and the process still runs.
    PutHelper("exec >&-; echo >" + folder + "/closed; until [ -e " + folder +
              "/go ]; do sleep 0.05; done; exit 1");
    std::thread later([&] {
        EXPECT_TRUE(WaitFor([&] { return !Read("closed").empty(); }));
        Touch("go");
    });
    EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Cancelled);
    later.join();
}

TEST_F(Helper, LeavesNoFileNoChildAndNoInheritedDescriptor) {
    const int ours = open("/dev/null", O_RDONLY);  // without close-on-exec, as a careless library does
    PutHelper("for file in /proc/self/fd/*; do readlink $file; done >" + folder + "/files; echo /a.x");
    AskForFileToOpen(kFilters);
    const size_t before = OpenFiles();
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(AskForFileToOpen(kFilters).path, "/a.x");
    }
    PutHelper("kill -9 $$");
    AskForFileToOpen(kFilters);
    EXPECT_EQ(OpenFiles(), before);
    EXPECT_FALSE(HasChildren());
    // Its standard streams and those of bash: the script and the listed folder.
    std::ifstream files(folder + "/files");
    int nothing = 0;
    for (std::string line; std::getline(files, line);) {
        nothing += line == "/dev/null" ? 1 : 0;
        EXPECT_EQ(line.find("socket:"), std::string::npos) << line;
    }
    EXPECT_EQ(nothing, 2);  // standard input and standard error
    close(ours);
}

TEST_F(Helper, WorksWithoutExitCodes) {
    signal(SIGCHLD, SIG_IGN);  // as a parent process may have set it
    PutHelper("echo /a.x");
    EXPECT_EQ(AskForFileToOpen(kFilters).path, "/a.x");
    PutHelper("exit 1");
    EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Cancelled);
    signal(SIGCHLD, SIG_DFL);
}

TEST_F(Helper, AnEndingProgramClosesTheDialog) {
    PutHelper("trap '' TERM; echo $$ >" + folder + "/pid.new; mv " + folder + "/pid.new " + folder +
              "/pid; while true; do sleep 0.05; done");
    std::thread ending([&] {
        EXPECT_TRUE(WaitFor([&] { return !Read("pid").empty(); }));
        AllowFileDialogs(false);
    });
    EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Cancelled);
    ending.join();
    EXPECT_FALSE(HasChildren());
    EXPECT_NE(kill(std::stoi(Read("pid")), 0), 0);
    // It opens no further one.
    std::filesystem::remove(folder + "/asked");
    EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Cancelled);
    EXPECT_EQ(Read("asked"), "");
}

TEST_F(Helper, ASavedNameWithoutAnExtensionGetsOne) {
    PutHelper("echo " + folder + "/plain");
    EXPECT_EQ(AskForFileToSave(kFilters, "vrlmacro").path, folder + "/plain.vrlmacro");
    EXPECT_EQ(Read("asked").substr(0, 59), "--file-selection\n--title=Save As\n--save\n--confirm-overwrite");
    for (const char* name : {"/a.txt", "/a.vrlmacro", "/a.VRLMACRO", "/.hidden", "/a."}) {
        PutHelper("echo " + folder + name);
        EXPECT_EQ(AskForFileToSave(kFilters, "vrlmacro").path, folder + name);
    }
    PutHelper("echo " + folder + "/a.folder/plain");
    EXPECT_EQ(AskForFileToSave(kFilters, "vrlmacro").path, folder + "/a.folder/plain.vrlmacro");
}

TEST_F(Helper, AsksAgainBeforeReplacingAFileWithTheAddedExtension) {
    Touch("there.vrlmacro");
    PutHelper("case \"$*\" in *--filename=" + folder + "/there.vrlmacro*) echo " + folder +
              "/there.vrlmacro;; *) echo " + folder + "/there;; esac");
    const FileDialogResult result = AskForFileToSave(kFilters, "vrlmacro");
    EXPECT_EQ(result.outcome, FileDialogOutcome::Chosen);
    EXPECT_EQ(result.path, folder + "/there.vrlmacro");
    EXPECT_NE(Read("asked").find("--title=Save As - this file exists already\n--save\n--confirm-overwrite\n"
                                 "--filename=" +
                                 folder + "/there.vrlmacro\n"),
              std::string::npos);
    PutHelper("case \"$*\" in *--filename=" + folder + "/there.vrlmacro*) exit 1;; *) echo " + folder +
              "/there;; esac");
    EXPECT_EQ(AskForFileToSave(kFilters, "vrlmacro").outcome, FileDialogOutcome::Cancelled);
}

TEST_F(Helper, ProposesANameInTheLastFolder) {
    PutHelper("echo /some/where/a.vrlmacro");
    AskForFileToOpen(kFilters);
    PutHelper("exit 1");
    AskForFileToSave(kFilters, "vrlmacro", "My farm.vrlmacro");
    EXPECT_NE(Read("asked").find("--filename=/some/where/My farm.vrlmacro\n"), std::string::npos);
    AskForFileToSave(kFilters, "vrlmacro");
    EXPECT_NE(Read("asked").find("--filename=/some/where/\n"), std::string::npos);
}

TEST_F(Helper, IsNotSearchedInTheCurrentFolder) {
    PutHelper("echo /a.x");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder + "/bin");
    for (const char* relative : {"", ".", ":", ".:", "bin"}) {
        setenv("PATH", relative, 1);
        EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Unavailable) << relative;
    }
    std::filesystem::current_path(before);
}

// A fake portal on its own bus.
class Portal : public Dialogs {
  protected:
    enum class Manner { Answer, Refuse, Vanish, Wait };

    void SetUp() override {
        Dialogs::SetUp();
        const std::string address = "unix:path=" + folder + "/bus";
        std::ofstream(folder + "/bus.conf")
            << "<busconfig><type>session</type><listen>" << address
            << "</listen><policy context=\"default\"><allow own=\"*\"/><allow send_destination=\"*\"/>"
               "<allow receive_sender=\"*\"/></policy></busconfig>";
        const std::string settings = "--config-file=" + folder + "/bus.conf";
        setenv("PATH", path.c_str(), 1);
        bus = fork();
        if (bus == 0) {
            (void)!freopen("/dev/null", "w", stderr);
            execlp("dbus-daemon", "dbus-daemon", settings.c_str(), "--nofork", nullptr);
            _exit(127);
        }
        setenv("PATH", (folder + "/bin").c_str(), 1);
        setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
        ASSERT_NE(library, nullptr);
        ASSERT_TRUE(WaitFor(
            [&] { return access((folder + "/bus").c_str(), F_OK) == 0 && library->openUser(&portal) >= 0; }));
        ASSERT_GE(Function<int (*)(sd_bus*, const char*, uint64_t)>("sd_bus_request_name")(
                      portal, "org.freedesktop.portal.Desktop", 0),
                  0);
        Function<int (*)(sd_bus*, sd_bus_slot**, BusMessageHandler, void*)>("sd_bus_add_filter")(
            portal, nullptr, OnMessage, this);
    }
    void TearDown() override {
        StopServing();
        library->flushCloseUnref(portal);
        kill(bus, SIGTERM);
        waitpid(bus, nullptr, 0);
        Dialogs::TearDown();
    }

    template <typename Result> static Result Function(const char* name) {
        static void* module = dlopen("libsystemd.so.0", RTLD_NOW);
        return reinterpret_cast<Result>(dlsym(module, name));
    }

    void Serve() {
        server = std::thread([this] {
            while (!over) {
                while (library->process(portal, nullptr) > 0) {
                }
                pollfd file{library->getFile(portal), POLLIN, 0};
                poll(&file, 1, 5);
            }
        });
    }
    void StopServing() {
        over = true;
        if (server.joinable()) {
            server.join();
        }
    }

    static int OnMessage(sd_bus_message* message, void* userData, BusError* /*error*/) {
        auto* test = static_cast<Portal*>(userData);
        const auto isCall =
            Function<int (*)(sd_bus_message*, const char*, const char*)>("sd_bus_message_is_method_call");
        if (isCall(message, "org.freedesktop.portal.Request", "Close") > 0) {
            ++test->closed;
            return 1;
        }
        const bool save = isCall(message, "org.freedesktop.portal.FileChooser", "SaveFile") > 0;
        if (!save && isCall(message, "org.freedesktop.portal.FileChooser", "OpenFile") <= 0) {
            return 0;
        }
        test->ReadCall(message, save);
        test->Reply(message);
        return 1;
    }

    // The options become lines "name=value".
    void ReadCall(sd_bus_message* message, bool save) {
        const char* owner = nullptr;
        const char* title = nullptr;
        ASSERT_GT(library->read(message, "ss", &owner, &title), 0);
        asked += std::string(save ? "save" : "open") + " owner=" + owner + " title=" + title + "\n";
        ASSERT_GT(library->enterContainer(message, 'a', "{sv}"), 0);
        while (library->enterContainer(message, 'e', "sv") > 0) {
            const char* name = nullptr;
            ASSERT_GT(library->read(message, "s", &name), 0);
            ReadOption(message, name);
            library->exitContainer(message);
        }
        library->exitContainer(message);
    }
    void ReadOption(sd_bus_message* message, const std::string& name) {
        const char* text = nullptr;
        if (name == "handle_token" || name == "current_name") {
            ASSERT_GT(library->read(message, "v", "s", &text), 0);
            if (name == "handle_token") {
                token = text;
            } else {
                asked += name + "=" + text + "\n";
            }
        } else if (name == "current_folder") {
            const void* bytes = nullptr;
            size_t size = 0;
            ASSERT_GT(library->enterContainer(message, 'v', "ay"), 0);
            ASSERT_GT((Function<int (*)(sd_bus_message*, char, const void**, size_t*)>(
                          "sd_bus_message_read_array")(message, 'y', &bytes, &size)),
                      0);
            asked += name + "=" + std::string(static_cast<const char*>(bytes), size - 1) + "\n";
            EXPECT_EQ(static_cast<const char*>(bytes)[size - 1], '\0');
            library->exitContainer(message);
        } else if (name == "filters") {
            ASSERT_GT(library->enterContainer(message, 'v', "a(sa(us))"), 0);
            ASSERT_GT(library->enterContainer(message, 'a', "(sa(us))"), 0);
            while (library->enterContainer(message, 'r', "sa(us)") > 0) {
                uint32_t kind = 9;
                const char* glob = nullptr;
                ASSERT_GT(library->read(message, "s", &text), 0);
                ASSERT_GT(library->enterContainer(message, 'a', "(us)"), 0);
                ASSERT_GT(library->read(message, "(us)", &kind, &glob), 0);
                asked += std::string("filter=") + text + "|" + std::to_string(kind) + "|" + glob + "\n";
                library->exitContainer(message);
                library->exitContainer(message);
            }
            library->exitContainer(message);
            library->exitContainer(message);
        } else {
            library->skip(message, "v");
        }
    }

    void Reply(sd_bus_message* message) {
        if (manner == Manner::Refuse) {
            const BusError refusal{"org.freedesktop.DBus.Error.UnknownMethod", "None.", 0};
            Function<int (*)(sd_bus_message*, const BusError*)>("sd_bus_reply_method_error")(message,
                                                                                             &refusal);
            return;
        }
        std::string sender = Function<const char* (*)(sd_bus_message*)>("sd_bus_message_get_sender")(message);
        sender.erase(0, 1);
        std::replace(sender.begin(), sender.end(), '.', '_');
        const std::string request = "/org/freedesktop/portal/desktop/request/" + sender + "/" + token;
        Function<int (*)(sd_bus_message*, const char*, ...)>("sd_bus_reply_method_return")(message, "o",
                                                                                           request.c_str());
        ++opened;
        if (manner == Manner::Vanish) {
            Function<int (*)(sd_bus*, const char*)>("sd_bus_release_name")(portal,
                                                                           "org.freedesktop.portal.Desktop");
        } else if (manner == Manner::Answer) {
            const std::string uri = uris.empty() ? "" : uris.front();
            if (uris.size() > 1) {
                uris.erase(uris.begin());
            }
            Function<int (*)(sd_bus*, const char*, const char*, const char*, const char*, ...)>(
                "sd_bus_emit_signal")(portal, request.c_str(), "org.freedesktop.portal.Request", "Response",
                                      "ua{sv}", response, 2, "choices", "a(ss)", 0, "uris", "as", 1,
                                      uri.c_str());
        }
        Function<int (*)(sd_bus*)>("sd_bus_flush")(portal);
    }

    const BusLibrary* library = LoadBusLibrary();
    pid_t bus = 0;
    sd_bus* portal = nullptr;
    std::thread server;
    std::atomic<bool> over{false};

    // Behaviour. Set before Serve.
    Manner manner = Manner::Answer;
    uint32_t response = 0;
    std::vector<std::string> uris;  // the last one stays

    // What it received. Read after StopServing, except the counts.
    std::string asked;
    std::string token;
    std::atomic<int> opened{0};
    std::atomic<int> closed{0};
};

TEST_F(Portal, AsksForAFileToOpenBeforeTheHelper) {
    PutHelper("echo /from/zenity.x");
    uris = {"file:///a%20b/c.vrlmacro"};
    Serve();
    const FileDialogResult result = AskForFileToOpen(kFilters);
    StopServing();
    EXPECT_EQ(result.outcome, FileDialogOutcome::Chosen);
    EXPECT_EQ(result.path, "/a b/c.vrlmacro");
    EXPECT_EQ(asked, "open owner= title=Open\n"
                     "filter=Macro (*.vrlmacro)|0|*.[vV][rR][lL][mM][aA][cC][rR][oO]\n"
                     "filter=All Files|0|*\n");
    EXPECT_EQ(Read("asked"), "");
}

TEST_F(Portal, AClosedDialogReturnsCancelled) {
    response = 1;
    Serve();
    EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Cancelled);
    EXPECT_EQ(AskForFileToSave(kFilters, "vrlmacro").outcome, FileDialogOutcome::Cancelled);
}

TEST_F(Portal, AFailedDialogIsReported) {
    PutHelper("echo /from/zenity.x");
    response = 2;
    Serve();
    const FileDialogResult result = AskForFileToOpen(kFilters);
    EXPECT_EQ(result.outcome, FileDialogOutcome::Unavailable);
    EXPECT_EQ(result.problem, "The desktop's file dialog broke off. Please try again.");
}

TEST_F(Portal, ALostPortalIsReported) {
    manner = Manner::Vanish;
    Serve();
    EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Unavailable);
}

TEST_F(Portal, ALostBusIsReported) {
    manner = Manner::Wait;
    Serve();
    std::thread ending([&] {
        EXPECT_TRUE(WaitFor([&] { return opened == 1; }));
        kill(bus, SIGKILL);
    });
    EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Unavailable);
    ending.join();
}

TEST_F(Portal, APortalWithoutAFileDialogIsSkipped) {
    PutHelper("echo /from/zenity.x");
    manner = Manner::Refuse;
    Serve();
    EXPECT_EQ(AskForFileToOpen(kFilters).path, "/from/zenity.x");
    std::filesystem::remove(folder + "/bin/zenity");
    EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Unavailable);
}

TEST_F(Portal, ABusWithoutAPortalIsSkipped) {
    PutHelper("echo /from/zenity.x");
    Function<int (*)(sd_bus*, const char*)>("sd_bus_release_name")(portal, "org.freedesktop.portal.Desktop");
    Serve();
    EXPECT_EQ(AskForFileToOpen(kFilters).path, "/from/zenity.x");
}

TEST_F(Portal, RejectsAFileOfAnotherMachine) {
    uris = {"sftp://elsewhere/a.vrlmacro"};
    Serve();
    const FileDialogResult result = AskForFileToOpen(kFilters);
    EXPECT_EQ(result.outcome, FileDialogOutcome::Unavailable);
    EXPECT_EQ(result.problem, "Varnelle can only use files of this machine. Please choose another place.");
}

TEST_F(Portal, AsksAgainBeforeReplacingAFileWithTheAddedExtension) {
    Touch("there.vrlmacro");
    uris = {"file://" + folder + "/there", "file://" + folder + "/there.vrlmacro"};
    Serve();
    EXPECT_EQ(AskForFileToSave(kFilters, "vrlmacro").path, folder + "/there.vrlmacro");
    StopServing();
    const size_t again = asked.find("save owner= title=Save As - this file exists already\n");
    ASSERT_NE(again, std::string::npos);
    EXPECT_NE(asked.find("current_folder=" + folder + "\ncurrent_name=there.vrlmacro\n", again),
              std::string::npos);
}

TEST_F(Portal, ProposesANameWithoutAFolder) {
    uris = {"file://" + folder + "/a.vrlmacro"};
    Serve();
    EXPECT_EQ(AskForFileToSave(kFilters, "vrlmacro", "My farm.vrlmacro").path, folder + "/a.vrlmacro");
    StopServing();
    EXPECT_NE(asked.find("current_name=My farm.vrlmacro\n"), std::string::npos) << asked;
    EXPECT_EQ(asked.find("current_folder="), std::string::npos) << asked;
}

TEST_F(Portal, AnEndingProgramClosesThePortalDialog) {
    manner = Manner::Wait;
    Serve();
    std::thread ending([&] {
        EXPECT_TRUE(WaitFor([&] { return opened == 1; }));
        AllowFileDialogs(false);
    });
    EXPECT_EQ(AskForFileToOpen(kFilters).outcome, FileDialogOutcome::Cancelled);
    ending.join();
    EXPECT_TRUE(WaitFor([&] { return closed == 1; }));
}

TEST_F(Portal, NoFileIsLeftOpen) {
    uris = {"file:///a.x"};
    Serve();
    AskForFileToOpen(kFilters);
    const size_t before = OpenFiles();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(AskForFileToOpen(kFilters).path, "/a.x");
    }
    EXPECT_EQ(OpenFiles(), before);
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
