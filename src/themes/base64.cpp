#include "themes/base64.h"

#include <array>
#include <cstdint>

namespace {

constexpr int8_t kNoDigit = -1;
constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<int8_t, 256> DigitTable() {
    std::array<int8_t, 256> table{};
    table.fill(kNoDigit);
    for (size_t i = 0; i < kAlphabet.size(); ++i) {
        table[static_cast<unsigned char>(kAlphabet[i])] = static_cast<int8_t>(i);
    }
    return table;
}

// Made by the compiler: two threads that arrive together find it ready.
constexpr std::array<int8_t, 256> kDigits = DigitTable();

int8_t Digit(char c) {
    return kDigits[static_cast<unsigned char>(c)];
}

}  // namespace

bool IsStrictBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) {
        return false;
    }
    size_t digits = 0;
    while (digits < text.size() && Digit(text[digits]) != kNoDigit) {
        ++digits;
    }
    const std::string_view padding = text.substr(digits);
    return padding.empty() || padding == "=" || padding == "==";
}

std::string DecodeBase64(std::string_view text) {
    std::string bytes(text.size() / 4 * 3 + 3, '\0');
    size_t size = 0;
    size_t at = 0;
    // Whole groups of four digits at once; the loop below takes it from the first one that is none.
    for (; at + 4 <= text.size(); at += 4) {
        const int32_t group = Digit(text[at]) * 0x40000 | Digit(text[at + 1]) * 0x1000 |
                              Digit(text[at + 2]) * 0x40 | Digit(text[at + 3]);
        if (group < 0) {
            break;
        }
        bytes[size] = static_cast<char>(group >> 16);
        bytes[size + 1] = static_cast<char>(group >> 8 & 0xFF);
        bytes[size + 2] = static_cast<char>(group & 0xFF);
        size += 3;
    }
    uint32_t bits = 0;
    int bitCount = 0;
    for (; at < text.size() && text[at] != '='; ++at) {
        const int8_t digit = Digit(text[at]);
        if (digit == kNoDigit) {
            return {};
        }
        bits = ((bits << 6) | static_cast<uint32_t>(digit)) & 0xFFFF;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes[size] = static_cast<char>((bits >> bitCount) & 0xFF);
            ++size;
        }
    }
    bytes.resize(size);
    return bytes;
}

std::string EncodeBase64(std::string_view bytes) {
    std::string text;
    for (size_t position = 0; position < bytes.size(); position += 3) {
        const std::string_view group = bytes.substr(position, 3);
        uint32_t bits = 0;
        for (size_t i = 0; i < 3; ++i) {
            bits = bits << 8 | (i < group.size() ? static_cast<unsigned char>(group[i]) : 0U);
        }
        for (size_t i = 0; i < 4; ++i) {
            text += i <= group.size() ? kAlphabet[bits >> (18 - 6 * i) & 0x3F] : '=';
        }
    }
    return text;
}
