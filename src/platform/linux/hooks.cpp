#include "platform/hooks.h"

#include "platform/clock.h"
#include "platform/linux/hook_thread.h"
#include "platform/linux/hook_wake.h"
#include "platform/linux/session_watch.h"

#include <X11/extensions/Xrandr.h>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

// Atomic. `hookRunning` is written by the input thread, the others by any thread.
std::atomic<bool> hookRunning{false};
std::atomic<bool> hookStopWanted{false};

constexpr int kRetryHoldMilliseconds = 20;  // another program has the device; it may let go at any time

// Open for the whole life of the process, since another thread may signal it while the input thread ends.
int WakeFile() {
    static const int file = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return file;
}

bool PrepareInputExtension(HookThread& thread) {
    int firstEvent = 0;
    int firstError = 0;
    if (XQueryExtension(thread.display, "XInputExtension", &thread.inputOpcode, &firstEvent, &firstError) ==
        0) {
        return false;
    }
    // From 2.1 on, raw events arrive also while a device is grabbed. The server answers with what it has, at most 2.4.
    int major = 2;
    int minor = 4;
    XIQueryVersion(thread.display, &major, &minor);
    return major > 2 || (major == 2 && minor >= 1);
}

// The first pair of master devices, which is the one that applications get their input from.
bool FindMasters(HookThread& thread) {
    int count = 0;
    XIDeviceInfo* masters = XIQueryDevice(thread.display, XIAllMasterDevices, &count);
    if (masters == nullptr) {
        return false;
    }
    bool found = false;
    for (int index = 0; index < count && !found; ++index) {
        if (masters[index].use == XIMasterPointer) {
            thread.pointer.device = masters[index].deviceid;
            thread.keyboard.device = masters[index].attachment;
            thread.keyboard.isKeyboard = true;
            found = true;
        }
    }
    XIFreeDeviceInfo(masters);
    return found;
}

void SelectEvents(HookThread& thread) {
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

void RefreshInterest(HookThread& thread) {
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

void OnInputEvent(HookThread& thread, const XGenericEventCookie& cookie) {
    switch (cookie.evtype) {
    case XI_RawKeyPress:
    case XI_RawKeyRelease:
        OnRawKey(thread, *static_cast<XIRawEvent*>(cookie.data), cookie.evtype == XI_RawKeyPress);
        break;
    case XI_RawButtonPress:
    case XI_RawButtonRelease:
        OnRawButton(thread, *static_cast<XIRawEvent*>(cookie.data), cookie.evtype == XI_RawButtonPress);
        break;
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

void OnEvent(HookThread& thread, XEvent& event) {
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

// Everything that the server has sent so far.
void HandleEvents(HookThread& thread) {
    while (!thread.displayLost && XPending(thread.display) > 0) {
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

int RepeatTimeout(const HookThread& thread) {
    if (thread.repeat.keycode == 0) {
        return -1;
    }
    const int64_t left = thread.repeat.nextAt - ReadPerformanceCounter();
    return left <= 0 ? 0 : static_cast<int>(left / 1'000'000 + 1);
}

void WaitForWork(HookThread& thread, SessionWatch* session) {
    int timeout = SoonerTimeout(RepeatTimeout(thread), SessionWatchTimeout(session));
    if (HoldIsMissing(thread.keyboard) || HoldIsMissing(thread.pointer)) {
        timeout = SoonerTimeout(timeout, kRetryHoldMilliseconds);
    }
    if (XEventsQueued(thread.display, QueuedAlready) > 0) {
        timeout = 0;
    }
    pollfd files[3] = {{ConnectionNumber(thread.display), POLLIN, 0},
                       {WakeFile(), POLLIN, 0},
                       {SessionWatchFile(session), SessionWatchEvents(session), 0}};
    poll(files, 3, timeout);
    if ((files[1].revents & POLLIN) != 0) {
        uint64_t count = 0;
        while (read(WakeFile(), &count, sizeof(count)) < 0 && errno == EINTR) {
        }
    }
}

void ServeEvents(HookThread& thread) {
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
        if (HandOverWaits()) {
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

}  // namespace

void WakeHookThread() {
    const uint64_t one = 1;
    while (write(WakeFile(), &one, sizeof(one)) < 0 && errno == EINTR) {
    }
}

void RunInputThread(const HookSinks& sinks) {
    auto thread = std::make_unique<HookThread>();
    thread->sinks = sinks;
    thread->display = OpenDisplay(&thread->displayLost);
    if (thread->display == nullptr) {
        return;
    }
    hookStopWanted.store(false);
    hookRunning.store(true);
    thread->root = DefaultRootWindow(thread->display);
    if (PrepareInputExtension(*thread) && FindMasters(*thread)) {
        int firstError = 0;
        if (XRRQueryExtension(thread->display, &thread->randrEvents, &firstError) != 0) {
            XRRSelectInput(thread->display, thread->root, RRScreenChangeNotifyMask | RRCrtcChangeNotifyMask);
        } else {
            thread->randrEvents = -1;
        }
        thread->screen = QueryPrimaryScreen(thread->display);
        ReadDevices(*thread);
        SelectEvents(*thread);
        ServeEvents(*thread);
        ReleaseGrabs(*thread);
        PublishHolds(*thread);
    }
    hookRunning.store(false);
    CloseDisplay(thread->display);
}

void StopInputThread() {
    if (hookRunning.load()) {
        hookStopWanted.store(true);
        WakeHookThread();
    }
}

void HookInterestChanged() {
    if (hookRunning.load()) {
        WakeHookThread();
    }
}
