#include "engines/recorder.h"
#include "test_support.h"

#include <cmath>
#include <limits>
#include <random>

namespace {

constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kMinGap = 0.1;
constexpr double kClickGap = 0.55;

UnifiedEvent Key(double time) {
    return {.type = EvKey, .time = time, .virtualKey = 65, .down = true};
}

UnifiedEvent Button(double time, uint32_t flags) {
    return {.type = EvMouseButton, .time = time, .flags = flags};
}

std::vector<double> Times(const std::vector<UnifiedEvent>& events) {
    std::vector<double> times;
    for (const UnifiedEvent& event : events) {
        times.push_back(event.time);
    }
    return times;
}

std::vector<double> Joined(std::vector<UnifiedEvent> events, size_t keep, double minGap = kMinGap,
                           double clickGap = kClickGap) {
    JoinContinuedRecording(events, keep, minGap, clickGap);
    return Times(events);
}

}  // namespace

TEST(JoinRecordingTest, AFreshRecordingStartsAtZero) {
    EXPECT_EQ(Joined({Key(4.0), Key(4.5), Key(9.0)}, 0), (std::vector<double>{0.0, 0.5, 5.0}));
    EXPECT_EQ(Joined({Key(-1.0), Key(1.0)}, 0), (std::vector<double>{0.0, 2.0}));
}

TEST(JoinRecordingTest, TheSmallestTimeCountsAtAnyPosition) {
    EXPECT_EQ(Joined({Key(5.0), Key(4.0), Key(6.0)}, 0), (std::vector<double>{1.0, 0.0, 2.0}));
    const std::vector<double> times = Joined({Key(10.0), Key(7.0), Key(3.5), Key(3.0)}, 2);
    EXPECT_DOUBLE_EQ(times[2], 10.6);
    EXPECT_DOUBLE_EQ(times[3], 10.1);
}

TEST(JoinRecordingTest, NothingNewChangesNothing) {
    EXPECT_EQ(Joined({}, 0), std::vector<double>{});
    EXPECT_EQ(Joined({}, 5), std::vector<double>{});
    EXPECT_EQ(Joined({Key(3.0), Key(4.0)}, 2), (std::vector<double>{3.0, 4.0}));
    EXPECT_EQ(Joined({Key(3.0), Key(4.0)}, 99), (std::vector<double>{3.0, 4.0}));
}

TEST(JoinRecordingTest, AnUnrelatedKeyFollowsATenthLater) {
    const std::vector<double> times = Joined({Key(0.0), Key(10.0), Key(3.0), Key(4.0)}, 2);
    EXPECT_EQ(times[0], 0.0);
    EXPECT_EQ(times[1], 10.0);
    EXPECT_DOUBLE_EQ(times[2], 10.1);
    EXPECT_DOUBLE_EQ(times[3], 11.1);
}

TEST(JoinRecordingTest, TwoPressesOfOneButtonKeepTheClickGap) {
    for (const uint32_t flags : {2U, 8U, 32U, 128U}) {
        const std::vector<double> times = Joined({Button(10.0, flags), Button(3.0, flags), Key(4.0)}, 1);
        EXPECT_DOUBLE_EQ(times[1], 10.55) << flags;
        EXPECT_DOUBLE_EQ(times[2], 11.55) << flags;
    }
}

TEST(JoinRecordingTest, TheShiftIsOnlyWhatIsMissingOfTheGap) {
    // The release in between and the time before the new press count towards the gap.
    const std::vector<double> times = Joined({Button(10.0, 2), Button(10.2, 4), Key(3.0), Button(3.1, 2)}, 2);
    EXPECT_DOUBLE_EQ(times[3], 10.55);
    EXPECT_DOUBLE_EQ(times[2], 10.45);
    // Far enough apart: a tenth of a second, as usual.
    const std::vector<double> far = Joined({Button(10.0, 2), Key(10.3), Key(3.0), Button(3.2, 2)}, 2);
    EXPECT_DOUBLE_EQ(far[2], 10.4);
    EXPECT_DOUBLE_EQ(far[3], 10.6);
}

TEST(JoinRecordingTest, OtherButtonsAndReleasesNeedNoGap) {
    EXPECT_DOUBLE_EQ(Joined({Button(10.0, 2), Button(3.0, 8)}, 1)[1], 10.1);
    EXPECT_DOUBLE_EQ(Joined({Button(10.0, 4), Button(3.0, 4)}, 1)[1], 10.1);
    EXPECT_DOUBLE_EQ(Joined({Key(10.0), Button(3.0, 2)}, 1)[1], 10.1);
    EXPECT_DOUBLE_EQ(Joined({Button(10.0, 2), Key(3.0)}, 1)[1], 10.1);
    // Only an event of the button type is a press, whatever its flags.
    UnifiedEvent notAButton = Key(10.0);
    notAButton.flags = 2;
    EXPECT_DOUBLE_EQ(Joined({notAButton, Button(3.0, 2)}, 1)[1], 10.1);
}

TEST(JoinRecordingTest, WithoutAClickGapOnlyTheMinimumHolds) {
    EXPECT_DOUBLE_EQ(Joined({Button(10.0, 2), Button(3.0, 2)}, 1, kMinGap, 0.0)[1], 10.1);
    EXPECT_DOUBLE_EQ(Joined({Button(10.0, 2), Button(3.0, 2)}, 1, kMinGap, -1.0)[1], 10.1);
}

TEST(JoinRecordingTest, OnATieTheLastKeptAndTheFirstNewPressDecide) {
    // Kept: left and right at the same time, right later in the list. New: right and left, right earlier.
    const std::vector<double> same =
        Joined({Button(10.0, 2), Button(10.0, 8), Button(3.0, 8), Button(3.0, 2)}, 2);
    EXPECT_DOUBLE_EQ(same[2], 10.55);
    const std::vector<double> other =
        Joined({Button(10.0, 8), Button(10.0, 2), Button(3.0, 8), Button(3.0, 2)}, 2);
    EXPECT_DOUBLE_EQ(other[2], 10.1);
}

TEST(JoinRecordingTest, ThePressWithTheLargestTimeCountsAtAnyPosition) {
    const std::vector<double> times = Joined({Button(10.0, 2), Button(9.0, 8), Button(3.0, 2)}, 2);
    EXPECT_DOUBLE_EQ(times[2], 10.55);
}

TEST(JoinRecordingTest, IgnoresTimesThatAreNotNumbers) {
    const std::vector<double> times =
        Joined({Key(kNotANumber), Key(10.0), Key(kNotANumber), Key(3.0), Button(kNotANumber, 2)}, 2);
    EXPECT_TRUE(std::isnan(times[0]));
    EXPECT_EQ(times[1], 10.0);
    EXPECT_TRUE(std::isnan(times[2]));
    EXPECT_DOUBLE_EQ(times[3], 10.1);
    EXPECT_TRUE(std::isnan(times[4]));
    EXPECT_TRUE(std::isnan(Joined({Key(kNotANumber)}, 0)[0]));
    EXPECT_DOUBLE_EQ(Joined({Key(kNotANumber), Key(7.0)}, 1)[1], 0.0);
    const std::vector<double> infinite = Joined({Key(kInfinity), Key(3.0)}, 1);
    EXPECT_EQ(infinite[0], kInfinity);
}

TEST(JoinRecordingTest, ChangesOnlyTheTimesOfTheNewEvents) {
    std::mt19937 random(20240607);
    std::uniform_real_distribution<double> time(0.0, 20.0);
    std::uniform_int_distribution<uint32_t> type(0, 5);
    std::uniform_int_distribution<uint32_t> flags(0, 8);
    for (int round = 0; round < 2000; ++round) {
        std::vector<UnifiedEvent> before(random() % 12);
        for (UnifiedEvent& event : before) {
            event = {.type = type(random), .time = time(random), .flags = 1U << flags(random)};
        }
        const size_t keep = random() % 14;
        const size_t kept = std::min(keep, before.size());
        std::vector<UnifiedEvent> after = before;
        JoinContinuedRecording(after, keep, kMinGap, kClickGap);
        ASSERT_EQ(after.size(), before.size());
        double lastKept = 0.0;
        for (size_t i = 0; i < kept; ++i) {
            EXPECT_EQ(after[i], before[i]);
            lastKept = std::max(lastKept, before[i].time);
        }
        const double earliest = kept > 0 ? lastKept + kMinGap : 0.0;
        const double shift = kept < after.size() ? after[kept].time - before[kept].time : 0.0;
        for (size_t i = kept; i < after.size(); ++i) {
            EXPECT_GE(after[i].time, earliest - 1e-9) << "round " << round;
            // All new events are shifted by the same time.
            EXPECT_NEAR(after[i].time - before[i].time, shift, 1e-9);
            after[i].time = before[i].time;
            EXPECT_EQ(after[i], before[i]);
        }
    }
}
