// Writes compact JSON. All JSON that the program writes goes through here, so that commas and escapes are right by
// construction. One thread at a time per writer; the one failure is std::bad_alloc.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Appends to a string of the caller, which outlives the writer. The writer sets the commas; the caller closes what it
// has opened.
class JsonWriter {
  public:
    explicit JsonWriter(std::string& out) : out_(out) {}

    void BeginObject() { Open('{'); }
    void EndObject() { Close('}'); }
    void BeginArray() { Open('['); }
    void EndArray() { Close(']'); }
    void Key(std::string_view key);  // not escaped: a key of our own

    void Text(std::string_view value);       // escaped as by JsonText
    void PlainText(std::string_view value);  // in quotes as it is, for texts that the format does not escape
    void Bool(bool value);
    void Int(int64_t value);
    void Real(double value);  // six significant digits, as AppendStreamDouble; "inf" and "nan" are no JSON

    // A key and its value.
    void TextField(std::string_view key, std::string_view value);
    void PlainTextField(std::string_view key, std::string_view value);
    void BoolField(std::string_view key, bool value);
    void IntField(std::string_view key, int64_t value);
    void RealField(std::string_view key, double value);
    void BeginArrayField(std::string_view key);

  private:
    void Separate();
    void Open(char bracket);
    void Close(char bracket);

    std::string& out_;
    bool needsComma_ = false;  // a value stands before the next one in the same object or array
};

// Returns `text` in double quotes, escaped for JSON: `"`, `\` and the controls b f n r t by their short escapes, every
// other byte below 0x20 as \u00 and two lower-case hex digits. All other bytes stay as they are.
std::string JsonText(std::string_view text);
