#include "platform/linux/session_watch.h"

#include "platform/clock.h"
#include "platform/hooks.h"
#include "platform/linux/bus_library.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

// Returns the manager's object of our session, empty if there is no session.
std::string SessionPath(const BusLibrary& library) {
    const char* named = std::getenv("XDG_SESSION_ID");
    std::string session = named == nullptr ? "" : named;
    if (session.empty()) {
        char* found = nullptr;
        if (library.sessionOfProcess(0, &found) >= 0 && found != nullptr) {
            session = found;
            std::free(found);
        }
    }
    char* path = nullptr;
    if (session.empty() ||
        library.encodePath("/org/freedesktop/login1/session", session.c_str(), &path) < 0) {
        return "";
    }
    std::string result = path;
    std::free(path);
    return result;
}

}  // namespace

struct SessionWatch {
    const BusLibrary* library = nullptr;
    sd_bus* bus = nullptr;
    void (*onChange)(SessionChange change) = nullptr;
};

namespace {

int OnLock(sd_bus_message* /*message*/, void* userData, BusError* /*error*/) {
    static_cast<SessionWatch*>(userData)->onChange(SessionChange::Lock);
    return 0;
}

// Signature "sa{sv}as": interface, changed properties with their values, names of others.
int OnProperties(sd_bus_message* message, void* userData, BusError* /*error*/) {
    SessionWatch* watch = static_cast<SessionWatch*>(userData);
    const BusLibrary& library = *watch->library;
    const char* interface = nullptr;
    if (library.read(message, "s", &interface) < 0 ||
        std::strcmp(interface, "org.freedesktop.login1.Session") != 0 ||
        library.enterContainer(message, 'a', "{sv}") < 0) {
        return 0;
    }
    while (library.enterContainer(message, 'e', "sv") > 0) {
        const char* name = nullptr;
        if (library.read(message, "s", &name) < 0) {
            return 0;
        }
        const bool locked = std::strcmp(name, "LockedHint") == 0;
        const bool active = std::strcmp(name, "Active") == 0;
        if (locked || active) {
            int value = 0;
            if (library.read(message, "v", "b", &value) < 0) {
                return 0;
            }
            if (locked && value != 0) {
                watch->onChange(SessionChange::Lock);
            } else if (active && value == 0) {
                watch->onChange(SessionChange::ConsoleDisconnect);
            }
        } else if (library.skip(message, "v") < 0) {
            return 0;
        }
        library.exitContainer(message);
    }
    return 0;
}

// A match rule that the bus rejects must not end the connection.
int OnInstalled(sd_bus_message* /*message*/, void* /*userData*/, BusError* /*error*/) {
    return 0;
}

}  // namespace

SessionWatch* OpenSessionWatch(void (*onChange)(SessionChange change)) {
    const BusLibrary* library = LoadBusLibrary();
    if (library == nullptr) {
        return nullptr;
    }
    const std::string path = SessionPath(*library);
    if (path.empty()) {
        return nullptr;
    }
    auto watch = std::make_unique<SessionWatch>();
    watch->library = library;
    watch->onChange = onChange;
    if (library->openSystem(&watch->bus) < 0) {
        return nullptr;
    }
    constexpr const char* kManager = "org.freedesktop.login1";
    library->matchSignalAsync(watch->bus, nullptr, kManager, path.c_str(), "org.freedesktop.login1.Session",
                              "Lock", OnLock, OnInstalled, watch.get());
    library->matchSignalAsync(watch->bus, nullptr, kManager, path.c_str(), "org.freedesktop.DBus.Properties",
                              "PropertiesChanged", OnProperties, OnInstalled, watch.get());
    return watch.release();
}

void CloseSessionWatch(SessionWatch* watch) {
    if (watch != nullptr) {
        watch->library->flushCloseUnref(watch->bus);
        delete watch;
    }
}

int SessionWatchFile(SessionWatch* watch) {
    return watch == nullptr ? -1 : watch->library->getFile(watch->bus);
}

short SessionWatchEvents(SessionWatch* watch) {
    const int events = watch == nullptr ? 0 : watch->library->getEvents(watch->bus);
    return static_cast<short>(events < 0 ? 0 : events);
}

int SessionWatchTimeout(SessionWatch* watch) {
    uint64_t until = UINT64_MAX;
    if (watch == nullptr || watch->library->getTimeout(watch->bus, &until) < 0 || until == UINT64_MAX) {
        return -1;
    }
    // Both clocks are the monotonic one.
    const uint64_t now = static_cast<uint64_t>(ReadPerformanceCounter()) / 1000;
    constexpr uint64_t kLongest = 60'000;
    return until <= now ? 0 : static_cast<int>(std::min<uint64_t>((until - now) / 1000 + 1, kLongest));
}

bool ReadSessionWatch(SessionWatch* watch) {
    int result = 0;
    do {
        result = watch->library->process(watch->bus, nullptr);
    } while (result > 0);
    return result == 0;
}
