// When the events of a profile happen, as the tests of every kind ask for it.
#pragma once

#include "base/mutex.h"
#include "model/engine_state.h"

#include <cmath>
#include <vector>

// In seconds, rounded to milliseconds.
inline std::vector<double> EventTimes(size_t profile) EXCLUDES(macroMutex) {
    MutexLock lock(macroMutex);
    std::vector<double> times;
    for (const UnifiedEvent& event : macroState.profiles.at(profile).events) {
        times.push_back(std::round(event.time * 1000) / 1000);
    }
    return times;
}
