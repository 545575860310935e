// A named macro with its tool settings.
#pragma once

#include "model/event.h"

#include <cstdint>
#include <string>
#include <vector>

constexpr const char* DefaultProfileName = "Default Tracking Profile";

struct Profile {
    std::string name;                  // bytes of any encoding; two profiles may have the same name
    std::string settings;              // profile settings text; empty: the defaults
    std::vector<UnifiedEvent> events;  // the macro, in list order
    uint64_t id = 0;  // identifies the profile in this run, whatever its position; 0: none yet
};
