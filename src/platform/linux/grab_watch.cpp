#include "platform/linux/grab_watch.h"

#include "platform/clock.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <initializer_list>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

// NOTE: a signal that stops a process stops all of its threads, so no thread can guard the grabs of its own process.
// HACK: the watch is this program once more, in a session of its own, where no signal of the terminal reaches it. It
// ends when its socket closes, which the end of the program does in any case.
namespace {

constexpr char kRole[] = "--grab-watch";
constexpr int kPauseMilliseconds = 1000;
constexpr int kAnswerMilliseconds = 2000;
constexpr int64_t kShortestLifeSeconds = 10;  // a watch that ends sooner is not started again

std::atomic<bool> roleIsKnown{false};  // main calls RunAsGrabWatch

enum class Peer { Silent, Answered, Gone };

Peer AwaitPeer(int socket, int milliseconds) {
    pollfd file = {socket, POLLIN, 0};
    int ready = 0;
    do {
        ready = poll(&file, 1, milliseconds);
    } while (ready < 0 && errno == EINTR);
    if (ready == 0) {
        return Peer::Silent;
    }
    char bytes[16];
    return recv(socket, bytes, sizeof(bytes), MSG_DONTWAIT) > 0 ? Peer::Answered : Peer::Gone;
}

// Returns false if there is no peer. A full socket already holds a question or an answer.
bool SendByte(int socket) {
    const char byte = 0;
    return send(socket, &byte, 1, MSG_NOSIGNAL | MSG_DONTWAIT) == 1 || errno == EAGAIN;
}

// Closes the connection that owns the resource. Returns false if the server does not accept us now.
bool CloseConnectionOf(XID resource) {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        return false;
    }
    // The connection may be gone already.
    XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    XKillClient(display, resource);
    XSync(display, False);
    XCloseDisplay(display);
    return true;
}

void Watch(int socket, XID resource) {
    while (AwaitPeer(socket, kPauseMilliseconds) != Peer::Gone && SendByte(socket)) {
        const Peer peer = AwaitPeer(socket, kAnswerMilliseconds);
        if (peer == Peer::Gone || (peer == Peer::Silent && CloseConnectionOf(resource))) {
            return;
        }
    }
}

// Starts this program as a watch with `socket` as its standard input. Returns -1 on failure.
pid_t SpawnWatch(int socket, XID resource) {
    std::string role = kRole;
    std::string number = std::to_string(resource);
    char name[] = "varnelle";
    char* const arguments[] = {name, role.data(), number.data(), nullptr};
    posix_spawn_file_actions_t files;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&files);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_adddup2(&files, socket, STDIN_FILENO);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    for (const int each : {SIGPIPE, SIGXFSZ, SIGTSTP, SIGTTIN, SIGTTOU}) {
        sigaddset(&signals, each);
    }
    posix_spawnattr_setsigdefault(&attributes, &signals);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t process = -1;
    if (posix_spawn(&process, "/proc/self/exe", &files, &attributes, arguments, environ) != 0) {
        process = -1;
    }
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    return process;
}

}  // namespace

bool RunAsGrabWatch(int argumentCount, char** arguments) {
    if (argumentCount != 3 || std::strcmp(arguments[1], kRole) != 0) {
        roleIsKnown.store(true);
        return false;
    }
    Watch(STDIN_FILENO, std::strtoul(arguments[2], nullptr, 10));
    return true;
}

void StartGrabWatch(GrabWatch* watch, Display* display) {
    int ends[2];
    if (!roleIsKnown.load() || socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return;
    }
    // Any resource names its connection. Xlib makes this one for every connection.
    const XID resource = XGContextFromGC(DefaultGC(display, DefaultScreen(display)));
    watch->process = SpawnWatch(ends[1], resource);
    close(ends[1]);
    if (watch->process < 0) {
        close(ends[0]);
        return;
    }
    watch->socket = ends[0];
    watch->startedAt = ReadPerformanceCounter();
}

void AnswerGrabWatch(GrabWatch* watch, Display* display) {
    if (watch->socket < 0) {
        return;
    }
    switch (AwaitPeer(watch->socket, 0)) {
    case Peer::Silent:
        break;
    case Peer::Answered:
        SendByte(watch->socket);
        break;
    case Peer::Gone: {
        const int64_t life = ReadPerformanceCounter() - watch->startedAt;
        StopGrabWatch(watch);
        if (life > kShortestLifeSeconds * ReadPerformanceFrequency()) {
            StartGrabWatch(watch, display);
        }
        break;
    }
    }
}

void StopGrabWatch(GrabWatch* watch) {
    if (watch->socket >= 0) {
        close(watch->socket);
        // Without a wait: if it has not ended yet, the end of this process hands it to the system.
        waitpid(watch->process, nullptr, WNOHANG);
    }
    *watch = GrabWatch();
}
