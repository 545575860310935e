// Reads values of JSON text by key. A scanner over bytes without a tree: cheap, and tolerant where theme files rely on
// it. Pure functions; any thread. Returned views point into the text that was passed in.
//
// Outside strings tab, LF, CR, space, comma and colon are skipped alike. A value starts with one of " { [ t f n - or a
// digit; any other byte, and an unmatched closing bracket, ends the scan. A literal runs to the next skipped
// byte or closing bracket, unchecked. Strings hold printable ASCII, UTF-8 sequences and the escapes " \ / b f n r t u;
// anything else ends the scan. Brackets are only counted, so depth costs nothing and either kind closes the other.
// Values directly inside the outermost object or array are read alternately as key and value. A key matches by its raw
// bytes; the first match wins. Values found before the scan ended stay found.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// A value in the text.
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

// Finds all fields in one pass over `text`. No two fields may share a key.
void FindJsonValues(std::string_view text, JsonField* fields, size_t count);
// Returns the content of a value: a string unescaped, anything else unchanged. Empty for a string with a \u escape. The
// view points into the text or, after unescaping, into *buffer.
std::string_view JsonContent(const JsonValue& value, std::string* buffer);
// Finds one key and returns its content.
std::string JsonLookup(std::string_view text, std::string_view key);

// Iterates over the keys of an object's text in file order, duplicates included. Drops a backslash in a key and keeps
// the next byte unchanged. Ends early if the text does not look like an object.
class JsonKeyWalk {
  public:
    explicit JsonKeyWalk(std::string_view objectText);
    // Returns false after the last key.
    bool Next(std::string* key);

  private:
    bool ReadKey(std::string* key);
    void SkipValue();

    std::string_view text_;
    size_t at_;  // text_.size() at the end
};

std::vector<std::string> ListJsonKeys(std::string_view objectText);
