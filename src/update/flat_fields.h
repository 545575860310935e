// Reads single members out of one flat JSON object without parsing it. A member that is no string gives the next
// string in the text: whoever uses a value checks its form.
#pragma once

#include <string>
#include <string_view>

// The string behind the first `"key"`, its escapes undone (\u is not one); empty if there is none. A text that ends
// inside the string gives what it has.
std::string ReadFlatField(std::string_view text, std::string_view key);

// Whether `true` stands behind the first `"key"`, its colon and any blanks.
bool ReadFlatTruth(std::string_view text, std::string_view key);

// Bytes from pairs of hexadecimal digits in either case; false, *bytes untouched, if the text is anything else.
bool DecodeHex(std::string_view text, std::string* bytes);
