// The program's icon as pixels. Any thread.
#pragma once

#include <vector>

// Appends one picture in the format of _NET_WM_ICON: width, height, then rows of 0xAARRGGBB, one per long. `size` is in
// pixels.
void AppendWindowIcon(int size, std::vector<unsigned long>& icons);
