// Between UTF-16, which the system speaks, UTF-8, which the page speaks, and the 8-bit code pages of paths and names in
// files. Pure; any thread.
#pragma once

#include <string>
#include <string_view>

std::string Utf8OfWide(std::wstring_view text);
std::wstring WideOfUtf8(std::string_view text);

// Returns `text` in UTF-8. A run of bytes above 0x7F that is no UTF-8 is read in the code page, with the ASCII bytes that
// complete its characters there. `text` is JSON: a character whose second byte is a backslash has two of them. What the
// code page lacks becomes U+FFFD.
std::string Utf8OfMixedText(std::string_view text, unsigned codePage);
