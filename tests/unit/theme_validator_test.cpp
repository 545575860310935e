#include "themes/validator.h"

#include "unit/test_support.h"
#include "unit/theme_files.h"

#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

std::string Png(uint32_t width, uint32_t height, size_t size = 40) {
    std::string bytes = PngHeader(width, height);
    bytes.resize(size, '\x42');
    return bytes;
}

std::string Font(size_t size, const std::string& magic = "OTTO") {
    std::string bytes = magic;
    bytes.resize(size, '\x42');
    return bytes;
}

using Values = std::map<std::string, std::string>;  // key to raw value

const Values kColours = {
    {"name", "\"Dusk\""},       {"bgMain", "\"#000\""},
    {"bgPanel", "\"#111\""},    {"bgHeader", "\"#222\""},
    {"accent", "\"#aabbcc\""},  {"accentHover", "\"#333\""},
    {"text", "\"rgb(1,2,3)\""}, {"font", "\"'Consolas', 'Courier New', monospace\""},
};

std::string Object(const Values& values) {
    std::string text;
    for (const auto& [key, value] : values) {
        text.append(text.empty() ? "" : ",").append("\"").append(key).append("\":").append(value);
    }
    return "{" + text + "}";
}

std::string With(const std::string& key, const std::string& value) {
    Values values = kColours;
    values[key] = value;
    return Object(values);
}

std::string Without(const std::string& key) {
    Values values = kColours;
    values.erase(key);
    return Object(values);
}

std::string WithSkin(const std::string& skin, const std::string& format = "2") {
    Values values = kColours;
    values["format"] = format;
    values["skin"] = skin;
    return Object(values);
}

std::string WithPieces(const std::string& pieces) {
    return WithSkin(R"({"template":1,"pieces":)" + pieces + "}");
}

std::string WithPiece(const std::string& name, const std::string& bytes) {
    return WithPieces("{\"" + name + "\":\"" + EncodeBase64(bytes) + "\"}");
}

std::string WithFont(const std::string& bytes) {
    return WithSkin(R"({"template":1,"font":")" + EncodeBase64(bytes) + "\"}");
}

// Returns "colours", "skin <count>" with " +font" if it has one, or the error message.
std::string Verdict(const std::string& text) {
    ThemeRecord record;
    ThemeReport report;
    const bool accepted = ValidateThemeText(text, &record, &report);
    EXPECT_EQ(report.accepted, accepted);
    EXPECT_EQ(report.message.empty(), accepted);
    EXPECT_EQ(record.path, "");
    ThemeRecord unreported;
    EXPECT_EQ(ValidateThemeText(text, &unreported, nullptr), accepted);
    if (!accepted) {
        return report.message;
    }
    EXPECT_EQ(unreported.hasSkin, record.hasSkin);
    EXPECT_EQ(record.hasSkin, report.pieceCount > 0 || report.hasFont);
    return record.hasSkin ? "skin " + std::to_string(report.pieceCount) + (report.hasFont ? " +font" : "")
                          : "colours";
}

TEST(ThemeColour, AcceptsThreeForms) {
    for (const char* good : {"#ABC", "#abc", "#aabbcc", "#A0b1C2", "rgb(1,2,3)", "rgb(1,2,3,)",
                             "rgb( 1 , 2 , 3 )", "rgb(000,255,9)", "rgb(1,2,3 ,)"}) {
        EXPECT_TRUE(IsThemeColour(good)) << good;
    }
    for (const char* bad : {"",
                            "#",
                            "#abcd",
                            "#ab",
                            "#aabbc",
                            "#aabbccd",
                            "#ggg",
                            "abc",
                            "red",
                            "rgb(256,0,0)",
                            "rgb(1,2)",
                            "rgb(1,2,3,4)",
                            "rgb(0001,2,3)",
                            "rgb(1,,3)",
                            "rgb()",
                            "rgb(",
                            "rgb)",
                            "rgb(,)",
                            "rgb(1,2,3",
                            "rgb(1,2,3,,)",
                            "rgb(1,2,3, )",
                            "rgb(1,2,\t3)",
                            "rgb(1,2,-3)",
                            "rgb(1,2,+3)",
                            "rgb(1%,2,3)",
                            "RGB(1,2,3)",
                            " rgb(1,2,3)",
                            "rgb(1,2,3) ",
                            "rgb (1,2,3)",
                            "rgba(1,2,3,4)",
                            "rgb(1 1,2,3)"}) {
        EXPECT_FALSE(IsThemeColour(bad)) << bad;
    }
}

TEST(ThemeText, FillsTheRecordWithTheValuesOfTheFile) {
    ThemeRecord record;
    record.hasSkin = true;
    record.path = "before";
    ThemeReport report;
    report.pieceCount = 77;
    report.hasFont = true;
    ASSERT_TRUE(ValidateThemeText(Object(kColours), &record, &report));
    EXPECT_EQ(record.name, "Dusk");
    EXPECT_EQ(record.bgMain, "#000");
    EXPECT_EQ(record.bgPanel, "#111");
    EXPECT_EQ(record.bgHeader, "#222");
    EXPECT_EQ(record.accent, "#aabbcc");
    EXPECT_EQ(record.accentHover, "#333");
    EXPECT_EQ(record.text, "rgb(1,2,3)");
    EXPECT_EQ(record.font, "'Consolas', 'Courier New', monospace");
    EXPECT_FALSE(record.hasSkin);
    EXPECT_EQ(record.path, "");
    EXPECT_EQ(report.pieceCount, 77) << "unchanged without a skin";
    EXPECT_TRUE(report.hasFont);
}

TEST(ThemeText, RejectsAMissingOrInvalidName) {
    EXPECT_EQ(Verdict(With("name", "\"" + std::string(40, 'n') + "\"")), "colours");
    EXPECT_EQ(Verdict(With("name", "\"\xC3\x89t\xC3\xA9\"")), "colours");
    EXPECT_EQ(Verdict(With("name", "\"accent\"")), "colours") << "a value is not a key";
    for (const std::string& bad :
         {"\"" + std::string(41, 'n') + "\"", std::string("\"\""), std::string("\"a\\tb\""),
          std::string("\"a\tb\""), std::string("\"a\x7F\""), std::string("\"\\u0041\"")}) {
        EXPECT_EQ(Verdict(With("name", bad)), "invalid or missing name") << bad;
    }
    EXPECT_EQ(Verdict(Without("name")), "invalid or missing name");
    EXPECT_EQ(Verdict("x"), "invalid or missing name");
}

TEST(ThemeText, RejectsAMissingOrInvalidColour) {
    for (const char* key : {"bgMain", "bgPanel", "bgHeader", "accent", "accentHover", "text"}) {
        EXPECT_EQ(Verdict(Without(key)), std::string("invalid or missing ") + key);
        EXPECT_EQ(Verdict(With(key, "\"#abcd\"")), std::string("invalid or missing ") + key);
    }
    EXPECT_EQ(Verdict(With("accent", "\"#ABC\"")), "colours");
    EXPECT_EQ(Verdict(With("accent", "\"#ggg\"")), "invalid or missing accent");
    EXPECT_EQ(Verdict(With("accent", "\"rgb(256,0,0)\"")), "invalid or missing accent");
}

TEST(ThemeText, ReportsTheFirstErrorInOrder) {
    EXPECT_EQ(Verdict(""), "file is empty");
    EXPECT_EQ(Verdict("{}"), "invalid or missing name");
    EXPECT_EQ(Verdict(R"({"name":"n"})"), "invalid or missing bgMain");
    EXPECT_EQ(Verdict(R"({"name":"n","text":"#000","bgMain":"#000"})"), "invalid or missing bgPanel");
    std::string text = WithFont("x");
    text.insert(1, R"("font":"Arial",)");
    EXPECT_EQ(Verdict(text), "invalid or missing font stack");
    EXPECT_EQ(Verdict(WithSkin(R"({"template":1,"font":"!","pieces":[]})")), "skin.pieces is not an object");
}

TEST(ThemeText, AcceptsOnlyTwoFontStacks) {
    EXPECT_EQ(Verdict(With("font", "\"'Segoe UI', Tahoma, Geneva, Verdana, sans-serif\"")), "colours");
    EXPECT_EQ(Verdict(With("font", "\"'Consolas','Courier New',monospace\"")),
              "invalid or missing font stack");
    EXPECT_EQ(Verdict(Without("font")), "invalid or missing font stack");
}

TEST(ThemeText, ReadsTheFirstOfTwoEqualKeys) {
    std::string text = Object(kColours);
    EXPECT_EQ(Verdict("{\"accent\":\"red\"," + text.substr(1)), "invalid or missing accent");
    text.pop_back();
    EXPECT_EQ(Verdict(text + ",\"accent\":\"red\"}"), "colours");
}

TEST(ThemeText, ReadsASkinOnlyWithFormatAndTemplate) {
    const std::string broken = R"({"template":1,"pieces":[],"font":"!"})";
    EXPECT_EQ(Verdict(WithSkin(broken)), "skin.pieces is not an object");
    EXPECT_EQ(Verdict(WithSkin(broken, "\"2\"")), "skin.pieces is not an object");
    for (const char* format : {"1", "2.0", "\"\"", "\" 2\"", "null", "[2]"}) {
        EXPECT_EQ(Verdict(WithSkin(broken, format)), "colours") << format;
    }
    EXPECT_EQ(Verdict(With("skin", broken)), "colours");
    EXPECT_EQ(Verdict(WithSkin(R"({"template":"1","pieces":[]})")), "skin.pieces is not an object");
    EXPECT_EQ(Verdict(WithSkin(R"({"template":2,"pieces":[]})")), "colours");
    EXPECT_EQ(Verdict(WithSkin(R"({"pieces":[],"font":"!"})")), "colours");
    EXPECT_EQ(Verdict(WithSkin("\"\"")), "colours");
    EXPECT_EQ(Verdict(WithSkin("null")), "colours");
    EXPECT_EQ(Verdict(With("format", "2")), "colours");
}

TEST(ThemeText, ReadsAFormattedFileTheSame) {
    const std::string text = Object(kColours);
    EXPECT_EQ(Verdict(text.substr(0, text.size() - 1) +
                      ",\r\n\t\"format\": 2\r\n,\"skin\": {\n\"template\": 1\n,\"pieces\": []\n}\n}\n"),
              "skin.pieces is not an object");
}

TEST(ThemeText, RejectsPiecesThatAreNotAnObject) {
    EXPECT_EQ(Verdict(WithPieces("{}")), "colours");
    EXPECT_EQ(Verdict(WithPieces("\"\"")), "colours");
    EXPECT_EQ(Verdict(WithPieces("[]")), "skin.pieces is not an object");
    EXPECT_EQ(Verdict(WithPieces("null")), "skin.pieces is not an object");
    EXPECT_EQ(Verdict(WithPieces("\"x\"")), "skin.pieces is not an object");
}

TEST(ThemeText, AcceptsTwentyFourPiecesOfTheirSizes) {
    const std::vector<std::pair<std::string, std::pair<uint32_t, uint32_t>>> rows = {
        {"window", {1024, 768}},
        {"panel", {256, 256}},
        {"panel-header", {256, 78}},
        {"modal", {256, 256}},
        {"modal-header", {256, 78}},
        {"button", {192, 64}},
        {"button-accent", {192, 64}},
        {"button-danger", {192, 64}},
        {"button-small", {48, 48}},
        {"field", {128, 64}},
        {"switch", {68, 40}},
        {"switch-knob", {28, 28}},
        {"radio", {52, 52}},
        {"scroll-track", {16, 256}},
        {"scroll-thumb", {16, 128}},
        {"button.on", {192, 64}},
        {"button-accent.on", {192, 64}},
        {"button-danger.on", {192, 64}},
        {"button-small.on", {48, 48}},
        {"field.on", {128, 64}},
        {"switch.on", {68, 40}},
        {"switch-knob.on", {28, 28}},
        {"radio.on", {52, 52}},
        {"scroll-thumb.on", {16, 128}},
    };
    Values all;
    for (const auto& [name, size] : rows) {
        const auto [width, height] = size;
        EXPECT_EQ(Verdict(WithPiece(name, Png(width, height))), "skin 1") << name;
        const std::string wrong = "invalid or wrong-size PNG for piece: " + name;
        EXPECT_EQ(Verdict(WithPiece(name, Png(width, height - 1))), wrong);
        EXPECT_EQ(Verdict(WithPiece(name, Png(width + 1, height))), wrong);
        all[name] = "\"" + EncodeBase64(Png(width, height)) + "\"";
    }
    EXPECT_EQ(Verdict(WithPieces(Object(all))), "skin 24");
    for (const char* name : {"Window", "", "window.on", "scroll-track.on", "window "}) {
        EXPECT_EQ(Verdict(WithPiece(name, Png(1024, 768))), std::string("unknown skin piece name: ") + name);
    }
}

TEST(ThemeText, ChecksThePngHeader) {
    const std::string wrong = "invalid or wrong-size PNG for piece: panel";
    const std::string good = Png(256, 256, 24);
    EXPECT_EQ(Verdict(WithPiece("panel", good)), "skin 1");
    EXPECT_EQ(Verdict(WithPiece("panel", good.substr(0, 23))), wrong);
    EXPECT_EQ(Verdict(WithPiece("panel", "\xFF\xD8\xFF\xE0" + std::string(40, 'x'))), wrong);
    for (size_t i = 0; i < good.size(); ++i) {
        std::string changed = good;
        changed[i] = static_cast<char>(changed[i] ^ 0x20);
        EXPECT_EQ(Verdict(WithPiece("panel", changed)), wrong) << i;
    }
}

TEST(ThemeText, RejectsAPieceThatIsNotStrictBase64) {
    const std::string wrong = "invalid base64 for piece: panel";
    const std::string good = EncodeBase64(Png(256, 256, 42));
    const auto verdict = [](const std::string& value) {
        return Verdict(WithPieces("{\"panel\":" + value + "}"));
    };
    EXPECT_EQ(verdict("\"" + good + "\""), "skin 1");
    for (const std::string& bad :
         {good + "A", good.substr(0, 20) + "\\n" + good.substr(20), std::string("A==="), std::string("AA=A"),
          std::string(), good + "\\u0041\\u0041"}) {
        EXPECT_EQ(verdict("\"" + bad + "\""), wrong) << bad;
    }
    // An unescaped line break ends the scan: no key after it is found.
    EXPECT_EQ(verdict("\"" + good.substr(0, 20) + "\n" + good.substr(20) + "\""), "invalid or missing text");
    EXPECT_EQ(verdict("{}"), wrong);
    EXPECT_EQ(verdict("true"), "invalid or wrong-size PNG for piece: panel") << "four digits of base64";
}

TEST(ThemeText, ReadsEscapedSlashes) {
    std::string bytes = Png(256, 256, 24) + "\xFF\xFF\xFF";
    const std::string text = WithPiece("panel", bytes);
    std::string escaped;
    for (const char c : text) {
        escaped += c == '/' ? std::string("\\/") : std::string(1, c);
    }
    ASSERT_NE(escaped, text);
    EXPECT_EQ(Verdict(escaped), "skin 1");
}

TEST(ThemeText, RejectsAPieceAboveTheCap) {
    EXPECT_EQ(Verdict(WithPiece("panel", Png(256, 256, 1048576))), "skin 1");
    EXPECT_EQ(Verdict(WithPiece("panel", Png(256, 256, 1048577))),
              "piece exceeds the 1 MB decoded cap: panel");
    EXPECT_EQ(Verdict(WithPiece("panel", std::string(1048577, 'x'))),
              "piece exceeds the 1 MB decoded cap: panel");
}

TEST(ThemeText, CountsARepeatedPieceTwiceWithItsFirstValue) {
    const std::string good = "\"panel\":\"" + EncodeBase64(Png(256, 256)) + "\"";
    EXPECT_EQ(Verdict(WithPieces("{" + good + ",\"panel\":\"!\"}")), "skin 2");
    EXPECT_EQ(Verdict(WithPieces("{\"panel\":\"!\"," + good + "}")), "invalid base64 for piece: panel");
}

TEST(ThemeText, LooksUpAListedKeyByItsRawBytes) {
    const std::string value = ":\"" + EncodeBase64(Png(192, 64)) + "\"";
    EXPECT_EQ(Verdict(WithPieces("{\"\\button\"" + value + "}")), "invalid base64 for piece: button");
    EXPECT_EQ(Verdict(WithPieces("{\"button\"" + value + ",\"\\button\":1}")), "skin 2");
}

TEST(ThemeText, OnlyListedKeysArePieces) {
    const std::string value = ":\"" + EncodeBase64(Png(192, 64)) + "\"";
    EXPECT_EQ(Verdict(WithPieces("{\"button\"" + value + " \"nonsense\":1}")), "skin 1");
    EXPECT_EQ(Verdict(WithPieces("{:\"button\"" + value + "}")), "colours");
}

TEST(ThemeText, AcceptsASkinAsAString) {
    EXPECT_EQ(Verdict(WithSkin(R"("{\"template\":1,\"pieces\":[]}")")), "skin.pieces is not an object");
    EXPECT_EQ(Verdict(WithSkin(R"("{\"template\":1,\"pieces\":\"{\\\"Panel\\\":1}\"}")")),
              "unknown skin piece name: Panel");
}

TEST(ThemeText, AcceptsOnlyTrueTypeAndOpenTypeFontsWithinTheLimits) {
    EXPECT_EQ(Verdict(WithFont(Font(1024))), "skin 0 +font");
    EXPECT_EQ(Verdict(WithFont(Font(1024, std::string("\0\1\0\0", 4)))), "skin 0 +font");
    EXPECT_EQ(Verdict(WithFont(Font(2097152))), "skin 0 +font");
    EXPECT_EQ(Verdict(WithFont(Font(2097153))), "font exceeds the 2 MB decoded cap");
    EXPECT_EQ(Verdict(WithFont(Font(2097153, "wOFF"))), "font exceeds the 2 MB decoded cap");
    EXPECT_EQ(Verdict(WithFont(Font(1023))), "invalid font magic bytes");
    for (const char* magic : {"wOFF", "wOF2", "true", "ttcf", "otto"}) {
        EXPECT_EQ(Verdict(WithFont(Font(2000, magic))), "invalid font magic bytes") << magic;
    }
    EXPECT_EQ(Verdict(WithSkin(R"({"template":1,"font":"A==="})")), "invalid base64 for skin.font");
    EXPECT_EQ(Verdict(WithSkin(R"({"template":1,"font":{}})")), "invalid base64 for skin.font");
    EXPECT_EQ(Verdict(WithSkin(R"({"template":1,"font":""})")), "colours");
}

TEST(ThemeText, AcceptsPiecesAndFontTogether) {
    EXPECT_EQ(Verdict(WithSkin("{\"template\":1,\"font\":\"" + EncodeBase64(Font(1500)) +
                               "\",\"pieces\":{\"radio\":\"" + EncodeBase64(Png(52, 52)) + "\"}}")),
              "skin 1 +font");
}

// Each of these takes hours if every name or level costs a pass of its own.
TEST(ThemeText, ValidatesAHostileFileInLinearTime) {
    const std::string panel = "\"panel\":\"" + EncodeBase64(Png(256, 256, 1048576)) + "\"";
    std::string many = panel;
    constexpr int kRepeats = 900000;
    for (int i = 0; i < kRepeats; ++i) {
        many += ",\"panel\":0";
    }
    EXPECT_EQ(Verdict(WithPieces("{" + many + "}")), "skin " + std::to_string(kRepeats + 1));
    EXPECT_EQ(Verdict(With("x", std::string(12000000, '['))), "colours") << "the keys before it are found";
    EXPECT_EQ(Verdict(With("accent", "\"rgb(" + std::string(12000000, ',') + ")\"")),
              "invalid or missing accent");
}

TEST(ThemeFile, SetsThePathAndTheTextOnAcceptance) {
    const std::string path = FixturePath("themes/colours.vrltheme");
    ThemeRecord record;
    ThemeReport report;
    std::string text = "before";
    ASSERT_TRUE(ValidateThemeFile(path, &record, &report, &text)) << report.message;
    EXPECT_EQ(record.path, path);
    EXPECT_EQ(text, ReadFile(path));
    EXPECT_EQ(record.name, "\xC3\x89vening");
    EXPECT_TRUE(ValidateThemeFile(path, &record, nullptr, nullptr));
}

TEST(ThemeFile, SetsNothingOnRejection) {
    TempFolder folder;
    const std::string path = folder.File("bad.vrltheme");
    WriteFile(path, Without("text"));
    ThemeRecord record;
    ThemeReport report;
    std::string text = "before";
    EXPECT_FALSE(ValidateThemeFile(path, &record, &report, &text));
    EXPECT_EQ(report.message, "invalid or missing text");
    EXPECT_EQ(text, "before");
    EXPECT_EQ(record.path, "");
    EXPECT_FALSE(ValidateThemeFile(folder.File("none.vrltheme"), &record, &report, &text));
    EXPECT_EQ(report.message, "could not open file");
    EXPECT_FALSE(ValidateThemeFile(folder.File("none.vrltheme"), &record, nullptr, nullptr));
    EXPECT_FALSE(ValidateThemeFile(folder.Path(), &record, &report, &text));
    EXPECT_EQ(report.message, "could not open file") << "a folder, even if it opens like a file";
}

// A kernel file reports the size of a page and holds less, so that reading it ends early. Wine shows these files too.
TEST(ThemeFile, RejectsAFileThatEndsEarly) {
    const std::string path = "/sys/devices/system/cpu/online";
    if (ReadFile(path).empty()) {
        GTEST_SKIP() << "needs a file that holds less than its size: " << path << " is missing";
    }
    ThemeRecord record;
    ThemeReport report;
    std::string text = "before";
    EXPECT_FALSE(ValidateThemeFile(path, &record, &report, &text));
    EXPECT_EQ(report.message, "could not read file");
    EXPECT_EQ(text, "before");
    EXPECT_EQ(record.path, "");
}

// No machine has the memory for such a file.
TEST(ThemeFile, RejectsAFileAboveTheCapWithoutReadingIt) {
    TempFolder folder;
    const std::string path = folder.File("huge.vrltheme");
    WriteFile(path, Object(kColours));
    std::ofstream end(path, std::ios::binary | std::ios::in | std::ios::out);
    end.seekp(std::streamoff{1} << 42).put(' ');
    end.close();
    if (!end.good()) {
        GTEST_SKIP() << "this file system has no sparse file of four terabytes";
    }
    ThemeRecord record;
    ThemeReport report;
    std::string text = "before";
    EXPECT_FALSE(ValidateThemeFile(path, &record, &report, &text));
    EXPECT_EQ(report.message, "file exceeds the 12 MB cap");
    EXPECT_EQ(text, "before");
}

TEST(ThemeFile, RejectsAFileAboveTheCap) {
    TempFolder folder;
    const std::string path = folder.File("size.vrltheme");
    const auto verdict = [&](const std::string& text) {
        WriteFile(path, text);
        ThemeRecord record;
        ThemeReport report;
        ValidateThemeFile(path, &record, &report, nullptr);
        return report.accepted ? "accepted" : report.message;
    };
    std::string text = Object(kColours);
    EXPECT_EQ(verdict(""), "file is empty");
    text.resize(12582912, ' ');
    EXPECT_EQ(verdict(text), "accepted");
    text += ' ';
    EXPECT_EQ(verdict(text), "file exceeds the 12 MB cap");
    EXPECT_EQ(Verdict(text), "file exceeds the 12 MB cap");
}

}  // namespace
