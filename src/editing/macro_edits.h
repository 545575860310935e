// Small edits of the current macro. Any thread. They lock macroMutex themselves, only for the change.
#pragma once

#include "model/event.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Returns the macro as the page's event list: [{"id":0,"time":0.000000,"desc":"..."},...]
std::string MacroEventsJson(const std::vector<UnifiedEvent>& events);
// The same, replacing the content of `json` and reusing its memory: for a large macro, new memory costs more than the
// building.
void BuildMacroEventsJson(const std::vector<UnifiedEvent>& events, std::string& json);
// Copies the current macro under macroMutex, then returns MacroEventsJson of the copy.
std::string CurrentMacroEventsJson();
std::string EventDescription(const UnifiedEvent& event);

// Each of these three rewrites the mirror of the event list, even if nothing changed, with no lock held. A malformed
// number throws NumberError before that.
void DeleteEvent(std::string_view indexText);
void UpdateEventTime(std::string_view arguments);  // "index,seconds"; exactly two fields or nothing changes
void OptimizeMacro();
// Thins out the moves in one pass. Returns the events that stay.
std::vector<UnifiedEvent> OptimizedEvents(const std::vector<UnifiedEvent>& events);
