// How many rounds the tests with random inputs run. The native build runs all of them. Sanitizer builds and Windows
// builds run a tenth: they find faults of the build, which the first rounds reach.
#pragma once

#include "simulated/sanitizers.h"

#ifdef _WIN32
constexpr bool kRunsAllRounds = false;
#else
constexpr bool kRunsAllRounds = !kSanitized;
#endif

// Returns `full`, or a tenth of it in a build that runs a sample.
constexpr int RandomRounds(int full) {
    return kRunsAllRounds ? full : full / 10;
}
