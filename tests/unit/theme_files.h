// Parts of theme files for the tests.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>

// Returns `bytes` as base64 with padding.
inline std::string EncodeBase64(const std::string& bytes) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t at = 0; at < bytes.size(); at += 3) {
        const size_t count = std::min<size_t>(3, bytes.size() - at);
        uint32_t bits = 0;
        for (size_t i = 0; i < 3; ++i) {
            bits = (bits << 8) | (i < count ? static_cast<unsigned char>(bytes[at + i]) : 0U);
        }
        for (size_t i = 0; i < 4; ++i) {
            text += i <= count ? alphabet[(bits >> (18 - 6 * i)) & 63] : '=';
        }
    }
    return text;
}

// Returns the four bytes of `value`, highest first.
inline std::string BigEndian(uint32_t value) {
    return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
            static_cast<char>(value)};
}

// Returns the part of a PNG file that the validator reads.
inline std::string PngHeader(uint32_t width, uint32_t height) {
    return "\x89PNG\r\n\x1A\n" + BigEndian(13) + "IHDR" + BigEndian(width) + BigEndian(height);
}
