#include "base/text.h"

#include "base/number_scan.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

bool ParseInt(std::string_view text, int32_t* value) {
    return ScanInt(text.data(), text.data() + text.size(), value) != nullptr;
}

bool ParseDouble(std::string_view text, double* value) {
    return ScanDouble(text.data(), text.data() + text.size(), value) != nullptr;
}

int32_t ReadInt(std::string_view text) {
    int32_t value = 0;
    if (!ParseInt(text, &value)) {
        throw NumberError("not an integer in range");
    }
    return value;
}

double ReadDouble(std::string_view text) {
    double value = 0;
    if (!ParseDouble(text, &value)) {
        throw NumberError("not a number in range");
    }
    return value;
}

float ReadFloat(std::string_view text) {
    float value = 0;
    if (!ParseFloat(text, &value)) {
        throw NumberError("not a number in range");
    }
    return value;
}

bool IsWholeInt(std::string_view text) {
    int32_t ignored = 0;
    const char* end = text.data() + text.size();
    return !text.empty() && ScanInt(text.data(), end, &ignored) == end;
}

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

namespace {

constexpr int kSignificantDigits = 6;

char* CopyWord(char* out, const char* word) {
    return std::copy_n(word, std::strlen(word), out);
}

// Six digits at decimal exponent `exponent`, in the shorter of plain and exponent form, without trailing zeros.
char* LayOutDigits(char* out, uint32_t sixDigits, int exponent) {
    char digits[kSignificantDigits];
    for (int i = kSignificantDigits - 1; i >= 0; --i) {
        digits[i] = static_cast<char>('0' + sixDigits % 10);
        sixDigits /= 10;
    }
    int count = kSignificantDigits;
    while (count > 1 && digits[count - 1] == '0') {
        --count;
    }
    if (exponent < -4 || exponent >= kSignificantDigits) {
        *out++ = digits[0];
        if (count > 1) {
            *out++ = '.';
            for (int i = 1; i < count; ++i) {
                *out++ = digits[i];
            }
        }
        *out++ = 'e';
        *out++ = exponent < 0 ? '-' : '+';
        const int magnitude = exponent < 0 ? -exponent : exponent;
        *out++ = static_cast<char>('0' + magnitude / 10);
        *out++ = static_cast<char>('0' + magnitude % 10);
        return out;
    }
    if (exponent < 0) {
        *out++ = '0';
        *out++ = '.';
        for (int i = exponent + 1; i < 0; ++i) {
            *out++ = '0';
        }
        for (int i = 0; i < count; ++i) {
            *out++ = digits[i];
        }
        return out;
    }
    for (int i = 0; i <= exponent; ++i) {
        *out++ = digits[i];  // the trailing zeros of the whole part are still there
    }
    if (count > exponent + 1) {
        *out++ = '.';
        for (int i = exponent + 1; i < count; ++i) {
            *out++ = digits[i];
        }
    }
    return out;
}

// The values that macros are made of, without big-number arithmetic. Null where the sixth digit is too close to call,
// or the value is outside the table.
char* FormatPlainValue(char* out, double value) {
    constexpr double kPowers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10};
    constexpr double kSmallest = 1e-5;
    constexpr double kPastLargest = 1e10;
    if (value < kSmallest || value >= kPastLargest) {
        return nullptr;
    }
    int exponent = 0;
    double scaled = 0;
    if (value >= 1) {
        while (value >= kPowers[exponent + 1]) {
            ++exponent;
        }
        scaled = exponent <= 5 ? value * kPowers[5 - exponent] : value / kPowers[exponent - 5];
    } else {
        scaled = value * kPowers[5];
        while (scaled < kPowers[5]) {
            --exponent;
            scaled = value * kPowers[5 - exponent];
        }
    }
    // One rounding of a value below a million is off by less than 1e-10, so that outside this band the digit is sure.
    constexpr double kUnsure = 1e-6;
    auto digits = static_cast<uint32_t>(scaled);
    const double rest = scaled - digits;
    if (std::fabs(rest - 0.5) < kUnsure) {
        return nullptr;
    }
    digits += rest > 0.5 ? 1 : 0;
    if (digits == 1000000) {
        digits = 100000;
        ++exponent;
    }
    return LayOutDigits(out, digits, exponent);
}

}  // namespace

char* FormatStreamDouble(char* out, double value) {
    char* const limit = out + kStreamDoubleLength;
    if (std::signbit(value)) {
        *out++ = '-';
        value = -value;
    }
    if (value == 0) {
        *out++ = '0';
        return out;
    }
    if (std::isnan(value)) {
        return CopyWord(out, "nan");
    }
    if (std::isinf(value)) {
        return CopyWord(out, "inf");
    }
    if (char* end = FormatPlainValue(out, value)) {
        return end;
    }
    return std::to_chars(out, limit, value, std::chars_format::general, kSignificantDigits).ptr;
}

void AppendStreamDouble(std::string& out, double value) {
    char buffer[kStreamDoubleLength];
    out.append(buffer, FormatStreamDouble(buffer, value));
}

void AppendInt(std::string& out, int64_t value) {
    char buffer[20];
    out.append(buffer, std::to_chars(buffer, buffer + sizeof(buffer), value).ptr);
}

std::string_view TrimBlanks(std::string_view text) {
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
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
    text.remove_prefix(text.size() - suffix.size());
    for (size_t i = 0; i < suffix.size(); ++i) {
        if (lower(text[i]) != lower(suffix[i])) {
            return false;
        }
    }
    return true;
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
