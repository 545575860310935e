#include "app/commands.h"

#include <gtest/gtest.h>

TEST(ArgText, RemovesBracketsAndQuotesAtEveryPosition) {
    EXPECT_EQ(ArgText("[]"), "");
    EXPECT_EQ(ArgText(""), "");
    EXPECT_EQ(ArgText("[5,3]"), "5,3");
    EXPECT_EQ(ArgText("[\"5,3\"]"), "5,3");
    EXPECT_EQ(ArgText("[\"5\",\"3\"]"), "5,3");
    EXPECT_EQ(ArgText("[[1],[\"a\"]]"), "1,a");
    EXPECT_EQ(ArgText("[\"a[b]c\"]"), "abc");
    EXPECT_EQ(ArgText("][\"\"]["), "");
}

TEST(ArgText, UnescapesNothing) {
    EXPECT_EQ(ArgText(R"(["a\"b"])"), R"(a\b)");
    EXPECT_EQ(ArgText(R"(["a\\b\n"])"), R"(a\\b\n)");
    EXPECT_EQ(ArgText("[true,null, {}]"), "true,null, {}");
    EXPECT_EQ(ArgText("[\"\xC3\xA4|b\"]"), "\xC3\xA4|b");
}

TEST(ArgText, KeepsTextAfterAZeroByte) {
    EXPECT_EQ(ArgText(std::string_view("[a\0b]", 5)), std::string("a\0b", 3));
}
