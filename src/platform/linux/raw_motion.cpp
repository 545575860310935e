#include "platform/linux/raw_motion.h"

#include <cmath>

namespace {

constexpr size_t kMostWaiting = 4096;  // queued reports of an unclassified device; later ones are lost
constexpr double kSamePlace = 1.0;     // pixels: positions are rounded
constexpr double kClearlyApart = 3.0;  // pixels

void AppendCounts(RawMotion& motion, double dx, double dy, int64_t counter, std::vector<RawCounts>& counts) {
    // Some drivers report fractions of a count. The rest belongs to the next report.
    const double x = motion.restX + dx;
    const double y = motion.restY + dy;
    const double wholeX = std::trunc(x);
    const double wholeY = std::trunc(y);
    motion.restX = x - wholeX;
    motion.restY = y - wholeY;
    if (wholeX != 0 || wholeY != 0) {
        counts.push_back(RawCounts{static_cast<int32_t>(wholeX), static_cast<int32_t>(wholeY), counter});
    }
}

void AppendReport(RawMotion& motion, const RawReport& report, std::vector<RawCounts>& counts) {
    if (motion.kind == RawKind::Counts) {
        AppendCounts(motion, report.movedX ? report.x : 0, report.movedY ? report.y : 0, report.counter,
                     counts);
        return;
    }
    const double x = report.movedX ? report.x : motion.lastX;
    const double y = report.movedY ? report.y : motion.lastY;
    AppendCounts(motion, x - motion.lastX, y - motion.lastY, report.counter, counts);
    motion.lastX = x;
    motion.lastY = y;
}

bool Near(double left, double right, double distance) {
    return std::abs(left - right) <= distance;
}

}  // namespace

void TakeRawReport(RawMotion& motion, const RawReport& report, double beforeX, double beforeY,
                   std::vector<RawCounts>& counts) {
    if (motion.kind == RawKind::Counts || motion.kind == RawKind::HiddenPositions) {
        AppendReport(motion, report, counts);
    } else if (motion.kind == RawKind::Unknown && motion.waiting.size() < kMostWaiting) {
        if (motion.waiting.empty()) {
            motion.lastX = beforeX;
            motion.lastY = beforeY;
        }
        motion.waiting.push_back(report);
    }
}

// A device of positions reports where the pointer is afterwards. A count is something else, except near the corner, where
// both may fit: there the decision waits for a report that only one of them explains.
void ClassifyRawMotion(RawMotion& motion, double afterX, double afterY, std::vector<RawCounts>& counts) {
    if (motion.kind != RawKind::Unknown || motion.waiting.empty()) {
        return;
    }
    double sumX = 0;
    double sumY = 0;
    for (const RawReport& report : motion.waiting) {
        sumX += report.movedX ? report.x : 0;
        sumY += report.movedY ? report.y : 0;
    }
    const RawReport& last = motion.waiting.back();
    const bool couldBePosition = (!last.movedX || Near(last.x, afterX, kSamePlace)) &&
                                 (!last.movedY || Near(last.y, afterY, kSamePlace));
    const bool couldBeCount =
        Near(sumX, afterX - motion.lastX, kClearlyApart) && Near(sumY, afterY - motion.lastY, kClearlyApart);
    if (couldBePosition && couldBeCount) {
        return;
    }
    motion.kind = couldBePosition ? RawKind::HiddenPositions : RawKind::Counts;
    std::vector<RawReport> waiting;
    waiting.swap(motion.waiting);
    for (const RawReport& report : waiting) {
        AppendReport(motion, report, counts);
    }
}
