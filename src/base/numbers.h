// Reads and writes numbers as text, the same way on every platform and in every locale.
//
// Readers follow the C++ library's stoi, stol, stoul, stod and stof with the integer widths of 64-bit Windows: int and
// long have 32 bits. They skip leading white space, take one sign, stop at the first character that does not fit and
// ignore the rest. They fail if no number leads the text or its value is out of range.
//
// Readers of real numbers take decimal and hexadecimal digits, "inf", "infinity" and "nan" in either case of letters.
// Out of range is a value that overflows, and a value other than zero that would become zero. A subnormal result is
// in range, as in the Windows library.
//
// All functions may be called from any thread. Only the Append* functions allocate.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

// Thrown by the Read* functions. It ends the command whose argument was no number.
class NumberError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Read the number at `from`, never past `end`. Return the first character behind it, or null on failure; *value is then
// unchanged.
const char* ScanInt(const char* from, const char* end, int32_t* value);  // stoi, stol
const char* ScanUnsignedLong(const char* from, const char* end,
                             uint32_t* value);                             // stoul: "-1" is 4294967295
const char* ScanDouble(const char* from, const char* end, double* value);  // stod

// Read the number that leads `text`. Return false on failure; *value is then unchanged.
bool ParseInt(std::string_view text, int32_t* value);
bool ParseDouble(std::string_view text, double* value);
bool ParseFloat(std::string_view text, float* value);  // stof

// Return the number that leads `text`. Throw NumberError on failure.
int32_t ReadInt(std::string_view text);
double ReadDouble(std::string_view text);

// Returns whether the whole of `text` is a number that ParseInt reads.
bool IsWholeInt(std::string_view text);

// Write `value` at `out`, without a closing zero, and return the end. The constant beside each is the longest result.

constexpr size_t kIntLength = 20;
template <typename Integer> char* WriteInt(char* out, Integer value) {
    return std::to_chars(out, out + kIntLength, value).ptr;
}

// The default text form of an output stream: six significant digits, the shorter of plain and exponent form ("0.5",
// "1234.57", "1.23457e+06", "inf", "nan").
constexpr size_t kStreamDoubleLength = 13;  // "-1.23457e-300"
char* WriteStreamDouble(char* out, double value);

// The form of printf's "%f": six digits behind the point, rounded half to even from the exact value.
constexpr size_t kFixedDoubleLength = 317;  // a sign, 309 digits, the point, six digits
char* WriteFixedDouble(char* out, double value);

// Append what WriteInt and WriteStreamDouble write.
void AppendInt(std::string& out, int64_t value);
void AppendStreamDouble(std::string& out, double value);
