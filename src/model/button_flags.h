// Mouse buttons as UnifiedEvent::flags stores them. Any thread.
#pragma once

#include <cstdint>
#include <optional>

struct ButtonAction {
    uint32_t button = 0;  // a button code of platform/key_table.h
    bool down = false;

    bool operator==(const ButtonAction&) const = default;
};

// Returns the stored value of a press or release, or 0 for one that macros do not store. Both side buttons share one
// value and their releases have none.
uint32_t ButtonFlagsOf(ButtonAction action);
// Returns the meaning of a stored value, or nullopt if it is not the value of one press or release. The value that both
// side buttons share returns kUnnamedSideButton.
std::optional<ButtonAction> ButtonActionOf(uint32_t flags);
