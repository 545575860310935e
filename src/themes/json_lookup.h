// Reads values out of JSON text by key. It scans bytes and builds no tree: it is fast, and as lenient as existing theme
// files need. Pure functions; any thread. Returned views point into the text that was passed in.
//
// Rules of the scan:
// - Outside strings it skips tab, LF, CR, space, comma and colon alike.
// - A value starts with one of " { [ t f n - or a digit. Any other byte ends the scan, and so does a closing bracket
//   that closes nothing.
// - A literal runs to the next skipped byte or closing bracket. Its content is not checked.
// - Strings hold printable ASCII, UTF-8 sequences and the escapes " \ / b f n r t u. Anything else ends the scan.
// - Brackets are only counted: depth has no limit, and either kind closes the other.
// - Values directly inside the outermost object or array are read in turn as key and value.
// - A key matches by its raw bytes. The first match wins. Values found before the scan ended stay found.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// A value as the text holds it.
struct JsonValue {
    std::string_view raw;   // a string without its quotes; empty: not found
    bool isString = false;  // `raw` may hold escapes
};

struct JsonField {
    std::string_view key;  // raw bytes
    JsonValue value;       // filled by FindJsonValues
    bool found = false;    // set by FindJsonValues
};

// Finds the values of `count` fields in one pass over `text`. No two fields may have the same key.
void FindJsonValues(std::string_view text, JsonField* fields, size_t count);
// Returns the content of a value: a string unescaped, anything else unchanged. Empty for a string with a \u escape. The
// view points into the text, or into *buffer if the string had escapes.
std::string_view JsonContent(const JsonValue& value, std::string* buffer);
// Returns the content of the value of one key.
std::string JsonLookup(std::string_view text, std::string_view key);

// Iterates over the keys of an object in file order, duplicates included. Drops a backslash in a key and takes the byte
// after it literally. Ends early if the text stops looking like an object. The text must outlive it.
class JsonKeyIterator {
  public:
    explicit JsonKeyIterator(std::string_view objectText);
    // Sets *key to the next key. Returns false after the last one.
    bool Next(std::string* key);

  private:
    bool ReadKey(std::string* key);
    void SkipValue();

    std::string_view text_;
    size_t at_;  // text_.size() after the last key
};

// Returns all keys that JsonKeyIterator yields.
std::vector<std::string> ListJsonKeys(std::string_view objectText);
