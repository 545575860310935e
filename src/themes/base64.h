// Base64 in the standard alphabet. Pure; any thread.
#pragma once

#include <string>
#include <string_view>

// Not empty, whole groups of four, nothing outside the alphabet, at most two '=' and those at the end. Stricter than
// the decoder.
bool IsStrictBase64(std::string_view text);
// Stops at the first '='; empty if a byte before it is outside the alphabet.
std::string DecodeBase64(std::string_view text);
// Padded with '=' to whole groups of four.
std::string EncodeBase64(std::string_view bytes);
