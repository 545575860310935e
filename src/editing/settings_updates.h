// The page's update commands for the settings records. Caller's thread; they take effect at the next use of a value.
// A malformed number throws NumberError with the earlier fields already stored.
#pragma once

#include <cstdint>
#include <string_view>

void UpdateAutoclickerSettings(std::string_view payload);  // 9 comma fields; fewer change nothing
void UpdateKeySpammerSettings(std::string_view payload);   // 6
void UpdateMacroSettings(std::string_view payload);        // 8; does not sync the session
void SetHoldMode(std::string_view payload);                // "auto,1", "keyspam,0"
void SetKeySpammerChord(std::string_view payload);         // exactly "1" is true

// Any thread. Removes one target; an index out of range does nothing.
void RemoveKeySpammerTarget(int32_t index);
// Dispatcher thread. Adds a target at the end; dropped in silence when the list is full.
void AddKeySpammerTarget(uint32_t virtualKey);
