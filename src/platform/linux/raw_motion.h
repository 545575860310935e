// Device counts from the raw motion reports of one X pointer device. Pure logic.
#pragma once

#include <cstdint>
#include <vector>

// What the numbers of a device are.
enum class RawKind {
    Unknown,  // not yet told apart
    Counts,   // counts moved since the last report
    HiddenPositions,  // positions, though the device calls itself relative: servers inside servers and remote desktops
    Positions,  // positions, and the device says so: not reported
};

struct RawReport {
    double x = 0;  // as the server gives it; an axis that did not move keeps `moved` false
    double y = 0;
    bool movedX = false;
    bool movedY = false;
    int64_t counter = 0;
};

struct RawCounts {
    int32_t dx = 0;
    int32_t dy = 0;
    int64_t counter = 0;
};

struct RawMotion {
    RawKind kind = RawKind::Unknown;
    double lastX =
        0;  // HiddenPositions: the last one. Unknown: the pointer before the first report that waits
    double lastY = 0;
    double restX = 0;  // part of a count that was not reported yet
    double restY = 0;
    std::vector<RawReport> waiting;  // while Unknown
};

// Takes one report; the pointer was at `before` when it was last asked for. Counts that are known now are appended to
// `counts`; those with both deltas zero are left out.
void TakeRawReport(RawMotion& motion, const RawReport& report, double beforeX, double beforeY,
                   std::vector<RawCounts>& counts);

// For an Unknown device whose last report led the pointer to `after`: decides what the device is, if that can be told,
// and appends the counts that waited.
void JudgeRawMotion(RawMotion& motion, double afterX, double afterY, std::vector<RawCounts>& counts);
