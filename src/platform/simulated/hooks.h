// The simulated input thread and the user at keyboard and mouse. Real events go through the hooks on the input thread;
// what the hooks pass reaches the application in front.
#pragma once

#include "platform/hooks.h"
#include "platform/simulated/session.h"

#include <cstdint>
#include <string>
#include <vector>

void SimKey(uint32_t virtualKey, bool down, bool injected = false);  // injected: sent by another program
void SimButton(uint32_t code, bool down, bool injected = false);     // a button code of key_table.h
void SimMove(int32_t x, int32_t y, bool injected = false);
void SimWheel(int32_t delta, bool injected = false);
void SimHorizontalWheel(int32_t delta);
void SimRawMove(int32_t dx, int32_t dy);
void SimSessionChange(SessionChange change);

// RunInputThread returns at once, as when the system refuses the hooks.
void SimRefuseHooks(bool refuse);
bool SimHooksInstalled();
// Returns the presses that were consumed although the interest last read did not announce them.
const std::vector<std::string>& SimHookComplaints();
// Returns whether the interest last read is still current: every change was announced. True without hooks.
bool SimHookInterestIsCurrent();

// For the simulated input. Passes an event through the hooks, if they are installed, and on to the application. Input
// that a program sends is handled at once; `queued` input waits for the input thread.
void SimHandOver(const SimArrival& arrival, bool queued);
void SimResetHooks();
