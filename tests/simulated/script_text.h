// How scripts write keys, buttons, times, input and events.
#pragma once

#include "model/event.h"
#include "platform/simulated/simulation.h"

#include <cstdint>
#include <map>
#include <string>

const std::map<std::string, uint32_t>& Buttons();  // left, right, middle, side1, side2, side
std::string NameOfButton(uint32_t code);
uint32_t CodeFromName(const std::string& name);  // a button or a key; 0 if it is none
std::string NameOfCode(uint32_t code);

// Milliseconds with as many decimals as they need, one at least.
std::string TimeText(int64_t ticks);
std::string ActionOfFlags(uint32_t flags);  // "left down"
uint32_t FlagsOfAction(const std::string& button, const std::string& action);

std::string SentText(const InputAction& action);
std::string SeenText(const SimSeen& seen);
std::string EventText(const UnifiedEvent& event);
