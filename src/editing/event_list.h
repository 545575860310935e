// The event list of the current macro as JSON, and its mirror file macroevents.txt. The page polls the list about eight
// times a second, so the text is kept and only what is new is added to it. Any thread. Locks macroMutex for the copy of
// some thousand events at a time. A mirror file that cannot be written is not reported; the next call writes it again.
#pragma once

#include "model/event.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

// Returns the page's event list of a macro: [{"id":0,"time":0.000000,"desc":"..."},...]
std::string MacroEventsJson(const std::vector<UnifiedEvent>& events);
// Adds events to the event list in `json`, of which they are the ones from index `first` on. With `first` 0 the list
// begins again and uses the memory of `json`: for a large macro, getting new memory takes longer than building the text.
void AppendMacroEventsJson(std::span<const UnifiedEvent> events, size_t first, std::string& json);
// Reserves the usual memory for the list of `count` events, for a list that is added to in parts.
void ReserveMacroEventsJson(size_t count, std::string& json);
// Returns the sentence that the event list shows for an event.
std::string EventDescription(const UnifiedEvent& event);

// Returns the event list, after writing it to the mirror file.
std::string ReportEventList();
// Writes the event list to the mirror file.
void RewriteEventMirror();
// For each poll of the page: writes the mirror file unless it is up to date already.
void UpdateEventMirror();
