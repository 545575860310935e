// Device counts from the raw motion reports of one X pointer device. Pure logic.
#pragma once

#include <cstdint>
#include <vector>

// What the values of a device mean.
enum class RawKind {
    Unknown,  // not yet classified
    Counts,   // counts moved since the last report
    HiddenPositions,  // positions, though the device calls itself relative: servers inside servers and remote desktops
    Positions,  // declared positions: not reported
};

struct RawReport {
    double x = 0;  // as the server reports it; `moved` stays false for an axis that did not move
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
    double lastX = 0;  // HiddenPositions: the last one. Unknown: the pointer before the first queued report
    double lastY = 0;
    double restX = 0;  // fraction of a count that has not been reported
    double restY = 0;
    std::vector<RawReport> waiting;  // while Unknown
};

// Processes one report; `before` is the last known pointer position. Appends the counts that are now known to `counts`,
// except those with both deltas zero.
void TakeRawReport(RawMotion& motion, const RawReport& report, double beforeX, double beforeY,
                   std::vector<RawCounts>& counts);

// Classifies an Unknown device whose last report led the pointer to `after`, if that is possible, and appends the counts
// of its queued reports.
void ClassifyRawMotion(RawMotion& motion, double afterX, double afterY, std::vector<RawCounts>& counts);
