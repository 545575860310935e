#include "themes/base64.h"

#include <gtest/gtest.h>

TEST(Base64, EncodesWithPadding) {
    EXPECT_EQ(EncodeBase64(""), "");
    EXPECT_EQ(EncodeBase64("f"), "Zg==");
    EXPECT_EQ(EncodeBase64("fo"), "Zm8=");
    EXPECT_EQ(EncodeBase64("foo"), "Zm9v");
    EXPECT_EQ(EncodeBase64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(EncodeBase64("\xFB\xFF\xBF"), "+/+/");
}

TEST(Base64, DecodesWhatItEncodes) {
    std::string bytes;
    for (int value = 0; value < 256; ++value) {
        bytes += static_cast<char>(value);
        const std::string text = EncodeBase64(bytes);
        EXPECT_TRUE(IsStrictBase64(text));
        EXPECT_EQ(DecodeBase64(text), bytes);
    }
}
