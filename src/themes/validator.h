// Validates theme files (.vrltheme). They come from outside, so no value of one reaches the page before this validator
// has accepted the file. No state: any thread. Functions fail only with std::bad_alloc. Validation takes a few passes
// over the bytes, whatever they are.
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
    std::string bgMain;  // colours, as the file writes them
    std::string bgPanel;
    std::string bgHeader;
    std::string accent;
    std::string accentHover;
    std::string text;
    std::string font;      // one of the two permitted stacks
    bool hasSkin = false;  // at least one piece or a font
    std::string path;      // full path; set only by ValidateThemeFile
};

struct ThemeReport {
    bool accepted = false;
    std::string message;     // reason of a rejection; empty on acceptance
    int32_t pieceCount = 0;  // set only if a skin is accepted
    bool hasFont = false;    // set only if a skin is accepted
};

// A bitmap that a skin may contain, of exactly this size.
struct ThemePiece {
    std::string_view name;
    uint32_t width;  // pixels
    uint32_t height;
};
// Returns all pieces, in the order of the format. The table is static.
std::span<const ThemePiece> ThemePieces();

// Validate the text of a theme file, or the file itself. Return whether it is accepted. Fill *record, which has no meaning
// after a rejection, and *report, which may be null.
bool ValidateThemeText(std::string_view text, ThemeRecord* record, ThemeReport* report);
// Sets *wholeText to the file's text on acceptance only. `wholeText` may be null.
bool ValidateThemeFile(const std::string& path, ThemeRecord* record, ThemeReport* report,
                       std::string* wholeText);

// Returns whether `text` is #rgb, #rrggbb or rgb(r, g, b) with decimals from 0 to 255.
bool IsThemeColour(std::string_view text);
