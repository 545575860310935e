// Validates theme files (.vrltheme). They come from outside, so no value reaches the page unless it is accepted here.
// Stateless; any thread. Throws only std::bad_alloc and logs nothing. A file costs a few passes over its bytes,
// whatever it contains.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

constexpr size_t kMaxThemeFileBytes = 0xC00000;
constexpr size_t kMaxThemePieceBytes = 0x100000;  // decoded
constexpr size_t kMaxThemeFontBytes = 0x200000;   // decoded
constexpr size_t kMinThemeFontBytes = 1024;       // decoded

struct ThemeRecord {
    std::string name;    // 1 to 40 bytes
    std::string bgMain;  // colours as written in the file
    std::string bgPanel;
    std::string bgHeader;
    std::string accent;
    std::string accentHover;
    std::string text;
    std::string font;      // one of the two permitted stacks
    bool hasSkin = false;  // at least one piece or a font
    std::string path;      // full path; only from ValidateThemeFile
};

struct ThemeReport {
    bool accepted = false;
    std::string message;     // reason of the rejection; empty on acceptance
    int32_t pieceCount = 0;  // unchanged unless a whole skin was accepted
    bool hasFont = false;    // likewise
};

// A bitmap that a skin may contain, of exactly this size.
struct ThemePiece {
    std::string_view name;
    uint32_t width;  // pixels
    uint32_t height;
};
// Returns all pieces in the order of the format. Valid as long as the program runs.
std::span<const ThemePiece> ThemePieces();

// Both return report->accepted. `report` may be null. Do not use *record after a rejection.
bool ValidateThemeText(std::string_view text, ThemeRecord* record, ThemeReport* report);
// `wholeText` may be null; it is written on acceptance only.
bool ValidateThemeFile(const std::string& path, ThemeRecord* record, ThemeReport* report,
                       std::string* wholeText);

// Returns true for #rgb, #rrggbb or rgb(r, g, b) with decimal 0-255.
bool IsThemeColour(std::string_view text);
