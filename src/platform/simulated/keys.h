// A US keyboard: virtual keys, set-1 scan codes, names.
#pragma once

#include <cstdint>

// The key that a scan code means, 0 if none does.
uint32_t SimKeyOfScanCode(uint32_t scanCode, bool extended);
