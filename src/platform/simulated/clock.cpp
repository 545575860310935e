#include "platform/simulated/clock.h"

#include "platform/clock.h"

namespace {

int timerPeriods = 0;
bool keptWhenHidden = false;

}  // namespace

void BeginTimerPeriod() {
    ++timerPeriods;
}

void EndTimerPeriod() {
    --timerPeriods;
}

bool KeepTimerResolutionWhenHidden() {
    keptWhenHidden = true;
    return true;
}

int SimTimerPeriods() {
    return timerPeriods;
}

bool SimTimerKeptWhenHidden() {
    return keptWhenHidden;
}

void SimResetClock() {
    timerPeriods = 0;
    keptWhenHidden = false;
}
