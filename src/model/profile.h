// A named macro with its tool settings.
#pragma once

#include "model/event.h"

#include <string>
#include <vector>

constexpr const char* DefaultProfileName = "Default Tracking Profile";

struct Profile {
    std::string name;                  // bytes of any encoding; two profiles may have the same name
    std::string settings;              // profile settings text; empty: the defaults
    std::vector<UnifiedEvent> events;  // the macro, in list order
};
