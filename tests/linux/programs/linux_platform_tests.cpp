// Processes, files, events and threads of the Linux backend. Run by tests/linux/run.sh.
#include "test_desktop.h"

#include "platform/files.h"
#include "platform/linux/session_watch.h"
#include "platform/process.h"
#include "platform/wake.h"

#include <atomic>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

// A separate folder for each test, removed at its end.
class LinuxPlatform : public testing::Test {
  protected:
    LinuxPlatform() {
        char name[] = "/tmp/varnelle-platform.XXXXXX";
        folder = mkdtemp(name);
    }
    ~LinuxPlatform() override { std::filesystem::remove_all(folder); }

    std::string File(const std::string& name) const { return folder + "/" + name; }
    std::string Content(const std::string& path) const {
        std::string bytes;
        EXPECT_TRUE(ReadFileBytes(path, &bytes)) << path;
        return bytes;
    }

    std::string folder;
};

// Runs `body` in a child process, which it may crash. Returns the wait status.
int InChild(const std::function<void()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        body();
        _exit(0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return status;
}

TEST_F(LinuxPlatform, FilesKeepTheirBytes) {
    std::string bytes;
    for (int each = 0; each < 300'000; ++each) {
        bytes += static_cast<char>(each * 7);
    }
    EXPECT_TRUE(WriteFileBytes(File("a"), bytes));
    EXPECT_EQ(Content(File("a")), bytes);
    EXPECT_TRUE(WriteFileBytes(File("a"), ""));
    EXPECT_EQ(Content(File("a")), "");
    std::string untouched = "x";
    EXPECT_FALSE(ReadFileBytes(File("none"), &untouched));
    EXPECT_FALSE(ReadFileBytes(folder, &untouched));
    EXPECT_FALSE(WriteFileBytes(folder, "x"));
    EXPECT_FALSE(WriteFileBytes(File("none/x"), "x"));
    EXPECT_FALSE(WriteFileBytes("/dev/full", "x"));
    // Files without a known size.
    std::string status;
    EXPECT_TRUE(ReadFileBytes("/proc/self/status", &status));
    EXPECT_NE(status.find("Name:"), std::string::npos);
}

TEST_F(LinuxPlatform, MoveDoesNotReplace) {
    ASSERT_TRUE(WriteFileBytes(File("a"), "1"));
    ASSERT_TRUE(WriteFileBytes(File("b"), "2"));
    EXPECT_FALSE(MoveFileNoReplace(File("a"), File("b")));
    EXPECT_EQ(Content(File("b")), "2");
    EXPECT_TRUE(MoveFileNoReplace(File("a"), File("c")));
    EXPECT_FALSE(FileExists(File("a")));
    EXPECT_EQ(Content(File("c")), "1");
    EXPECT_FALSE(MoveFileNoReplace(File("none"), File("d")));
    EXPECT_FALSE(MoveFileNoReplace(File("c"), File("none/d")));
    EXPECT_EQ(Content(File("c")), "1");
}

TEST_F(LinuxPlatform, MoveAcrossVolumes) {
    struct stat here {};
    struct stat there {};
    ASSERT_EQ(stat(folder.c_str(), &here), 0);
    if (stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev) {
        GTEST_SKIP() << "one volume only";
    }
    const std::string other = "/dev/shm/varnelle-" + std::to_string(getpid());
    ASSERT_TRUE(WriteFileBytes(File("a"), "12345"));
    EXPECT_TRUE(MoveFileNoReplace(File("a"), other));
    EXPECT_FALSE(FileExists(File("a")));
    EXPECT_EQ(Content(other), "12345");
    ASSERT_TRUE(WriteFileBytes(File("a"), "6"));
    EXPECT_FALSE(MoveFileNoReplace(File("a"), other));
    EXPECT_EQ(Content(other), "12345");
    EXPECT_EQ(Content(File("a")), "6");
    EXPECT_TRUE(RemoveFile(other));
}

TEST_F(LinuxPlatform, FoldersAndRemoval) {
    EXPECT_TRUE(CreateFolder(File("sub")));
    EXPECT_FALSE(CreateFolder(File("sub")));
    EXPECT_FALSE(CreateFolder(File("none/sub")));
    EXPECT_TRUE(FileExists(File("sub")));
    EXPECT_FALSE(RemoveFile(File("sub")));
    EXPECT_FALSE(RemoveFile(File("none")));
    ASSERT_TRUE(WriteFileBytes(File("a"), "1"));
    ASSERT_EQ(chmod(File("a").c_str(), 0444), 0);
    EXPECT_FALSE(RemoveFile(File("a"))) << "a read-only file is safe, as on Windows";
    ASSERT_EQ(chmod(File("a").c_str(), 0644), 0);
    EXPECT_TRUE(RemoveFile(File("a")));
}

TEST_F(LinuxPlatform, DataFolderRootFollowsTheEnvironment) {
    const auto rootWith = [&](const char* local, const char* data, const char* home) {
        const auto set = [](const char* name, const char* value) {
            value == nullptr ? unsetenv(name) : setenv(name, value, 1);
        };
        set("LOCALAPPDATA", local);
        set("XDG_DATA_HOME", data);
        set("HOME", home);
        return DataFolderRoot();
    };
    const std::string data = File("x/data");
    const std::string home = File("home");
    const std::string longest(259, 'a');
    EXPECT_EQ(rootWith("/local", data.c_str(), home.c_str()), "/local");
    EXPECT_EQ(rootWith(longest.c_str(), data.c_str(), home.c_str()), longest);
    EXPECT_EQ(rootWith((longest + "a").c_str(), data.c_str(), home.c_str()), ".");
    EXPECT_FALSE(FileExists(data)) << "made only where it is used";
    EXPECT_EQ(rootWith(nullptr, data.c_str(), home.c_str()), data);
    EXPECT_TRUE(FileExists(data));
    EXPECT_EQ(rootWith("", "relative", home.c_str()), home + "/.local/share");
    EXPECT_TRUE(FileExists(home + "/.local/share"));
    EXPECT_EQ(rootWith(nullptr, nullptr, nullptr), ".");
    EXPECT_EQ(TextLineEnd(), "\n");
}

TEST_F(LinuxPlatform, OneInstance) {
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    setenv("LOCALAPPDATA", folder.c_str(), 1);
    EXPECT_EQ(ClaimSingleInstance("Test\\Name/1"), InstanceResult::First);
    const auto other = [&] {
        return WEXITSTATUS(InChild([] {
            // The child shares the lock of its parent, so it opens the file again to test it.
            execl("/proc/self/exe", "linux_platform_tests", "--claim", "Test\\Name/1", nullptr);
            _exit(9);
        }));
    };
    EXPECT_EQ(other(), 1);
    EXPECT_EQ(RunningInstanceProcessId(), OwnProcessId());
    // Another folder of the log-on session, or none, does not help: the data folder is the same.
    ASSERT_TRUE(CreateFolder(File("other")));
    for (const std::string& runtime : {File("other"), File("missing"), std::string()}) {
        setenv("XDG_RUNTIME_DIR", runtime.c_str(), 1);
        EXPECT_EQ(other(), 1) << runtime;
    }
    setenv("XDG_RUNTIME_DIR", File("other").c_str(), 1);
    setenv("LOCALAPPDATA", File("other").c_str(), 1);
    EXPECT_EQ(other(), 0) << "another session folder and another data folder";
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    setenv("LOCALAPPDATA", folder.c_str(), 1);
    ReleaseSingleInstance();
    EXPECT_EQ(other(), 0);
}

TEST_F(LinuxPlatform, TheClaimEndsWithAKill) {
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    setenv("LOCALAPPDATA", folder.c_str(), 1);
    int ready[2];
    ASSERT_EQ(pipe2(ready, O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        ClaimSingleInstance("Killed");
        char one = '1';
        if (write(ready[1], &one, 1) != 1) {
            _exit(9);
        }
        for (;;) {
            pause();
        }
    }
    char one = 0;
    ASSERT_EQ(read(ready[0], &one, 1), 1);
    EXPECT_EQ(ClaimSingleInstance("Killed"), InstanceResult::AlreadyRunning);
    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(ClaimSingleInstance("Killed"), InstanceResult::First);
    ReleaseSingleInstance();
    close(ready[0]);
    close(ready[1]);
}

TEST_F(LinuxPlatform, AFailingLockCountsAsFirst) {
    setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
    setenv("LOCALAPPDATA", folder.c_str(), 1);
    ASSERT_TRUE(CreateFolder(File("varnelle-Blocked.lock")));
    EXPECT_EQ(ClaimSingleInstance("Blocked"), InstanceResult::First);
    ReleaseSingleInstance();
}

TEST_F(LinuxPlatform, OwnImage) {
    EXPECT_TRUE(IsOwnImage(OwnProcessId()));
    const pid_t child = fork();
    if (child == 0) {
        for (;;) {
            pause();
        }
    }
    EXPECT_TRUE(IsOwnImage(static_cast<uint32_t>(child)));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    EXPECT_FALSE(IsOwnImage(static_cast<uint32_t>(child)));
    EXPECT_FALSE(IsOwnImage(0));
    EXPECT_FALSE(IsOwnImage(static_cast<uint32_t>(getppid())));
    EXPECT_EQ(ProgramPath(), ProgramDirectory() + "/linux_platform_tests");
}

TEST_F(LinuxPlatform, PrepareProcessClearsTheWebViewsVariables) {
    EXPECT_EQ(InChild([] {
                  constexpr const char* kNames[] = {"WEBVIEW2_USER_DATA_FOLDER", "WEBKIT_EXEC_PATH",
                                                    "WEBKIT_INJECTED_BUNDLE_PATH", "WEBKIT_INSPECTOR_SERVER",
                                                    "WEBKIT_INSPECTOR_HTTP_SERVER"};
                  for (const char* name : kNames) {
                      setenv(name, "x", 1);
                  }
                  PrepareProcess();
                  for (const char* name : kNames) {
                      if (getenv(name) != nullptr) {
                          _exit(1);
                      }
                  }
                  _exit(0);
              }),
              0);
}

char crashFile[200];

void NoteCrash() {
    const int file = open(crashFile, O_WRONLY | O_CREAT | O_APPEND, 0600);
    if (file < 0 || write(file, "saved", 5) != 5) {
        _exit(8);
    }
    close(file);
}

// Overflows any stack. Volatile, and with work after the call, so that it stays a call.
int Overflow(int depth) {
    volatile char block[4096] = {};
    block[depth % 4096] = 1;
    const int below = depth < 0 ? 0 : Overflow(depth + 1);
    return below + block[0];
}

TEST_F(LinuxPlatform, ACrashSavesOnceAndEndsInTheUsualWay) {
    const struct {
        int signal;
        void (*body)();
    } kCrashes[] = {
        {SIGSEGV, [] { raise(SIGSEGV); }},
        {SIGSEGV, [] { *static_cast<volatile int*>(nullptr) = 1; }},
        {SIGABRT, [] { std::abort(); }},
        {SIGABRT, [] { std::terminate(); }},
        {SIGFPE, [] { raise(SIGFPE); }},
        {SIGILL, [] { raise(SIGILL); }},
        {SIGBUS, [] { raise(SIGBUS); }},
        {SIGSEGV, [] { Overflow(0); }},
        {SIGSEGV,
         [] {
             std::thread other = StartThread("deep", [] { Overflow(0); });
             JoinThread(other);
         }},
    };
    int number = 0;
    for (const auto& crash : kCrashes) {
        std::snprintf(crashFile, sizeof(crashFile), "%s/crash%d", folder.c_str(), number++);
        const int status = InChild([&] {
            SetCrashHandler(NoteCrash);
            crash.body();
        });
        EXPECT_TRUE(WIFSIGNALED(status)) << number;
        EXPECT_EQ(WTERMSIG(status), crash.signal) << number;
        EXPECT_EQ(Content(crashFile), "saved") << number;
    }
}

TEST_F(LinuxPlatform, ASaveThatCrashesOrHangsStillEnds) {
    const int status = InChild([] {
        SetCrashHandler([] { raise(SIGSEGV); });
        raise(SIGABRT);
    });
    EXPECT_TRUE(WIFSIGNALED(status));
    const int hung = InChild([] {
        SetCrashHandler([] {
            for (;;) {
                pause();
            }
        });
        raise(SIGABRT);
    });
    EXPECT_TRUE(WIFSIGNALED(hung));
}

TEST_F(LinuxPlatform, AutomaticAndManualEvents) {
    WakeEvent* events[3] = {CreateWakeEvent(WakeReset::Automatic), CreateWakeEvent(WakeReset::Manual),
                            nullptr};
    EXPECT_EQ(WaitForAny(events, 3, 0), -1);
    SignalWake(events[0]);
    SignalWake(events[0]);
    EXPECT_EQ(WaitForAny(events, 3, kNoLimit), 0);
    EXPECT_EQ(WaitForAny(events, 3, 0), -1) << "two signals are one";
    SignalWake(events[1]);
    EXPECT_EQ(WaitForAny(events, 3, kNoLimit), 1);
    EXPECT_EQ(WaitForAny(events, 3, kNoLimit), 1);
    SignalWake(events[0]);
    EXPECT_EQ(WaitForAny(events, 3, kNoLimit), 0) << "the lowest";
    SignalWake(nullptr);
    CloseWakeEvent(events[0]);
    CloseWakeEvent(events[1]);
    CloseWakeEvent(nullptr);
    WakeEvent* none[1] = {nullptr};
    const int64_t start = ReadPerformanceCounter();
    EXPECT_EQ(WaitForAny(none, 1, 20), -1);
    EXPECT_GE(ReadPerformanceCounter() - start, 20'000'000);
}

WakeEvent* pingEvent = nullptr;
WakeEvent* pongEvent = nullptr;
constexpr int kRounds = 2000;

TEST_F(LinuxPlatform, EventsWakeOtherThreads) {
    pingEvent = CreateWakeEvent(WakeReset::Automatic);
    pongEvent = CreateWakeEvent(WakeReset::Automatic);
    std::thread other = StartThread("pong", [] {
        for (int round = 0; round < kRounds; ++round) {
            WaitForAny(&pingEvent, 1, kNoLimit);
            SignalWake(pongEvent);
        }
    });
    for (int round = 0; round < kRounds; ++round) {
        SignalWake(pingEvent);
        ASSERT_EQ(WaitForAny(&pongEvent, 1, kNoLimit), 0);
    }
    JoinThread(other);
    CloseWakeEvent(pingEvent);
    CloseWakeEvent(pongEvent);
}

std::atomic<int> tickets{0};

// An automatic event wakes one waiter per signal, a manual one wakes all.
TEST_F(LinuxPlatform, ManyWaiters) {
    pingEvent = CreateWakeEvent(WakeReset::Automatic);
    pongEvent = CreateWakeEvent(WakeReset::Manual);
    tickets = 0;
    std::vector<std::thread> waiters;
    for (int each = 0; each < 8; ++each) {
        waiters.push_back(StartThread("waiter", [] {
            WakeEvent* both[2] = {pingEvent, pongEvent};
            while (WaitForAny(both, 2, kNoLimit) == 0) {
                ++tickets;
            }
        }));
    }
    for (int round = 1; round <= 500; ++round) {
        SignalWake(pingEvent);
        ASSERT_TRUE(WaitFor([&] { return tickets == round; }));
    }
    SignalWake(pongEvent);
    for (std::thread& each : waiters) {
        JoinThread(each);
    }
    EXPECT_EQ(tickets, 500);
    CloseWakeEvent(pingEvent);
    CloseWakeEvent(pongEvent);
}

TEST_F(LinuxPlatform, SleepsAreNeverShort) {
    BeginTimerPeriod();
    for (const uint32_t milliseconds : {1U, 2U, 13U}) {
        const int64_t start = ReadPerformanceCounter();
        SleepMilliseconds(milliseconds);
        EXPECT_GE(ReadPerformanceCounter() - start, milliseconds * ReadPerformanceFrequency() / 1000);
    }
    EndTimerPeriod();
}

TEST_F(LinuxPlatform, ThreadsHaveNames) {
    std::thread other = StartThread("a-name-that-is-too-long", [] {
        char name[32] = {};
        pthread_getname_np(pthread_self(), name, sizeof(name));
        tickets = std::strcmp(name, "a-name-that-is-") == 0 ? 1 : 0;
    });
    JoinThread(other);
    JoinThread(other);
    EXPECT_EQ(tickets, 1);
}

TEST_F(LinuxPlatform, NoBusNoSessionWatch) {
    setenv("XDG_SESSION_ID", "7", 1);
    setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + File("none")).c_str(), 1);
    EXPECT_EQ(OpenSessionWatch(nullptr), nullptr);
    EXPECT_EQ(SessionWatchFile(nullptr), -1);
    EXPECT_EQ(SessionWatchTimeout(nullptr), -1);
    CloseSessionWatch(nullptr);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--claim") == 0) {
        return ClaimSingleInstance(argv[2]) == InstanceResult::First ? 0 : 1;
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
