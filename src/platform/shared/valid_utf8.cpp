#include "platform/shared/valid_utf8.h"

#include <cstdint>

size_t Utf8SequenceLength(std::string_view text) {
    if (text.empty()) {
        return 0;
    }
    const auto first = static_cast<uint8_t>(text[0]);
    if (first < 0x80) {
        return 1;
    }
    const size_t length = first >= 0xC2 && first <= 0xDF   ? 2
                          : first >= 0xE0 && first <= 0xEF ? 3
                          : first >= 0xF0 && first <= 0xF4 ? 4
                                                           : 0;
    if (length == 0 || text.size() < length) {
        return 0;
    }
    const auto second = static_cast<uint8_t>(text[1]);
    // Rejects overlong forms, surrogates and values above U+10FFFF.
    const uint8_t lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const uint8_t highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (second < lowest || second > highest) {
        return 0;
    }
    for (size_t i = 2; i < length; ++i) {
        if ((static_cast<uint8_t>(text[i]) & 0xC0) != 0x80) {
            return 0;
        }
    }
    return length;
}

std::string ValidUtf8(std::string_view text) {
    std::string valid;
    valid.reserve(text.size());
    size_t kept = 0;  // everything before this index is in `valid`
    size_t at = 0;
    while (at < text.size()) {
        const size_t length = Utf8SequenceLength(text.substr(at));
        if (length == 0) {
            valid.append(text.substr(kept, at - kept)).append("\xEF\xBF\xBD");
            kept = at + 1;
        }
        at += length == 0 ? 1 : length;
    }
    return valid.append(text.substr(kept));
}
