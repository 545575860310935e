// The web view takes UTF-8 only; names out of foreign files may be anything.
#pragma once

#include <string>
#include <string_view>

// `text` with the replacement character (U+FFFD) in place of every byte that belongs to no UTF-8 sequence.
std::string ValidUtf8(std::string_view text);
