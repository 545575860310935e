// Compares the scanner with its reference on presses and releases of the keys that scenarios contain, at time steps around
// their limits, some repeated hundreds of times.
#include "../unit/reference_scanner.cpp"

#include "fuzz_input.h"

#include <cmath>
#include <vector>

namespace {

constexpr uint32_t kKeys[] = {13, 8,  9,  27,  44,  46,  115, 117, 67,  65,  76,  82,
                              83, 86, 87, 88,  89,  71,  73,  84,  32,  49,  16,  17,
                              18, 91, 92, 160, 161, 162, 163, 164, 165, 186, 255, 0};
constexpr double kSteps[] = {0,  0.01,   0.5, 1,      2.5, 5,      5.001, 10,    10.001,
                             30, 30.001, 60,  60.001, -1,  -30.01, 1e300, -1e300};
constexpr size_t kMostEvents = 800;  // the reference takes quadratic time

std::vector<UnifiedEvent> Events(FuzzBytes input) {
    std::vector<UnifiedEvent> events;
    UnifiedEvent event;
    event.type = EvKey;
    while (input.Left() > 0 && events.size() < kMostEvents) {
        const auto key = input.Take<uint8_t>();
        const auto step = input.Take<uint8_t>();
        event.virtualKey = kKeys[(key & 0x7F) % std::size(kKeys)];
        event.down = (key & 0x80) == 0;
        size_t times = 1;
        if ((step & 0x80) != 0) {
            times = size_t{input.Take<uint8_t>()} * 3;
        }
        for (size_t i = 0; i < times && events.size() < kMostEvents; ++i) {
            event.time =
                (step & 0x7F) == 0x7F ? std::nan("") : event.time + kSteps[(step & 0x7F) % std::size(kSteps)];
            events.push_back(event);
        }
        if (std::isnan(event.time)) {
            event.time = 0;
        }
    }
    return events;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::vector<UnifiedEvent> events = Events({data, size});
    Require(MacroScan::ScanReportJson(MacroScan::ScanMacro(events)) == ReferenceScanner::ReportJson(events));
    return 0;
}
