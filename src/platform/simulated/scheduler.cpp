#include "platform/simulated/scheduler.h"

#include "platform/clock.h"
#include "platform/threads.h"
#include "platform/wake.h"

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

constexpr int64_t kNever = std::numeric_limits<int64_t>::max();
constexpr int64_t kClockStart = 10'000'000;  // one second: a counter of 0 would hide a forgotten subtraction
constexpr int kMaxWaitEvents = 4;

enum class Stage { Runnable, Waiting, Ended };

struct Participant {
    std::string name;
    std::thread::id threadId;
    Stage stage = Stage::Runnable;
    bool yieldsToAll = false;  // the driver's waits: runs only if no other thread can run at this time

    // While Waiting.
    WakeEvent* events[kMaxWaitEvents] = {};
    int eventCount = 0;
    int64_t deadline = kNever;
    uint64_t waitOrder = 0;  // the longest waiter gets an automatic event's signal
    Participant* joined = nullptr;
    bool waitsForAllThreads = false;
    int result = -1;
    bool deadlocked = false;

    std::mutex turnMutex;
    std::condition_variable turnGiven;
    bool hasTurn = false;
};

struct Scheduler {
    SimOptions options;
    uint64_t randomState = 0;
    uint64_t scheduleHash = 0;
    uint64_t waitsBegun = 0;
    int liveThreads = 0;
    int eventsCreated = 0;
    std::vector<std::shared_ptr<Participant>> participants;  // in order of starting; the driver first
    Participant* driver = nullptr;
};

Scheduler scheduler;
std::atomic<int64_t> clockTicks{
    kClockStart};  // atomic for readers without the turn, such as a bench's threads
thread_local Participant* self = nullptr;

int64_t Now() {
    return clockTicks.load(std::memory_order_relaxed);
}

Participant* Self() {
    if (self == nullptr) {
        std::fputs("simulated platform: a thread that takes no part in the simulation tried to wait\n",
                   stderr);
        std::abort();
    }
    return self;
}

}  // namespace

struct WakeEvent {
    WakeReset reset = WakeReset::Automatic;
    bool set = false;
    int number = 0;  // in order of creation, for reports
};

namespace {

std::string DescribeWaiters() {
    std::string text;
    for (const auto& participant : scheduler.participants) {
        if (participant->stage != Stage::Waiting) {
            continue;
        }
        text += text.empty() ? "" : "; ";
        text += participant->name + " waits for ";
        if (participant->joined != nullptr) {
            text += "the end of " + participant->joined->name;
        } else if (participant->waitsForAllThreads) {
            text += "the end of all threads";
        } else {
            text += "event";
            for (int index = 0; index < participant->eventCount; ++index) {
                const WakeEvent* event = participant->events[index];
                text += event == nullptr ? " none" : " " + std::to_string(event->number);
            }
        }
    }
    return text;
}

// Returns the thread that runs next. Advances the clock if none can run now.
Participant* ChooseNext() {
    Participant* runnable[64];
    for (;;) {
        int count = 0;
        Participant* lastResort = nullptr;
        int64_t earliest = kNever;
        const int64_t now = Now();
        for (const auto& entry : scheduler.participants) {
            Participant* participant = entry.get();
            if (participant->stage == Stage::Ended) {
                continue;
            }
            if (participant->stage == Stage::Waiting) {
                if (participant->deadline > now) {
                    earliest = participant->deadline < earliest ? participant->deadline : earliest;
                    continue;
                }
                if (participant->yieldsToAll) {
                    lastResort = participant;
                    continue;
                }
                participant->stage = Stage::Runnable;
                participant->result = -1;
            }
            if (count < 64) {
                runnable[count++] = participant;
            }
        }
        if (count == 1) {
            return runnable[0];
        }
        if (count > 1) {
            return runnable[SimRandom() % static_cast<uint64_t>(count)];
        }
        if (lastResort != nullptr) {
            lastResort->stage = Stage::Runnable;
            return lastResort;
        }
        if (earliest == kNever) {
            Participant* driver = scheduler.driver;
            if (driver == nullptr || driver->stage != Stage::Waiting) {
                std::fprintf(stderr, "simulated platform: deadlock without a driver: %s\n",
                             DescribeWaiters().c_str());
                std::abort();
            }
            driver->deadlocked = true;
            return driver;
        }
        clockTicks.store(earliest, std::memory_order_relaxed);
    }
}

void NoteChoice(const Participant* next) {
    uint64_t hash = scheduler.scheduleHash;
    for (char letter : next->name) {
        hash = (hash ^ static_cast<unsigned char>(letter)) * 1099511628211ULL;
    }
    hash = (hash ^ static_cast<uint64_t>(Now())) * 1099511628211ULL;
    scheduler.scheduleHash = hash;
}

void GiveTurn(const std::shared_ptr<Participant>& next) {
    std::lock_guard<std::mutex> lock(next->turnMutex);
    next->hasTurn = true;
    next->turnGiven.notify_one();
}

void AwaitTurn(Participant* participant) {
    std::unique_lock<std::mutex> lock(participant->turnMutex);
    participant->turnGiven.wait(lock, [participant] { return participant->hasTurn; });
    participant->hasTurn = false;
}

std::shared_ptr<Participant> Shared(Participant* wanted) {
    for (const auto& participant : scheduler.participants) {
        if (participant.get() == wanted) {
            return participant;
        }
    }
    return nullptr;
}

// The caller has set what it waits for, or stays runnable. Returns when it is chosen again.
void PassTurn(Participant* caller) {
    Participant* next = ChooseNext();
    NoteChoice(next);
    if (next == caller) {
        if (!caller->deadlocked) {
            return;
        }
    } else {
        GiveTurn(Shared(next));
        AwaitTurn(caller);
    }
    if (caller->deadlocked) {
        std::string waiters = DescribeWaiters();
        caller->deadlocked = false;
        caller->stage = Stage::Runnable;
        caller->joined = nullptr;
        caller->waitsForAllThreads = false;
        caller->eventCount = 0;
        throw SimDeadlock("deadlock: " + waiters);
    }
}

void BeginWait(Participant* caller, int64_t deadline) {
    caller->stage = Stage::Waiting;
    caller->deadline = deadline;
    caller->eventCount = 0;
    caller->joined = nullptr;
    caller->waitsForAllThreads = false;
    caller->yieldsToAll = false;
    caller->result = -1;
    caller->waitOrder = ++scheduler.waitsBegun;
}

int64_t DeadlineIn(int64_t ticks) {
    int64_t late = scheduler.options.overshootTicks;
    if (late > 0 && ticks > 0) {
        ticks += static_cast<int64_t>(SimRandom() % static_cast<uint64_t>(late + 1));
    }
    return Now() + ticks;
}

void EndParticipant(Participant* caller) {
    caller->stage = Stage::Ended;
    --scheduler.liveThreads;
    for (const auto& participant : scheduler.participants) {
        if (participant->stage != Stage::Waiting) {
            continue;
        }
        if (participant->joined == caller ||
            (participant->waitsForAllThreads && scheduler.liveThreads == 0)) {
            participant->stage = Stage::Runnable;
        }
    }
    Participant* next = ChooseNext();
    NoteChoice(next);
    GiveTurn(Shared(next));
}

void RunParticipant(std::shared_ptr<Participant> participant, void (*body)()) {
    self = participant.get();
    AwaitTurn(participant.get());
    body();
    EndParticipant(participant.get());
}

// The driver waits: everything else that can happen until then happens first.
void DriveTo(int64_t deadline) {
    Participant* caller = Self();
    BeginWait(caller, deadline);
    caller->yieldsToAll = true;
    PassTurn(caller);
}

int64_t EarliestDeadlineOfOthers() {
    int64_t earliest = kNever;
    for (const auto& participant : scheduler.participants) {
        if (participant->stage == Stage::Waiting && participant->deadline < earliest) {
            earliest = participant->deadline;
        }
    }
    return earliest;
}

}  // namespace

uint64_t SimRandom() {
    // splitmix64: the same numbers on every compiler and library.
    uint64_t value = (scheduler.randomState += 0x9E3779B97F4A7C15ULL);
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
    return value ^ (value >> 31);
}

const SimOptions& SimCurrentOptions() {
    return scheduler.options;
}

void SimMaybePreempt() {
    if (scheduler.options.preemptPercent == 0 || self == nullptr) {
        return;
    }
    if (SimRandom() % 100 < scheduler.options.preemptPercent) {
        PassTurn(self);
    }
}

void SimSpend(int64_t ticks) {
    clockTicks.store(Now() + ticks, std::memory_order_relaxed);
}

void SimResetScheduler(const SimOptions& options) {
    scheduler.options = options;
    scheduler.randomState = options.seed;
    scheduler.scheduleHash = 14695981039346656037ULL;
    scheduler.waitsBegun = 0;
    scheduler.liveThreads = 0;
    scheduler.eventsCreated = 0;
    scheduler.participants.clear();
    clockTicks.store(kClockStart, std::memory_order_relaxed);

    auto driver = std::make_shared<Participant>();
    driver->name = "driver";
    driver->threadId = std::this_thread::get_id();
    scheduler.driver = driver.get();
    self = driver.get();
    scheduler.participants.push_back(std::move(driver));
}

std::string SimEnd() {
    if (scheduler.liveThreads == 0) {
        return "";
    }
    Participant* caller = Self();
    BeginWait(caller, kNever);
    caller->waitsForAllThreads = true;
    try {
        PassTurn(caller);
    } catch (const SimDeadlock& deadlock) {
        return deadlock.what();
    }
    return "";
}

int64_t SimTicks() {
    return Now() - kClockStart;
}

double SimMilliseconds() {
    return static_cast<double>(SimTicks()) / static_cast<double>(kSimTicksPerMillisecond);
}

void SimRunFor(double milliseconds) {
    DriveTo(Now() + static_cast<int64_t>(milliseconds * static_cast<double>(kSimTicksPerMillisecond)));
}

void SimSettle() {
    DriveTo(Now());
}

bool SimRunUntil(const std::function<bool()>& done, double limitMilliseconds) {
    const int64_t limit =
        Now() + static_cast<int64_t>(limitMilliseconds * static_cast<double>(kSimTicksPerMillisecond));
    for (;;) {
        SimSettle();
        if (done()) {
            return true;
        }
        if (Now() >= limit) {
            return false;
        }
        const int64_t next = EarliestDeadlineOfOthers();
        DriveTo(next < limit ? next : limit);
    }
}

uint64_t SimScheduleHash() {
    return scheduler.scheduleHash;
}

int SimLiveThreads() {
    return scheduler.liveThreads;
}

// clock.h

int64_t ReadPerformanceCounter() {
    return Now();
}

int64_t ReadPerformanceFrequency() {
    return kSimTicksPerMillisecond * 1000;
}

void SleepMilliseconds(uint32_t milliseconds) {
    Participant* caller = Self();
    BeginWait(caller, DeadlineIn(static_cast<int64_t>(milliseconds) * kSimTicksPerMillisecond));
    PassTurn(caller);
}

void SpinOnce() {
    Participant* caller = Self();
    BeginWait(caller, Now() + scheduler.options.spinTicks);
    PassTurn(caller);
}

// threads.h

std::thread StartThread(const char* name, void (*body)()) {
    auto participant = std::make_shared<Participant>();
    participant->name = name;
    scheduler.participants.push_back(participant);
    ++scheduler.liveThreads;
    std::thread thread(RunParticipant, participant, body);
    participant->threadId = thread.get_id();
    return thread;
}

void JoinThread(std::thread& thread) {
    if (!thread.joinable()) {
        return;
    }
    for (size_t index = 0; index < scheduler.participants.size(); ++index) {
        const std::shared_ptr<Participant> participant = scheduler.participants[index];
        if (participant->threadId != thread.get_id()) {
            continue;
        }
        if (participant->stage != Stage::Ended) {
            Participant* caller = Self();
            BeginWait(caller, kNever);
            caller->joined = participant.get();
            PassTurn(caller);
        }
        // The system may give the same thread identifier to a later thread.
        std::erase(scheduler.participants, participant);
        break;
    }
    thread.join();
}

// wake.h

WakeEvent* CreateWakeEvent(WakeReset reset) {
    auto* event = new WakeEvent;
    event->reset = reset;
    event->number = ++scheduler.eventsCreated;
    return event;
}

void CloseWakeEvent(WakeEvent* event) {
    delete event;
}

namespace {

int IndexOfEvent(const Participant& participant, const WakeEvent* event) {
    for (int index = 0; index < participant.eventCount; ++index) {
        if (participant.events[index] == event) {
            return index;
        }
    }
    return -1;
}

// Returns the longest waiter that `event` can wake, or null.
Participant* LongestWaiter(const WakeEvent* event) {
    Participant* longest = nullptr;
    for (const auto& entry : scheduler.participants) {
        Participant* participant = entry.get();
        // A thread whose deadline has passed no longer waits, even if it has not been chosen yet.
        if (participant->stage == Stage::Waiting && participant->deadline > Now() &&
            IndexOfEvent(*participant, event) >= 0 &&
            (longest == nullptr || participant->waitOrder < longest->waitOrder)) {
            longest = participant;
        }
    }
    return longest;
}

}  // namespace

void SignalWake(WakeEvent* event) {
    if (event == nullptr) {
        return;
    }
    event->set = true;
    while (event->set) {
        Participant* waiter = LongestWaiter(event);
        if (waiter == nullptr) {
            break;
        }
        waiter->stage = Stage::Runnable;
        waiter->result = IndexOfEvent(*waiter, event);
        if (event->reset == WakeReset::Automatic) {
            event->set = false;
        }
    }
    SimMaybePreempt();
}

int WaitForAny(WakeEvent* const* events, int count, uint32_t limitMilliseconds) {
    Participant* caller = Self();
    for (int index = 0; index < count && index < kMaxWaitEvents; ++index) {
        WakeEvent* event = events[index];
        if (event != nullptr && event->set) {
            if (event->reset == WakeReset::Automatic) {
                event->set = false;
            }
            PassTurn(caller);
            return index;
        }
    }
    int64_t deadline = kNever;
    if (limitMilliseconds == 0) {
        deadline = Now() + scheduler.options.spinTicks;
    } else if (limitMilliseconds != kNoLimit) {
        deadline = DeadlineIn(static_cast<int64_t>(limitMilliseconds) * kSimTicksPerMillisecond);
    }
    BeginWait(caller, deadline);
    for (int index = 0; index < count && index < kMaxWaitEvents; ++index) {
        caller->events[caller->eventCount++] = events[index];
    }
    PassTurn(caller);
    return caller->result;
}
