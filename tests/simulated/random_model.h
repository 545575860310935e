// What the state table, the hook tables and the recorder's filter say, written a second time and independently of the
// engines, so that random scripts can be held against it.
#pragma once

#include "model/event.h"
#include "platform/simulated/simulation.h"

#include <cstdint>
#include <string>
#include <vector>

enum ModelRequest : uint32_t {
    kToggleRecord = 1U << 0,
    kStartRecord = 1U << 1,
    kContinueRecord = 1U << 2,
    kUndoContinue = 1U << 3,
    kStopRecord = 1U << 4,
    kTogglePlay = 1U << 5,
    kStartPlay = 1U << 6,
    kStopPlay = 1U << 7,
    kToggleAuto = 1U << 8,
    kStartAuto = 1U << 9,
    kStopAuto = 1U << 10,
    kToggleKeySpam = 1U << 11,
    kStartKeySpam = 1U << 12,
    kStopKeySpam = 1U << 13,
};
constexpr int kModelRequestCount = 14;
const char* ModelRequestName(int bit);

// The flags, and the settings that decide about them, at a moment when all threads wait.
struct Situation {
    bool recording = false;
    bool playing = false;
    bool autoClicking = false;
    bool keySpamming = false;
    bool stopToolsWithMacro = true;
    std::vector<uint32_t> targets;
};
Situation ReadSituation();

// What one pass of the dispatcher makes of a set of requests.
struct PassOutcome {
    Situation after;
    std::vector<InputAction> cleanUps;  // in order
    bool somethingRan = false;          // playback or a tool was on at some moment
    bool begunFresh = false;
    bool begunContinued = false;
    bool ended = false;  // a recording ended
    bool playSet = false;
};
PassOutcome PredictPass(const Situation& before, uint32_t requests);

// What the hooks hold: which key or button is down, and whose press was hidden.
struct HookModel {
    bool keyDown[256] = {};
    bool keySwallowed[256] = {};
    bool buttonDown[8] = {};
    bool buttonSwallowed[8] = {};
};
struct HookVerdict {
    bool consumed = false;
    bool captured = false;
    bool lockToggled = false;
    uint32_t requests = 0;
};
// A real press or release of a key or a button, in the state that the engines are in now. Changes the model only.
HookVerdict ExpectInput(HookModel& model, bool button, uint32_t code, bool down);

// What the recorder keeps of what reaches the application. The events have no times.
struct RecorderModel {
    int32_t lastX = 0;
    int32_t lastY = 0;
    bool pressOnOwn[8] = {};
    std::vector<UnifiedEvent> events;
};
void RecordSeen(RecorderModel& model, const SimSeen& seen);
// The events without their times and without tool events.
std::vector<UnifiedEvent> Timeless(const std::vector<UnifiedEvent>& events);
