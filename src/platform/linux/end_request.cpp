#include "platform/end_request.h"

#include "platform/threads.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int kEndSignals[] = {SIGTERM, SIGINT, SIGHUP};

// Bytes sent through the pipe.
constexpr char kEndRequest = 'e';
constexpr char kStopListening = 's';

// A signal handler may do almost nothing, so it writes one byte and a thread does the rest. (Not a signalfd: it needs
// blocked signals, and those stay blocked in every child process, including the web view's.)
int pipeEnds[2] = {
    -1, -1};  // read, write; set before the signal handler is installed, closed after it is removed
std::atomic<void (*)()> endHandler{nullptr};
std::thread listener;

void OnEndSignal(int) {
    const int savedError = errno;
    // A full pipe already holds a request.
    [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &kEndRequest, 1);
    errno = savedError;
}

void ListenMain() {
    char what = 0;
    for (;;) {
        const ssize_t got = read(pipeEnds[0], &what, 1);
        if (got == 1 && what == kEndRequest) {
            endHandler.load()();
        } else if (got >= 0 || errno != EINTR) {
            return;
        }
    }
}

void SetSignalProcedure(void (*procedure)(int)) {
    struct sigaction action = {};
    action.sa_handler = procedure;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    for (const int signal : kEndSignals) {
        sigaction(signal, &action, nullptr);
    }
}

void ClosePipe() {
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}

void StopListening() {
    if (!listener.joinable()) {
        return;
    }
    SetSignalProcedure(SIG_DFL);
    while (write(pipeEnds[1], &kStopListening, 1) != 1 && errno == EAGAIN) {
        std::this_thread::yield();  // the listener empties the full pipe
    }
    JoinThread(listener);
    ClosePipe();
}

}  // namespace

void SetEndRequestHandler(void (*handler)()) {
    StopListening();
    if (handler == nullptr || pipe2(pipeEnds, O_CLOEXEC) != 0) {
        return;
    }
    fcntl(pipeEnds[1], F_SETFL, O_NONBLOCK);
    endHandler = handler;
    try {
        listener = StartThread("end request", ListenMain);
    } catch (...) {
        ClosePipe();
        throw;
    }
    SetSignalProcedure(OnEndSignal);
}
