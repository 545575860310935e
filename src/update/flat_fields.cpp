#include "update/flat_fields.h"

#include "base/text.h"

namespace {

// Sets *value to the text after the colon of the first `"key"`. Returns false if there is none.
bool FindValue(std::string_view text, std::string_view key, std::string_view* value) {
    std::string quoted;
    quoted.append("\"").append(key).append("\"");
    const size_t found = text.find(quoted);
    if (found == std::string_view::npos) {
        return false;
    }
    const size_t colon = text.find(':', found + quoted.size());
    if (colon == std::string_view::npos) {
        return false;
    }
    *value = text.substr(colon + 1);
    return true;
}

char Unescape(char byte) {
    switch (byte) {
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return byte;
    }
}

}  // namespace

std::string ReadFlatField(std::string_view text, std::string_view key) {
    std::string_view rest;
    std::string value;
    if (!FindValue(text, key, &rest)) {
        return value;
    }
    const size_t opening = rest.find('"');
    if (opening == std::string_view::npos) {
        return value;
    }
    for (size_t at = opening + 1; at < rest.size() && rest[at] != '"'; ++at) {
        if (rest[at] != '\\') {
            value += rest[at];
        } else if (++at < rest.size()) {
            value += Unescape(rest[at]);
        }
    }
    return value;
}

bool ReadFlatTruth(std::string_view text, std::string_view key) {
    std::string_view rest;
    return FindValue(text, key, &rest) && StartsWith(TrimSpaces(rest), "true");
}

bool DecodeHex(std::string_view text, std::string* bytes) {
    if (text.size() % 2 != 0) {
        return false;
    }
    std::string decoded;
    decoded.reserve(text.size() / 2);
    for (size_t at = 0; at < text.size(); at += 2) {
        const int high = HexDigit(text[at]);
        const int low = HexDigit(text[at + 1]);
        if (high < 0 || low < 0) {
            return false;
        }
        decoded += static_cast<char>(high * 16 + low);
    }
    *bytes = std::move(decoded);
    return true;
}
