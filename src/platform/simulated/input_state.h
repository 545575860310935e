// What the session's input has come to: pointer, held keys and buttons, and what the application in front has seen.
#pragma once

#include "platform/simulated/simulation.h"

#include <cstdint>

// One piece of input on its way to the application.
struct SimArrival {
    SimSeenKind kind = SimSeenKind::Key;
    uint32_t code = 0;
    bool down = false;
    bool system = false;  // key with Alt held
    bool injected = false;
    int32_t x = 0;  // moves: where the pointer goes
    int32_t y = 0;
    int32_t wheel = 0;
    int64_t counter = 0;
};

// Through the hooks, where they are installed, and on to the application if they pass it. Input that a program makes
// is handed over at once; `queued` input waits for the input thread.
void SimHandOver(const SimArrival& arrival, bool queued);
// Behind the hooks: updates the session and the application's log.
void SimArrive(const SimArrival& arrival);
void SimPointer(int32_t* x, int32_t* y);
