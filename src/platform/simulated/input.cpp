#include "platform/simulated/input.h"

#include "platform/clock.h"
#include "platform/key_table.h"
#include "platform/simulated/hooks.h"
#include "platform/simulated/keys.h"
#include "platform/simulated/scheduler.h"
#include "platform/simulated/session.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

constexpr int32_t kWheelNotch = 120;

struct InputState {
    std::vector<SimSent> sent;
    uint64_t sentCount = 0;
    uint64_t sentButtons[8][2] = {};  // by button code and `down`
    uint64_t sentKeys[2] = {};
    int64_t lastSentTicks = 0;
    std::function<void(const SimSent&)> onSent;
};

InputState state;

int32_t ClampToScreen(int64_t position, int32_t size) {
    return static_cast<int32_t>(std::clamp<int64_t>(position, 0, size - 1));
}

// Returns the pixel whose truncated scaling is the absolute coordinate.
int32_t PixelOfAbsolute(int32_t absolute, int32_t size) {
    const int64_t scaled = static_cast<int64_t>(absolute) * size;
    return ClampToScreen((scaled + 65535) >> 16, size);
}

void HandOverMove(int32_t x, int32_t y) {
    SimArrival arrival;
    arrival.kind = SimSeenKind::Move;
    arrival.injected = true;
    arrival.x = x;
    arrival.y = y;
    SimHandOver(arrival, false);
}

void HandOverCode(SimSeenKind kind, uint32_t code, bool down) {
    SimArrival arrival;
    arrival.kind = kind;
    arrival.code = code;
    arrival.down = down;
    arrival.injected = true;
    SimHandOver(arrival, false);
}

void HandOverWheel(int32_t delta) {
    SimArrival arrival;
    arrival.kind = SimSeenKind::Wheel;
    arrival.injected = true;
    arrival.wheel = delta;
    SimHandOver(arrival, false);
}

void HandOverAction(const InputAction& action) {
    switch (action.kind) {
    case InputKind::MoveTo:
        HandOverMove(PixelOfAbsolute(action.x, PrimaryScreenWidth()),
                     PixelOfAbsolute(action.y, PrimaryScreenHeight()));
        break;
    case InputKind::MoveBy: {
        int32_t x = 0;
        int32_t y = 0;
        SimPointer(&x, &y);
        HandOverMove(ClampToScreen(int64_t{x} + action.x, PrimaryScreenWidth()),
                     ClampToScreen(int64_t{y} + action.y, PrimaryScreenHeight()));
        break;
    }
    case InputKind::Button:
        // A side button without a name is none.
        if (action.button != kNoButton && action.button != kUnnamedSideButton) {
            HandOverCode(SimSeenKind::Button, action.button, action.down);
        }
        break;
    case InputKind::ButtonFlags:
        break;
    case InputKind::Wheel:
        HandOverWheel(action.wheelDelta);
        break;
    case InputKind::Key:
        if (const uint32_t key = SimKeyOfScanCode(action.scanCode, action.extended)) {
            HandOverCode(SimSeenKind::Key, key, action.down);
        }
        break;
    }
}

void Count(const InputAction& action) {
    ++state.sentCount;
    if (action.kind == InputKind::Button) {
        ++state.sentButtons[action.button & 7][action.down];
    } else if (action.kind == InputKind::Key) {
        ++state.sentKeys[action.down];
    }
}

void SendRecord(const InputAction& action) {
    SimSpend(SimCurrentOptions().sendTicks);
    const SimSent sent{SimTicks(), action};
    Count(action);
    state.lastSentTicks = sent.ticks;
    if (SimCurrentLogMode() == SimLogMode::Full) {
        state.sent.push_back(sent);
    }
    if (state.onSent) {
        state.onSent(sent);
    }
    HandOverAction(action);
    SimMaybePreempt();
}

void SendNotches(int32_t delta, StopCondition stop) {
    const int32_t notch = delta > 0 ? kWheelNotch : -kWheelNotch;
    int64_t count = std::abs(int64_t{delta}) / kWheelNotch;
    for (; count > 0; --count) {
        SendRecord({.kind = InputKind::Wheel, .wheelDelta = notch});
        if (stop != nullptr && stop()) {
            return;
        }
        SpinOnce();
    }
}

}  // namespace

void SendInputAction(const InputAction& action, StopCondition stop) {
    if (action.kind == InputKind::Wheel && SimCurrentOptions().sendsNotches) {
        SendNotches(action.wheelDelta, stop);
    } else {
        SendRecord(action);
    }
}

const std::vector<SimSent>& SimSentLog() {
    return state.sent;
}

uint64_t SimSentCount() {
    return state.sentCount;
}

uint64_t SimSentButtons(uint32_t button, bool down) {
    return state.sentButtons[button & 7][down];
}

uint64_t SimSentKeys(bool down) {
    return state.sentKeys[down];
}

int64_t SimLastSentTicks() {
    return state.lastSentTicks;
}

void SimOnSent(std::function<void(const SimSent&)> call) {
    state.onSent = std::move(call);
}

void SimResetInput() {
    state = InputState();
}
