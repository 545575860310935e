// Any bytes as base64, beside a plain second form that collects single bits; and any bytes encoded and read again.
#include "../unit/theme_literal.cpp"

#include "themes/base64.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void Require(bool good) {
    if (!good) {
        std::abort();
    }
}

std::string Encode(const std::string& bytes) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    unsigned bits = 0;
    int count = 0;
    for (const char c : bytes) {
        bits = (bits << 8 | static_cast<unsigned char>(c)) & 0xFFFF;
        for (count += 8; count >= 6; count -= 6) {
            text += alphabet[bits >> (count - 6) & 63];
        }
    }
    if (count > 0) {
        text += alphabet[bits << (6 - count) & 63];
    }
    text.resize((text.size() + 3) / 4 * 4, '=');
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const bool strict = IsStrictBase64(bytes);
    const std::string decoded = DecodeBase64(bytes);
    Require(strict == LiteralTheme::IsStrictBase64(bytes) && decoded == LiteralTheme::DecodeBase64(bytes));
    if (strict) {
        const size_t padding = bytes.size() - bytes.find_last_not_of('=') - 1;
        Require(decoded.size() == bytes.size() / 4 * 3 - padding);
    }
    const std::string encoded = Encode(bytes);
    Require(IsStrictBase64(encoded) != bytes.empty() && DecodeBase64(encoded) == bytes);
    return 0;
}
