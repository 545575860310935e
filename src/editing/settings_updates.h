// The page's update commands for the settings. Any thread. An engine uses a new value at its next read of it.
#pragma once

#include <cstdint>
#include <string_view>

// Each stores its comma fields in the order of the settings line; fewer fields change nothing, further ones are
// ignored. Throws NumberError at a malformed number, with the earlier fields already stored.
void UpdateAutoclickerSettings(std::string_view payload);  // 9 fields; also updates the profile
void UpdateKeySpammerSettings(std::string_view payload);   // 6 fields; also updates the profile
void UpdateMacroSettings(std::string_view payload);        // 8 fields; only "true" is true

// "auto,1" or "keyspam,0": whether the hotkey runs its tool while held. Only "1" is true; another tool changes nothing.
void SetHoldMode(std::string_view payload);
// Whether the key spammer presses its targets together; only "1" is true. Also updates the profile.
void SetKeySpammerChord(std::string_view payload);

// Any thread. Removes one target; an index out of range changes nothing. Without a target left, a running key spammer
// stops.
void RemoveKeySpammerTarget(int32_t index);
// UI thread. Moves a target to another position. Returns false, with nothing changed, for an index out of range.
bool MoveKeySpammerTarget(int32_t from, int32_t to);
// Dispatcher thread. Adds a target at the end, unless the list is full.
void AddKeySpammerTarget(uint32_t virtualKey);
