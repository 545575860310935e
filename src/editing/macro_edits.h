// Edits of the current macro, and its event list as JSON. Any thread; locks macroMutex for the change or the copy only.
#pragma once

#include "model/event.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Returns the page's event list of a macro: [{"id":0,"time":0.000000,"desc":"..."},...]
std::string MacroEventsJson(const std::vector<UnifiedEvent>& events);
// Replaces `json` by the event list and uses its memory: for a large macro, getting new memory takes longer than
// building the text.
void BuildMacroEventsJson(const std::vector<UnifiedEvent>& events, std::string& json);
// Returns the event list of the current macro.
std::string CurrentMacroEventsJson();
// Returns the sentence that the event list shows for an event.
std::string EventDescription(const UnifiedEvent& event);

// Page commands. Each rewrites the mirror of the event list, without a lock and even if nothing changed. A malformed
// number throws NumberError before that.
// Deletes the event at a decimal index; an index out of range deletes nothing.
void DeleteEvent(std::string_view indexText);
// "index,seconds": sets an event's time. Another number of fields, or an index out of range, changes nothing.
void UpdateEventTime(std::string_view arguments);
// Thins out the pointer paths.
void OptimizeMacro();

// Returns the events without those pointer moves that lie between moves and within 10 pixels of the last move kept.
std::vector<UnifiedEvent> OptimizedEvents(const std::vector<UnifiedEvent>& events);
