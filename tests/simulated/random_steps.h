// Random steps for scripts: what a user, another program, the page and the session might do.
#pragma once

#include "platform/simulated/simulation.h"

#include <cstddef>
#include <cstdint>
#include <string>

// Random numbers that are the same on every compiler and library.
struct Dice {
    uint64_t state;
    uint32_t Roll(uint32_t sides);
    bool Chance(uint32_t percent) { return Roll(100) < percent; }
    template <size_t Count> const char* Pick(const char* const (&words)[Count]) { return words[Roll(Count)]; }
};

// The requests by bit: bit 0 is the first name.
enum RandomRequest : uint32_t {
    kToggleRecord = 1U << 0,
    kStartRecord = 1U << 1,
    kContinueRecord = 1U << 2,
    kUndoContinue = 1U << 3,
    kStopRecord = 1U << 4,
    kTogglePlay = 1U << 5,
    kStartPlay = 1U << 6,
    kStopPlay = 1U << 7,
    kToggleAutoclicker = 1U << 8,
    kStartAutoclicker = 1U << 9,
    kStopAutoclicker = 1U << 10,
    kToggleKeySpammer = 1U << 11,
    kStartKeySpammer = 1U << 12,
    kStopKeySpammer = 1U << 13,
};
constexpr uint32_t kRecordRequests = kToggleRecord | kStartRecord | kContinueRecord | kStopRecord;
constexpr uint32_t kPlayRequests = kTogglePlay | kStartPlay | kStopPlay;
constexpr uint32_t kAutoclickerRequests = kToggleAutoclicker | kStartAutoclicker | kStopAutoclicker;
constexpr uint32_t kKeySpammerRequests = kToggleKeySpammer | kStartKeySpammer | kStopKeySpammer;

enum class StepKind {
    Requests,
    Input,     // of the user: keys, buttons, moves, the wheel
    RawMove,   // a raw report of the mouse
    Injected,  // input of another program
    Session,
    Wait,
    Setting,
    Edit,  // of the macro or the list of profiles
    RemoveTarget,
};

struct Step {
    StepKind kind = StepKind::Wait;
    std::string text;       // a line of a script
    uint32_t requests = 0;  // Requests
};

Step RandomStep(Dice& dice);
SimOptions RandomOptions(Dice& dice, uint64_t seed);
