// The web view accepts UTF-8 only. Names in foreign files may hold any bytes. Pure; any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Returns the number of bytes of the UTF-8 sequence at the start of `text`, 0 if there is none.
size_t Utf8SequenceLength(std::string_view text);

// Returns `text` with the replacement character (U+FFFD) for every byte that belongs to no UTF-8 sequence.
std::string ValidUtf8(std::string_view text);
