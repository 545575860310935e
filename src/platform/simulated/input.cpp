#include "platform/input.h"

#include "platform/clock.h"
#include "platform/simulated/input_state.h"
#include "platform/simulated/keys.h"
#include "platform/simulated/scheduler.h"

#include <map>
#include <utility>

namespace {

struct InputState {
    SimLogMode mode = SimLogMode::Full;
    std::vector<SimSent> sent;
    std::vector<SimSeen> seen;
    std::map<std::pair<uint32_t, uint32_t>, uint64_t> sentByKind;  // type, dwFlags
    uint64_t sentCount = 0;
    uint64_t seenCount = 0;
    int64_t lastSentTicks = 0;
    std::function<void(const SimSent&)> onSent;
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

InputState state;

int32_t Clamp(int64_t value, int32_t size) {
    if (value < 0) {
        return 0;
    }
    return value >= size ? size - 1 : static_cast<int32_t>(value);
}

// The pixel of an absolute coordinate: the one whose truncated scaling gives it.
int32_t PixelOfAbsolute(int32_t absolute, int32_t size) {
    const int64_t scaled = static_cast<int64_t>(absolute) * size;
    return Clamp((scaled + 65535) >> 16, size);
}

void HandOverButton(uint32_t code, bool down) {
    SimArrival arrival;
    arrival.kind = SimSeenKind::Button;
    arrival.code = code;
    arrival.down = down;
    arrival.injected = true;
    SimHandOver(arrival, false);
}

void HandOverMouse(const InputRecord& record) {
    SimArrival arrival;
    arrival.injected = true;
    if ((record.dwFlags & kMouseMove) != 0) {
        arrival.kind = SimSeenKind::Move;
        const bool absolute = (record.dwFlags & kMouseAbsolute) != 0;
        arrival.x = absolute ? PixelOfAbsolute(record.dx, state.width)
                             : Clamp(static_cast<int64_t>(state.x) + record.dx, state.width);
        arrival.y = absolute ? PixelOfAbsolute(record.dy, state.height)
                             : Clamp(static_cast<int64_t>(state.y) + record.dy, state.height);
        SimHandOver(arrival, false);
    }
    struct ButtonFlag {
        uint32_t flag;
        uint32_t code;
        bool down;
    };
    static constexpr ButtonFlag kButtonFlags[] = {
        {kMouseLeftDown, 1, true}, {kMouseLeftUp, 1, false},    {kMouseRightDown, 2, true},
        {kMouseRightUp, 2, false}, {kMouseMiddleDown, 4, true}, {kMouseMiddleUp, 4, false},
    };
    for (const ButtonFlag& button : kButtonFlags) {
        if ((record.dwFlags & button.flag) != 0) {
            HandOverButton(button.code, button.down);
        }
    }
    // A side button that mouseData does not name is no button.
    if ((record.dwFlags & kMouseSideDown) != 0 && (record.mouseData == 1 || record.mouseData == 2)) {
        HandOverButton(4 + record.mouseData, true);
    }
    if ((record.dwFlags & kMouseWheel) != 0) {
        arrival.kind = SimSeenKind::Wheel;
        arrival.wheel = static_cast<int32_t>(record.mouseData);
        SimHandOver(arrival, false);
    }
}

void HandOverKey(const InputRecord& record) {
    SimArrival arrival;
    arrival.kind = SimSeenKind::Key;
    arrival.code = SimKeyOfScanCode(record.wScan, (record.dwFlags & kKeyExtended) != 0);
    arrival.down = (record.dwFlags & kKeyUp) == 0;
    arrival.injected = true;
    if (arrival.code != 0) {
        SimHandOver(arrival, false);
    }
}

}  // namespace

void SendInputRecord(const InputRecord& record) {
    SimSpend(SimCurrentOptions().sendTicks);
    const SimSent sent{SimTicks(), record};
    ++state.sentCount;
    ++state.sentByKind[{record.type, record.dwFlags}];
    state.lastSentTicks = sent.ticks;
    if (state.mode == SimLogMode::Full) {
        state.sent.push_back(sent);
    }
    if (state.onSent) {
        state.onSent(sent);
    }
    if (record.type == kInputMouse) {
        HandOverMouse(record);
    } else {
        HandOverKey(record);
    }
    SimMaybePreempt();
}

void SimArrive(const SimArrival& arrival) {
    switch (arrival.kind) {
    case SimSeenKind::Move:
        state.x = Clamp(arrival.x, state.width);
        state.y = Clamp(arrival.y, state.height);
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

void SimPointer(int32_t* x, int32_t* y) {
    *x = state.x;
    *y = state.y;
}

uint32_t DoubleClickMilliseconds() {
    return state.doubleClickMilliseconds;
}

void SimSetLogMode(SimLogMode mode) {
    state.mode = mode;
}

const std::vector<SimSent>& SimSentLog() {
    return state.sent;
}

const std::vector<SimSeen>& SimSeenLog() {
    return state.seen;
}

uint64_t SimSentCount() {
    return state.sentCount;
}

uint64_t SimSentCount(uint32_t type, uint32_t dwFlags) {
    const auto found = state.sentByKind.find({type, dwFlags});
    return found == state.sentByKind.end() ? 0 : found->second;
}

uint64_t SimSeenCount() {
    return state.seenCount;
}

int64_t SimLastSentTicks() {
    return state.lastSentTicks;
}

void SimOnSent(std::function<void(const SimSent&)> call) {
    state.onSent = std::move(call);
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

void SimSetPointer(int32_t x, int32_t y) {
    state.x = Clamp(x, state.width);
    state.y = Clamp(y, state.height);
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

void SimResetInput() {
    state = InputState();
}
