#include "model/button_flags.h"

#include "platform/key_table.h"

#include <gtest/gtest.h>

TEST(ButtonFlagsTest, EveryStoredValueConvertsBack) {
    for (const uint32_t flags : {2U, 4U, 8U, 16U, 32U, 64U, 128U}) {
        const auto action = ButtonActionOf(flags);
        ASSERT_TRUE(action) << flags;
        EXPECT_EQ(ButtonFlagsOf(*action), flags);
    }
}

TEST(ButtonFlagsTest, BothSideButtonsAreStoredAsOnePressWithoutRelease) {
    EXPECT_EQ(ButtonFlagsOf({kFirstSideButton, true}), 128U);
    EXPECT_EQ(ButtonFlagsOf({kSecondSideButton, true}), 128U);
    EXPECT_EQ(ButtonFlagsOf({kFirstSideButton, false}), 0U);
    EXPECT_EQ(ButtonFlagsOf({kSecondSideButton, false}), 0U);
    EXPECT_EQ(ButtonActionOf(128), (ButtonAction{kUnnamedSideButton, true}));
}

TEST(ButtonFlagsTest, OtherValuesNameNoButton) {
    for (const uint32_t flags : {0U, 1U, 3U, 6U, 256U, 0x80000000U, 0xFFFFFFFFU}) {
        EXPECT_FALSE(ButtonActionOf(flags)) << flags;
    }
}
