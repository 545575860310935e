#include "platform/wake.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <vector>

// A mutex and condition variables rather than eventfd and poll: a timed futex wait obeys the thread's timer slack, while
// poll may be late by a thousandth of a long limit.

namespace {

// One thread in WaitForAny. Lives on its stack.
struct Waiter {
    std::condition_variable woken;
};

// Guards the state of all events and their lists of waiters. Held for a few instructions only.
std::mutex& WakeMutex() {
    static std::mutex* mutex = new std::mutex;  // outlives every thread and static object
    return *mutex;
}

}  // namespace

struct WakeEvent {
    WakeReset reset = WakeReset::Automatic;
    bool set = false;
    std::vector<Waiter*> waiters;
};

WakeEvent* CreateWakeEvent(WakeReset reset) {
    WakeEvent* event = new (std::nothrow) WakeEvent;
    if (event != nullptr) {
        event->reset = reset;
    }
    return event;
}

void CloseWakeEvent(WakeEvent* event) {
    delete event;
}

void SignalWake(WakeEvent* event) {
    if (event == nullptr) {
        return;
    }
    const std::lock_guard lock(WakeMutex());
    event->set = true;
    for (Waiter* waiter : event->waiters) {
        waiter->woken.notify_one();
    }
}

namespace {

// Needs WakeMutex. Returns the index of the lowest event that is set and resets it if it is automatic, or -1.
int TakeLowestSet(WakeEvent* const* events, int count) {
    for (int index = 0; index < count; ++index) {
        if (events[index] != nullptr && events[index]->set) {
            if (events[index]->reset == WakeReset::Automatic) {
                events[index]->set = false;
            }
            return index;
        }
    }
    return -1;
}

}  // namespace

int WaitForAny(WakeEvent* const* events, int count, uint32_t limitMilliseconds) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMilliseconds);
    std::unique_lock lock(WakeMutex());
    int index = TakeLowestSet(events, count);
    if (index >= 0 || limitMilliseconds == 0) {
        return index;
    }
    Waiter waiter;
    for (int each = 0; each < count; ++each) {
        if (events[each] != nullptr) {
            events[each]->waiters.push_back(&waiter);
        }
    }
    for (;;) {
        bool late = false;
        if (limitMilliseconds == kNoLimit) {
            waiter.woken.wait(lock);
        } else {
            late = waiter.woken.wait_until(lock, deadline) == std::cv_status::timeout;
        }
        index = TakeLowestSet(events, count);
        if (index >= 0 || late) {
            break;
        }
    }
    for (int each = 0; each < count; ++each) {
        if (events[each] != nullptr) {
            std::erase(events[each]->waiters, &waiter);
        }
    }
    return index;
}
