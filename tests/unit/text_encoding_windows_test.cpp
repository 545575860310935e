// What reaches the page of texts in the system's own code page.
#ifdef _WIN32
#include "platform/input.h"
#include "platform/win32/text_encoding.h"

#include "base/json_writer.h"
#include "platform/shared/page_host_state.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace {

constexpr unsigned kWestern = 1252;
constexpr unsigned kCyrillic = 1251;
constexpr unsigned kJapanese = 932;
const std::string kMark = "\xEF\xBF\xBD";

// The bytes of a text in a code page.
std::string InCodePage(const wchar_t* text, unsigned codePage) {
    char bytes[256];
    const int length = WideCharToMultiByte(codePage, 0, text, -1, bytes, sizeof bytes, nullptr, nullptr);
    return length > 0 ? bytes : "";
}

void ExpectRead(const wchar_t* text, unsigned codePage) {
    const std::string bytes = InCodePage(text, codePage);
    EXPECT_NE(bytes, Utf8OfWide(text));
    // Outside of JSON a backslash could be the second byte of a letter or stand for itself.
    if (bytes.find('\\') == std::string::npos) {
        EXPECT_EQ(Utf8OfMixedText(bytes, codePage), Utf8OfWide(text)) << codePage;
    }
    // As the page gets it: in JSON, where each backslash is doubled, beside a text in UTF-8.
    EXPECT_EQ(Utf8OfMixedText(JsonText(bytes) + JsonText("\xC3\xA9"), codePage),
              JsonText(Utf8OfWide(text)) + JsonText("\xC3\xA9"))
        << codePage;
}

}  // namespace

TEST(TextEncoding, ConvertsBetweenUtf16AndUtf8) {
    EXPECT_EQ(Utf8OfWide(L""), "");
    EXPECT_EQ(Utf8OfWide(L"a\u00E9\u20AC\U0001F600"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(Utf8OfWide(L"\xD83D"), kMark);  // half of a surrogate pair
    EXPECT_EQ(WideOfUtf8("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), L"a\u00E9\u20AC\U0001F600");
    EXPECT_EQ(WideOfUtf8(""), L"");
}

TEST(TextEncoding, ReadsWesternNames) {
    ExpectRead(L"J\u00FCrgen", kWestern);
    ExpectRead(L"\u00D6\u00E4\u00DF \u20AC\u2019", kWestern);
    ExpectRead(L"Umschalt (gr\u00FCn) Eing\u00E9", kWestern);
}

TEST(TextEncoding, ReadsCyrillicNames) {
    ExpectRead(L"\u041C\u0430\u043A\u0440\u043E\u0441 1", kCyrillic);
    ExpectRead(L"\u043C\u043E\u0451", kCyrillic);  // its last bytes alone would be UTF-8
    ExpectRead(L"\u041F\u0440\u043E\u0431\u0435\u043B", kCyrillic);
}

TEST(TextEncoding, ReadsJapaneseNames) {
    ExpectRead(L"\u65E5\u672C\u8A9E", kJapanese);
    ExpectRead(L"\u30AB\u30BF\u30AB\u30CA", kJapanese);
    // Their second byte is a backslash.
    ExpectRead(L"\u30BD\u30D5\u30C8", kJapanese);
    ExpectRead(L"C:\\\u8868\\\u80FD\u4E88\\x", kJapanese);
    ExpectRead(L"\u8868", kJapanese);
    ExpectRead(L"\uFF76\uFF85 \u7121\u5909\u63DB", kJapanese);  // narrow letters have one byte
}

TEST(TextEncoding, KeepsUtf8InEveryCodePage) {
    for (const unsigned codePage : {kWestern, kCyrillic, kJapanese, unsigned{CP_UTF8}}) {
        for (const char* text : {"", "plain \\ \"text\"", "caf\xC3\xA9", "\xE6\x97\xA5\xE6\x9C\xAC",
                                 "\xF0\x9F\x98\x80 x \xD0\x96"}) {
            EXPECT_EQ(Utf8OfMixedText(text, codePage), text) << codePage;
        }
        EXPECT_EQ(Utf8OfMixedText(std::string_view("a\0b", 3), codePage), std::string("a\0b", 3));
    }
}

TEST(TextEncoding, MarksWhatTheCodePageLacks) {
    EXPECT_EQ(Utf8OfMixedText("a\x83", kJapanese), "a" + kMark);
    EXPECT_EQ(Utf8OfMixedText("\"\x83\"", kJapanese), "\"" + kMark + "\"");
    EXPECT_EQ(Utf8OfMixedText("\x83\\n", kJapanese), kMark + "\\n");  // an escape of JSON stays one
    EXPECT_EQ(Utf8OfMixedText("\x83\\\"", kJapanese), kMark + "\\\"");
    EXPECT_EQ(Utf8OfMixedText("x\xC3\xA9\xFF", CP_UTF8), "x\xC3\xA9" + kMark);
}

TEST(TextEncoding, TheResultIsAlwaysUtf8) {
    // Every pair of bytes, alone and between ASCII characters.
    for (const unsigned codePage : {kWestern, kCyrillic, kJapanese}) {
        for (int pair = 0; pair < 0x10000; ++pair) {
            const char bytes[] = {'a', static_cast<char>(pair >> 8), static_cast<char>(pair & 0xFF), '"'};
            const std::string utf8 = Utf8OfMixedText({bytes, sizeof bytes}, codePage);
            ASSERT_EQ(WideOfUtf8(utf8).find(L'\0') == std::wstring::npos, bytes[1] != 0 && bytes[2] != 0);
            ASSERT_GT(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(),
                                          static_cast<int>(utf8.size()), nullptr, 0),
                      0)
                << codePage << " " << pair;
            ASSERT_EQ(utf8.back(), '"') << codePage << " " << pair;
        }
    }
}

TEST(TextEncoding, ThePageGetsTextsOfTheSystemsCodePage) {
    // The letter e with an acute accent exists in most code pages; one that lacks it has another letter for the byte.
    const std::string bytes = "Caf\xE9 \"";
    EXPECT_EQ(PageText(bytes), Utf8OfMixedText(bytes, GetACP()));
    EXPECT_NE(PageText("Caf\xE9 x").find("Caf"), std::string::npos);
    if (GetACP() == kWestern) {
        EXPECT_EQ(PageText(bytes), "Caf\xC3\xA9 \"");
    }
}

TEST(TextEncoding, KeyNamesAreTheSystemsInUtf8) {
    int named = 0;
    for (uint32_t scanCode = 1; scanCode < 0x80; ++scanCode) {
        for (const bool extended : {false, true}) {
            wchar_t name[128] = {};
            GetKeyNameTextW(static_cast<LONG>((scanCode << 16) | (extended ? 1U << 24 : 0U)), name, 128);
            EXPECT_EQ(SystemKeyName(scanCode, extended), Utf8OfWide(name));
            named += name[0] != L'\0' ? 1 : 0;
        }
    }
    EXPECT_GT(named, 60);
}
#endif
