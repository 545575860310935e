// Reads single members of one flat JSON object without parsing it. Callers must check the form of a value: for a member
// that is not a string the reader returns the next string in the text. Pure functions; any thread.
#pragma once

#include <string>
#include <string_view>

// Returns the string after the first `"key"`, unescaped, or an empty string if there is none. \u is not an escape here. A
// string that the text truncates is returned as far as it goes.
std::string ReadFlatField(std::string_view text, std::string_view key);

// Returns whether `true` follows the first `"key"`, its colon and any spaces or tabs.
bool ReadFlatTruth(std::string_view text, std::string_view key);

// Decodes pairs of hexadecimal digits in either case. Returns false and leaves *bytes unchanged if `text` is anything else.
bool DecodeHex(std::string_view text, std::string* bytes);
