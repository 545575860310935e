// The web view accepts UTF-8 only. Names in foreign files may hold any bytes.
#pragma once

#include <string>
#include <string_view>

// Returns `text` with the replacement character (U+FFFD) for every byte that belongs to no UTF-8 sequence.
std::string ValidUtf8(std::string_view text);
