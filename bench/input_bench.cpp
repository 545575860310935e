// How exactly input reaches an X server: our playback and autoclicker beside other programs that do the same.
//
// Everything is measured in one place, at an observer of the server's raw input, so that each program pays the same
// way. Needs DISPLAY; prints one table. Usage: input_bench
#include "engines/autoclicker.h"
#include "engines/dispatcher.h"
#include "engines/playback.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/input.h"
#include "platform/key_table.h"
#include "platform/threads.h"
#include "platform/wake.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <poll.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kKeyEvents = 1000;
constexpr double kGridSeconds = 0.005;
constexpr int kClickRounds = 5;   // of each program in turn, so that a busy moment meets all of them
constexpr int kClickSeconds = 2;  // a round
constexpr uint32_t kKeyA = 65;
constexpr int kKeycodeA = 38;  // evdev 30 + 8: the same key for the programs that take key codes

// The observer's thread fills these; `observed` may be read while it runs.
struct Observer {
    std::vector<int64_t> times;
    std::atomic<size_t> observed{0};
    std::atomic<bool> stop{false};
    std::atomic<bool> ready{false};
};

void Observe(Observer* observer, bool keys) {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        std::fprintf(stderr, "input_bench: no display\n");
        std::exit(2);
    }
    int opcode = 0;
    int event = 0;
    int error = 0;
    XQueryExtension(display, "XInputExtension", &opcode, &event, &error);
    int major = 2;
    int minor = 4;
    XIQueryVersion(display, &major, &minor);
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    if (keys) {
        XISetMask(bits, XI_RawKeyPress);
        XISetMask(bits, XI_RawKeyRelease);
    } else {
        XISetMask(bits, XI_RawButtonPress);
    }
    XIEventMask mask = {XIAllMasterDevices, sizeof bits, bits};
    XISelectEvents(display, DefaultRootWindow(display), &mask, 1);
    XSync(display, False);
    observer->ready = true;
    pollfd waiter = {ConnectionNumber(display), POLLIN, 0};
    while (!observer->stop) {
        while (XPending(display) > 0) {
            XEvent next;
            XNextEvent(display, &next);
            if (next.xcookie.type == GenericEvent && next.xcookie.extension == opcode) {
                observer->times.push_back(ReadPerformanceCounter());
                observer->observed = observer->times.size();
            }
        }
        poll(&waiter, 1, 20);
    }
    XCloseDisplay(display);
}

std::vector<int64_t> ObserveWhile(bool keys, const std::function<void()>& work, size_t expected) {
    Observer observer;
    observer.times.reserve(1 << 20);
    std::thread thread(Observe, &observer, keys);
    while (!observer.ready) {
        SleepMilliseconds(1);
    }
    work();
    for (int i = 0; i < 300 && observer.observed < expected; i++) {
        SleepMilliseconds(10);
    }
    observer.stop = true;
    thread.join();
    return observer.times;
}

void CreateEvents() {
    engineState.counterFrequency = ReadPerformanceFrequency();
    engineState.quitEvent = CreateWakeEvent(WakeReset::Manual);
    engineState.dispatchEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.autoclickerWakeEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.keySpammerWakeEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.playWakeEvent = CreateWakeEvent(WakeReset::Automatic);
}

struct Schedule {
    size_t events = 0;
    double medianMicroseconds = 0;
    double worstMicroseconds = 0;
    double lastMicroseconds = 0;  // how much later than the first the last event came, against the grid
};

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Compares the times with the grid that fits best: an observer cannot tell a constant delay from a later start, so the
// median offset is not an error. Offsets that grow are errors.
Schedule Evaluate(const std::vector<int64_t>& times) {
    Schedule result;
    result.events = times.size();
    if (times.empty()) {
        return result;
    }
    std::vector<double> offsets;
    for (size_t i = 0; i < times.size(); i++) {
        double seconds =
            static_cast<double>(times[i] - times[0]) / static_cast<double>(ReadPerformanceFrequency());
        offsets.push_back((seconds - static_cast<double>(i) * kGridSeconds) * 1e6);
    }
    // Fifty at each end, so that one late observation does not look like drift.
    const auto edge = static_cast<ptrdiff_t>(std::min<size_t>(50, offsets.size()));
    result.lastMicroseconds =
        Median({offsets.end() - edge, offsets.end()}) - Median({offsets.begin(), offsets.begin() + edge});
    const double middle = Median(offsets);
    std::vector<double> errors;
    for (double offset : offsets) {
        errors.push_back(std::fabs(offset - middle));
    }
    result.medianMicroseconds = Median(errors);
    result.worstMicroseconds = *std::max_element(errors.begin(), errors.end());
    return result;
}

void RunCommand(const std::string& command) {
    int status = std::system(command.c_str());
    if (status != 0) {
        std::fprintf(stderr, "input_bench: '%s' ended with %d\n", command.c_str(), status);
    }
}

void PlayOurs() {
    {
        MutexLock lock(macroMutex);
        macroState.profiles.assign(1, Profile());
        macroState.currentProfile = 0;
        for (int i = 0; i < kKeyEvents; i++) {
            UnifiedEvent event;
            event.type = EvKey;
            event.time = i * kGridSeconds;
            event.virtualKey = kKeyA;
            event.down = i % 2 == 0;
            macroState.profiles[0].events.push_back(event);
        }
    }
    RaiseRequest(engineState.requestStartPlay);
    while (!engineState.playing) {
        SleepMilliseconds(1);
    }
    while (engineState.playing) {
        SleepMilliseconds(1);
    }
}

void ClickOurs() {
    autoclickerSettings.intervalMilliseconds = 1;
    autoclickerSettings.repeatMode = 1;
    RaiseRequest(engineState.requestStartAutoclicker);
    SleepMilliseconds(kClickSeconds * 1000);
    RaiseRequest(engineState.requestStopAutoclicker);
    while (engineState.autoClicking) {
        SleepMilliseconds(1);
    }
}

// The limit of any program that clicks at a 1 ms pause: send a click, sleep 1 ms, nothing else.
void ClickBare() {
    int64_t end = ReadPerformanceCounter() + ReadPerformanceFrequency() * kClickSeconds;
    const InputAction down = {.kind = InputKind::Button, .down = true, .button = kLeftButton};
    const InputAction up = {.kind = InputKind::Button, .down = false, .button = kLeftButton};
    while (ReadPerformanceCounter() < end) {
        SendInputAction(down);
        SendInputAction(up);
        SleepMilliseconds(1);
    }
}

void ClickXdotool() {
    RunCommand("xdotool click --repeat " + std::to_string(kClickSeconds * 900) + " --delay 1 1");
}

// Returns clicks a second from the first observed click to the last: the start of a program does not count.
double ClickRate(void (*work)()) {
    const std::vector<int64_t> times = ObserveWhile(false, work, 0);
    if (times.size() < 2) {
        return 0.0;
    }
    const double seconds =
        static_cast<double>(times.back() - times.front()) / static_cast<double>(ReadPerformanceFrequency());
    return static_cast<double>(times.size() - 1) / seconds;
}

void PrintSchedule(const char* name, const Schedule& schedule, const Schedule& ours) {
    std::printf("  %-34s %5zu events  median error %9.1f us  worst %10.1f us  last minus first %10.1f us  "
                "ours is %.0fx closer\n",
                name, schedule.events, schedule.medianMicroseconds, schedule.worstMicroseconds,
                schedule.lastMicroseconds, schedule.medianMicroseconds / ours.medianMicroseconds);
}

}  // namespace

int main() {
    XInitThreads();
    BeginTimerPeriod();
    CreateEvents();
    std::thread dispatcher = StartThread("dispatcher", DispatcherThreadMain);
    std::thread playback = StartThread("playback", PlaybackThreadMain);
    std::thread autoclicker = StartThread("autoclicker", AutoclickerThreadMain);

    std::printf("1,000 key events on a 5 ms grid, at an observer of the X server\n");
    Schedule ours = Evaluate(ObserveWhile(true, PlayOurs, kKeyEvents));
    PrintSchedule("varnelle playback", ours, ours);

    std::string script = "/tmp/varnelle-bench-" + std::to_string(getpid());
    {
        std::ofstream xdotool(script + ".xdotool");
        std::ofstream xmacro(script + ".xmacro");
        for (int i = 0; i < kKeyEvents; i++) {
            xdotool << (i % 2 == 0 ? "keydown " : "keyup ") << kKeycodeA << "\nsleep " << kGridSeconds
                    << "\n";
            xmacro << (i % 2 == 0 ? "KeyCodePress " : "KeyCodeRelease ") << kKeycodeA << "\n";
        }
    }
    Schedule xdotool = Evaluate(ObserveWhile(
        true, [&] { RunCommand("xdotool " + script + ".xdotool >/dev/null"); }, kKeyEvents));
    PrintSchedule("xdotool", xdotool, ours);
    Schedule xmacro = Evaluate(ObserveWhile(
        true, [&] { RunCommand("xmacroplay -d 5 \"$DISPLAY\" <" + script + ".xmacro >/dev/null 2>&1"); },
        kKeyEvents));
    PrintSchedule("xmacroplay", xmacro, ours);
    std::remove((script + ".xdotool").c_str());
    std::remove((script + ".xmacro").c_str());

    std::printf("clicks a second at a 1 ms interval, median of %d rounds of %d s each\n", kClickRounds,
                kClickSeconds);
    std::vector<double> oursRates;
    std::vector<double> bareRates;
    std::vector<double> xdotoolRates;
    for (int round = 0; round < kClickRounds; round++) {
        oursRates.push_back(ClickRate(ClickOurs));
        bareRates.push_back(ClickRate(ClickBare));
        xdotoolRates.push_back(ClickRate(ClickXdotool));
    }
    const double oursRate = Median(oursRates);
    std::printf("  %-34s %8.1f\n", "varnelle autoclicker", oursRate);
    std::printf("  %-34s %8.1f  ours / this = %.3f\n", "bare send-and-sleep loop", Median(bareRates),
                oursRate / Median(bareRates));
    std::printf("  %-34s %8.1f  ours / this = %.3f\n", "xdotool click --repeat --delay 1",
                Median(xdotoolRates), oursRate / Median(xdotoolRates));

    engineState.running = false;
    SignalWake(engineState.quitEvent);
    JoinThread(dispatcher);
    JoinThread(playback);
    JoinThread(autoclicker);
    EndTimerPeriod();
    return 0;
}
