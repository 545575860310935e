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

// X11 has no "move ended" event. The window counts as settled after this long without a change.
constexpr int kSettleMilliseconds = 200;
// How often to look for a window that the server does not know yet, and to poll one that is not managed yet.
constexpr int kFindMilliseconds = 10;
constexpr int kPollMilliseconds = 200;

using Request = std::function<void(Display*)>;
using PlacementHandler = void (*)(const WindowPlacement&);

struct FrameThread {
    // Constant while the thread runs.
    PageHost* host = nullptr;
    Window window = None;
    int wake = -1;  // an eventfd: something below has changed

    Mutex mutex;
    bool ending GUARDED_BY(mutex) = false;
    bool managed GUARDED_BY(mutex) = false;  // requests run at once
    std::deque<Request> requests GUARDED_BY(mutex);
    PlacementHandler placementChanged GUARDED_BY(mutex) = nullptr;
    std::optional<ScreenRectangle> requested GUARDED_BY(mutex);
    std::optional<WindowPlacement> latest GUARDED_BY(mutex);  // as last read, settled or not
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
struct WindowState {
    bool minimised = false;
    std::optional<ScreenRectangle> normal;   // root coordinates
    std::optional<WindowPlacement> settled;  // the last reported placement
    bool changed = false;
    int64_t settlesAt = 0;  // performance counter
};

int64_t MillisecondsFromNow(int milliseconds) {
    return ReadPerformanceCounter() + ReadPerformanceFrequency() * milliseconds / 1000;
}

// Reads the window as it is now. Returns false if it no longer exists.
bool ReadWindow(Display* display, WindowState* state) {
    ScreenRectangle outer;
    if (!ReadOuterRectangle(display, frame.window, &outer)) {
        return false;
    }
    const bool maximised = IsMaximised(display, frame.window);
    state->minimised = IsIconic(display, frame.window);
    const ScreenArea screen = QueryPrimaryScreen(display);
    // NOTE: a closing window is hidden first. The window manager then takes its frame away in several steps, between
    // which position and frame extents do not fit together. Asked last, this finds every window in that state.
    const bool ordinary = !maximised && !state->minimised && !IsFullscreen(display, frame.window) &&
                          IsMapped(display, frame.window);
    MutexLock lock(frame.mutex);
    if (frame.requested) {
        // The window is on its way there and may be maximised before it arrives.
        state->normal = frame.requested;
    } else if (ordinary || !state->normal) {
        state->normal = outer;
    }
    frame.latest =
        WindowPlacement{Moved(*state->normal, -screen.x, -screen.y), maximised && !state->minimised};
    return true;
}

// Reports the settled placement. Returns false if the window no longer exists.
bool ReportSettled(Display* display, WindowState* state) {
    {
        MutexLock lock(frame.mutex);
        frame.requested.reset();
    }
    if (!ReadWindow(display, state)) {
        return false;
    }
    PlacementHandler report = nullptr;
    WindowPlacement placement;
    {
        MutexLock lock(frame.mutex);
        report = frame.placementChanged;
        placement = *frame.latest;
    }
    if (state->minimised || (state->settled && IsSame(*state->settled, placement))) {
        return true;
    }
    // The first placement is the one that the program has set.
    if (state->settled && report != nullptr) {
        DispatchToPage(frame.host, [report, placement] { report(placement); });
    }
    state->settled = placement;
    return true;
}

// Runs queued requests in order, including those queued while it runs.
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
        // Later requests use other connections.
        XSync(display, False);
    }
}

bool IsEnding() {
    MutexLock lock(frame.mutex);
    return frame.ending;
}

// Discards the window's events. Returns whether there were any.
bool DiscardEvents(Display* events) {
    bool any = false;
    while (XPending(events) > 0) {
        XEvent event;
        XNextEvent(events, &event);
        any = true;
    }
    return any;
}

int WaitMilliseconds(const WindowState& state, bool selected, bool managed) {
    if (!managed) {
        return selected ? kPollMilliseconds : kFindMilliseconds;
    }
    if (!state.changed) {
        return -1;
    }
    const int64_t left = (state.settlesAt - ReadPerformanceCounter()) * 1000 / ReadPerformanceFrequency();
    return left < 0 ? 0 : static_cast<int>(left) + 1;
}

void WaitForWork(Display* events, int milliseconds) {
    pollfd entries[] = {{ConnectionNumber(events), POLLIN, 0}, {frame.wake, POLLIN, 0}};
    poll(entries, 2, milliseconds);
    uint64_t count = 0;
    if (entries[1].revents != 0 && read(frame.wake, &count, sizeof count) < 0) {
        return;
    }
}

void Watch(Display* events, const bool* lost) {
    WindowState state;
    bool selected = false;
    bool managed = false;
    while (!IsEnding() && !*lost) {
        // Queries use the thread's own connection, so that the events of this one stay in order.
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
        bool reread = DiscardEvents(events);
        if (!managed && selected) {
            managed = IsManaged(display, frame.window) || !HasWindowManager(display);
            if (managed) {
                // Before the requests: a window that closes after the first one must have a placement.
                if (!ReadWindow(display, &state)) {
                    return;
                }
                RunRequests(display);
                reread = true;
            }
        }
        if (managed && reread) {
            if (!ReadWindow(display, &state)) {
                return;  // the last placement stays
            }
            state.changed = true;
            state.settlesAt = MillisecondsFromNow(kSettleMilliseconds);
        }
        if (state.changed && ReadPerformanceCounter() >= state.settlesAt) {
            state.changed = false;
            if (!ReportSettled(display, &state)) {
                return;
            }
        }
        WaitForWork(events, WaitMilliseconds(state, selected, managed));
    }
    if (Display* display = managed ? ThreadDisplay() : nullptr) {
        ReadWindow(display, &state);
    }
}

void FrameThreadMain() {
    bool lost = false;
    if (Display* events = OpenDisplay(&lost)) {
        try {
            Watch(events, &lost);
        } catch (...) {
            // Out of memory: the window works on without being watched.
        }
        CloseDisplay(events);
    }
    // Drops the queued requests. Later ones run at once.
    MutexLock lock(frame.mutex);
    frame.managed = true;
    frame.requests.clear();
}

// Queues the request if the watched window is not managed yet. Returns whether it did.
bool QueueUntilManaged(Window window, Request* request) {
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
    PlacementHandler report = nullptr;
    std::optional<WindowPlacement> last;
    {
        MutexLock lock(frame.mutex);
        frame.window = None;
        frame.requested.reset();
        report = std::exchange(frame.placementChanged, nullptr);
        last = std::exchange(frame.latest, std::nullopt);
    }
    if (report != nullptr && last) {
        report(*last);
    }
}

void RunWhenManaged(Window window, Request request) {
    if (QueueUntilManaged(window, &request)) {
        return;
    }
    if (Display* display = ThreadDisplay()) {
        request(display);
        XFlush(display);
    }
}

void SetRequestedRectangle(Window window, const ScreenRectangle& outer) {
    MutexLock lock(frame.mutex);
    if (frame.window == window) {
        frame.requested = outer;
    }
}

void SetPlacementCallback(PlacementHandler placementChanged) {
    MutexLock lock(frame.mutex);
    frame.placementChanged = placementChanged;
}
