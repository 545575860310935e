// The theme validator written the plain way, for comparison with the one that is quick: a scan over the whole text for
// every value asked for, byte by byte, and every piece decoded as often as it is named. Shares only the records and the
// colour rule with it.
#pragma once

#include "themes/validator.h"

#include <string>
#include <vector>

namespace LiteralTheme {

std::string Lookup(const std::string& text, const std::string& key);
std::vector<std::string> ListKeys(const std::string& text);
bool IsStrictBase64(const std::string& text);
std::string DecodeBase64(const std::string& text);
// What is found goes to *record and *report; gives whether the file is accepted.
bool Validate(const std::string& text, ThemeRecord* record, ThemeReport* report);

}  // namespace LiteralTheme
