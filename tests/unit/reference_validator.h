// A second, literal implementation of the theme validator for comparison with the fast one: it scans the whole text for
// every value and decodes a piece each time it is named. It shares only the records and the colour rule.
#pragma once

#include "themes/validator.h"

#include <string>
#include <vector>

namespace ReferenceValidator {

std::string Lookup(const std::string& text, const std::string& key);
std::vector<std::string> ListKeys(const std::string& text);
bool IsStrictBase64(const std::string& text);
std::string DecodeBase64(const std::string& text);
// Fills *record and *report. Returns whether the text is accepted.
bool Validate(const std::string& text, ThemeRecord* record, ThemeReport* report);

}  // namespace ReferenceValidator
