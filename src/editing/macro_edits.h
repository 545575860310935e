// Small edits of the current macro. Caller's thread; macroMutex is taken inside and held only for the change.
#pragma once

#include "model/event.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// The macro as the page's event list: [{"id":0,"time":0.000000,"desc":"..."},...]
std::string MacroEventsJson(const std::vector<UnifiedEvent>& events);
// The same in place of what `json` held. A text that is built again and again is built in memory that is already
// there: for a large macro, getting it anew costs more than the building.
void BuildMacroEventsJson(const std::vector<UnifiedEvent>& events, std::string& json);
// Under macroMutex a copy of the current macro, then MacroEventsJson of it.
std::string CurrentMacroEventsJson();
std::string EventDescription(const UnifiedEvent& event);

// Each of the three rewrites the mirror of the event list, also where nothing changed, and with no lock held. A
// malformed number throws NumberError before that.
void DeleteEvent(std::string_view indexText);
void UpdateEventTime(std::string_view arguments);  // "index,seconds"; exactly two fields or nothing changes
void OptimizeMacro();
// The thinning itself, one pass. Gives the events that stay.
std::vector<UnifiedEvent> OptimizedEvents(const std::vector<UnifiedEvent>& events);
