// Small edits of the current macro. Caller's thread; macroMutex is taken inside and held only for the change.
#pragma once

#include "engines/unified_event.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The macro as the page's event list: [{"id":0,"time":0.000000,"desc":"..."},...]
std::string MacroEventsJson(const std::vector<UnifiedEvent>& events);
// Under macroMutex a copy of the current macro, then MacroEventsJson of it.
std::string CurrentMacroEventsJson();
std::string EventDescription(const UnifiedEvent& event);

void DeleteEvent(std::string_view indexText);      // throws NumberError where there is no leading number
void UpdateEventTime(std::string_view arguments);  // "index,seconds"; exactly two fields or nothing changes
void OptimizeMacro();
// The thinning itself, one pass. Gives the events that stay.
std::vector<UnifiedEvent> OptimizedEvents(const std::vector<UnifiedEvent>& events);
