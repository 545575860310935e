#include "platform/linux/session_watch.h"

#include "platform/clock.h"
#include "platform/hooks.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <string>

// The few functions of libsystemd that are used, declared here: the library is looked for at run time, and a machine
// without it is served all the same.
struct sd_bus;
struct sd_bus_slot;
struct sd_bus_message;

namespace {

struct BusError {
    const char* name;
    const char* message;
    int needFree;
};

using MessageHandler = int (*)(sd_bus_message* message, void* userData, BusError* error);

struct BusLibrary {
    int (*openSystem)(sd_bus** bus) = nullptr;
    sd_bus* (*flushCloseUnref)(sd_bus* bus) = nullptr;
    int (*getFile)(sd_bus* bus) = nullptr;
    int (*getEvents)(sd_bus* bus) = nullptr;
    int (*getTimeout)(sd_bus* bus, uint64_t* microseconds) = nullptr;
    int (*process)(sd_bus* bus, sd_bus_message** message) = nullptr;
    int (*matchSignalAsync)(sd_bus* bus, sd_bus_slot** slot, const char* sender, const char* path,
                            const char* interface, const char* member, MessageHandler handler,
                            MessageHandler installed, void* userData) = nullptr;
    int (*encodePath)(const char* prefix, const char* id, char** path) = nullptr;
    int (*read)(sd_bus_message* message, const char* types, ...) = nullptr;
    int (*enterContainer)(sd_bus_message* message, char type, const char* contents) = nullptr;
    int (*exitContainer)(sd_bus_message* message) = nullptr;
    int (*skip)(sd_bus_message* message, const char* types) = nullptr;
    int (*sessionOfProcess)(int process, char** session) = nullptr;
};

template <typename Function> bool Find(void* module, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(module, name));
    return function != nullptr;
}

// Loaded once, never unloaded.
const BusLibrary* LoadBusLibrary() {
    static const std::unique_ptr<const BusLibrary> library = []() -> std::unique_ptr<const BusLibrary> {
        void* module = dlopen("libsystemd.so.0", RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) {
            return nullptr;
        }
        auto found = std::make_unique<BusLibrary>();
        const bool complete = Find(module, "sd_bus_open_system", found->openSystem) &&
                              Find(module, "sd_bus_flush_close_unref", found->flushCloseUnref) &&
                              Find(module, "sd_bus_get_fd", found->getFile) &&
                              Find(module, "sd_bus_get_events", found->getEvents) &&
                              Find(module, "sd_bus_get_timeout", found->getTimeout) &&
                              Find(module, "sd_bus_process", found->process) &&
                              Find(module, "sd_bus_match_signal_async", found->matchSignalAsync) &&
                              Find(module, "sd_bus_path_encode", found->encodePath) &&
                              Find(module, "sd_bus_message_read", found->read) &&
                              Find(module, "sd_bus_message_enter_container", found->enterContainer) &&
                              Find(module, "sd_bus_message_exit_container", found->exitContainer) &&
                              Find(module, "sd_bus_message_skip", found->skip) &&
                              Find(module, "sd_pid_get_session", found->sessionOfProcess);
        if (!complete) {
            dlclose(module);
            return nullptr;
        }
        return found;
    }();
    return library.get();
}

// The manager's object for our session; empty if we are in none.
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
    void (*onChange)(uint32_t change) = nullptr;
};

namespace {

int OnLock(sd_bus_message* /*message*/, void* userData, BusError* /*error*/) {
    static_cast<SessionWatch*>(userData)->onChange(kSessionLock);
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
                watch->onChange(kSessionLock);
            } else if (active && value == 0) {
                watch->onChange(kSessionConsoleDisconnect);
            }
        } else if (library.skip(message, "v") < 0) {
            return 0;
        }
        library.exitContainer(message);
    }
    return 0;
}

// A match that the bus refuses must not end the connection.
int OnInstalled(sd_bus_message* /*message*/, void* /*userData*/, BusError* /*error*/) {
    return 0;
}

}  // namespace

SessionWatch* OpenSessionWatch(void (*onChange)(uint32_t change)) {
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
