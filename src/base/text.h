// Text operations shared by every reader and writer of the program's own formats. Characters are bytes; letters are
// ASCII whatever the locale says. All functions may be called from any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// Returns the parts of `text`, each of which ends at `separator` or at the end of the text. An empty text has no part,
// and a separator at the very end begins none. The views point into `text`.
std::vector<std::string_view> SplitParts(std::string_view text, char separator);

// Iterates over the lines of a text, which must outlive it. A line ends at LF and loses one CR before it. A last line
// without LF counts.
class TextLines {
  public:
    explicit TextLines(std::string_view text) : rest_(text) {}
    // Sets *line to the next line, a view into the text. Returns false behind the last line.
    bool Next(std::string_view* line);
    // Returns the lines that Next has not returned yet.
    std::string_view Rest() const { return rest_; }

  private:
    std::string_view rest_;
};

// Returns `text` without the spaces and tabs at both ends.
std::string_view TrimSpaces(std::string_view text);
bool StartsWith(std::string_view text, std::string_view prefix);
// Compares without regard to case.
bool EndsWithNoCase(std::string_view text, std::string_view suffix);
// Returns `text` with the letters A to Z in lower case.
std::string LowerAscii(std::string_view text);
// Returns the bytes as UTF-16 code units of 0 to 255 each.
std::u16string WidenBytes(std::string_view bytes);
// Returns the low byte of each code unit. A unit above 255 is altered.
std::string NarrowToLowBytes(std::u16string_view units);
// Returns the value of a hexadecimal digit in either case, 0 to 15, or -1 for any other character.
int HexDigit(char digit);
