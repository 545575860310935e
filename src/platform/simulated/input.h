// What the program has sent through SendInputAction.
#pragma once

#include "platform/input.h"

#include <cstdint>
#include <functional>
#include <vector>

struct SimSent {
    int64_t ticks = 0;  // since SimBegin
    InputAction action;
};

const std::vector<SimSent>& SimSentLog();  // in order
uint64_t SimSentCount();
// Number of sent presses or releases of one button, and of all keys.
uint64_t SimSentButtons(uint32_t button, bool down);
uint64_t SimSentKeys(bool down);
int64_t SimLastSentTicks();
// Called with each sent action, on the sender's thread.
void SimOnSent(std::function<void(const SimSent&)> call);

void SimResetInput();
