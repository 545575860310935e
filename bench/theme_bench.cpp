// Measures the cost of validating a theme file for each of its bytes, on files of a tenth of the cap and of the whole
// cap. Compares it with the plain form, which scans the text from its start for every value: ten values, three of the
// skin and every piece. Growth is the cost of a byte in the large file against the small one.
// Usage: theme_bench [THEME_FILE]
#include "../tests/unit/reference_validator.cpp"
#include "../tests/unit/theme_files.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>

namespace {

constexpr size_t kLarge = kMaxThemeFileBytes;
constexpr size_t kSmall = kLarge / 10;
constexpr int kRounds = 3;

// Returns a piece of about `size` bytes, in whole groups of three.
std::string Png(const ThemePiece& piece, size_t size) {
    std::string bytes = PngHeader(piece.width, piece.height);
    bytes.resize(std::max<size_t>(bytes.size(), size / 3 * 3), '\x5A');
    return bytes;
}

const std::string kColours =
    R"("name":"n","bgMain":"#000","bgPanel":"#000","bgHeader":"#000","accent":"#000","accentHover":"#000",)"
    R"("text":"#000","font":"'Consolas', 'Courier New', monospace")";

// Returns 24 valid pieces that share `size` bytes of text.
std::string Pieces(size_t size) {
    std::string text;
    for (const ThemePiece& piece : ThemePieces()) {
        text += (text.empty() ? "\"" : ",\"") + std::string(piece.name) + "\":\"" +
                EncodeBase64(Png(piece, size / ThemePieces().size() * 3 / 4)) + "\"";
    }
    return text;
}

// As a tool writes the file: the colours first.
std::string LargeSkin(size_t size) {
    return "{" + kColours + R"(,"format":2,"skin":{"template":1,"pieces":{)" + Pieces(size - 1000) + "}}}";
}

// The wanted values come last at every level, after the bytes that are slowest to skip.
std::string HostileTail(size_t size) {
    std::string slow;
    while (slow.size() < size / 2) {
        slow += "\"a\" 1 [] ";
    }
    std::string pieces;
    for (const ThemePiece& piece : ThemePieces()) {
        pieces += ",\"" + std::string(piece.name) + "\":\"" + EncodeBase64(Png(piece, 0)) + "\"";
    }
    std::string passed;
    while (passed.size() < size / 2 - 4000) {
        passed += ",\"window\":\"" + EncodeBase64(Png(ThemePieces().front(), 0)) + "\"";
    }
    return "{\"x\":[" + slow + R"(],"skin":{"pieces":{)" + passed.substr(1) + pieces +
           R"(},"template":1},"format":2,)" + kColours + "}";
}

// Every slash of every piece is escaped, so that nothing can be read in place.
std::string Escaped(size_t size) {
    std::string pieces;
    for (const ThemePiece& piece : ThemePieces()) {
        std::string slashes;
        while (slashes.size() < size / ThemePieces().size() - 200) {
            slashes += "\\/\\/\\/\\/";
        }
        pieces += ",\"" + std::string(piece.name) + "\":\"" + EncodeBase64(Png(piece, 0)) + slashes + "\"";
    }
    return "{" + kColours + R"(,"format":2,"skin":{"template":1,"pieces":{)" + pieces.substr(1) + "}}}";
}

// The skin is inside a string, so that every byte of it is unescaped before it is read.
std::string SkinAsString(size_t size) {
    std::string skin = R"({"template":1,"pieces":{)" + Pieces(size - 2000) + "}}";
    for (size_t at = 0; (at = skin.find('"', at)) != std::string::npos; at += 2) {
        skin.insert(at, "\\");
    }
    return "{" + kColours + R"(,"format":2,"skin":")" + skin + "\"}";
}

std::string Brackets(size_t size) {
    return "{" + kColours + R"(,"format":2,"x":)" + std::string(size / 2 - 200, '[') +
           std::string(size / 2 - 200, ']') + R"(,"skin":{"template":1,"pieces":{}}})";
}

std::string Commas(size_t size) {
    return "{" + std::string(size - 400, ',') + kColours + R"(,"format":1})";
}

using Validate = std::function<bool(const std::string&, ThemeRecord*, ThemeReport*)>;

// Returns the milliseconds of the shortest round, because a busy machine only adds time.
double TimeOf(const std::string& text, const Validate& validate, ThemeReport* report) {
    double best = 0;
    for (int round = 0; round < kRounds; ++round) {
        ThemeRecord record;
        const auto begin = std::chrono::steady_clock::now();
        validate(text, &record, report);
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
        best = round == 0 ? taken.count() : std::min(best, taken.count());
    }
    return best;
}

bool Ours(const std::string& text, ThemeRecord* record, ThemeReport* report) {
    return ValidateThemeText(text, record, report);
}

// One scan of the plain form over the whole text, for a missing key.
double PlainScan(const std::string& text) {
    ThemeReport unused;
    return TimeOf(
        text,
        [](const std::string& whole, ThemeRecord*, ThemeReport*) {
            return ReferenceValidator::Lookup(whole, "no such key").empty();
        },
        &unused);
}

void PrintRow(const char* name, const std::string& small, const std::string& large, bool plainToo) {
    ThemeReport report;
    const double smallTime = TimeOf(small, Ours, &report);
    const double largeTime = TimeOf(large, Ours, &report);
    if (!report.accepted) {
        std::fprintf(stderr, "theme_bench: a file that must pass does not: %s\n", report.message.c_str());
        std::exit(1);
    }
    const double growth =
        largeTime / static_cast<double>(large.size()) / (smallTime / static_cast<double>(small.size()));
    std::printf("%-30s | %8.1f | %9.2f | %9.2f | %6.2f | %13.0f | ", name,
                static_cast<double>(large.size()) / 1048576.0, smallTime, largeTime, growth,
                24 * PlainScan(large));
    if (!plainToo) {
        std::printf("not run\n");
        return;
    }
    ThemeReport plain;
    const double plainTime = TimeOf(large, ReferenceValidator::Validate, &plain);
    if (!plain.accepted || plain.pieceCount != report.pieceCount) {
        std::fprintf(stderr, "theme_bench: the plain form says something else\n");
        std::exit(1);
    }
    std::printf("%.0f\n", plainTime);
}

}  // namespace

int main(int argc, char** argv) {
    std::printf("%-30s | %8s | %9s | %9s | %6s | %13s | %s\n", "ms", "MB", "a tenth", "whole", "growth",
                "24 full scans", "plain, whole");
    PrintRow("24 large pieces", LargeSkin(kSmall), LargeSkin(kLarge), true);
    PrintRow("everything last, names again", HostileTail(kSmall), HostileTail(kLarge), false);
    PrintRow("every slash escaped", Escaped(kSmall), Escaped(kLarge), true);
    PrintRow("the skin within a string", SkinAsString(kSmall), SkinAsString(kLarge), true);
    PrintRow("brackets", Brackets(kSmall), Brackets(kLarge), true);
    PrintRow("commas", Commas(kSmall), Commas(kLarge), true);
    if (argc > 1) {
        std::ifstream file(argv[1], std::ios::binary);
        const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        PrintRow("the theme with a skin", text, text, true);
    }
    return 0;
}
