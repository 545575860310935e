// The virtual clock and the turn that is handed from thread to thread. All of it belongs to whoever holds the turn; the
// hand-off itself is the only lock.
#pragma once

#include "platform/simulated/simulation.h"
#include "platform/wake.h"

#include <cstdint>

// Random numbers of the run's seed.
uint64_t SimRandom();
const SimOptions& SimCurrentOptions();

// Lets another runnable thread go first, by the chance that the options give.
void SimMaybePreempt();
// Moves the clock on without giving up the turn.
void SimSpend(int64_t ticks);

// What SimBegin resets besides the scheduler.
void SimResetHooks();
void SimResetInput();
void SimResetDesktop();
void SimResetDialogs();
void SimResetPage();
void SimResetFiles();
void SimResetProcess();
void SimResetClock();
