// The input state of the simulated session behind the hooks: the pointer, the keys and buttons held down, the screen,
// and what the application in front has received.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

enum class SimSeenKind { Key, Button, Move, Wheel, HorizontalWheel };

// One input event that the application in front received.
struct SimSeen {
    int64_t ticks = 0;  // since SimBegin
    SimSeenKind kind = SimSeenKind::Key;
    uint32_t code = 0;  // virtual key or button code
    bool down = false;
    int32_t x = 0;  // pointer
    int32_t y = 0;
    int32_t wheel = 0;
    bool injected = false;
};

enum class SimLogMode { Full, CountOnly };
// CountOnly: SimSeenLog and SimSentLog stay empty.
void SimSetLogMode(SimLogMode mode);
SimLogMode SimCurrentLogMode();

const std::vector<SimSeen>& SimSeenLog();  // in order
uint64_t SimSeenCount();
void SimOnSeen(std::function<void(const SimSeen&)> call);

bool SimKeyIsDown(uint32_t virtualKey);  // as the application sees it
bool SimButtonIsDown(uint32_t code);
void SimPointer(int32_t* x, int32_t* y);
void SimSetPointer(int32_t x, int32_t y);
void SimHidePointer(bool hidden);  // ReadPointerPosition fails
void SimSetScreen(int32_t width, int32_t height);
void SimSetDoubleClickMilliseconds(uint32_t milliseconds);

// For the hooks. One input event on its way to the application.
struct SimArrival {
    SimSeenKind kind = SimSeenKind::Key;
    uint32_t code = 0;
    bool down = false;
    bool injected = false;
    int32_t x = 0;  // moves: where the pointer goes
    int32_t y = 0;
    int32_t wheel = 0;
    int64_t counter = 0;
};
// Updates the session and the application's log. The hooks have passed the event.
void SimArrive(const SimArrival& arrival);
void SimResetSession();
