#pragma once

#include <cstdint>

// Thread body, from start to shutdown.
void KeySpamThreadMain();

// Any thread. Removes one target; an index out of range does nothing.
void RemoveKeySpamTarget(int32_t index);
// Dispatcher thread. Adds a target at the end; dropped in silence when the list is full.
void AddKeySpamTarget(uint32_t virtualKey);
