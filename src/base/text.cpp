#include "base/text.h"

std::vector<std::string_view> SplitParts(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const size_t at = text.find(separator);
        parts.push_back(text.substr(0, at));
        text = at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
    }
    return parts;
}

bool TextLines::Next(std::string_view* line) {
    if (rest_.empty()) {
        return false;
    }
    const size_t at = rest_.find('\n');
    *line = rest_.substr(0, at);
    rest_ = at == std::string_view::npos ? std::string_view() : rest_.substr(at + 1);
    if (!line->empty() && line->back() == '\r') {
        line->remove_suffix(1);
    }
    return true;
}

std::string_view TrimSpaces(std::string_view text) {
    constexpr std::string_view kBlanks = " \t";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool StartsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

bool EndsWithNoCase(std::string_view text, std::string_view suffix) {
    if (text.size() < suffix.size()) {
        return false;
    }
    return LowerAscii(text.substr(text.size() - suffix.size())) == LowerAscii(suffix);
}

std::string LowerAscii(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c + ('a' - 'A'));
        }
    }
    return lower;
}

std::u16string WidenBytes(std::string_view bytes) {
    std::u16string units;
    units.reserve(bytes.size());
    for (const char byte : bytes) {
        units.push_back(static_cast<unsigned char>(byte));
    }
    return units;
}

std::string NarrowToLowBytes(std::u16string_view units) {
    std::string bytes;
    bytes.reserve(units.size());
    for (const char16_t unit : units) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
    }
    return bytes;
}

int HexDigit(char digit) {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    if (digit >= 'a' && digit <= 'f') {
        return digit - 'a' + 10;
    }
    return digit >= 'A' && digit <= 'F' ? digit - 'A' + 10 : -1;
}
