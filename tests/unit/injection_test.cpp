#include "engines/injection.h"

#include "platform/key_table.h"

#include <gtest/gtest.h>

#include <cstdint>

TEST(InjectionTest, AbsoluteMovesAreScaledToThePrimaryScreen) {
    EXPECT_EQ(AbsoluteMoveAction(0, 0, 1920, 1080), (InputAction{.kind = InputKind::MoveTo}));
    EXPECT_EQ(AbsoluteMoveAction(1919, 1079, 1920, 1080),
              (InputAction{.kind = InputKind::MoveTo, .x = 65501, .y = 65475}));
    EXPECT_EQ(AbsoluteMoveAction(960, 540, 1920, 1080),
              (InputAction{.kind = InputKind::MoveTo, .x = 32768, .y = 32768}));
}

TEST(InjectionTest, PointsOfOtherMonitorsAreNotClamped) {
    const InputAction left = AbsoluteMoveAction(-1, -1080, 1920, 1080);
    EXPECT_EQ(left.x, -34);  // -65536 / 1920 is -34.13: the division truncates towards zero
    EXPECT_EQ(left.y, -65536);
    const InputAction right = AbsoluteMoveAction(1920, 1080, 1920, 1080);
    EXPECT_EQ(right.x, 65536);
    EXPECT_EQ(right.y, 65536);
}

TEST(InjectionTest, TheShiftWrapsIn32Bits) {
    EXPECT_EQ(AbsoluteMoveAction(32767, 0, 1000, 1000).x, 2147418);
    EXPECT_EQ(AbsoluteMoveAction(32768, 0, 1000, 1000).x, -2147483);
    EXPECT_EQ(AbsoluteMoveAction(65535, 65536, 1000, 1000).x, -65);
    EXPECT_EQ(AbsoluteMoveAction(65535, 65536, 1000, 1000).y, 0);
    EXPECT_EQ(AbsoluteMoveAction(65537, INT32_MIN, 1000, 1000).x, 65);
    EXPECT_EQ(AbsoluteMoveAction(65537, INT32_MIN, 1000, 1000).y, 0);
}

TEST(InjectionTest, StoredFlagsBecomeButtonActions) {
    const auto action = [](uint32_t button, bool down) {
        return InputAction{.kind = InputKind::Button, .down = down, .button = button};
    };
    EXPECT_EQ(MouseFlagsAction(2), action(kLeftButton, true));
    EXPECT_EQ(MouseFlagsAction(4), action(kLeftButton, false));
    EXPECT_EQ(MouseFlagsAction(8), action(kRightButton, true));
    EXPECT_EQ(MouseFlagsAction(16), action(kRightButton, false));
    EXPECT_EQ(MouseFlagsAction(32), action(kMiddleButton, true));
    EXPECT_EQ(MouseFlagsAction(64), action(kMiddleButton, false));
    EXPECT_EQ(MouseFlagsAction(128), action(kUnnamedSideButton, true));
}

TEST(InjectionTest, FlagsThatNameNoSingleButtonAreSentAsStored) {
    for (const uint32_t flags : {0U, 1U, 5U, 6U, 256U, 2048U, 32769U, 0xFFFFFFFFU}) {
        EXPECT_EQ(MouseFlagsAction(flags),
                  (InputAction{.kind = InputKind::ButtonFlags, .buttonFlags = flags}));
    }
}

TEST(InjectionTest, KeysAreSentByScanCode) {
    EXPECT_EQ(KeyAction(30, false, true),
              (InputAction{.kind = InputKind::Key, .down = true, .scanCode = 30}));
    EXPECT_EQ(KeyAction(83, true, false),
              (InputAction{.kind = InputKind::Key, .extended = true, .scanCode = 83}));
    EXPECT_EQ(KeyAction(0x12345, false, true).scanCode, 0x2345);
}

TEST(InjectionTest, TenKeysAreExtended) {
    for (uint32_t key = 0; key < 300; ++key) {
        const bool listed = (key >= 33 && key <= 40) || key == 45 || key == 46;
        EXPECT_EQ(IsExtendedKey(key), listed) << key;
    }
    EXPECT_FALSE(IsExtendedKey(163));  // right Ctrl
    EXPECT_FALSE(IsExtendedKey(165));  // right Alt
    EXPECT_FALSE(IsExtendedKey(91));   // left Windows key
    EXPECT_FALSE(IsExtendedKey(111));  // divide
}
