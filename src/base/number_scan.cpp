#include "base/number_scan.h"

#include "base/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <system_error>

namespace {

// isspace of the plain C locale, whatever locale the process runs in.
bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDigit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}

const char* SkipSpaces(const char* at, const char* end) {
    while (at != end && IsSpace(*at)) {
        ++at;
    }
    return at;
}

// Takes a sign if one stands at *at.
bool TakeSign(const char** at, const char* end) {
    if (*at == end || (**at != '-' && **at != '+')) {
        return false;
    }
    const bool negative = **at == '-';
    ++*at;
    return negative;
}

// A run of digits of any length. A value past 2^40 stays there: it is out of every range here.
const char* ScanDigits(const char* at, const char* end, uint64_t* value) {
    constexpr ptrdiff_t kNeverTooLarge = 19;
    constexpr uint64_t kFarOutOfRange = uint64_t{1} << 40;
    const char* const first = at;
    uint64_t total = 0;
    for (; at != end && IsDigit(*at); ++at) {
        total = total * 10 + static_cast<uint64_t>(*at - '0');
    }
    if (at - first > kNeverTooLarge) {
        total = 0;
        for (const char* digit = first; digit != at && total < kFarOutOfRange; ++digit) {
            total = total * 10 + static_cast<uint64_t>(*digit - '0');
        }
    }
    *value = total < kFarOutOfRange ? total : kFarOutOfRange;
    return at;
}

// `word` in lower case; the text in any.
bool StartsWithWord(const char* at, const char* end, const char* word) {
    for (; *word != '\0'; ++word, ++at) {
        if (at == end || (*at | 0x20) != *word) {
            return false;
        }
    }
    return true;
}

constexpr double kExactPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                        1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                        1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int kMostExactPower = 22;

// A decimal number taken apart.
struct DecimalShape {
    const char* end = nullptr;  // behind the number
    bool nonZero = false;
    bool exact = false;   // the two below are right: the digits fit 64 bits
    uint64_t digits = 0;  // all digits as one integer
    int exponent = 0;     // the value is digits * 10^exponent
};

// `at` stands on a digit, or on a point with a digit behind it.
DecimalShape ScanDecimal(const char* at, const char* end) {
    DecimalShape shape;
    const char* const first = at;
    uint64_t digits = 0;  // wraps where there are too many
    for (; at != end && IsDigit(*at); ++at) {
        digits = digits * 10 + static_cast<uint64_t>(*at - '0');
    }
    ptrdiff_t count = at - first;
    ptrdiff_t fraction = 0;
    if (at != end && *at == '.') {
        const char* const point = at;
        for (++at; at != end && IsDigit(*at); ++at) {
            digits = digits * 10 + static_cast<uint64_t>(*at - '0');
        }
        fraction = at - point - 1;
        count += fraction;
    }
    constexpr ptrdiff_t kMostDigits = 19;
    const bool fits = count <= kMostDigits;
    shape.nonZero = fits ? digits != 0 : std::any_of(first, at, [](char c) { return c > '0'; });
    uint64_t power = 0;
    bool negative = false;
    if (at != end && (*at == 'e' || *at == 'E')) {
        const char* behind = at + 1;
        negative = TakeSign(&behind, end);
        if (behind != end && IsDigit(*behind)) {
            at = ScanDigits(behind, end, &power);
        }
    }
    shape.end = at;
    constexpr uint64_t kPlainPower = 100;
    if (fits && power <= kPlainPower) {
        shape.exact = true;
        shape.digits = digits;
        shape.exponent =
            (negative ? -static_cast<int>(power) : static_cast<int>(power)) - static_cast<int>(fraction);
    }
    return shape;
}

// from_chars for what needs more than one rounding of an exact product. False: out of range.
template <typename Real>
bool ConvertSlowly(const char* from, const char* end, std::chars_format form, bool nonZero, Real* value) {
    Real read = 0;
    const std::from_chars_result result = std::from_chars(from, end, read, form);
    if (result.ec != std::errc() || std::isinf(read) || (nonZero && read == 0)) {
        return false;
    }
    *value = read;
    return true;
}

// Behind "0x"; null where no hexadecimal digit follows.
const char* HexEnd(const char* at, const char* end, bool* nonZero) {
    bool digitSeen = false;
    bool pointSeen = false;
    for (; at != end; ++at) {
        if (*at == '.' && !pointSeen) {
            pointSeen = true;
            continue;
        }
        if (HexDigit(*at) < 0) {
            break;
        }
        digitSeen = true;
        *nonZero |= *at != '0';
    }
    if (!digitSeen) {
        return nullptr;
    }
    if (at != end && (*at == 'p' || *at == 'P')) {
        const char* power = at + 1;
        TakeSign(&power, end);
        if (power != end && IsDigit(*power)) {
            uint64_t ignored = 0;
            at = ScanDigits(power, end, &ignored);
        }
    }
    return at;
}

template <typename Real> const char* ScanReal(const char* from, const char* end, Real* value) {
    const char* at = SkipSpaces(from, end);
    const bool negative = TakeSign(&at, end);
    if (at == end) {
        return nullptr;
    }
    Real read = 0;
    const char* after = nullptr;
    bool nonZero = false;
    if (*at == '0' && end - at > 2 && (at[1] | 0x20) == 'x') {
        after = HexEnd(at + 2, end, &nonZero);
        if (after != nullptr && nonZero &&
            !ConvertSlowly(at + 2, after, std::chars_format::hex, nonZero, &read)) {
            return nullptr;
        }
    }
    if (after != nullptr) {
        // A hexadecimal number; "0x" alone is the decimal 0.
    } else if (IsDigit(*at) || (*at == '.' && end - at > 1 && IsDigit(at[1]))) {
        const DecimalShape shape = ScanDecimal(at, end);
        after = shape.end;
        // One product or quotient of two exact numbers is correctly rounded. Only doubles: a float would be rounded
        // twice.
        constexpr uint64_t kMostExactInteger = uint64_t{1} << 53;
        if (std::is_same_v<Real, double> && shape.exact && shape.digits <= kMostExactInteger &&
            shape.exponent >= -kMostExactPower && shape.exponent <= kMostExactPower) {
            const auto whole = static_cast<Real>(shape.digits);
            read = shape.exponent < 0 ? whole / static_cast<Real>(kExactPowersOfTen[-shape.exponent])
                                      : whole * static_cast<Real>(kExactPowersOfTen[shape.exponent]);
        } else if (shape.nonZero &&
                   !ConvertSlowly(at, shape.end, std::chars_format::general, shape.nonZero, &read)) {
            return nullptr;
        }
    } else if (StartsWithWord(at, end, "inf")) {
        after = at + (StartsWithWord(at, end, "infinity") ? 8 : 3);
        read = std::numeric_limits<Real>::infinity();
    } else if (StartsWithWord(at, end, "nan")) {
        after = at + 3;
        read = std::numeric_limits<Real>::quiet_NaN();
    } else {
        return nullptr;
    }
    *value = negative ? -read : read;
    return after;
}

}  // namespace

const char* ScanInt(const char* from, const char* end, int32_t* value) {
    const char* at = SkipSpaces(from, end);
    const bool negative = TakeSign(&at, end);
    uint64_t magnitude = 0;
    const char* after = ScanDigits(at, end, &magnitude);
    const uint64_t limit = uint64_t{0x7FFFFFFF} + (negative ? 1 : 0);
    if (after == at || magnitude > limit) {
        return nullptr;
    }
    const auto number = static_cast<int64_t>(magnitude);
    *value = static_cast<int32_t>(negative ? -number : number);
    return after;
}

const char* ScanUnsignedLong(const char* from, const char* end, uint32_t* value) {
    const char* at = SkipSpaces(from, end);
    const bool negative = TakeSign(&at, end);
    uint64_t magnitude = 0;
    const char* after = ScanDigits(at, end, &magnitude);
    if (after == at || magnitude > 0xFFFFFFFF) {
        return nullptr;
    }
    const auto number = static_cast<uint32_t>(magnitude);
    *value = negative ? 0 - number : number;
    return after;
}

const char* ScanDouble(const char* from, const char* end, double* value) {
    return ScanReal(from, end, value);
}

bool ParseFloat(std::string_view text, float* value) {
    return ScanReal(text.data(), text.data() + text.size(), value) != nullptr;
}
