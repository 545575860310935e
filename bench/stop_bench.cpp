// How soon playback stops: from F7 down at the user's keyboard to the last event that arrives at an application. The
// application's window is under the pointer, so left clicks also pass through the window manager, which is slower.
//
// Needs two X servers, one inside the other (tests/linux/start_servers.sh): F7 on the outer one is a user's key on the
// inner one. Prints a row for each kind of event. Usage: stop_bench
#include "engines/dispatcher.h"
#include "engines/playback.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/hooks.h"
#include "platform/key_table.h"
#include "platform/threads.h"
#include "platform/wake.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <poll.h>
#include <thread>
#include <vector>

namespace {

constexpr size_t kEvents = 500'000;
constexpr int kRounds = 9;
constexpr size_t kUnderWay = 100;             // events after which the macro counts as running
constexpr uint32_t kRunMilliseconds = 1000;   // from then to the press of F7
constexpr uint32_t kQuietMilliseconds = 300;  // without an event, so the last one was the last
constexpr int64_t kLimitMilliseconds = 20'000;
constexpr uint32_t kKeyA = 65;
constexpr uint32_t kKeycodeF7 = 73;
// Button flags of macro events: down, up.
constexpr uint32_t kLeft[] = {2, 4};
constexpr uint32_t kMiddle[] = {32, 64};
constexpr int kWindowSize = 400;

int64_t Milliseconds() {
    return ReadPerformanceCounter() / (ReadPerformanceFrequency() / 1000);
}

// What has arrived of the sent input. Written by the observer's thread.
struct Observed {
    std::atomic<size_t> events{0};
    std::atomic<int64_t> lastTime{0};  // of an arrival, in milliseconds
    std::atomic<bool> ready{false};
    std::atomic<bool> stop{false};
};
Observed observed;

// Everything but F7, which the user presses.
bool IsSentInput(Display* display, XEvent* event) {
    if (event->type == KeyPress || event->type == KeyRelease) {
        return event->xkey.keycode != kKeycodeF7;
    }
    if (event->type != GenericEvent || XGetEventData(display, &event->xcookie) == 0) {
        return event->type == ButtonPress || event->type == ButtonRelease;
    }
    const auto* raw = static_cast<const XIRawEvent*>(event->xcookie.data);
    const int kind = event->xcookie.evtype;
    const bool isKey = kind == XI_RawKeyPress || kind == XI_RawKeyRelease;
    const bool isF7 = isKey && static_cast<uint32_t>(raw->detail) == kKeycodeF7;
    XFreeEventData(display, &event->xcookie);
    return !isF7;
}

void Observe() {
    Display* display = XOpenDisplay(nullptr);
    int opcode = 0;
    int event = 0;
    int error = 0;
    int major = 2;
    int minor = 4;
    if (display == nullptr || XQueryExtension(display, "XInputExtension", &opcode, &event, &error) == 0) {
        std::fprintf(stderr, "stop_bench: no display\n");
        std::exit(2);
    }
    XIQueryVersion(display, &major, &minor);
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    for (const int kind : {XI_RawKeyPress, XI_RawKeyRelease, XI_RawButtonPress, XI_RawButtonRelease}) {
        XISetMask(bits, kind);
    }
    XIEventMask mask = {XIAllMasterDevices, sizeof bits, bits};
    XISelectEvents(display, DefaultRootWindow(display), &mask, 1);
    const Window window =
        XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, kWindowSize, kWindowSize, 0, 0, 0);
    XSelectInput(display, window, KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask);
    XMapWindow(display, window);
    XSync(display, False);
    observed.ready = true;
    pollfd waiter = {ConnectionNumber(display), POLLIN, 0};
    while (!observed.stop) {
        while (XPending(display) > 0) {
            XEvent next;
            XNextEvent(display, &next);
            if (IsSentInput(display, &next)) {
                observed.lastTime = Milliseconds();
                observed.events.fetch_add(1);
            }
        }
        poll(&waiter, 1, 20);
    }
    XCloseDisplay(display);
}

UnifiedEvent EventOf(EventType type, const uint32_t* flags, size_t index) {
    UnifiedEvent event;
    event.type = type;
    event.down = index % 2 == 0;
    event.virtualKey = kKeyA;
    event.flags = flags[index % 2];
    event.wheel = event.down ? 120 : -120;
    event.x = event.y = kWindowSize / 2;
    return event;
}

void SetMacro(EventType type, size_t count, const uint32_t* flags = kLeft) {
    MutexLock lock(macroMutex);
    macroState.profiles.assign(1, Profile());
    macroState.currentProfile = 0;
    for (size_t index = 0; index < count; ++index) {
        macroState.profiles[0].events.push_back(EventOf(type, flags, index));
    }
    MarkMacroChanged();
}

bool WaitUntil(bool (*condition)()) {
    const int64_t limit = Milliseconds() + kLimitMilliseconds;
    while (!condition()) {
        if (Milliseconds() > limit) {
            return false;
        }
        SleepMilliseconds(1);
    }
    return true;
}

bool BecomesQuiet() {
    size_t count = observed.events;
    int64_t since = Milliseconds();
    const int64_t limit = since + kLimitMilliseconds;
    while (Milliseconds() - since < kQuietMilliseconds) {
        SleepMilliseconds(1);
        if (observed.events != count) {
            count = observed.events;
            since = Milliseconds();
        }
        if (Milliseconds() > limit) {
            return false;
        }
    }
    return true;
}

// Returns the milliseconds from the press of F7 to the last sent event, or -1 if playback does not stop.
double StopTime(Display* user) {
    static std::atomic<size_t> before{0};
    before = observed.events.load();
    RaiseRequest(engineState.requestStartPlay);
    if (!WaitUntil([] { return observed.events > before + kUnderWay; })) {
        return -1;
    }
    SleepMilliseconds(kRunMilliseconds);
    const int64_t pressed = Milliseconds();
    XTestFakeKeyEvent(user, kKeycodeF7, True, CurrentTime);
    XFlush(user);
    if (!WaitUntil([] { return !engineState.playing; }) || !BecomesQuiet()) {
        return -1;
    }
    XTestFakeKeyEvent(user, kKeycodeF7, False, CurrentTime);
    XSync(user, False);
    SleepMilliseconds(50);
    return static_cast<double>(std::max<int64_t>(observed.lastTime - pressed, 0));
}

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Returns the median, or -1 if playback did not stop once.
double Measure(Display* user, const char* name, double compared) {
    std::vector<double> times;
    for (int round = 0; round < kRounds; ++round) {
        const double time = StopTime(user);
        if (time < 0) {
            std::printf("  %-44s did not stop within %lld s\n", name,
                        static_cast<long long>(kLimitMilliseconds / 1000));
            return -1;
        }
        times.push_back(time);
    }
    const double median = Median(times);
    std::printf("  %-44s median %7.0f ms  worst %7.0f ms", name, median,
                *std::max_element(times.begin(), times.end()));
    if (compared > 0) {
        std::printf("  this / keys = %.2f", median / compared);
    }
    std::printf("\n");
    return median;
}

}  // namespace

int main() {
    XInitThreads();
    BeginTimerPeriod();
    Display* user = XOpenDisplay(std::getenv("VARNELLE_HOST_DISPLAY"));
    if (user == nullptr) {
        std::fprintf(stderr, "stop_bench: run it by tests/linux/start_servers.sh\n");
        return 2;
    }
    engineState.counterFrequency = ReadPerformanceFrequency();
    engineState.quitEvent = CreateWakeEvent(WakeReset::Manual);
    engineState.dispatchEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.playWakeEvent = CreateWakeEvent(WakeReset::Automatic);
    macroSettings.loop = true;
    macroSettings.loopPauseMilliseconds = 0;
    engineState.lockOn = false;
    std::thread observer(Observe);
    while (!observed.ready) {
        SleepMilliseconds(1);
    }
    std::thread input = StartThread("input", InputThreadMain);
    std::thread dispatcher = StartThread("dispatcher", DispatcherThreadMain);
    std::thread playback = StartThread("playback", PlaybackThreadMain);
    SleepMilliseconds(500);

    std::printf("F7 down to the last event at an application, %zu events at time 0 in a loop, %d rounds\n",
                kEvents, kRounds);
    SetMacro(EvKey, kEvents);
    const double keys = Measure(user, "key events", 0);
    SetMacro(EvMouseButton, kEvents, kMiddle);
    Measure(user, "button events", keys);
    SetMacro(EvMouseButton, kEvents, kLeft);
    Measure(user, "left clicks", keys);
    SetMacro(EvScroll, kEvents);
    Measure(user, "wheel events of one notch", keys);
    SetMacro(EvScroll, 1);
    {
        MutexLock lock(macroMutex);
        macroState.profiles[0].events[0].wheel = std::numeric_limits<int32_t>::max();
    }
    if (Measure(user, "one wheel event of 17,895,697 notches", keys) < 0) {
        std::fflush(stdout);
        std::_Exit(1);  // nothing can end playback
    }

    engineState.running = false;
    StopInputThread();
    SignalWake(engineState.quitEvent);
    JoinThread(dispatcher);
    JoinThread(playback);
    JoinThread(input);
    observed.stop = true;
    observer.join();
    XCloseDisplay(user);
    EndTimerPeriod();
    return 0;
}
