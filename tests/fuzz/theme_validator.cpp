// Reads any bytes as a theme file, and as parts of one, and compares the validator with its reference. Also compares the
// list of keys and the lookup on the bytes themselves.
#include "../unit/reference_validator.cpp"

#include "fuzz_input.h"
#include "themes/json_lookup.h"

#include <cstdint>
#include <string>

namespace {

void RequireSame(const std::string& text) {
    ThemeRecord record;
    ThemeReport report;
    ThemeRecord plain;
    ThemeReport plainReport;
    Require(ValidateThemeText(text, &record, &report) ==
            ReferenceValidator::Validate(text, &plain, &plainReport));
    Require(report.accepted == plainReport.accepted && report.message == plainReport.message);
    Require(report.pieceCount == plainReport.pieceCount && report.hasFont == plainReport.hasFont);
    Require(record.name == plain.name && record.bgMain == plain.bgMain && record.bgPanel == plain.bgPanel);
    Require(record.bgHeader == plain.bgHeader && record.accent == plain.accent);
    Require(record.accentHover == plain.accentHover && record.text == plain.text);
    Require(record.font == plain.font && record.hasSkin == plain.hasSkin && record.path.empty());
    if (report.accepted) {
        Require(IsThemeColour(record.accent) && record.hasSkin == (report.pieceCount > 0 || report.hasFont));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    RequireSame(bytes);
    // The same bytes after valid colours: as the rest of a file, as its pieces and as its font.
    const std::string start =
        R"({"name":"n","bgMain":"#000","bgPanel":"#000","bgHeader":"#000","accent":"#000",)"
        R"("accentHover":"#000","text":"#000","font":"'Consolas', 'Courier New', monospace",)"
        R"("format":2,"skin":)";
    RequireSame(start + bytes);
    RequireSame(start + R"({"template":1,"pieces":)" + bytes + "}}");
    RequireSame(start + R"({"template":1,"font":")" + bytes + "\"}}");

    Require(ListJsonKeys(bytes) == ReferenceValidator::ListKeys(bytes));
    for (const char* key : {"name", "panel", "pieces", "button.on", ""}) {
        Require(JsonLookup(bytes, key) == ReferenceValidator::Lookup(bytes, key));
    }
    return 0;
}
