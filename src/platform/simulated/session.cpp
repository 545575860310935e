#include "platform/simulated/session.h"

#include "platform/input.h"
#include "platform/simulated/scheduler.h"

#include <algorithm>
#include <utility>

namespace {

struct SessionState {
    SimLogMode mode = SimLogMode::Full;
    std::vector<SimSeen> seen;
    uint64_t seenCount = 0;
    std::function<void(const SimSeen&)> onSeen;
    int32_t width = 1920;
    int32_t height = 1080;
    int32_t x = 0;
    int32_t y = 0;
    bool pointerHidden = false;
    bool keys[256] = {};
    bool buttons[8] = {};
    uint32_t doubleClickMilliseconds = 500;
};

SessionState state;

int32_t ClampToScreen(int32_t position, int32_t size) {
    return std::clamp(position, 0, size - 1);
}

}  // namespace

void SimArrive(const SimArrival& arrival) {
    switch (arrival.kind) {
    case SimSeenKind::Move:
        SimSetPointer(arrival.x, arrival.y);
        break;
    case SimSeenKind::Key:
        state.keys[arrival.code & 0xFF] = arrival.down;
        break;
    case SimSeenKind::Button:
        state.buttons[arrival.code & 7] = arrival.down;
        break;
    case SimSeenKind::Wheel:
    case SimSeenKind::HorizontalWheel:
        break;
    }
    ++state.seenCount;
    if (state.mode == SimLogMode::CountOnly && !state.onSeen) {
        return;
    }
    SimSeen seen;
    seen.ticks = SimTicks();
    seen.kind = arrival.kind;
    seen.code = arrival.code;
    seen.down = arrival.down;
    seen.x = state.x;
    seen.y = state.y;
    seen.wheel = arrival.wheel;
    seen.injected = arrival.injected;
    if (state.mode == SimLogMode::Full) {
        state.seen.push_back(seen);
    }
    if (state.onSeen) {
        state.onSeen(seen);
    }
}

int32_t PrimaryScreenWidth() {
    return state.width;
}

int32_t PrimaryScreenHeight() {
    return state.height;
}

bool ReadPointerPosition(int32_t* x, int32_t* y) {
    if (state.pointerHidden) {
        return false;
    }
    SimPointer(x, y);
    return true;
}

uint32_t DoubleClickMilliseconds() {
    return state.doubleClickMilliseconds;
}

void SimSetLogMode(SimLogMode mode) {
    state.mode = mode;
}

SimLogMode SimCurrentLogMode() {
    return state.mode;
}

const std::vector<SimSeen>& SimSeenLog() {
    return state.seen;
}

uint64_t SimSeenCount() {
    return state.seenCount;
}

void SimOnSeen(std::function<void(const SimSeen&)> call) {
    state.onSeen = std::move(call);
}

bool SimKeyIsDown(uint32_t virtualKey) {
    return state.keys[virtualKey & 0xFF];
}

bool SimButtonIsDown(uint32_t code) {
    return state.buttons[code & 7];
}

void SimPointer(int32_t* x, int32_t* y) {
    *x = state.x;
    *y = state.y;
}

void SimSetPointer(int32_t x, int32_t y) {
    state.x = ClampToScreen(x, state.width);
    state.y = ClampToScreen(y, state.height);
}

void SimHidePointer(bool hidden) {
    state.pointerHidden = hidden;
}

void SimSetScreen(int32_t width, int32_t height) {
    state.width = width;
    state.height = height;
}

void SimSetDoubleClickMilliseconds(uint32_t milliseconds) {
    state.doubleClickMilliseconds = milliseconds;
}

void SimResetSession() {
    state = SessionState();
}
