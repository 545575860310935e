// Device counts from the raw motion reports of one X pointer device. Pure logic.
#pragma once

#include <cstdint>
#include <vector>

// What the numbers of a device are.
enum class RawKind {
    Unknown,   // not yet told apart
    Relative,  // counts moved since the last report
    Hidden,  // positions, though the device calls itself relative: servers inside servers and remote desktops
    Absolute,  // positions, and the device says so: not reported
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
    double lastX = 0;  // last position of a Hidden device
    double lastY = 0;
    bool lastKnown = false;
    double restX = 0;  // part of a count that was not reported yet
    double restY = 0;
    std::vector<RawReport> waiting;  // while Unknown
};

// Takes one report. Counts that are known now are appended to `counts`; both deltas zero are left out.
void TakeRawReport(RawMotion& motion, const RawReport& report, std::vector<RawCounts>& counts);

// For an Unknown device: where the pointer was before and after its last report. Decides what the device is, if that
// can be told, and appends the counts that waited.
void JudgeRawMotion(RawMotion& motion, double beforeX, double beforeY, double afterX, double afterY,
                    std::vector<RawCounts>& counts);
