#include "themes/base64.h"

#include <array>
#include <cstdint>

namespace {

constexpr int8_t kNoDigit = -1;

constexpr std::array<int8_t, 256> DigitTable() {
    constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
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
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    uint32_t bits = 0;
    int bitCount = 0;
    for (const char c : text) {
        if (c == '=') {
            break;
        }
        const int8_t digit = Digit(c);
        if (digit == kNoDigit) {
            return {};
        }
        bits = ((bits << 6) | static_cast<uint32_t>(digit)) & 0xFFFF;
        bitCount += 6;
        if (bitCount >= 8) {
            bitCount -= 8;
            bytes.push_back(static_cast<char>((bits >> bitCount) & 0xFF));
        }
    }
    return bytes;
}
