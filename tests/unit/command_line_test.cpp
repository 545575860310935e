#include "platform/shared/command_line.h"

#include <gtest/gtest.h>

TEST(CommandLine, AnUnquotedNameEndsAtWhiteSpace) {
    EXPECT_STREQ(SkipProgramName("a.exe --timeline"), "--timeline");
    EXPECT_STREQ(SkipProgramName("C:\\x\\a.exe\t \t--child \"A|b\" "), "--child \"A|b\" ");
    EXPECT_STREQ(SkipProgramName("a.exe\x01--x"), "--x");
    EXPECT_STREQ(SkipProgramName("a.exe\r\n--x"), "--x");
}

TEST(CommandLine, ANameWithoutArgumentsLeavesNothing) {
    EXPECT_STREQ(SkipProgramName(""), "");
    EXPECT_STREQ(SkipProgramName("a.exe"), "");
    EXPECT_STREQ(SkipProgramName("a.exe \t "), "");
    EXPECT_STREQ(SkipProgramName("\"C:\\two words\\a.exe\""), "");
}

TEST(CommandLine, QuotesKeepSpacesInTheName) {
    EXPECT_STREQ(SkipProgramName(R"("C:\two words\a.exe" --timeline)"), "--timeline");
    EXPECT_STREQ(SkipProgramName(R"(C:\"two words"\a.exe --timeline)"), "--timeline");
    EXPECT_STREQ(SkipProgramName(R"("C:\two words"a.exe" --still the name" x)"), "x");
    EXPECT_STREQ(SkipProgramName(R"("never closed --timeline)"), "");
    EXPECT_STREQ(SkipProgramName(R"("" x)"), "x");
}

TEST(CommandLine, ABackslashDoesNotEscapeAQuoteInTheName) {
    EXPECT_STREQ(SkipProgramName(R"("C:\folder\" --timeline)"), "--timeline");
    EXPECT_STREQ(SkipProgramName(R"(C:\folder\"a b.exe" --timeline)"), "--timeline");
}

TEST(CommandLine, TheRestIsUnchanged) {
    EXPECT_STREQ(SkipProgramName(R"(a.exe "C:\my files\a.vrlmacro"  )"), R"("C:\my files\a.vrlmacro"  )");
    EXPECT_STREQ(SkipProgramName(R"(a.exe x\"y \\"z" ")"), R"(x\"y \\"z" ")");
}

TEST(CommandLine, BytesAbove127BelongToTheName) {
    EXPECT_STREQ(SkipProgramName("C:\\J\xFCrgen\\Varnelle.exe --timeline"), "--timeline");            // 1252
    EXPECT_STREQ(SkipProgramName("C:\\\xC8\xE2\xE0\xED\\a.exe --timeline"), "--timeline");            // 1251
    EXPECT_STREQ(SkipProgramName("C:\\\x83\x5C\x83\x74\x83\x67\\a.exe --x\x83\x5C"), "--x\x83\x5C");  // 932
    EXPECT_STREQ(SkipProgramName("\x80\xA0\xFF x"), "x");
    EXPECT_STREQ(SkipProgramName("a.exe \xA0x"), "\xA0x");  // a space that does not break is no white space
}
