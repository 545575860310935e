#include "base/json_writer.h"

#include "base/numbers.h"

namespace {

void AppendEscaped(std::string& out, std::string_view text) {
    constexpr char kHex[] = "0123456789abcdef";
    for (const char c : text) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\b':
            out += "\\b";
            break;
        case '\f':
            out += "\\f";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                out += "\\u00";
                out += kHex[c >> 4];
                out += kHex[c & 0xF];
            } else {
                out += c;
            }
        }
    }
}

}  // namespace

void JsonWriter::Separate() {
    if (needsComma_) {
        out_ += ',';
    }
    needsComma_ = true;
}

void JsonWriter::Open(char bracket) {
    Separate();
    out_ += bracket;
    needsComma_ = false;
}

void JsonWriter::Close(char bracket) {
    out_ += bracket;
    needsComma_ = true;
}

void JsonWriter::Key(std::string_view key) {
    PlainText(key);
    out_ += ':';
    needsComma_ = false;
}

void JsonWriter::Text(std::string_view value) {
    Separate();
    out_ += '"';
    AppendEscaped(out_, value);
    out_ += '"';
}

void JsonWriter::PlainText(std::string_view value) {
    Separate();
    out_ += '"';
    out_ += value;
    out_ += '"';
}

void JsonWriter::Bool(bool value) {
    Separate();
    out_ += value ? "true" : "false";
}

void JsonWriter::Int(int64_t value) {
    Separate();
    AppendInt(out_, value);
}

void JsonWriter::Real(double value) {
    Separate();
    AppendStreamDouble(out_, value);
}

void JsonWriter::TextField(std::string_view key, std::string_view value) {
    Key(key);
    Text(value);
}

void JsonWriter::PlainTextField(std::string_view key, std::string_view value) {
    Key(key);
    PlainText(value);
}

void JsonWriter::BoolField(std::string_view key, bool value) {
    Key(key);
    Bool(value);
}

void JsonWriter::IntField(std::string_view key, int64_t value) {
    Key(key);
    Int(value);
}

void JsonWriter::RealField(std::string_view key, double value) {
    Key(key);
    Real(value);
}

void JsonWriter::BeginArrayField(std::string_view key) {
    Key(key);
    BeginArray();
}

std::string JsonText(std::string_view text) {
    std::string json;
    json.reserve(text.size() + 2);
    JsonWriter(json).Text(text);
    return json;
}
