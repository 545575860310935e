// Device counts from raw reports. Run by tests/linux/run.sh.
#include "platform/linux/raw_motion.h"

#include <gtest/gtest.h>

namespace {

TEST(RawCounts, OfAnOrdinaryMouse) {
    RawMotion motion;
    std::vector<RawCounts> counts;
    // The pointer moves further than the counts, since it is accelerated.
    TakeRawReport(motion, {5, -3, true, true, 1}, 400, 300, counts);
    EXPECT_TRUE(counts.empty());
    ClassifyRawMotion(motion, 410, 294, counts);
    ASSERT_EQ(counts.size(), 1U);
    EXPECT_EQ(motion.kind, RawKind::Counts);
    EXPECT_EQ(counts[0].dx, 5);
    EXPECT_EQ(counts[0].dy, -3);
    EXPECT_EQ(counts[0].counter, 1);
    // Fractions of a count add up.
    counts.clear();
    for (int report = 0; report < 10; ++report) {
        TakeRawReport(motion, {0.4, -0.25, true, true, 2}, 410, 294, counts);
    }
    int sumX = 0;
    int sumY = 0;
    for (const RawCounts& each : counts) {
        sumX += each.dx;
        sumY += each.dy;
        EXPECT_TRUE(each.dx != 0 || each.dy != 0);
    }
    EXPECT_NEAR(sumX, 4, 1);
    EXPECT_EQ(sumY, -2);
    // An axis that is not in the report did not move.
    counts.clear();
    TakeRawReport(motion, {7, 99, true, false, 3}, 410, 294, counts);
    ASSERT_EQ(counts.size(), 1U);
    EXPECT_EQ(counts[0].dy, 0);
}

TEST(RawCounts, OfADeviceThatDeclaresPositionsAsRelative) {
    RawMotion motion;
    std::vector<RawCounts> counts;
    TakeRawReport(motion, {803, 501, true, true, 1}, 800, 500, counts);
    TakeRawReport(motion, {805, 499, true, true, 2}, 800, 500, counts);
    ClassifyRawMotion(motion, 805, 499, counts);
    EXPECT_EQ(motion.kind, RawKind::HiddenPositions);
    ASSERT_EQ(counts.size(), 2U);
    EXPECT_EQ(counts[0].dx, 3);
    EXPECT_EQ(counts[0].dy, 1);
    EXPECT_EQ(counts[1].dx, 2);
    EXPECT_EQ(counts[1].dy, -2);
    counts.clear();
    TakeRawReport(motion, {0, 480, false, true, 3}, 805, 499, counts);
    ASSERT_EQ(counts.size(), 1U);
    EXPECT_EQ(counts[0].dx, 0);
    EXPECT_EQ(counts[0].dy, -19);
}

// Near the corner a position looks like a count: nothing is reported until a report decides.
TEST(RawCounts, NearTheCornerWait) {
    RawMotion motion;
    std::vector<RawCounts> counts;
    TakeRawReport(motion, {4, 3, true, true, 1}, 0, 0, counts);
    ClassifyRawMotion(motion, 4, 3, counts);
    EXPECT_EQ(motion.kind, RawKind::Unknown);
    TakeRawReport(motion, {40, 30, true, true, 2}, 4, 3, counts);
    ClassifyRawMotion(motion, 40, 30, counts);
    EXPECT_EQ(motion.kind, RawKind::HiddenPositions);
    ASSERT_EQ(counts.size(), 2U);
    EXPECT_EQ(counts[0].dx + counts[1].dx, 40);
    EXPECT_EQ(counts[0].dy + counts[1].dy, 30);

    RawMotion mouse;
    counts.clear();
    TakeRawReport(mouse, {4, 3, true, true, 1}, 0, 0, counts);
    ClassifyRawMotion(mouse, 4, 3, counts);
    TakeRawReport(mouse, {40, 30, true, true, 2}, 4, 3, counts);
    ClassifyRawMotion(mouse, 44, 33, counts);
    EXPECT_EQ(mouse.kind, RawKind::Counts);
    ASSERT_EQ(counts.size(), 2U);
    EXPECT_EQ(counts[1].dx, 40);
}

TEST(RawCounts, OfAnAbsoluteDeviceAreNone) {
    RawMotion motion;
    motion.kind = RawKind::Positions;
    std::vector<RawCounts> counts;
    TakeRawReport(motion, {803, 501, true, true, 1}, 800, 500, counts);
    ClassifyRawMotion(motion, 803, 501, counts);
    EXPECT_TRUE(counts.empty());
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
