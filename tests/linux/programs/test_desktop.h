// Shared by the platform tests: a user's input on the outer server, a window on the inner one that stores what it
// receives, and the input thread with sinks that store their records. See start_servers.sh.
#pragma once

// Before the X headers, whose macros break it.
#include <gtest/gtest.h>

#include "platform/clock.h"
#include "platform/hooks.h"
#include "platform/key_table.h"
#include "platform/threads.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <poll.h>
#include <set>
#include <string>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <vector>

constexpr int kDeadlineSeconds = 60;

// Waits until `condition` holds. Returns false after the deadline.
inline bool WaitFor(const std::function<bool()>& condition) {
    const int64_t deadline = ReadPerformanceCounter() + kDeadlineSeconds * ReadPerformanceFrequency();
    while (!condition()) {
        if (ReadPerformanceCounter() > deadline) {
            return false;
        }
        SleepMilliseconds(1);
    }
    return true;
}

// X keycodes of keys that the tests press, and virtual keys of some.
constexpr uint32_t kKeyA = 38;
constexpr uint32_t kKeyB = 56;
constexpr uint32_t kKeyZ = 52;
constexpr uint32_t kKeyEscape = 9;
constexpr uint32_t kKeyF6 = 72;
constexpr uint32_t kKeyF7 = 73;
constexpr uint32_t kKeyShiftRight = 62;
constexpr uint32_t kCodeF6 = 117;
constexpr uint32_t kCodeF7 = 118;

inline Display* OpenTestDisplay(const char* name) {
    Display* display = XOpenDisplay(name);
    if (display == nullptr) {
        std::fprintf(stderr, "no display %s: run these tests by tests/linux/run.sh\n",
                     name == nullptr ? "" : name);
        std::exit(2);
    }
    return display;
}

// Input by XTEST. On the outer server it acts as the user, on the inner one as another program.
class Hand {
  public:
    explicit Hand(const char* display) : display_(OpenTestDisplay(display)) {}
    ~Hand() { XCloseDisplay(display_); }
    Hand(const Hand&) = delete;
    Hand& operator=(const Hand&) = delete;

    void Key(uint32_t keycode, bool down) {
        XTestFakeKeyEvent(display_, keycode, down ? True : False, CurrentTime);
        XSync(display_, False);
    }
    void Tap(uint32_t keycode) {
        Key(keycode, true);
        Key(keycode, false);
    }
    void Button(uint32_t button, bool down) {
        XTestFakeButtonEvent(display_, button, down ? True : False, CurrentTime);
        XSync(display_, False);
    }
    void Click(uint32_t button) {
        Button(button, true);
        Button(button, false);
    }
    void MoveTo(int x, int y) {
        XTestFakeMotionEvent(display_, -1, x, y, CurrentTime);
        XSync(display_, False);
    }
    void MoveBy(int dx, int dy) {
        XTestFakeRelativeMotionEvent(display_, dx, dy, CurrentTime);
        XSync(display_, False);
    }
    Display* Connection() { return display_; }

  private:
    Display* display_;
};

struct User : Hand {
    User() : Hand(std::getenv("VARNELLE_HOST_DISPLAY")) {}
};

struct OtherProgram : Hand {
    OtherProgram() : Hand(nullptr) {}
};

struct Seen {
    char kind = ' ';  // k key down, K key up, b button down, B button up, m motion
    uint32_t code = 0;
    int x = 0;  // on the root window
    int y = 0;
    int64_t counter = 0;
};

// A window that has the keyboard. Auto-repeat shows as further downs without ups.
class TargetWindow {
  public:
    TargetWindow(int x, int y, int width, int height) : display_(OpenTestDisplay(nullptr)) {
        XSetWindowAttributes attributes{};
        attributes.override_redirect = True;
        attributes.event_mask = KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask |
                                PointerMotionMask | StructureNotifyMask;
        window_ = XCreateWindow(display_, DefaultRootWindow(display_), x, y, static_cast<unsigned>(width),
                                static_cast<unsigned>(height), 0, CopyFromParent, InputOutput, nullptr,
                                CWOverrideRedirect | CWEventMask, &attributes);
        XkbSetDetectableAutoRepeat(display_, True, nullptr);
        XMapRaised(display_, window_);
        XEvent event;
        do {
            XNextEvent(display_, &event);
        } while (event.type != MapNotify);
        XSetInputFocus(display_, window_, RevertToPointerRoot, CurrentTime);
        XSync(display_, False);
        reader_ = std::thread([this] { Read(); });
    }
    ~TargetWindow() {
        const uint64_t one = 1;
        if (write(stop_, &one, sizeof(one)) != static_cast<ssize_t>(sizeof(one))) {
            std::abort();
        }
        reader_.join();
        close(stop_);
        XCloseDisplay(display_);
    }
    TargetWindow(const TargetWindow&) = delete;
    TargetWindow& operator=(const TargetWindow&) = delete;

    std::vector<Seen> Log() {
        const std::lock_guard lock(mutex_);
        return log_;
    }
    void Clear() {
        const std::lock_guard lock(mutex_);
        log_.clear();
    }
    // Keys and buttons in order: "k72 K72 b1 B1".
    std::string Text() {
        std::string text;
        for (const Seen& each : Log()) {
            if (each.kind != 'm') {
                text += (text.empty() ? "" : " ") + std::string(1, each.kind) + std::to_string(each.code);
            }
        }
        return text;
    }
    int Count(char kind, uint32_t code) {
        int count = 0;
        for (const Seen& each : Log()) {
            count += each.kind == kind && each.code == code ? 1 : 0;
        }
        return count;
    }
    Window Id() const { return window_; }
    // Waits until a user's key arrives here.
    void AwaitFocus(Hand& user) {
        const bool arrived = WaitFor([&] {
            const int before = Count('K', kKeyZ);
            XSetInputFocus(display_, window_, RevertToPointerRoot, CurrentTime);
            XSync(display_, False);
            user.Tap(kKeyZ);
            for (int tries = 0; tries < 200 && Count('K', kKeyZ) == before; ++tries) {
                SleepMilliseconds(1);
            }
            return Count('K', kKeyZ) > before;
        });
        if (!arrived) {
            std::fprintf(stderr, "the target window cannot get the keyboard\n");
            std::exit(3);
        }
        // Once another key has arrived, none of these is pending.
        user.Tap(kKeyB);
        WaitFor([&] { return Count('K', kKeyB) > 0; });
        Clear();
    }

  private:
    void Read() {
        for (;;) {
            while (XPending(display_) > 0) {
                XEvent event;
                XNextEvent(display_, &event);
                Note(event);
            }
            pollfd files[2] = {{ConnectionNumber(display_), POLLIN, 0}, {stop_, POLLIN, 0}};
            poll(files, 2, -1);
            if (files[1].revents != 0) {
                return;
            }
        }
    }
    void Note(const XEvent& event) {
        Seen seen;
        seen.counter = ReadPerformanceCounter();
        switch (event.type) {
        case KeyPress:
        case KeyRelease:
            seen.kind = event.type == KeyPress ? 'k' : 'K';
            seen.code = event.xkey.keycode;
            seen.x = event.xkey.x_root;
            seen.y = event.xkey.y_root;
            break;
        case ButtonPress:
        case ButtonRelease:
            seen.kind = event.type == ButtonPress ? 'b' : 'B';
            seen.code = event.xbutton.button;
            seen.x = event.xbutton.x_root;
            seen.y = event.xbutton.y_root;
            break;
        case MotionNotify:
            seen.kind = 'm';
            seen.x = event.xmotion.x_root;
            seen.y = event.xmotion.y_root;
            break;
        default:
            return;
        }
        const std::lock_guard lock(mutex_);
        log_.push_back(seen);
    }

    Display* display_;
    Window window_ = None;
    const int stop_ = eventfd(0, EFD_CLOEXEC);
    std::mutex mutex_;
    std::vector<Seen> log_;
    std::thread reader_;
};

// The records that the sinks received, their decisions and their interest. Guarded by the mutex.
struct Sinks {
    std::mutex mutex;
    HookInterest interest;
    int interestReads = 0;
    std::set<uint32_t> swallow;
    std::set<uint32_t> swallowedDown;
    bool captureKey = false;
    bool pick = false;
    bool wantsInjected = true;
    std::vector<KeyHookRecord> keys;
    std::vector<MouseHookRecord> mouse;
    std::vector<RawMouseRecord> raw;
    std::vector<SessionChange> changes;
};

inline Sinks& TheSinks() {
    static Sinks sinks;
    return sinks;
}

inline bool IsButtonEvent(const MouseHookRecord& record) {
    return record.kind == PointerEvent::Press || record.kind == PointerEvent::Release;
}

// Press and release of a swallowed code go together, as in the program.
inline HookDecision DecideCode(Sinks& sinks, uint32_t code, bool down) {
    if (down) {
        if (sinks.swallow.count(code) == 0) {
            return HookDecision::Pass;
        }
        sinks.swallowedDown.insert(code);
        return HookDecision::Consume;
    }
    return sinks.swallowedDown.erase(code) > 0 ? HookDecision::Consume : HookDecision::Pass;
}

inline HookDecision NoteKey(const KeyHookRecord& record) {
    Sinks& sinks = TheSinks();
    const std::lock_guard lock(sinks.mutex);
    sinks.keys.push_back(record);
    if (record.injected) {
        return HookDecision::Pass;
    }
    if (record.down && sinks.captureKey) {
        sinks.captureKey = false;
        return HookDecision::Consume;
    }
    return DecideCode(sinks, record.virtualKey, record.down);
}

inline HookDecision NoteMouse(const MouseHookRecord& record) {
    Sinks& sinks = TheSinks();
    const std::lock_guard lock(sinks.mutex);
    sinks.mouse.push_back(record);
    if (record.injected || !IsButtonEvent(record)) {
        return HookDecision::Pass;
    }
    const bool press = record.kind == PointerEvent::Press;
    if (sinks.pick && press && record.button == kLeftButton) {
        sinks.pick = false;
        return HookDecision::Consume;
    }
    return DecideCode(sinks, record.button, press);
}

inline void NoteRaw(const RawMouseRecord& record) {
    Sinks& sinks = TheSinks();
    const std::lock_guard lock(sinks.mutex);
    sinks.raw.push_back(record);
}

inline void NoteChange(SessionChange change) {
    Sinks& sinks = TheSinks();
    const std::lock_guard lock(sinks.mutex);
    sinks.changes.push_back(change);
}

inline void ReadInterest(HookInterest* interest) {
    Sinks& sinks = TheSinks();
    const std::lock_guard lock(sinks.mutex);
    *interest = sinks.interest;
    // As in the program: a finished capture or pick is no longer of interest.
    interest->anyKey = interest->anyKey && sinks.captureKey;
    interest->injectedCodes = sinks.wantsInjected;
    ++sinks.interestReads;
}

inline void RunNotingHooks() {
    RunInputThread(HookSinks{NoteKey, NoteMouse, NoteRaw, NoteChange, ReadInterest});
}

// The input thread with the sinks above. One at a time.
class HookedThread {
  public:
    // `user` taps the right Shift key until the hooks report it.
    explicit HookedThread(Hand& user) {
        Sinks& sinks = TheSinks();
        {
            const std::lock_guard lock(sinks.mutex);
            sinks.interest = HookInterest{};
            sinks.swallow.clear();
            sinks.swallowedDown.clear();
            sinks.captureKey = false;
            sinks.pick = false;
            sinks.wantsInjected = true;
        }
        Clear();
        thread_ = StartThread("hooks", RunNotingHooks);
        bool heard = WaitFor([&] {
            user.Tap(kKeyShiftRight);
            return !KeyText().empty();
        });
        heard = heard && WaitFor([&] { return KeyText().find("u161") != std::string::npos; });
        SetInterest(HookInterest{});
        size_t before = 0;
        // Waits until the last taps have passed.
        user.Tap(kKeyZ);
        heard = heard && WaitFor([&] { return KeyText().find("u90") != std::string::npos; });
        before = Keys().size();
        if (!heard || before == 0) {
            std::fprintf(stderr, "the hooks do not work\n");
            std::exit(3);
        }
        Clear();
    }
    ~HookedThread() { Stop(); }
    HookedThread(const HookedThread&) = delete;
    HookedThread& operator=(const HookedThread&) = delete;

    // Returns when the interest is in effect.
    void SetInterest(const HookInterest& interest) {
        {
            const std::lock_guard lock(TheSinks().mutex);
            TheSinks().interest = interest;
        }
        AwaitInterest();
    }
    // Waits for two more reads of the interest: at the second one the first has been applied.
    void AwaitInterest() {
        for (int round = 0; round < 2; ++round) {
            const int reads = Reads();
            HookInterestChanged();
            WaitFor([&] { return Reads() > reads; });
        }
    }
    // Swallows presses of these codes with their releases, unless injected. They are the interest.
    void Swallow(const std::set<uint32_t>& codes, HookInterest interest = {}) {
        interest.codeCount = 0;
        for (const uint32_t code : codes) {
            interest.codes[interest.codeCount++] = code;
        }
        {
            const std::lock_guard lock(TheSinks().mutex);
            TheSinks().swallow = codes;
        }
        SetInterest(interest);
    }
    // Swallows the next real key press, not its release.
    void CaptureNextKey() {
        {
            const std::lock_guard lock(TheSinks().mutex);
            TheSinks().captureKey = true;
        }
        HookInterest interest;
        interest.anyKey = true;
        SetInterest(interest);
    }
    // Swallows the next real left press, not its release.
    void PickNextClick() {
        {
            const std::lock_guard lock(TheSinks().mutex);
            TheSinks().pick = true;
        }
        HookInterest interest;
        interest.buttons = 1U << 1 | 1U << 2 | 1U << 4;
        SetInterest(interest);
    }

    std::vector<KeyHookRecord> Keys() {
        const std::lock_guard lock(TheSinks().mutex);
        return TheSinks().keys;
    }
    std::vector<MouseHookRecord> Mouse() {
        const std::lock_guard lock(TheSinks().mutex);
        return TheSinks().mouse;
    }
    std::vector<RawMouseRecord> Raw() {
        const std::lock_guard lock(TheSinks().mutex);
        return TheSinks().raw;
    }
    std::vector<SessionChange> Changes() {
        const std::lock_guard lock(TheSinks().mutex);
        return TheSinks().changes;
    }
    void Clear() {
        const std::lock_guard lock(TheSinks().mutex);
        TheSinks().keys.clear();
        TheSinks().mouse.clear();
        TheSinks().raw.clear();
        TheSinks().changes.clear();
    }
    // Keys in order: "d117 u117", injected ones with an exclamation mark in front.
    std::string KeyText() {
        std::string text;
        for (const KeyHookRecord& each : Keys()) {
            text += (text.empty() ? "" : " ") + std::string(each.injected ? "!" : "") +
                    (each.down ? "d" : "u") + std::to_string(each.virtualKey);
        }
        return text;
    }
    // Buttons and wheel in order: "d1 u1 w120 h-120".
    std::string ButtonText() {
        std::string text;
        for (const MouseHookRecord& each : Mouse()) {
            std::string word = each.injected ? "!" : "";
            switch (each.kind) {
            case PointerEvent::Move:
                continue;
            case PointerEvent::Press:
                word += "d" + std::to_string(each.button);
                break;
            case PointerEvent::Release:
                word += "u" + std::to_string(each.button);
                break;
            case PointerEvent::Wheel:
                word += "w" + std::to_string(each.wheelDelta);
                break;
            case PointerEvent::HorizontalWheel:
                word += "h" + std::to_string(each.wheelDelta);
                break;
            }
            text += (text.empty() ? "" : " ") + word;
        }
        return text;
    }

    bool Stopped() const { return !thread_.joinable(); }
    void Stop() {
        if (thread_.joinable()) {
            StopInputThread();
            JoinThread(thread_);
        }
    }

  private:
    int Reads() {
        const std::lock_guard lock(TheSinks().mutex);
        return TheSinks().interestReads;
    }

    std::thread thread_;
};
