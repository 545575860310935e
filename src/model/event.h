// The event: a macro is a list of these.
#pragma once

#include <cstdint>

enum EventType : uint32_t {
    EvAbsMove = 0,      // x, y: pointer moved to a screen pixel
    EvRelMove = 1,      // x, y: raw device counts
    EvMouseButton = 2,  // x, y, flags: one button press or release
    EvKey = 3,          // virtualKey, down
    EvScroll = 4,       // wheel
    EvToolState = 5,    // virtualKey: kToolAutoclicker or kToolKeySpammer; down: switched on
};

constexpr uint32_t kToolAutoclicker = 1;
constexpr uint32_t kToolKeySpammer = 2;

struct UnifiedEvent {
    uint32_t type = 0;  // EventType; other codes are kept and do nothing
    double time = 0.0;  // seconds from the start of the recording
    int32_t x = 0;
    int32_t y = 0;
    uint32_t flags = 0;       // one button action, see button_flags.h
    uint32_t virtualKey = 0;  // virtual-key code, or a tool
    bool down = false;
    int32_t wheel = 0;  // 120 for each notch

    // Compares all eight fields; a time that is not a number equals nothing.
    bool operator==(const UnifiedEvent&) const = default;
};
