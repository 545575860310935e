// The program's mark as pixels. Linux home only; any thread.
#pragma once

#include <vector>

// Appends one picture in the form of _NET_WM_ICON: width, height, then rows of 0xAARRGGBB, one a long. `size` is in
// pixels.
void AppendWindowIcon(int size, std::vector<unsigned long>& icons);
