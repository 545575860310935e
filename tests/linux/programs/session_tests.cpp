// Lock and disconnect of the session, reported by a fake log-on manager on its own bus. Run by tests/linux/run.sh.
#include "platform/clock.h"
#include "platform/hooks.h"
#include "platform/linux/session_watch.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <fstream>
#include <functional>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

struct sd_bus;
struct sd_bus_message;

namespace {

constexpr const char* kSession =
    "/org/freedesktop/login1/session/_37";  // session "7", as the manager writes it
constexpr const char* kOtherSession = "/org/freedesktop/login1/session/_38";
constexpr const char* kSessionInterface = "org.freedesktop.login1.Session";

std::vector<SessionChange> changes;

void NoteChange(SessionChange change) {
    changes.push_back(change);
}

template <typename Function> Function Library(const char* name) {
    static void* module = dlopen("libsystemd.so.0", RTLD_NOW);
    return reinterpret_cast<Function>(dlsym(module, name));
}

// A bus in its own folder. This test owns the manager's name on it.
class Session : public testing::Test {
  protected:
    void SetUp() override {
        changes.clear();
        char name[] = "/tmp/varnelle-bus.XXXXXX";
        folder = mkdtemp(name);
        const std::string address = "unix:path=" + folder + "/bus";
        const std::string settings = folder + "/bus.conf";
        std::ofstream(settings)
            << "<busconfig><type>system</type><listen>" << address
            << "</listen><policy context=\"default\"><allow own=\"*\"/><allow send_destination=\"*\"/>"
               "<allow receive_sender=\"*\"/></policy></busconfig>";
        bus = fork();
        if (bus == 0) {
            (void)!freopen("/dev/null", "w", stderr);
            execlp("dbus-daemon", "dbus-daemon", ("--config-file=" + settings).c_str(), "--nofork", nullptr);
            _exit(127);
        }
        setenv("DBUS_SYSTEM_BUS_ADDRESS", address.c_str(), 1);
        setenv("XDG_SESSION_ID", "7", 1);
        const auto connect = Library<int (*)(sd_bus**)>("sd_bus_open_system");
        const auto request = Library<int (*)(sd_bus*, const char*, uint64_t)>("sd_bus_request_name");
        ASSERT_TRUE(
            Await([&] { return access((folder + "/bus").c_str(), F_OK) == 0 && connect(&manager) >= 0; }));
        ASSERT_GE(request(manager, "org.freedesktop.login1", 0), 0);
        watch = OpenSessionWatch(NoteChange);
        ASSERT_NE(watch, nullptr);
        // The watch is ready once it reports a lock.
        ASSERT_TRUE(Await([&] {
            Emit(kSession, "Lock");
            Read();
            return !changes.empty();
        }));
        DrainUntilMark();
    }
    void TearDown() override {
        CloseSessionWatch(watch);
        Library<sd_bus* (*)(sd_bus*)>("sd_bus_flush_close_unref")(manager);
        kill(bus, SIGTERM);
        waitpid(bus, nullptr, 0);
        const std::string clean = "rm -rf " + folder;
        EXPECT_EQ(std::system(clean.c_str()), 0);
    }

    static bool Await(const std::function<bool()>& condition) {
        const int64_t deadline = ReadPerformanceCounter() + 60 * ReadPerformanceFrequency();
        while (!condition()) {
            if (ReadPerformanceCounter() > deadline) {
                return false;
            }
            SleepMilliseconds(2);
        }
        return true;
    }
    void Read() {
        pollfd file{SessionWatchFile(watch), SessionWatchEvents(watch), 0};
        poll(&file, 1, 5);
        alive = alive && ReadSessionWatch(watch);
    }
    void Emit(const char* path, const char* member) {
        Library<int (*)(sd_bus*, const char*, const char*, const char*, const char*, ...)>(
            "sd_bus_emit_signal")(manager, path, kSessionInterface, member, "");
        Flush();
    }
    void EmitProperty(const char* path, const char* name, bool value) {
        Library<int (*)(sd_bus*, const char*, const char*, const char*, const char*, ...)>(
            "sd_bus_emit_signal")(manager, path, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                                  "sa{sv}as", kSessionInterface, 2, "IdleHint", "b", 1, name, "b",
                                  value ? 1 : 0, 0);
        Flush();
    }
    void Flush() { Library<int (*)(sd_bus*)>("sd_bus_flush")(manager); }
    // Waits until everything sent so far was reported. A disconnect marks the end.
    void DrainUntilMark() {
        EmitProperty(kSession, "Active", false);
        ASSERT_TRUE(Await([&] {
            Read();
            return !changes.empty() && changes.back() == SessionChange::ConsoleDisconnect;
        }));
        changes.clear();
    }
    // Returns the reported changes of the signals of `emit`, without the closing mark.
    std::vector<SessionChange> ReportsOf(const std::function<void()>& emit) {
        emit();
        Emit(kSession, "Lock");
        Emit(kSession, "Lock");
        EXPECT_TRUE(Await([&] {
            Read();
            const size_t count = changes.size();
            return count >= 2 && changes[count - 1] == SessionChange::Lock &&
                   changes[count - 2] == SessionChange::Lock;
        }));
        std::vector<SessionChange> reported(changes.begin(), changes.end() - 2);
        changes.clear();
        return reported;
    }

    std::string folder;
    pid_t bus = 0;
    sd_bus* manager = nullptr;
    SessionWatch* watch = nullptr;
    bool alive = true;
};

TEST_F(Session, DisconnectOfOurs) {
    EXPECT_EQ(ReportsOf([&] { EmitProperty(kSession, "Active", false); }),
              std::vector<SessionChange>{SessionChange::ConsoleDisconnect});
    EXPECT_EQ(ReportsOf([&] { EmitProperty(kSession, "Active", true); }), std::vector<SessionChange>{});
}

TEST_F(Session, LockHintOfOurs) {
    EXPECT_EQ(ReportsOf([&] {
                  EmitProperty(kSession, "LockedHint", true);
                  EmitProperty(kSession, "Active", false);
              }),
              (std::vector<SessionChange>{SessionChange::Lock, SessionChange::ConsoleDisconnect}));
    EXPECT_EQ(ReportsOf([&] { EmitProperty(kSession, "LockedHint", false); }), std::vector<SessionChange>{});
}

TEST_F(Session, OtherSessionsAndSignalsAreNotOurs) {
    EXPECT_EQ(ReportsOf([&] {
                  Emit(kOtherSession, "Lock");
                  EmitProperty(kOtherSession, "Active", false);
                  Emit(kSession, "Unlock");
                  EmitProperty(kSession, "RemoteHint", true);
              }),
              std::vector<SessionChange>{});
}

TEST_F(Session, ALostBusEndsTheWatchOnly) {
    kill(bus, SIGKILL);
    EXPECT_TRUE(Await([&] {
        Read();
        return !alive;
    }));
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
