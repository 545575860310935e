// Reading values out of JSON text by key. A scanner over bytes, no tree: cheap, and tolerant where theme files lean on
// it. Everything here is pure; any thread. Views given out point into the text that was passed in.
//
// Outside strings tab, LF, CR, blank, comma and colon are skipped alike. A value starts with one of " { [ t f n - or a
// digit; any other byte, and a closing bracket that closes nothing, ends the scan. A literal runs to the next skipped
// byte or closing bracket, unchecked. Strings hold printable ASCII, UTF-8 sequences and the escapes " \ / b f n r t u;
// anything else ends the scan. Brackets are only counted, so depth costs nothing and either kind closes the other.
// Values directly inside the outermost object or array are taken in turn as key and value. A key matches by its raw
// bytes; the first match wins. What was found before the scan ended stays found.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// A value where it stands in the text.
struct JsonValue {
    std::string_view
        raw;  // without the quotes of a string; first to last byte of anything else; empty: not found
    bool isString = false;  // `raw` may hold escapes
};

struct JsonField {
    std::string_view key;  // raw bytes
    JsonValue value;       // filled by FindJsonValues
    bool found = false;    // set by FindJsonValues
};

// Finds all fields asked for in one pass over `text`. No two fields may share a key.
void FindJsonValues(std::string_view text, JsonField* fields, size_t count);
// The content of a value: a string unescaped, anything else as it stands. Empty for a string with a \u escape. The view
// points into the text or, where something had to be unescaped, into *buffer.
std::string_view JsonContent(const JsonValue& value, std::string* buffer);
// Both for one key.
std::string JsonLookup(std::string_view text, std::string_view key);

// Walks the keys of an object's text in file order, duplicates included. A backslash in a key is dropped and the byte
// behind it is taken as it is. Ends early where the text stops looking like an object.
class JsonKeyWalk {
  public:
    explicit JsonKeyWalk(std::string_view objectText);
    // False behind the last key.
    bool Next(std::string* key);

  private:
    bool ReadKey(std::string* key);
    void SkipValue();

    std::string_view text_;
    size_t at_;  // text_.size() at the end of the walk
};

std::vector<std::string> ListJsonKeys(std::string_view objectText);
