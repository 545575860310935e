// Compares the theme validator with its reference on random files full of edge cases: keys repeated, nested, escaped and
// adjacent; values that are just valid and just invalid.
#include "random_sample.h"
#include "themes/base64.h"
#include "themes/json_lookup.h"
#include "unit/reference_validator.h"
#include "unit/theme_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <random>
#include <string>

namespace {

constexpr int kFiles = RandomRounds(24000);
constexpr int kTokenTexts = RandomRounds(24000);
constexpr int kEncodedTexts = RandomRounds(24000);

// Makes the same files with every compiler: no expression draws random numbers in two operands or two arguments, whose
// order the compiler chooses.
class FileMaker {
  public:
    explicit FileMaker(uint32_t seed) : random_(seed) {}

    // Returns a uniform random number below `count`.
    uint32_t Below(uint32_t count) { return static_cast<uint32_t>(random_() % count); }
    bool OneIn(uint32_t count) { return Below(count) == 0; }

    template <size_t Count> std::string Any(const char* const (&choices)[Count]) {
        return choices[Below(Count)];
    }

    // Returns a whole theme file, usually valid and usually with something unusual in it.
    std::string File() {
        std::string text = "{";
        std::array<std::string, 10> fields = {
            Field("name",
                  Value({"\"Dusk\"", "\"A\\tB\"", "\"\\/\"", "\"\xC3\x89\"", "\"\\u0041\""}, {"\"n\""})),
            Field("bgMain", Colour()),
            Field("bgPanel", Colour()),
            Field("bgHeader", Colour()),
            Field("accent", Colour()),
            Field("accentHover", Colour()),
            Field("text", Colour()),
            Field("font", Value({"\"Arial\"", "\"'Consolas','Courier New',monospace\""},
                                {"\"'Consolas', 'Courier New', monospace\""})),
            Field("format", Value({"1", "2.0", "\"2\"", "[2]", "null", "2e0"}, {"2"})),
            Field("skin", Skin()),
        };
        if (OneIn(2)) {
            std::shuffle(fields.begin(), fields.end(), random_);
        }
        for (const std::string& field : fields) {
            if (OneIn(60)) {
                continue;
            }
            text += Between();
            if (OneIn(6)) {
                text += Decoy();
                text += Between();
            }
            text += field;
            if (OneIn(30)) {
                text += Between();
                text += fields[Below(10)];
            }
        }
        text += "}";
        return OneIn(3) ? Corrupt(text) : text;
    }

    // Returns random tokens that a JSON scanner may meet.
    std::string Tokens() {
        std::string text = OneIn(8) ? "" : "{";
        for (uint32_t left = Below(24); left > 0; --left) {
            text += Any({"{",
                         "}",
                         "[",
                         "]",
                         ",",
                         ":",
                         " ",
                         "\t",
                         "\n",
                         "\r",
                         "\"",
                         "\\",
                         "\"a\"",
                         "\"b\"",
                         "\"a\"",
                         "\"b\":",
                         "\"a\":1",
                         "\"c\":{\"a\":2}",
                         "\"\\a\"",
                         "\"\\u0061\"",
                         "\"a\\n\"",
                         "tr\"ue",
                         "false",
                         "-1",
                         "0",
                         "\"\xC3\xA9\"",
                         "\"\xE2\x82\"",
                         "\x7F",
                         "\v",
                         "x",
                         "\"\"",
                         "\"{\"",
                         "\"}\"",
                         "\"\\\"\"",
                         "[\"a\",3]",
                         "\"b\" \"a\" \"b\"",
                         ",,",
                         "::",
                         "null"});
        }
        return OneIn(8) ? text + '\0' + text : text;
    }

    // Returns a text that is usually base64 in whole groups.
    std::string Encoded() {
        const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        std::string text;
        uint32_t length = Below(12) * 4;
        length += OneIn(4) ? Below(4) : 0;
        for (; length > 0; --length) {
            text += alphabet[Below(64)];
        }
        for (uint32_t left = OneIn(2) ? Below(4) : 0; left > 0; --left) {
            if (!text.empty()) {
                text[text.size() - left % (text.size() + 1)] = '=';
            }
        }
        if (OneIn(6) && !text.empty()) {
            const auto at = Below(static_cast<uint32_t>(text.size()));
            text[at] = static_cast<char>(Below(256));
        }
        return text;
    }

  private:
    template <size_t OddCount, size_t GoodCount>
    std::string Value(const char* const (&odd)[OddCount], const char* const (&good)[GoodCount]) {
        return OneIn(24) ? Any(odd) : Any(good);
    }

    std::string Colour() {
        return Value(
            {"\"#abcd\"", "\"rgb(1,2,3,4)\"", "\"rgb(256,0,0)\"", "\"red\"", "\"\"", "7", "\"#\\u0041BC\""},
            {"\"#ABC\"", "\"#aabbcc\"", "\"rgb(1,2,3)\"", "\"rgb( 1 , 2 , 3 ,)\""});
    }

    std::string Between() { return OneIn(5) ? Any({"", " ", ",,", ":", "\n\t", "\r\n, ", " , : "}) : ","; }

    std::string Field(const std::string& key, const std::string& value) {
        std::string name = key;
        if (OneIn(80)) {
            name.insert(Below(static_cast<uint32_t>(key.size() + 1)), "\\");
        }
        return "\"" + name + "\"" + (OneIn(10) ? Any({"", " ", ",", "::", " :\n", "\t:"}) : ":") + value;
    }

    // Returns a field with the words of a theme file in positions where they do not count.
    std::string Decoy() {
        return Any({"\"x\":{\"name\":\"no\",\"accent\":\"#bad\",\"skin\":{\"template\":1}}",
                    "\"x\":[\"name\",\"skin\",2]", "\"x\":\"name\"", "\"x\":\"\\\"name\\\":1\"",
                    "\"\\u006e\":1", "1:2", "{}:[]", "[\"name\"]:\"#000\"",
                    "\"x\":{\"pieces\":{\"panel\":\"!\"}}", "\"x\":{{[[{\"a\":1}]]}}", "\"x\":\"}\"",
                    "\"pieces\":{\"panel\":1}", "\"template\":1"});
    }

    struct Piece {
        const char* name;
        uint32_t width;
        uint32_t height;
    };

    std::string PieceField() {
        static constexpr Piece kPieces[] = {
            {"window", 1024, 768}, {"panel", 256, 256},     {"panel-header", 256, 78},
            {"button", 192, 64},   {"button.on", 192, 64},  {"scroll-thumb.on", 16, 128},
            {"radio.on", 52, 52},  {"switch-knob", 28, 28},
        };
        const Piece& piece = kPieces[Below(std::size(kPieces))];
        std::string bytes = PngHeader(piece.width, piece.height) + std::string(Below(8), '\xFF');
        if (OneIn(40)) {
            const auto at = Below(static_cast<uint32_t>(bytes.size()));
            bytes[at] = static_cast<char>(bytes[at] ^ (1 << Below(8)));
        }
        if (OneIn(60)) {
            bytes.resize(Below(24));
        }
        if (OneIn(700)) {
            bytes.resize(OneIn(4) ? 1048576 : 1048577, 'x');
        }
        std::string encoded = EncodeBase64(bytes);
        if (OneIn(60)) {
            const auto at = Below(static_cast<uint32_t>(encoded.size() + 1));
            encoded.insert(at, Any({"=", "A", "\\n", "\\/", " "}));
        }
        if (OneIn(4)) {
            size_t at = 0;
            while ((at = encoded.find('/', at)) != std::string::npos) {
                encoded.insert(at, "\\");
                at += 2;
            }
        }
        const char* const oddNames[] = {"Window", "panel ", "panel.on", "", "x"};
        return Field(OneIn(60) ? Any(oddNames) : piece.name, "\"" + encoded + "\"");
    }

    std::string Pieces() {
        if (OneIn(20)) {
            return Any(
                {"[]", "{}", "\"\"", "1", "\"[]\"", "\"{\\\"panel\\\":1}\"", "\"{\\\"Panel\\\":1}\"", "{:}"});
        }
        std::string text = "{";
        for (uint32_t left = Below(5); left > 0; --left) {
            const std::string piece = PieceField();
            text += Between();
            text += piece;
            if (OneIn(8)) {
                text += Between();
                text += piece;
            }
            if (OneIn(12)) {
                text += Between();
                text += Any(
                    {"\"panel\":{\"button\":1}", "\"button\":\"!\"", "\"window\" \"panel\"", "1", "\"\""});
            }
        }
        return text + "}";
    }

    std::string Font() {
        std::string bytes = Any({"OTTO", "OTTO", "wOFF", "ttcf"});
        if (OneIn(3)) {
            bytes = BigEndian(0x00010000);
        }
        bytes.resize(OneIn(100) ? 2097152 + Below(2) : 1023 + Below(4), 'x');
        return EncodeBase64(bytes) + (OneIn(12) ? "=" : "");
    }

    std::string Skin() {
        if (OneIn(30)) {
            return Any({"\"\"", "1", "[]", "{}", "\"{\\\"template\\\":1,\\\"pieces\\\":[]}\""});
        }
        std::string text = "{" + Field("template", Value({"2", "true", "[1]"}, {"1", "\"1\""}));
        if (!OneIn(8)) {
            text += Between();
            text += Field("pieces", Pieces());
        }
        if (OneIn(8)) {
            text += Between();
            text += Decoy();
        }
        if (OneIn(8)) {
            text += Between();
            text += Field("font", OneIn(4) ? Any({"\"\"", "{}", "1", "\"AAAA\""}) : "\"" + Font() + "\"");
        }
        return text + "}";
    }

    // Removes a byte, inserts one, or truncates the text.
    std::string Corrupt(std::string text) {
        const auto at = Below(static_cast<uint32_t>(text.size()));
        switch (Below(8)) {
        case 0:
            return text.substr(0, at);
        case 1:
        case 2:
            return text.erase(at, 1);
        default:
            return text.insert(at,
                               Any({"\"", "\\", "{", "}", "[", "]", ",", ":", "x", "\x80", "\xC3", "\n"}));
        }
    }

    std::mt19937 random_;
};

std::string Describe(bool accepted, const ThemeRecord& record, const ThemeReport& report) {
    std::string text = accepted ? "accepted" : "rejected: " + report.message;
    for (const std::string* part :
         {&record.name, &record.bgMain, &record.bgPanel, &record.bgHeader, &record.accent,
          &record.accentHover, &record.text, &record.font, &record.path}) {
        text += "\n" + *part;
    }
    return text + "\n" + std::to_string(report.pieceCount) + (report.hasFont ? " font" : "") +
           (record.hasSkin ? " skin" : "");
}

TEST(ThemeComparison, ValidatorAgreesWithTheReferenceOnRandomFiles) {
    FileMaker maker(20261121);
    std::map<std::string, int> verdicts;
    for (int i = 0; i < kFiles; ++i) {
        const std::string text = maker.File();
        ThemeRecord referenceRecord;
        ThemeReport referenceReport;
        const bool expected = ReferenceValidator::Validate(text, &referenceRecord, &referenceReport);
        ThemeRecord record;
        ThemeReport report;
        const bool accepted = ValidateThemeText(text, &record, &report);
        ASSERT_EQ(Describe(accepted, record, report), Describe(expected, referenceRecord, referenceReport))
            << i << ":\n"
            << text;
        const std::string kind = report.message.substr(0, report.message.find(": "));
        ++verdicts[accepted ? (report.hasFont ? "font" : record.hasSkin ? "skin" : "colours") : kind];
    }
    // All verdicts occur: three kinds of valid files, an invalid name, six invalid colours, an invalid font stack, five
    // for the pieces and three for the font. A file truncated to nothing may or may not occur.
    verdicts.erase("file is empty");
    if (kRunsAllRounds) {
        EXPECT_EQ(verdicts.size(), 3U + 1 + 6 + 1 + 5 + 3) << ::testing::PrintToString(verdicts);
        EXPECT_GT(verdicts["piece exceeds the 1 MB decoded cap"], 1);
        EXPECT_GT(verdicts["font exceeds the 2 MB decoded cap"], 1);
    }
    EXPECT_GT(verdicts["skin"], kFiles / 10);
    EXPECT_GT(verdicts["colours"], kFiles / 20);
    EXPECT_GT(verdicts["font"], kFiles / 200);
}

TEST(ThemeComparison, LookupAgreesWithTheReferenceOnRandomTokens) {
    FileMaker maker(7);
    int found = 0;
    for (int i = 0; i < kTokenTexts; ++i) {
        const std::string text = maker.Tokens();
        JsonField fields[] = {
            {"a", {}, false}, {"b", {}, false}, {"c", {}, false}, {"", {}, false}, {"\\a", {}, false}};
        FindJsonValues(text, fields, std::size(fields));
        for (const JsonField& field : fields) {
            std::string buffer;
            const std::string value(JsonContent(field.value, &buffer));
            ASSERT_EQ(value, ReferenceValidator::Lookup(text, std::string(field.key)))
                << field.key << " in " << text;
            found += value.empty() ? 0 : 1;
        }
        ASSERT_EQ(ListJsonKeys(text), ReferenceValidator::ListKeys(text)) << text;
    }
    EXPECT_GT(found, kTokenTexts / 4);
}

TEST(ThemeComparison, Base64AgreesWithTheReferenceOnRandomTexts) {
    FileMaker maker(64);
    int strict = 0;
    for (int i = 0; i < kEncodedTexts; ++i) {
        const std::string text = maker.Encoded();
        ASSERT_EQ(IsStrictBase64(text), ReferenceValidator::IsStrictBase64(text)) << text;
        ASSERT_EQ(DecodeBase64(text), ReferenceValidator::DecodeBase64(text)) << text;
        strict += IsStrictBase64(text) ? 1 : 0;
    }
    EXPECT_GT(strict, kEncodedTexts / 8);
    EXPECT_LT(strict, kEncodedTexts - kEncodedTexts / 8);
}

}  // namespace
