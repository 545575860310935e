#include "base/text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace std::string_literals;
using Parts = std::vector<std::string_view>;

TEST(SplitParts, ATrailingSeparatorAddsNoPart) {
    EXPECT_EQ(SplitParts("", ','), Parts());
    EXPECT_EQ(SplitParts("a", ','), (Parts{"a"}));
    EXPECT_EQ(SplitParts("a,", ','), (Parts{"a"}));
    EXPECT_EQ(SplitParts(",", ','), (Parts{""}));
    EXPECT_EQ(SplitParts(",,", ','), (Parts{"", ""}));
    EXPECT_EQ(SplitParts("a,,b", ','), (Parts{"a", "", "b"}));
    EXPECT_EQ(SplitParts(",a", ','), (Parts{"", "a"}));
    EXPECT_EQ(SplitParts("1|2,3", '|'), (Parts{"1", "2,3"}));
}

TEST(TextLines, EndAtLineFeedWithoutOneCarriageReturn) {
    const auto lines = [](std::string_view text) {
        Parts all;
        std::string_view line;
        for (TextLines iterator(text); iterator.Next(&line);) {
            all.push_back(line);
        }
        return all;
    };
    EXPECT_EQ(lines(""), Parts());
    EXPECT_EQ(lines("a"), (Parts{"a"}));
    EXPECT_EQ(lines("a\n"), (Parts{"a"}));
    EXPECT_EQ(lines("a\r\nb\nc\r"), (Parts{"a", "b", "c"}));
    EXPECT_EQ(lines("a\r\r\n\r\n\n"), (Parts{"a\r", "", ""}));
    EXPECT_EQ(lines("a\rb\n"), (Parts{"a\rb"}));
    EXPECT_EQ(lines("\n"), (Parts{""}));
}

TEST(Text, TrimsAndCompares) {
    EXPECT_EQ(TrimSpaces(" \t a b\t "), "a b");
    EXPECT_EQ(TrimSpaces(" \t"), "");
    EXPECT_EQ(TrimSpaces("\na"), "\na");
    EXPECT_TRUE(StartsWith("PROFILE:x", "PROFILE:"));
    EXPECT_FALSE(StartsWith("PROFIL", "PROFILE:"));
    EXPECT_TRUE(StartsWith("x", ""));
    EXPECT_TRUE(EndsWithNoCase("a.VrlMacro", ".vrlmacro"));
    EXPECT_FALSE(EndsWithNoCase("vrlmacro", ".vrlmacro"));
    EXPECT_FALSE(EndsWithNoCase("a.vrl[acro", ".vrl{acro")) << "only letters have a case";
    EXPECT_EQ(HexDigit('0'), 0);
    EXPECT_EQ(HexDigit('9'), 9);
    EXPECT_EQ(HexDigit('a'), 10);
    EXPECT_EQ(HexDigit('F'), 15);
    for (const char other : {'/', ':', '@', 'G', '`', 'g', '\0', '\xF0'}) {
        EXPECT_EQ(HexDigit(other), -1) << other;
    }
}

}  // namespace
