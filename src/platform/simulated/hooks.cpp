#include "platform/simulated/hooks.h"

#include "platform/clock.h"
#include "platform/key_table.h"
#include "platform/simulated/scheduler.h"
#include "platform/wake.h"

#include <deque>
#include <set>

namespace {

enum class HookEventKind { Input, Raw, Session };

struct HookEvent {
    HookEventKind kind = HookEventKind::Input;
    SimArrival arrival;
    RawMouseRecord raw;
    SessionChange sessionChange = SessionChange::Lock;
};

struct HookState {
    bool refused = false;
    const HookSinks* sinks = nullptr;  // while RunInputThread runs
    WakeEvent* wake = nullptr;
    bool stop = false;
    bool inSink = false;  // a sink that signals an event may let another thread run
    bool interestChanged = false;
    HookInterest interest;
    std::deque<HookEvent> queue;
    std::vector<std::string> complaints;
    std::set<uint32_t> hidden;  // codes whose press was consumed and that are still held
};

HookState state;

HookDecision AskKeySink(const SimArrival& arrival) {
    KeyHookRecord record;
    record.virtualKey = arrival.code;
    record.down = arrival.down;
    record.injected = arrival.injected;
    record.counter = arrival.counter;
    return state.sinks->onKey(record);
}

PointerEvent PointerEventOf(const SimArrival& arrival) {
    switch (arrival.kind) {
    case SimSeenKind::Move:
        return PointerEvent::Move;
    case SimSeenKind::Wheel:
        return PointerEvent::Wheel;
    case SimSeenKind::HorizontalWheel:
        return PointerEvent::HorizontalWheel;
    default:
        return arrival.down ? PointerEvent::Press : PointerEvent::Release;
    }
}

HookDecision AskMouseSink(const SimArrival& arrival) {
    MouseHookRecord record;
    record.kind = PointerEventOf(arrival);
    record.injected = arrival.injected;
    record.button = arrival.code;
    record.wheelDelta = arrival.wheel;
    record.counter = arrival.counter;
    if (record.kind == PointerEvent::Move) {
        record.x = arrival.x;
        record.y = arrival.y;
    } else {
        SimPointer(&record.x, &record.y);
    }
    return state.sinks->onMouse(record);
}

bool InterestCovers(const SimArrival& arrival) {
    const HookInterest& interest = state.interest;
    if (arrival.kind == SimSeenKind::Key && interest.anyKey) {
        return true;
    }
    if (arrival.kind == SimSeenKind::Button && (interest.buttons & (1U << arrival.code)) != 0) {
        return true;
    }
    for (int index = 0; index < interest.codeCount; ++index) {
        if (interest.codes[index] == arrival.code) {
            return true;
        }
    }
    return false;
}

void ReadInterest() {
    state.interestChanged = false;
    state.interest = HookInterest();
    state.sinks->readInterest(&state.interest);
}

void Deliver(const SimArrival& arrival) {
    const bool press = arrival.down && !arrival.injected &&
                       (arrival.kind == SimSeenKind::Key || arrival.kind == SimSeenKind::Button);
    // A system that reserves presses delivers the repeats to the program that received the press.
    const bool covered = press && (InterestCovers(arrival) || state.hidden.count(arrival.code) != 0);
    state.inSink = true;
    const HookDecision decision =
        arrival.kind == SimSeenKind::Key ? AskKeySink(arrival) : AskMouseSink(arrival);
    state.inSink = false;
    if (press && decision == HookDecision::Consume) {
        state.hidden.insert(arrival.code);
    } else if (!arrival.injected && !arrival.down) {
        state.hidden.erase(arrival.code);
    }
    if (decision == HookDecision::Pass) {
        SimArrive(arrival);
    } else if (press && !covered) {
        state.complaints.push_back("consumed without announced interest: code " +
                                   std::to_string(arrival.code));
    }
}

void Post(const HookEvent& event) {
    state.queue.push_back(event);
    SignalWake(state.wake);
}

void DeliverEvent(const HookEvent& event) {
    switch (event.kind) {
    case HookEventKind::Input:
        Deliver(event.arrival);
        break;
    case HookEventKind::Raw:
        if (state.interest.rawMotion) {
            state.inSink = true;
            state.sinks->onRawMouse(event.raw);
            state.inSink = false;
        }
        break;
    case HookEventKind::Session:
        state.inSink = true;
        state.sinks->onSessionChange(event.sessionChange);
        state.inSink = false;
        break;
    }
}

SimArrival ButtonArrival(uint32_t code, bool down, bool injected) {
    SimArrival arrival;
    arrival.kind = SimSeenKind::Button;
    arrival.code = code;
    arrival.down = down;
    arrival.injected = injected;
    return arrival;
}

}  // namespace

// NOTE: the system calls low-level hooks on the thread that installed them, also for input that a program sends.
// HACK: the sinks see input of SendInputAction on the sender's thread. Only one thread runs at a time, so this equals a
// turn of the input thread at that moment, without two changes of the turn for every click. If the input thread is
// inside a sink or has input queued, the new input is queued behind it.
void SimHandOver(const SimArrival& arrival, bool queued) {
    SimArrival stamped = arrival;
    stamped.counter = ReadPerformanceCounter();
    if (state.sinks == nullptr) {
        SimArrive(stamped);
        return;
    }
    if (queued || state.inSink || !state.queue.empty()) {
        HookEvent event;
        event.arrival = stamped;
        Post(event);
        return;
    }
    Deliver(stamped);
}

void RunInputThread(const HookSinks& sinks) {
    if (state.refused) {
        return;
    }
    state.sinks = &sinks;
    state.wake = CreateWakeEvent(WakeReset::Automatic);
    state.stop = false;
    ReadInterest();
    while (!state.stop) {
        if (state.interestChanged) {
            ReadInterest();
        }
        if (state.queue.empty()) {
            WaitForAny(&state.wake, 1, kNoLimit);
            continue;
        }
        const HookEvent event = state.queue.front();
        state.queue.pop_front();
        DeliverEvent(event);
        SimMaybePreempt();
    }
    state.sinks = nullptr;
    state.queue.clear();
    CloseWakeEvent(state.wake);
    state.wake = nullptr;
}

void StopInputThread() {
    if (state.sinks != nullptr) {
        state.stop = true;
        SignalWake(state.wake);
    }
}

void HookInterestChanged() {
    if (state.sinks != nullptr) {
        state.interestChanged = true;
        SignalWake(state.wake);
    }
}

void SimKey(uint32_t virtualKey, bool down, bool injected) {
    SimArrival arrival;
    arrival.code = virtualKey;
    arrival.down = down;
    arrival.injected = injected;
    SimHandOver(arrival, true);
}

void SimButton(uint32_t code, bool down, bool injected) {
    SimHandOver(ButtonArrival(code, down, injected), true);
}

void SimMove(int32_t x, int32_t y, bool injected) {
    SimArrival arrival;
    arrival.kind = SimSeenKind::Move;
    arrival.x = x;
    arrival.y = y;
    arrival.injected = injected;
    SimHandOver(arrival, true);
}

void SimWheel(int32_t delta, bool injected) {
    SimArrival arrival;
    arrival.kind = SimSeenKind::Wheel;
    arrival.wheel = delta;
    arrival.injected = injected;
    SimHandOver(arrival, true);
}

void SimHorizontalWheel(int32_t delta) {
    SimArrival arrival;
    arrival.kind = SimSeenKind::HorizontalWheel;
    arrival.wheel = delta;
    SimHandOver(arrival, true);
}

void SimRawMove(int32_t dx, int32_t dy) {
    if (state.sinks == nullptr) {
        return;
    }
    HookEvent event;
    event.kind = HookEventKind::Raw;
    event.raw = RawMouseRecord{dx, dy, ReadPerformanceCounter()};
    Post(event);
}

void SimSessionChange(SessionChange change) {
    if (state.sinks == nullptr) {
        return;
    }
    HookEvent event;
    event.kind = HookEventKind::Session;
    event.sessionChange = change;
    Post(event);
}

void SimRefuseHooks(bool refuse) {
    state.refused = refuse;
}

bool SimHooksInstalled() {
    return state.sinks != nullptr;
}

const std::vector<std::string>& SimHookComplaints() {
    return state.complaints;
}

bool SimHookInterestIsCurrent() {
    if (state.sinks == nullptr || state.interestChanged) {
        return true;
    }
    HookInterest now;
    state.sinks->readInterest(&now);
    return now == state.interest;
}

void SimResetHooks() {
    state = HookState();
}
