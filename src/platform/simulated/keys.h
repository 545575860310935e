// The keys of a US keyboard, as Windows numbers and names them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Returns the virtual key of a name without its spaces ("F6", "A", "PageUp") or of "#163"; 0 if there is none.
uint32_t SimKeyFromName(std::string_view name);
// The reverse of SimKeyFromName.
std::string SimNameOfKey(uint32_t virtualKey);
// Returns the virtual key that a sent scan code means, 0 if none does.
uint32_t SimKeyOfScanCode(uint32_t scanCode, bool extended);
