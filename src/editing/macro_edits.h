// Edits of the current macro. Any thread; locks macroMutex for the change only.
#pragma once

#include "model/event.h"

#include <string_view>
#include <vector>

// Page commands. Each rewrites the mirror of the event list, without macroMutex and even if nothing changed. A malformed
// number throws NumberError before that.
// Deletes the event at a decimal index; an index out of range deletes nothing.
void DeleteEvent(std::string_view indexText);
// "index,seconds": sets an event's time. Another number of fields, or an index out of range, changes nothing.
void UpdateEventTime(std::string_view arguments);
// Thins out the pointer paths.
void OptimizeMacro();

// Returns the events without those pointer moves that lie between moves and within 10 pixels of the last move kept.
std::vector<UnifiedEvent> OptimizedEvents(const std::vector<UnifiedEvent>& events);
