#include "themes/json_lookup.h"

#include <array>

namespace {

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool IsSeparator(char c) {
    return IsSpace(c) || c == ',' || c == ':';
}

bool StartsLiteral(char c) {
    return c == 't' || c == 'f' || c == 'n' || c == '-' || (c >= '0' && c <= '9');
}

// Returns how many bytes follow `c` in a UTF-8 sequence that it starts, or -1 if it starts none.
int ContinuationBytes(unsigned char c) {
    if (c >= 0xC0 && c <= 0xDF) {
        return 1;
    }
    if (c >= 0xE0 && c <= 0xEF) {
        return 2;
    }
    return c >= 0xF0 && c <= 0xF7 ? 3 : -1;
}

constexpr std::array<bool, 256> PlainTable() {
    std::array<bool, 256> table{};
    for (size_t c = 0x20; c < 0x7F; ++c) {
        table[c] = c != '"' && c != '\\';
    }
    return table;
}

// Bytes of a string that need no further check. Nearly all bytes are of this kind.
constexpr std::array<bool, 256> kPlain = PlainTable();

size_t SkipPlain(std::string_view text, size_t at) {
    while (at < text.size() && kPlain[static_cast<unsigned char>(text[at])]) {
        ++at;
    }
    return at;
}

// Returns the position of the closing quote of the string whose content starts at `at`, or npos if the scan ends first.
size_t StringEnd(std::string_view text, size_t at) {
    constexpr std::string_view kEscapes = "\"\\/bfnrtu";
    while ((at = SkipPlain(text, at)) < text.size() && text[at] != '"') {
        if (text[at] == '\\') {
            if (at + 1 >= text.size() || kEscapes.find(text[at + 1]) == std::string_view::npos) {
                return std::string_view::npos;
            }
            at += 2;
            continue;
        }
        const int following = ContinuationBytes(static_cast<unsigned char>(text[at]));
        if (following < 0) {
            return std::string_view::npos;
        }
        ++at;
        for (int i = 0; i < following; ++i, ++at) {
            if (at >= text.size() || (static_cast<unsigned char>(text[at]) & 0xC0) != 0x80) {
                return std::string_view::npos;
            }
        }
    }
    return at < text.size() ? at : std::string_view::npos;
}

// Returns the position after the literal that starts at `at`, or npos if the text ends first.
size_t LiteralEnd(std::string_view text, size_t at) {
    while (at < text.size() && !IsSeparator(text[at]) && text[at] != '}' && text[at] != ']') {
        ++at;
    }
    return at < text.size() ? at : std::string_view::npos;
}

// Receives the values directly inside the outermost object or array, in turn as key and value, and stores the wanted ones.
class FieldPairs {
  public:
    FieldPairs(JsonField* fields, size_t count) : fields_(fields), count_(count), missing_(count) {}

    void Restart() {
        isKey_ = true;
        field_ = nullptr;
    }
    void Add(const JsonValue& value) {
        if (isKey_) {
            field_ = value.isString ? FindWanted(value.raw) : nullptr;
        } else if (field_ != nullptr) {
            field_->value = value;
            field_->found = true;
            --missing_;
        }
        isKey_ = !isKey_;
    }
    bool AllFound() const { return missing_ == 0; }

  private:
    JsonField* FindWanted(std::string_view key) const {
        for (size_t i = 0; i < count_; ++i) {
            if (!fields_[i].found && fields_[i].key == key) {
                return &fields_[i];
            }
        }
        return nullptr;
    }

    JsonField* fields_;
    size_t count_;
    size_t missing_;
    JsonField* field_ = nullptr;
    bool isKey_ = true;
};

}  // namespace

void FindJsonValues(std::string_view text, JsonField* fields, size_t count) {
    FieldPairs pairs(fields, count);
    size_t depth = 0;
    size_t nestedStart = 0;
    size_t at = 0;
    while (at < text.size() && !pairs.AllFound()) {
        const char c = text[at];
        if (IsSeparator(c)) {
            ++at;
        } else if (c == '{' || c == '[') {
            ++depth;
            if (depth == 1) {
                pairs.Restart();
            } else if (depth == 2) {
                nestedStart = at;
            }
            ++at;
        } else if (c == '}' || c == ']') {
            if (depth == 0) {
                return;
            }
            --depth;
            ++at;
            if (depth == 1) {
                pairs.Add({text.substr(nestedStart, at - nestedStart), false});
            }
        } else if (c == '"' || StartsLiteral(c)) {
            const bool isString = c == '"';
            const size_t start = isString ? at + 1 : at;
            const size_t end = isString ? StringEnd(text, start) : LiteralEnd(text, start);
            if (end == std::string_view::npos) {
                return;
            }
            at = isString ? end + 1 : end;
            if (depth == 1) {
                pairs.Add({text.substr(start, end - start), isString});
            }
        } else {
            return;
        }
    }
}

std::string_view JsonContent(const JsonValue& value, std::string* buffer) {
    if (!value.isString || value.raw.find('\\') == std::string_view::npos) {
        return value.raw;
    }
    constexpr std::string_view kEscapes = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    buffer->clear();
    buffer->reserve(value.raw.size());
    for (size_t at = 0; at < value.raw.size(); ++at) {
        char c = value.raw[at];
        if (c == '\\') {
            ++at;
            const size_t escape =
                at < value.raw.size() ? kEscapes.find(value.raw[at]) : std::string_view::npos;
            if (escape == std::string_view::npos) {
                return {};
            }
            c = kMeanings[escape];
        }
        buffer->push_back(c);
    }
    return *buffer;
}

std::string JsonLookup(std::string_view text, std::string_view key) {
    JsonField field{key, {}, false};
    FindJsonValues(text, &field, 1);
    std::string buffer;
    return std::string(JsonContent(field.value, &buffer));
}

JsonKeyIterator::JsonKeyIterator(std::string_view objectText) : text_(objectText) {
    const size_t brace = text_.find('{');
    at_ = brace == std::string_view::npos ? text_.size() : brace + 1;
}

bool JsonKeyIterator::Next(std::string* key) {
    while (at_ < text_.size() && (IsSpace(text_[at_]) || text_[at_] == ',')) {
        ++at_;
    }
    if (at_ >= text_.size() || text_[at_] != '"' || !ReadKey(key)) {
        at_ = text_.size();
        return false;
    }
    SkipValue();
    return true;
}

bool JsonKeyIterator::ReadKey(std::string* key) {
    key->clear();
    for (++at_; at_ < text_.size() && text_[at_] != '"'; ++at_) {
        if (text_[at_] == '\\' && ++at_ >= text_.size()) {
            return false;
        }
        key->push_back(text_[at_]);
    }
    if (at_ >= text_.size()) {
        return false;
    }
    ++at_;
    return true;
}

void JsonKeyIterator::SkipValue() {
    const size_t colon = text_.find(':', at_);
    at_ = colon == std::string_view::npos ? text_.size() : colon + 1;
    size_t depth = 0;
    bool inString = false;
    for (; at_ < text_.size(); ++at_) {
        if (inString && (at_ = SkipPlain(text_, at_)) >= text_.size()) {
            break;
        }
        const char c = text_[at_];
        if (inString) {
            if (c == '\\') {
                ++at_;
            } else if (c == '"') {
                inString = false;
            }
        } else if (c == '"') {
            inString = true;
        } else if (c == '{' || c == '[') {
            ++depth;
        } else if (c == '}' || c == ']') {
            if (depth == 0) {
                return;
            }
            --depth;
        } else if (c == ',' && depth == 0) {
            return;
        }
    }
    at_ = text_.size();
}

std::vector<std::string> ListJsonKeys(std::string_view objectText) {
    std::vector<std::string> keys;
    JsonKeyIterator iterator(objectText);
    std::string key;
    while (iterator.Next(&key)) {
        keys.push_back(key);
    }
    return keys;
}
