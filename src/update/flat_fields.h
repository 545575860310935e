// Reads single members of one flat JSON object without parsing it. For a member that is not a string the result is the
// next string in the text, so the caller validates the form of each value.
#pragma once

#include <string>
#include <string_view>

// Returns the string after the first `"key"`, unescaped (\u is not an escape), or an empty string if there is none. If
// the text ends inside the string, returns the part that is there.
std::string ReadFlatField(std::string_view text, std::string_view key);

// Returns true if `true` follows the first `"key"`, its colon and any spaces.
bool ReadFlatTruth(std::string_view text, std::string_view key);

// Reads bytes from pairs of hexadecimal digits in either case. Returns false, with *bytes unchanged, for any other
// text.
bool DecodeHex(std::string_view text, std::string* bytes);
