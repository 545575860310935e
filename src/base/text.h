// Small text operations shared by every reader and writer of our own formats.
//
// The number reads follow the C++ library's stoi, stol, stod and stof, with the integer widths of 64-bit
// Windows on every platform: int and long have 32 bits. Leading white space and a sign are allowed, conversion stops
// at the first character that does not fit, and the rest is ignored. No leading number or a value out of range is a
// failure: the Parse* forms return false and leave *value alone, the Read* forms throw.
//
// The real number forms take what the C library's strtod takes: decimal and hexadecimal digits, "inf", "infinity" and
// "nan" in any case. Out of range is what overflows, and what is not zero and would become zero; a subnormal result is
// a number like any other, as the Windows library has it.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// What a Read* function throws: the command that asked for the number ends there.
class NumberError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

bool ParseInt(std::string_view text, int32_t* value);    // stoi and stol
bool ParseDouble(std::string_view text, double* value);  // stod
bool ParseFloat(std::string_view text, float* value);    // stof
int32_t ReadInt(std::string_view text);
double ReadDouble(std::string_view text);
float ReadFloat(std::string_view text);
// The whole text is a base-10 integer that fits 32 bits, nothing left over.
bool IsWholeInt(std::string_view text);

// Splits as a stream of parts that end in `separator`: an empty text has no part, and one trailing separator adds
// none. The views point into `text`.
std::vector<std::string_view> SplitParts(std::string_view text, char separator);

// Walks the lines of a text. A line ends at LF and loses one CR before it; a last line without LF counts.
class TextLines {
  public:
    explicit TextLines(std::string_view text) : rest_(text) {}
    // False behind the last line. The view points into the text.
    bool Next(std::string_view* line);
    std::string_view Rest() const { return rest_; }  // what has not been walked yet

  private:
    std::string_view rest_;
};

// The default text form of an output stream: six significant digits, shortest of plain and exponent form ("0.5",
// "1234.57", "1.23457e+06", "inf", "nan"). Appends; never depends on the locale.
void AppendStreamDouble(std::string& out, double value);
// The same at `out`, which has room for kStreamDoubleLength bytes; gives the end. No closing zero.
constexpr int kStreamDoubleLength = 16;
char* FormatStreamDouble(char* out, double value);
void AppendInt(std::string& out, int64_t value);

std::string_view TrimBlanks(std::string_view text);  // blanks and tabs at both ends
bool StartsWith(std::string_view text, std::string_view prefix);
bool EndsWithNoCase(std::string_view text, std::string_view suffix);  // ASCII letters only
int HexDigit(char digit);  // 0 to 15, in either case of letters; -1 if it is none
