#include "themes/validator.h"

#include "base/text.h"
#include "platform/files.h"
#include "themes/base64.h"
#include "themes/json_lookup.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <utility>

namespace {

constexpr const char* kEmptyFile = "file is empty";
constexpr const char* kFileTooLarge = "file exceeds the 12 MB cap";
constexpr const char* kInvalidOrMissing = "invalid or missing ";

constexpr std::string_view kFontStacks[] = {
    "'Segoe UI', Tahoma, Geneva, Verdana, sans-serif",
    "'Consolas', 'Courier New', monospace",
};

struct ColourRow {
    std::string_view key;
    std::string ThemeRecord::*field;
};

constexpr ColourRow kColours[] = {
    {"bgMain", &ThemeRecord::bgMain},           {"bgPanel", &ThemeRecord::bgPanel},
    {"bgHeader", &ThemeRecord::bgHeader},       {"accent", &ThemeRecord::accent},
    {"accentHover", &ThemeRecord::accentHover}, {"text", &ThemeRecord::text},
};

constexpr ThemePiece kPieces[] = {
    {"window", 1024, 768},
    {"panel", 256, 256},
    {"panel-header", 256, 78},
    {"modal", 256, 256},
    {"modal-header", 256, 78},
    {"button", 192, 64},
    {"button-accent", 192, 64},
    {"button-danger", 192, 64},
    {"button-small", 48, 48},
    {"field", 128, 64},
    {"switch", 68, 40},
    {"switch-knob", 28, 28},
    {"radio", 52, 52},
    {"scroll-track", 16, 256},
    {"scroll-thumb", 16, 128},
    {"button.on", 192, 64},
    {"button-accent.on", 192, 64},
    {"button-danger.on", 192, 64},
    {"button-small.on", 48, 48},
    {"field.on", 128, 64},
    {"switch.on", 68, 40},
    {"switch-knob.on", 28, 28},
    {"radio.on", 52, 52},
    {"scroll-thumb.on", 16, 128},
};
constexpr size_t kPieceCount = std::size(kPieces);

// Returns whether `part` is one number of an rgb() body. Spaces, but no other white space, may surround it.
bool IsColourPart(std::string_view part) {
    const size_t first = part.find_first_not_of(' ');
    if (first == std::string_view::npos) {
        return false;
    }
    part = part.substr(first, part.find_last_not_of(' ') - first + 1);
    if (part.size() > 3) {
        return false;
    }
    int value = 0;
    for (const char c : part) {
        if (c < '0' || c > '9') {
            return false;
        }
        value = value * 10 + (c - '0');
    }
    return value <= 255;
}

// Each comma ends a part, so one trailing comma adds no part.
bool IsColourBody(std::string_view body) {
    int parts = 0;
    while (!body.empty()) {
        const size_t comma = body.find(',');
        if (++parts > 3 || !IsColourPart(body.substr(0, comma))) {
            return false;
        }
        body = comma == std::string_view::npos ? std::string_view() : body.substr(comma + 1);
    }
    return parts == 3;
}

bool IsThemeName(std::string_view name) {
    return !name.empty() && name.size() <= 40 && std::none_of(name.begin(), name.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7F;
    });
}

uint32_t BigEndian(std::string_view bytes, size_t at) {
    uint32_t value = 0;
    for (size_t i = at; i < at + 4; ++i) {
        value = (value << 8) | static_cast<unsigned char>(bytes[i]);
    }
    return value;
}

// Checks the header only: the page's decoder checks the rest.
bool HasPngHeader(std::string_view bytes, const ThemePiece& row) {
    constexpr std::string_view kSignature = "\x89PNG\r\n\x1A\n";
    constexpr uint32_t kHeaderChunkBytes = 13;
    return bytes.size() >= 24 && bytes.substr(0, 8) == kSignature &&
           BigEndian(bytes, 8) == kHeaderChunkBytes && bytes.substr(12, 4) == "IHDR" &&
           BigEndian(bytes, 16) == row.width && BigEndian(bytes, 20) == row.height;
}

// The Validate* functions below return the reason of a rejection, or an empty string on acceptance.

std::string ValidatePiece(const ThemePiece& row, const JsonValue& value) {
    const std::string name(row.name);
    std::string buffer;
    const std::string_view encoded = JsonContent(value, &buffer);
    if (!IsStrictBase64(encoded)) {
        return "invalid base64 for piece: " + name;
    }
    const std::string bytes = DecodeBase64(encoded);
    if (bytes.empty() || bytes.size() > kMaxThemePieceBytes) {
        return "piece exceeds the 1 MB decoded cap: " + name;
    }
    return HasPngHeader(bytes, row) ? std::string() : "invalid or wrong-size PNG for piece: " + name;
}

std::string ValidatePieces(std::string_view pieces, int32_t* count) {
    if (pieces.front() != '{') {
        return "skin.pieces is not an object";
    }
    std::array<JsonField, kPieceCount> fields{};
    for (size_t i = 0; i < kPieceCount; ++i) {
        fields[i].key = kPieces[i].name;
    }
    FindJsonValues(pieces, fields.data(), fields.size());

    // A repeated name has its first value: it counts again but is not decoded again.
    std::array<bool, kPieceCount> isAccepted{};
    JsonKeyIterator keys(pieces);
    std::string key;
    while (keys.Next(&key)) {
        const auto* const row = std::find_if(std::begin(kPieces), std::end(kPieces),
                                             [&](const ThemePiece& r) { return r.name == key; });
        if (row == std::end(kPieces)) {
            return "unknown skin piece name: " + key;
        }
        const auto index = static_cast<size_t>(row - kPieces);
        if (!isAccepted[index]) {
            std::string reason = ValidatePiece(*row, fields[index].value);
            if (!reason.empty()) {
                return reason;
            }
            isAccepted[index] = true;
        }
        ++*count;
    }
    return {};
}

std::string ValidateFont(std::string_view encoded) {
    constexpr std::string_view kTrueType("\0\1\0\0", 4);
    constexpr std::string_view kOpenType = "OTTO";
    if (!IsStrictBase64(encoded)) {
        return "invalid base64 for skin.font";
    }
    const std::string bytes = DecodeBase64(encoded);
    if (bytes.size() > kMaxThemeFontBytes) {
        return "font exceeds the 2 MB decoded cap";
    }
    const std::string_view magic = std::string_view(bytes).substr(0, 4);
    if (bytes.size() < kMinThemeFontBytes || (magic != kTrueType && magic != kOpenType)) {
        return "invalid font magic bytes";
    }
    return {};
}

std::string ValidateSkin(std::string_view skin, ThemeRecord* record, ThemeReport* report) {
    std::array<JsonField, 3> fields{{{"template", {}, false}, {"pieces", {}, false}, {"font", {}, false}}};
    FindJsonValues(skin, fields.data(), fields.size());
    std::string buffer;
    if (JsonContent(fields[0].value, &buffer) != "1") {
        return {};
    }
    int32_t count = 0;
    const std::string_view pieces = JsonContent(fields[1].value, &buffer);
    if (!pieces.empty()) {
        std::string reason = ValidatePieces(pieces, &count);
        if (!reason.empty()) {
            return reason;
        }
    }
    const std::string_view font = JsonContent(fields[2].value, &buffer);
    if (!font.empty()) {
        std::string reason = ValidateFont(font);
        if (!reason.empty()) {
            return reason;
        }
    }
    record->hasSkin = count > 0 || !font.empty();
    report->pieceCount = count;
    report->hasFont = !font.empty();
    return {};
}

std::string ValidateText(std::string_view text, ThemeRecord* record, ThemeReport* report) {
    if (text.empty()) {
        return kEmptyFile;
    }
    if (text.size() > kMaxThemeFileBytes) {
        return kFileTooLarge;
    }
    constexpr size_t kColourCount = std::size(kColours);
    std::array<JsonField, kColourCount + 4> fields{};
    for (size_t i = 0; i < kColourCount; ++i) {
        fields[i].key = kColours[i].key;
    }
    JsonField& name = fields[kColourCount];
    JsonField& font = fields[kColourCount + 1];
    JsonField& format = fields[kColourCount + 2];
    JsonField& skin = fields[kColourCount + 3];
    name.key = "name";
    font.key = "font";
    format.key = "format";
    skin.key = "skin";
    FindJsonValues(text, fields.data(), fields.size());

    std::string buffer;
    record->name = JsonContent(name.value, &buffer);
    if (!IsThemeName(record->name)) {
        return std::string(kInvalidOrMissing) + "name";
    }
    for (size_t i = 0; i < kColourCount; ++i) {
        std::string& colour = record->*kColours[i].field;
        colour = JsonContent(fields[i].value, &buffer);
        if (!IsThemeColour(colour)) {
            return std::string(kInvalidOrMissing).append(kColours[i].key);
        }
    }
    record->font = JsonContent(font.value, &buffer);
    if (std::find(std::begin(kFontStacks), std::end(kFontStacks), record->font) == std::end(kFontStacks)) {
        return std::string(kInvalidOrMissing) + "font stack";
    }
    record->hasSkin = false;
    record->path.clear();
    if (JsonContent(format.value, &buffer) != "2") {
        return {};
    }
    return ValidateSkin(JsonContent(skin.value, &buffer), record, report);
}

bool SetVerdict(std::string reason, ThemeReport* report) {
    report->accepted = reason.empty();
    report->message = std::move(reason);
    return report->accepted;
}

std::string ReadThemeFile(const std::string& path, std::string* text) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    // Some systems open a folder as a file that has a size but no bytes.
    if (!file || IsFolder(path)) {
        return "could not open file";
    }
    const std::streamoff size = file.tellg();
    if (size < 1) {
        return kEmptyFile;
    }
    if (size > static_cast<std::streamoff>(kMaxThemeFileBytes)) {
        return kFileTooLarge;
    }
    file.seekg(0);
    text->resize(static_cast<size_t>(size));
    file.read(text->data(), size);
    return file ? std::string() : "could not read file";
}

}  // namespace

std::span<const ThemePiece> ThemePieces() {
    return kPieces;
}

bool ValidateThemeText(std::string_view text, ThemeRecord* record, ThemeReport* report) {
    ThemeReport ignored;
    ThemeReport* const target = report != nullptr ? report : &ignored;
    return SetVerdict(ValidateText(text, record, target), target);
}

bool ValidateThemeFile(const std::string& path, ThemeRecord* record, ThemeReport* report,
                       std::string* wholeText) {
    ThemeReport ignored;
    ThemeReport* const target = report != nullptr ? report : &ignored;
    std::string text;
    std::string reason = ReadThemeFile(path, &text);
    if (!reason.empty()) {
        return SetVerdict(std::move(reason), target);
    }
    if (!ValidateThemeText(text, record, target)) {
        return false;
    }
    record->path = path;
    if (wholeText != nullptr) {
        *wholeText = std::move(text);
    }
    return true;
}

bool IsThemeColour(std::string_view text) {
    if (!text.empty() && text.front() == '#') {
        return (text.size() == 4 || text.size() == 7) &&
               std::all_of(text.begin() + 1, text.end(), [](char c) { return HexDigit(c) >= 0; });
    }
    constexpr std::string_view kOpening = "rgb(";
    if (text.size() <= kOpening.size() || text.substr(0, kOpening.size()) != kOpening || text.back() != ')') {
        return false;
    }
    return IsColourBody(text.substr(kOpening.size(), text.size() - kOpening.size() - 1));
}
