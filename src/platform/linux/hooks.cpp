#include "platform/hooks.h"

#include "platform/clock.h"
#include "platform/linux/grab_watch.h"
#include "platform/linux/hook_devices.h"
#include "platform/linux/hook_events.h"
#include "platform/linux/hook_gate.h"
#include "platform/linux/hook_injection.h"
#include "platform/linux/input_thread.h"
#include "platform/linux/input_thread_wake.h"
#include "platform/linux/session_watch.h"

#include <X11/extensions/Xrandr.h>
#include <algorithm>
#include <atomic>
#include <csignal>
#include <iterator>
#include <memory>
#include <poll.h>

namespace {

// The input thread writes `hookRunning`, any thread writes `hookStopWanted`.
std::atomic<bool> hookRunning{false};
std::atomic<bool> hookStopWanted{false};

constexpr int kRetryHoldMilliseconds = 20;  // another program has the device and may release it at any time

bool PrepareInputExtension(InputThread& thread) {
    int firstEvent = 0;
    int firstError = 0;
    if (XQueryExtension(thread.display, "XInputExtension", &thread.inputOpcode, &firstEvent, &firstError) ==
        0) {
        return false;
    }
    // From 2.1 on, raw events arrive also while a device is grabbed. The server replies with its own version, at most 2.4.
    int major = 2;
    int minor = 4;
    XIQueryVersion(thread.display, &major, &minor);
    return major > 2 || (major == 2 && minor >= 1);
}

// Finds the first pair of master devices: applications receive their input from it.
bool FindMasters(InputThread& thread) {
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(thread.display, XIAllMasterDevices, &count);
    if (devices == nullptr) {
        return false;
    }
    bool found = false;
    for (int index = 0; index < count && !found; ++index) {
        if (devices[index].use == XIMasterPointer) {
            thread.pointer.device = devices[index].deviceid;
            thread.keyboard.device = devices[index].attachment;
            thread.keyboard.isKeyboard = true;
            found = true;
        }
    }
    XIFreeDeviceInfo(devices);
    return found;
}

void SelectEvents(InputThread& thread) {
    unsigned char raw[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(raw, XI_RawKeyPress);
    XISetMask(raw, XI_RawKeyRelease);
    XISetMask(raw, XI_RawButtonPress);
    XISetMask(raw, XI_RawButtonRelease);
    // Moves wake this thread up to a thousand times a second, so only while they matter.
    if (thread.interest.everyEvent || thread.interest.rawMotion) {
        XISetMask(raw, XI_RawMotion);
    }
    unsigned char hierarchy[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(hierarchy, XI_HierarchyChanged);
    XIEventMask masks[2] = {{XIAllMasterDevices, sizeof(raw), raw},
                            {XIAllDevices, sizeof(hierarchy), hierarchy}};
    XISelectEvents(thread.display, thread.root, masks, 2);
}

void RefreshInterest(InputThread& thread) {
    HookInterest interest;
    thread.sinks.readInterest(&interest);
    if (interest == thread.interest) {
        return;
    }
    const bool hadMotion = thread.interest.everyEvent || thread.interest.rawMotion;
    const bool hasMotion = interest.everyEvent || interest.rawMotion;
    thread.interest = interest;
    if (hadMotion != hasMotion) {
        SelectEvents(thread);
        RememberPointer(thread);
    }
    ApplyInterest(thread);
}

void CountIfInjected(const InputThread& thread, const XIRawEvent& event) {
    if (IsInjected(thread, event.sourceid)) {
        CountReport();
    }
}

void OnInputEvent(InputThread& thread, const XGenericEventCookie& cookie) {
    switch (cookie.evtype) {
    case XI_RawKeyPress:
    case XI_RawKeyRelease: {
        const auto& event = *static_cast<XIRawEvent*>(cookie.data);
        CountIfInjected(thread, event);
        OnRawKey(thread, event, cookie.evtype == XI_RawKeyPress);
        break;
    }
    case XI_RawButtonPress:
    case XI_RawButtonRelease: {
        const auto& event = *static_cast<XIRawEvent*>(cookie.data);
        CountIfInjected(thread, event);
        OnRawButton(thread, event, cookie.evtype == XI_RawButtonPress);
        break;
    }
    case XI_RawMotion:
        OnRawMotion(thread, *static_cast<XIRawEvent*>(cookie.data));
        break;
    case XI_KeyPress:
    case XI_KeyRelease:
    case XI_ButtonPress:
    case XI_ButtonRelease:
    case XI_Motion:
        OnGrabbedEvent(thread, *static_cast<XIDeviceEvent*>(cookie.data));
        break;
    case XI_HierarchyChanged:
        ReadDevices(thread);
        break;
    default:
        break;
    }
}

void OnEvent(InputThread& thread, XEvent& event) {
    if (event.type == GenericEvent && event.xcookie.extension == thread.inputOpcode) {
        if (XGetEventData(thread.display, &event.xcookie) != 0) {
            OnInputEvent(thread, event.xcookie);
            XFreeEventData(thread.display, &event.xcookie);
        }
    } else if (thread.randrEvents >= 0 && event.type >= thread.randrEvents) {
        XRRUpdateConfiguration(&event);
        thread.screen = QueryPrimaryScreen(thread.display);
    }
}

// Handles everything that the server has sent so far. Another program may send faster than that, so a stop ends it too,
// and the watch is answered in between.
void HandleEvents(InputThread& thread) {
    constexpr unsigned kEventsPerAnswer = 256;
    for (unsigned count = 1; !hookStopWanted.load() && !thread.displayLost && XPending(thread.display) > 0;
         ++count) {
        if (count % kEventsPerAnswer == 0) {
            AnswerGrabWatch(&thread.watch, thread.display);
        }
        XEvent event;
        XNextEvent(thread.display, &event);
        OnEvent(thread, event);
        RefreshInterest(thread);
    }
    ReportMove(thread);
}

int SoonerTimeout(int left, int right) {
    if (left < 0 || right < 0) {
        return std::max(left, right);
    }
    return std::min(left, right);
}

int RepeatTimeout(const InputThread& thread) {
    if (thread.repeat.keycode == 0) {
        return -1;
    }
    const int64_t left = thread.repeat.nextAt - ReadPerformanceCounter();
    return left <= 0 ? 0 : static_cast<int>(left / 1'000'000 + 1);
}

void WaitForWork(InputThread& thread, SessionWatch* session) {
    int timeout = SoonerTimeout(RepeatTimeout(thread), SessionWatchTimeout(session));
    if (HoldIsMissing(thread.keyboard) || HoldIsMissing(thread.pointer)) {
        timeout = SoonerTimeout(timeout, kRetryHoldMilliseconds);
    }
    if (XEventsQueued(thread.display, QueuedAlready) > 0) {
        timeout = 0;
    }
    pollfd files[4] = {{ConnectionNumber(thread.display), POLLIN, 0},
                       {InputThreadWakeFile(), POLLIN, 0},
                       {SessionWatchFile(session), SessionWatchEvents(session), 0},
                       {thread.watch.socket, POLLIN, 0}};
    poll(files, 4, timeout);
    if ((files[1].revents & POLLIN) != 0) {
        ClearInputThreadWake();
    }
    if (files[3].revents != 0) {
        AnswerGrabWatch(&thread.watch, thread.display);
    }
}

void ServeEvents(InputThread& thread) {
    SessionWatch* session = OpenSessionWatch(thread.sinks.onSessionChange);
    while (!hookStopWanted.load() && !thread.displayLost) {
        RefreshInterest(thread);
        HandleEvents(thread);
        ReportRepeats(thread);
        AdjustHold(thread, thread.keyboard);
        AdjustHold(thread, thread.pointer);
        if (session != nullptr && !ReadSessionWatch(session)) {
            CloseSessionWatch(session);
            session = nullptr;
        }
        if (HasHandedOverInput()) {
            XSync(thread.display, False);
            HandleEvents(thread);
            SendHandedOver(thread);
        }
        PublishHolds(thread);
        XFlush(thread.display);
        WaitForWork(thread, session);
    }
    CloseSessionWatch(session);
}

// Serves one connection. Returns whether it was lost while it was in use.
bool ServeConnection(const HookSinks& sinks) {
    auto thread = std::make_unique<InputThread>();
    thread->sinks = sinks;
    thread->display = OpenDisplay(&thread->displayLost);
    if (thread->display == nullptr) {
        return false;
    }
    thread->root = DefaultRootWindow(thread->display);
    bool served = false;
    if (PrepareInputExtension(*thread) && FindMasters(*thread)) {
        served = true;
        int firstError = 0;
        if (XRRQueryExtension(thread->display, &thread->randrEvents, &firstError) != 0) {
            XRRSelectInput(thread->display, thread->root, RRScreenChangeNotifyMask | RRCrtcChangeNotifyMask);
        } else {
            thread->randrEvents = -1;
        }
        thread->screen = QueryPrimaryScreen(thread->display);
        ReadDevices(*thread);
        SelectEvents(*thread);
        StartGrabWatch(&thread->watch, thread->display);
        SetReporting(true);
        ServeEvents(*thread);
        SetReporting(false);
        StopGrabWatch(&thread->watch);
        ReleaseGrabs(*thread);
        PublishHolds(*thread);
    }
    const bool lost = served && thread->displayLost;
    CloseDisplay(thread->display);
    return lost;
}

// While there are grabs, a stop from the terminal (Ctrl+Z) would freeze the keyboard of the whole desktop.
class IgnoreTerminalStops {
  public:
    IgnoreTerminalStops() {
        struct sigaction ignore {};
        ignore.sa_handler = SIG_IGN;
        sigemptyset(&ignore.sa_mask);
        for (size_t index = 0; index < std::size(kSignals); ++index) {
            sigaction(kSignals[index], &ignore, &before_[index]);
        }
    }
    ~IgnoreTerminalStops() {
        for (size_t index = 0; index < std::size(kSignals); ++index) {
            sigaction(kSignals[index], &before_[index], nullptr);
        }
    }
    IgnoreTerminalStops(const IgnoreTerminalStops&) = delete;
    IgnoreTerminalStops& operator=(const IgnoreTerminalStops&) = delete;

  private:
    static constexpr int kSignals[] = {SIGTSTP, SIGTTIN, SIGTTOU};
    struct sigaction before_[std::size(kSignals)] = {};
};

// A connection that lasted for less is not opened again: whatever closes it would do so at once.
constexpr int64_t kShortestServiceSeconds = 1;

}  // namespace

void RunInputThread(const HookSinks& sinks) {
    const IgnoreTerminalStops ignored;
    hookStopWanted.store(false);
    hookRunning.store(true);
    for (;;) {
        const int64_t begin = ReadPerformanceCounter();
        const bool lost = ServeConnection(sinks);
        const int64_t service = ReadPerformanceCounter() - begin;
        if (!lost || hookStopWanted.load() ||
            service < kShortestServiceSeconds * ReadPerformanceFrequency()) {
            break;
        }
        // The watch has closed the connection, or the server is gone. Releases since then were lost, as during a lock.
        sinks.onSessionChange(SessionChange::Lock);
    }
    hookRunning.store(false);
}

void StopInputThread() {
    if (hookRunning.load()) {
        hookStopWanted.store(true);
        WakeInputThread();
    }
}

void HookInterestChanged() {
    if (hookRunning.load()) {
        WakeInputThread();
    }
}
