// The virtual clock and the turn that passes from thread to thread. Everything belongs to the thread that has the turn;
// passing the turn is the only lock.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

constexpr int64_t kSimTicksPerMillisecond = 10000;  // the counter runs at 10 MHz

struct SimOptions {
    uint64_t seed = 1;
    int64_t spinTicks = 100;  // duration of one SpinOnce, and of a wait with limit 0 that finds no event set
    int64_t sendTicks = 0;    // duration of one SendInputAction
    bool sendsNotches =
        false;  // a turn of the wheel is sent notch by notch, each as long as one spin, as on X11
    int64_t overshootTicks = 0;  // sleeps and limited waits end late by a random amount up to this
    uint32_t preemptPercent =
        0;  // chance that SignalWake and SendInputAction let another runnable thread go first
};

// Every thread waits and nothing can wake one. Thrown where the driver waits; the text lists the waiting threads.
class SimDeadlock : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Lets all other threads run to their end. Returns what the threads that never end wait for; empty if all ended.
std::string SimEnd();

double SimMilliseconds();  // since SimBegin
int64_t SimTicks();        // since SimBegin
// Advances by this much. On return everything that can happen up to that moment has happened.
void SimRunFor(double milliseconds);
// Runs everything that can happen without the clock advancing.
void SimSettle();
// Runs until `done` holds, which is tested whenever all threads wait. Returns false if the limit passes first.
bool SimRunUntil(const std::function<bool()>& done, double limitMilliseconds);
// Returns a hash of the order and the times in which threads have run.
uint64_t SimScheduleHash();
// Returns how many threads started through StartThread have not ended.
int SimLiveThreads();

// For the other parts of the simulated platform, on the thread that has the turn.

// Returns a random number of the run's seed.
uint64_t SimRandom();
const SimOptions& SimCurrentOptions();
// Lets another runnable thread go first, with the chance that the options give.
void SimMaybePreempt();
// Advances the clock without passing the turn.
void SimSpend(int64_t ticks);
void SimResetScheduler(const SimOptions& options);
