#include "engines/injection.h"

#include <gtest/gtest.h>

#include <cstdint>

TEST(InjectionTest, AbsoluteMoveScalesToThePrimaryScreen) {
    const InputRecord origin = AbsoluteMoveRecord(0, 0, 1920, 1080);
    EXPECT_EQ(origin, (InputRecord{.type = kInputMouse, .dwFlags = 32769}));
    const InputRecord corner = AbsoluteMoveRecord(1919, 1079, 1920, 1080);
    EXPECT_EQ(corner, (InputRecord{.type = kInputMouse, .dx = 65501, .dy = 65475, .dwFlags = 32769}));
    const InputRecord centre = AbsoluteMoveRecord(960, 540, 1920, 1080);
    EXPECT_EQ(centre.dx, 32768);
    EXPECT_EQ(centre.dy, 32768);
}

TEST(InjectionTest, PointsOfOtherMonitorsAreSentUnchanged) {
    const InputRecord left = AbsoluteMoveRecord(-1, -1080, 1920, 1080);
    EXPECT_EQ(left.dx, -34);  // -65536 / 1920 is -34.13: the division truncates towards zero
    EXPECT_EQ(left.dy, -65536);
    const InputRecord right = AbsoluteMoveRecord(1920, 1080, 1920, 1080);
    EXPECT_EQ(right.dx, 65536);
    EXPECT_EQ(right.dy, 65536);
}

TEST(InjectionTest, TheShiftWrapsIn32Bits) {
    EXPECT_EQ(AbsoluteMoveRecord(32767, 0, 1000, 1000).dx, 2147418);
    EXPECT_EQ(AbsoluteMoveRecord(32768, 0, 1000, 1000).dx, -2147483);
    EXPECT_EQ(AbsoluteMoveRecord(65535, 65536, 1000, 1000).dx, -65);
    EXPECT_EQ(AbsoluteMoveRecord(65535, 65536, 1000, 1000).dy, 0);
    EXPECT_EQ(AbsoluteMoveRecord(65537, INT32_MIN, 1000, 1000).dx, 65);
    EXPECT_EQ(AbsoluteMoveRecord(65537, INT32_MIN, 1000, 1000).dy, 0);
}

TEST(InjectionTest, EveryOtherFieldIsZero) {
    EXPECT_EQ(RelativeMoveRecord(-7, 9), (InputRecord{.type = kInputMouse, .dx = -7, .dy = 9, .dwFlags = 1}));
    for (const uint32_t flags : {0U, 2U, 4U, 8U, 16U, 32U, 64U, 128U}) {
        EXPECT_EQ(MouseFlagsRecord(flags), (InputRecord{.type = kInputMouse, .dwFlags = flags}));
    }
    EXPECT_EQ(WheelRecord(120), (InputRecord{.type = kInputMouse, .mouseData = 120, .dwFlags = 2048}));
    EXPECT_EQ(WheelRecord(-120),
              (InputRecord{.type = kInputMouse, .mouseData = 0xFFFFFF88, .dwFlags = 2048}));
}

TEST(InjectionTest, KeysGoByScanCode) {
    EXPECT_EQ(KeyRecord(30, false, true), (InputRecord{.type = kInputKeyboard, .wScan = 30, .dwFlags = 8}));
    EXPECT_EQ(KeyRecord(30, false, false), (InputRecord{.type = kInputKeyboard, .wScan = 30, .dwFlags = 10}));
    EXPECT_EQ(KeyRecord(83, true, true), (InputRecord{.type = kInputKeyboard, .wScan = 83, .dwFlags = 9}));
    EXPECT_EQ(KeyRecord(83, true, false), (InputRecord{.type = kInputKeyboard, .wScan = 83, .dwFlags = 11}));
    EXPECT_EQ(KeyRecord(0, false, true), (InputRecord{.type = kInputKeyboard, .wScan = 0, .dwFlags = 8}));
    EXPECT_EQ(KeyRecord(0x12345, false, true).wScan, 0x2345);
}

TEST(InjectionTest, TheExtendedKeysAreATenKeyList) {
    for (uint32_t key = 0; key < 300; ++key) {
        const bool listed = (key >= 33 && key <= 40) || key == 45 || key == 46;
        EXPECT_EQ(IsExtendedKey(key), listed) << key;
    }
    EXPECT_FALSE(IsExtendedKey(163));  // right Ctrl
    EXPECT_FALSE(IsExtendedKey(165));  // right Alt
    EXPECT_FALSE(IsExtendedKey(91));   // left Windows key
    EXPECT_FALSE(IsExtendedKey(111));  // divide
}
