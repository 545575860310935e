// A named macro with its tool settings.
#pragma once

#include "model/event.h"

#include <string>
#include <vector>

constexpr const char* DefaultProfileName = "Default Tracking Profile";

struct Profile {
    std::string name;                  // bytes of any encoding; not unique by rule
    std::string settings;              // profile settings text, or empty: the defaults
    std::vector<UnifiedEvent> events;  // the macro, in list order
};
