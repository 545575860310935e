// Any bytes as a theme file, beside a second judge that asks for each key with a pass of its own, from the list of all
// keys, and decodes every piece as often as it is named. The listing and base64 also run on the bytes as they are.
#include "themes/base64.h"
#include "themes/json_lookup.h"
#include "themes/validator.h"

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void Require(bool good) {
    if (!good) {
        std::abort();
    }
}

// The count of pieces, or -1 where one of them is no good. The size of the picture is not looked at.
int PlainPieces(const std::string& pieces) {
    int count = 0;
    for (const std::string& key : ListJsonKeys(pieces)) {
        const std::string encoded = JsonLookup(pieces, key);
        const std::string bytes = DecodeBase64(encoded);
        if (!IsStrictBase64(encoded) || bytes.size() < 24 || bytes.substr(12, 4) != "IHDR") {
            return -1;
        }
        ++count;
    }
    return count;
}

void RequireSame(const std::string& text) {
    ThemeRecord record;
    ThemeReport report;
    const bool accepted = ValidateThemeText(text, &record, &report);
    Require(accepted == report.accepted && accepted == report.message.empty());
    if (!accepted) {
        return;
    }
    Require(record.name == JsonLookup(text, "name") && record.bgMain == JsonLookup(text, "bgMain"));
    Require(record.bgPanel == JsonLookup(text, "bgPanel") && record.bgHeader == JsonLookup(text, "bgHeader"));
    Require(record.accent == JsonLookup(text, "accent") && record.text == JsonLookup(text, "text"));
    Require(record.accentHover == JsonLookup(text, "accentHover") && record.font == JsonLookup(text, "font"));
    Require(IsThemeColour(record.accent) && record.path.empty());
    const std::string skin = JsonLookup(text, "skin");
    if (JsonLookup(text, "format") != "2" || JsonLookup(skin, "template") != "1") {
        Require(!record.hasSkin && report.pieceCount == 0 && !report.hasFont);
        return;
    }
    const std::string pieces = JsonLookup(skin, "pieces");
    Require(report.pieceCount == (pieces.empty() ? 0 : PlainPieces(pieces)));
    Require(report.hasFont == !JsonLookup(skin, "font").empty());
    Require(record.hasSkin == (report.pieceCount > 0 || report.hasFont));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    RequireSame(bytes);
    // The same bytes where the colours are past: as the rest of a file, and as its pieces.
    const std::string start =
        R"({"name":"n","bgMain":"#000","bgPanel":"#000","bgHeader":"#000","accent":"#000",)"
        R"("accentHover":"#000","text":"#000","font":"'Consolas', 'Courier New', monospace",)"
        R"("format":2,"skin":)";
    RequireSame(start + bytes);
    RequireSame(start + R"({"template":1,"pieces":)" + bytes + "}}");

    ListJsonKeys(bytes);
    const std::string decoded = DecodeBase64(bytes);
    Require(decoded.size() <= bytes.size());
    if (IsStrictBase64(bytes)) {
        Require(decoded.size() + 2 >= bytes.size() / 4 * 3 && decoded.size() <= bytes.size() / 4 * 3);
    }
    return 0;
}
