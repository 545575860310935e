#include "platform/linux/frame_watch.h"

#include "base/mutex.h"
#include "platform/clock.h"
#include "platform/linux/x11_display.h"
#include "platform/linux/x11_frame.h"
#include "platform/linux/x11_windows.h"
#include "platform/threads.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <deque>
#include <optional>
#include <thread>
#include <utility>

namespace {

// X11 does not tell when the person lets a window go: it has come to rest when nothing has changed for this long.
constexpr int kRestMilliseconds = 200;
// How often a window that the server does not know yet is looked for, and one that is not taken over yet is looked at
// besides its events.
constexpr int kLookMilliseconds = 10;
constexpr int kSlowLookMilliseconds = 200;

using Request = std::function<void(Display*)>;
using PlacementHandler = void (*)(const WindowPlacement&);

struct FrameThread {
    // Constant while the thread runs.
    PageHost* host = nullptr;
    Window window = None;
    int wake = -1;  // an eventfd: something below has changed

    Mutex mutex;
    bool ending GUARDED_BY(mutex) = false;
    bool managed GUARDED_BY(mutex) = false;  // requests no longer wait
    std::deque<Request> requests GUARDED_BY(mutex);
    PlacementHandler placementChanged GUARDED_BY(mutex) = nullptr;
    std::optional<ScreenRectangle> asked GUARDED_BY(mutex);
    std::optional<WindowPlacement> latest GUARDED_BY(mutex);  // as last seen, at rest or not
};

FrameThread frame;
std::thread frameThread;  // UI thread

void Wake() {
    const uint64_t one = 1;
    // A full counter already wakes it.
    if (write(frame.wake, &one, sizeof one) < 0) {
        return;
    }
}

bool IsSame(const WindowPlacement& a, const WindowPlacement& b) {
    return a.maximised == b.maximised && a.normal.left == b.normal.left && a.normal.top == b.normal.top &&
           a.normal.right == b.normal.right && a.normal.bottom == b.normal.bottom;
}

// What the thread knows of the window.
struct Sight {
    bool minimised = false;
    std::optional<ScreenRectangle> normal;  // root coordinates
    std::optional<WindowPlacement> atRest;  // what a change is measured by
    bool changed = false;
    int64_t restAt = 0;  // performance counter
};

int64_t MillisecondsFromNow(int milliseconds) {
    return ReadPerformanceCounter() + ReadPerformanceFrequency() * milliseconds / 1000;
}

// Looks at the window as it is now. False if it is gone.
bool Look(Display* display, Sight* sight) {
    ScreenRectangle outer;
    if (!ReadOuterRectangle(display, frame.window, &outer)) {
        return false;
    }
    const bool maximised = IsMaximised(display, frame.window);
    sight->minimised = IsIconic(display, frame.window);
    const ScreenArea screen = QueryPrimaryScreen(display);
    const bool ordinary = !maximised && !sight->minimised && !IsFullscreen(display, frame.window);
    MutexLock lock(frame.mutex);
    if (frame.asked) {
        // On its way there, and perhaps maximised before it has arrived.
        sight->normal = frame.asked;
    } else if (ordinary || !sight->normal) {
        sight->normal = outer;
    }
    frame.latest =
        WindowPlacement{Moved(*sight->normal, -screen.x, -screen.y), maximised && !sight->minimised};
    return true;
}

// False if the window is gone.
bool TellAtRest(Display* display, Sight* sight) {
    {
        MutexLock lock(frame.mutex);
        frame.asked.reset();
    }
    if (!Look(display, sight)) {
        return false;
    }
    PlacementHandler tell = nullptr;
    WindowPlacement placement;
    {
        MutexLock lock(frame.mutex);
        tell = frame.placementChanged;
        placement = *frame.latest;
    }
    if (sight->minimised || (sight->atRest && IsSame(*sight->atRest, placement))) {
        return true;
    }
    // The first one is where the program itself has put the window.
    if (sight->atRest && tell != nullptr) {
        DispatchToPage(frame.host, [tell, placement] { tell(placement); });
    }
    sight->atRest = placement;
    return true;
}

// Hands out what has waited, in order; new ones may come meanwhile.
void RunRequests(Display* display) {
    for (;;) {
        std::deque<Request> requests;
        {
            MutexLock lock(frame.mutex);
            requests.swap(frame.requests);
            if (requests.empty()) {
                frame.managed = true;
                return;
            }
        }
        for (const Request& request : requests) {
            request(display);
        }
        // Later ones come on other connections.
        XSync(display, False);
    }
}

bool IsEnding() {
    MutexLock lock(frame.mutex);
    return frame.ending;
}

// The window's events since the last call. True if there were any.
bool TakeEvents(Display* events) {
    bool any = false;
    while (XPending(events) > 0) {
        XEvent event;
        XNextEvent(events, &event);
        any = true;
    }
    return any;
}

int WaitMilliseconds(const Sight& sight, bool selected, bool managed) {
    if (!managed) {
        return selected ? kSlowLookMilliseconds : kLookMilliseconds;
    }
    if (!sight.changed) {
        return -1;
    }
    const int64_t left = (sight.restAt - ReadPerformanceCounter()) * 1000 / ReadPerformanceFrequency();
    return left < 0 ? 0 : static_cast<int>(left) + 1;
}

void WaitForSomething(Display* events, int milliseconds) {
    pollfd entries[] = {{ConnectionNumber(events), POLLIN, 0}, {frame.wake, POLLIN, 0}};
    poll(entries, 2, milliseconds);
    uint64_t count = 0;
    if (entries[1].revents != 0 && read(frame.wake, &count, sizeof count) < 0) {
        return;
    }
}

void Watch(Display* events, const bool* lost) {
    Sight sight;
    bool selected = false;
    bool managed = false;
    while (!IsEnding() && !*lost) {
        // The thread's own connection asks, so that the events of this one stay in their order.
        Display* display = ThreadDisplay();
        if (display == nullptr) {
            return;
        }
        ScreenRectangle ignored;
        if (!selected && ReadClientRectangle(display, frame.window, &ignored)) {
            XSelectInput(events, frame.window, StructureNotifyMask | PropertyChangeMask);
            XSync(events, False);
            selected = true;
        }
        bool look = TakeEvents(events);
        if (!managed && selected) {
            managed = IsManaged(display, frame.window) || !HasWindowManager(display);
            if (managed) {
                // First: a window that goes as soon as it was asked something has had a place too.
                if (!Look(display, &sight)) {
                    return;
                }
                RunRequests(display);
                look = true;
            }
        }
        if (managed && look) {
            if (!Look(display, &sight)) {
                return;  // what was seen last stays
            }
            sight.changed = true;
            sight.restAt = MillisecondsFromNow(kRestMilliseconds);
        }
        if (sight.changed && ReadPerformanceCounter() >= sight.restAt) {
            sight.changed = false;
            if (!TellAtRest(display, &sight)) {
                return;
            }
        }
        WaitForSomething(events, WaitMilliseconds(sight, selected, managed));
    }
    if (Display* display = managed ? ThreadDisplay() : nullptr) {
        Look(display, &sight);
    }
}

void FrameThreadMain() {
    bool lost = false;
    if (Display* events = OpenDisplay(&lost)) {
        try {
            Watch(events, &lost);
        } catch (...) {
            // No memory: the window serves on unwatched.
        }
        CloseDisplay(events);
    }
    // Nobody will hand out what waits; what comes later is asked at once.
    MutexLock lock(frame.mutex);
    frame.managed = true;
    frame.requests.clear();
}

// Whether the request waits for the watched window; it is moved from then.
bool WaitsForFrame(Window window, Request* request) {
    MutexLock lock(frame.mutex);
    if (frame.window != window || frame.window == None || frame.managed) {
        return false;
    }
    frame.requests.push_back(std::move(*request));
    return true;
}

}  // namespace

void StartFrameThread(PageHost* host, Window window) {
    if (frameThread.joinable() || window == None) {
        return;
    }
    const int wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wake < 0) {
        return;
    }
    {
        MutexLock lock(frame.mutex);
        frame.host = host;
        frame.window = window;
        frame.wake = wake;
        frame.ending = false;
        frame.managed = false;
    }
    try {
        frameThread = StartThread("window frame", FrameThreadMain);
    } catch (...) {
        close(wake);
        throw;
    }
}

void EndFrameThread() {
    if (!frameThread.joinable()) {
        return;
    }
    {
        MutexLock lock(frame.mutex);
        frame.ending = true;
    }
    Wake();
    JoinThread(frameThread);
    close(frame.wake);
    PlacementHandler tell = nullptr;
    std::optional<WindowPlacement> last;
    {
        MutexLock lock(frame.mutex);
        frame.window = None;
        frame.asked.reset();
        tell = std::exchange(frame.placementChanged, nullptr);
        last = std::exchange(frame.latest, std::nullopt);
    }
    if (tell != nullptr && last) {
        tell(*last);
    }
}

void WhenManaged(Window window, Request request) {
    if (WaitsForFrame(window, &request)) {
        return;
    }
    if (Display* display = ThreadDisplay()) {
        request(display);
        XFlush(display);
    }
}

void NoteAskedPlace(Window window, const ScreenRectangle& outer) {
    MutexLock lock(frame.mutex);
    if (frame.window == window) {
        frame.asked = outer;
    }
}

void TellPlacements(PlacementHandler placementChanged) {
    MutexLock lock(frame.mutex);
    frame.placementChanged = placementChanged;
}
