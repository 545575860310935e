#include "reference_validator.h"

#include <utility>

namespace ReferenceValidator {
namespace {

enum class State { Outside, Literal, String, Escape, Utf8 };

bool Contains(const char* bytes, char c) {
    while (*bytes != '\0' && *bytes != c) {
        ++bytes;
    }
    return *bytes != '\0';
}

// Searches one key: Take receives every value directly inside the outermost object.
struct Search {
    const std::string& key;
    bool atKey = true;
    bool matched = false;

    // Returns whether this is the value of the key.
    bool Take(const std::string& raw, bool isString) {
        if (atKey) {
            matched = isString && raw == key;
        } else if (matched) {
            return true;
        }
        atKey = !atKey;
        return false;
    }
};

std::string Unescaped(const std::string& raw) {
    std::string text;
    bool escaped = false;
    for (const char c : raw) {
        if (!escaped && c == '\\') {
            escaped = true;
            continue;
        }
        if (!escaped) {
            text += c;
            continue;
        }
        escaped = false;
        switch (c) {
        case '"':
        case '\\':
        case '/':
            text += c;
            break;
        case 'b':
            text += '\b';
            break;
        case 'f':
            text += '\f';
            break;
        case 'n':
            text += '\n';
            break;
        case 'r':
            text += '\r';
            break;
        case 't':
            text += '\t';
            break;
        default:
            return "";
        }
    }
    return text;
}

std::string InvalidOrMissing(const std::string& what) {
    return "invalid or missing " + what;
}

bool IsName(const std::string& name) {
    for (const char c : name) {
        if ((c >= 0 && c < 0x20) || c == 0x7F) {
            return false;
        }
    }
    return name.length() >= 1 && name.length() <= 40;
}

// Returns "WIDTHxHEIGHT" of a piece, or an empty string if no piece has this name.
std::string SizeOf(const std::string& name) {
    std::string base = name;
    if (name.size() > 3 && name.compare(name.size() - 3, 3, ".on") == 0) {
        base = name.substr(0, name.size() - 3);
        for (const char* unlit :
             {"window", "panel", "panel-header", "modal", "modal-header", "scroll-track"}) {
            if (base == unlit) {
                return "";
            }
        }
    }
    if (base == "window")
        return "1024x768";
    if (base == "panel" || base == "modal")
        return "256x256";
    if (base == "panel-header" || base == "modal-header")
        return "256x78";
    if (base == "button" || base == "button-accent" || base == "button-danger")
        return "192x64";
    if (base == "button-small")
        return "48x48";
    if (base == "field")
        return "128x64";
    if (base == "switch")
        return "68x40";
    if (base == "switch-knob")
        return "28x28";
    if (base == "radio")
        return "52x52";
    if (base == "scroll-track")
        return "16x256";
    if (base == "scroll-thumb")
        return "16x128";
    return "";
}

uint32_t NumberAt(const std::string& bytes, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<uint32_t>(static_cast<unsigned char>(bytes[i])); };
    return byte(at) << 24 | byte(at + 1) << 16 | byte(at + 2) << 8 | byte(at + 3);
}

bool IsPng(const std::string& bytes, const std::string& size) {
    return bytes.size() >= 24 && bytes.compare(0, 8, "\x89\x50\x4E\x47\x0D\x0A\x1A\x0A") == 0 &&
           NumberAt(bytes, 8) == 13 && bytes.compare(12, 4, "IHDR") == 0 &&
           std::to_string(NumberAt(bytes, 16)) + "x" + std::to_string(NumberAt(bytes, 20)) == size;
}

std::string RejectionReason(const std::string& text, ThemeRecord* record, ThemeReport* report) {
    if (text.empty())
        return "file is empty";
    if (text.size() > 12582912)
        return "file exceeds the 12 MB cap";
    record->name = Lookup(text, "name");
    if (!IsName(record->name))
        return InvalidOrMissing("name");
    const std::pair<const char*, std::string*> colours[] = {
        {"bgMain", &record->bgMain}, {"bgPanel", &record->bgPanel},         {"bgHeader", &record->bgHeader},
        {"accent", &record->accent}, {"accentHover", &record->accentHover}, {"text", &record->text},
    };
    for (const auto& [key, field] : colours) {
        *field = Lookup(text, key);
        if (!IsThemeColour(*field))
            return InvalidOrMissing(key);
    }
    record->font = Lookup(text, "font");
    if (record->font != "'Segoe UI', Tahoma, Geneva, Verdana, sans-serif" &&
        record->font != "'Consolas', 'Courier New', monospace") {
        return InvalidOrMissing("font stack");
    }
    record->hasSkin = false;
    record->path = "";
    if (Lookup(text, "format") != "2")
        return "";
    const std::string skin = Lookup(text, "skin");
    if (skin.empty() || Lookup(skin, "template") != "1")
        return "";

    int32_t count = 0;
    const std::string pieces = Lookup(skin, "pieces");
    if (!pieces.empty()) {
        if (pieces[0] != '{')
            return "skin.pieces is not an object";
        for (const std::string& key : ListKeys(pieces)) {
            if (SizeOf(key).empty())
                return "unknown skin piece name: " + key;
            const std::string encoded = Lookup(pieces, key);
            if (!IsStrictBase64(encoded))
                return "invalid base64 for piece: " + key;
            const std::string bytes = DecodeBase64(encoded);
            if (bytes.empty() || bytes.size() > 1048576)
                return "piece exceeds the 1 MB decoded cap: " + key;
            if (!IsPng(bytes, SizeOf(key)))
                return "invalid or wrong-size PNG for piece: " + key;
            ++count;
        }
    }
    const std::string font = Lookup(skin, "font");
    if (!font.empty()) {
        if (!IsStrictBase64(font))
            return "invalid base64 for skin.font";
        const std::string bytes = DecodeBase64(font);
        if (bytes.size() > 2097152)
            return "font exceeds the 2 MB decoded cap";
        if (bytes.size() < 1024 || (NumberAt(bytes, 0) != 0x00010000 && bytes.compare(0, 4, "OTTO") != 0)) {
            return "invalid font magic bytes";
        }
    }
    record->hasSkin = count > 0 || !font.empty();
    report->pieceCount = count;
    report->hasFont = !font.empty();
    return "";
}

}  // namespace

std::string Lookup(const std::string& text, const std::string& key) {
    Search search{key};
    const auto part = [&](size_t from, size_t to) { return text.substr(from, to - from); };
    State state = State::Outside;
    size_t start = 0;        // of the string or literal that is being read
    size_t nestedStart = 0;  // of the object or array that is being read
    size_t depth = 0;
    int continuation = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        if (state == State::Literal && Contains(" \t\n\r,:]}", c)) {
            // The literal ends before this byte, which then counts as outside.
            if (depth == 1 && search.Take(part(start, i), false)) {
                return part(start, i);
            }
            state = State::Outside;
        }
        switch (state) {
        case State::Outside:
            if (Contains(" \t\n\r,:", c)) {
                break;
            }
            if (c == '"') {
                state = State::String;
                start = i + 1;
            } else if (Contains("tfn-0123456789", c)) {
                state = State::Literal;
                start = i;
            } else if (c == '{' || c == '[') {
                ++depth;
                if (depth == 1) {
                    search.atKey = true;
                    search.matched = false;
                } else if (depth == 2) {
                    nestedStart = i;
                }
            } else if (c == '}' || c == ']') {
                if (depth == 0) {
                    return "";
                }
                --depth;
                if (depth == 1 && search.Take(part(nestedStart, i + 1), false)) {
                    return part(nestedStart, i + 1);
                }
            } else {
                return "";
            }
            break;
        case State::Literal:
            break;
        case State::String:
            if (c == '"') {
                state = State::Outside;
                if (depth == 1 && search.Take(part(start, i), true)) {
                    return Unescaped(part(start, i));
                }
                break;
            }
            if (c == '\\') {
                state = State::Escape;
            } else if (byte < 0x20 || byte == 0x7F || (byte >= 0x80 && byte < 0xC0) || byte >= 0xF8) {
                return "";
            } else if (byte >= 0xC0) {
                state = State::Utf8;
                continuation = byte >= 0xF0 ? 3 : byte >= 0xE0 ? 2 : 1;
            }
            break;
        case State::Escape:
            if (!Contains("\"\\/bfnrtu", c)) {
                return "";
            }
            state = State::String;
            break;
        case State::Utf8:
            if (byte < 0x80 || byte >= 0xC0) {
                return "";
            }
            if (--continuation == 0) {
                state = State::String;
            }
            break;
        }
    }
    return "";
}

std::vector<std::string> ListKeys(const std::string& text) {
    std::vector<std::string> keys;
    size_t i = 0;
    while (i < text.size() && text[i] != '{') {
        ++i;
    }
    ++i;
    while (true) {
        while (i < text.size() && Contains(" \t\n\r,", text[i])) {
            ++i;
        }
        if (i >= text.size() || text[i] != '"') {
            return keys;
        }
        ++i;
        std::string key;
        while (i < text.size() && text[i] != '"') {
            if (text[i] == '\\') {
                ++i;
                if (i >= text.size()) {
                    return keys;
                }
            }
            key += text[i];
            ++i;
        }
        if (i >= text.size()) {
            return keys;
        }
        keys.push_back(key);
        ++i;
        while (i < text.size() && text[i] != ':') {
            ++i;
        }
        ++i;
        while (i < text.size() && Contains(" \t\n\r", text[i])) {
            ++i;
        }
        int depth = 0;
        bool inString = false;
        while (true) {
            if (i >= text.size()) {
                return keys;
            }
            const char c = text[i];
            if (inString) {
                if (c == '\\') {
                    ++i;
                } else if (c == '"') {
                    inString = false;
                }
            } else if (c == '"') {
                inString = true;
            } else if (depth == 0 && (c == ',' || c == '}' || c == ']')) {
                break;
            } else if (c == '{' || c == '[') {
                ++depth;
            } else if (c == '}' || c == ']') {
                --depth;
            }
            ++i;
        }
    }
}

bool IsStrictBase64(const std::string& text) {
    if (text.empty() || text.size() % 4 != 0) {
        return false;
    }
    size_t padding = 0;
    for (const char c : text) {
        const bool isDigit = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
                             c == '+' || c == '/';
        if (c == '=') {
            ++padding;
        } else if (!isDigit || padding > 0) {
            return false;
        }
    }
    return padding <= 2;
}

std::string DecodeBase64(const std::string& text) {
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    unsigned byte = 0;
    int filled = 0;
    for (const char c : text) {
        if (c == '=') {
            break;
        }
        const size_t digit = alphabet.find(c);
        if (digit == std::string::npos) {
            return "";
        }
        for (int bit = 5; bit >= 0; --bit) {
            byte = byte << 1 | ((digit >> bit) & 1);
            if (++filled == 8) {
                bytes += static_cast<char>(byte);
                byte = 0;
                filled = 0;
            }
        }
    }
    return bytes;
}

bool Validate(const std::string& text, ThemeRecord* record, ThemeReport* report) {
    report->message = RejectionReason(text, record, report);
    report->accepted = report->message.empty();
    return report->accepted;
}

}  // namespace ReferenceValidator
