// Decodes any bytes as base64 and compares with the reference; then encodes the bytes and decodes them again.
#include "../unit/reference_validator.cpp"
#include "../unit/theme_files.h"

#include "fuzz_input.h"
#include "themes/base64.h"

#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const bool strict = IsStrictBase64(bytes);
    const std::string decoded = DecodeBase64(bytes);
    Require(strict == ReferenceValidator::IsStrictBase64(bytes) &&
            decoded == ReferenceValidator::DecodeBase64(bytes));
    if (strict) {
        const size_t padding = bytes.size() - bytes.find_last_not_of('=') - 1;
        Require(decoded.size() == bytes.size() / 4 * 3 - padding);
    }
    const std::string encoded = EncodeBase64(bytes);
    Require(IsStrictBase64(encoded) != bytes.empty() && DecodeBase64(encoded) == bytes);
    return 0;
}
