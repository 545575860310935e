// The event times of a profile, for tests of every kind.
#pragma once

#include "base/mutex.h"
#include "model/engine_state.h"

#include <cmath>
#include <vector>

// Returns the times in seconds, rounded to milliseconds.
inline std::vector<double> EventTimes(size_t profile) EXCLUDES(macroMutex) {
    MutexLock lock(macroMutex);
    std::vector<double> times;
    for (const UnifiedEvent& event : macroState.profiles.at(profile).events) {
        times.push_back(std::round(event.time * 1000) / 1000);
    }
    return times;
}
