// The INPUT record that SendInput receives for an action. Pure; any thread.
#pragma once

#include "platform/input.h"

#include <windows.h>

// All fields that the action does not use are zero, including the time and the extra information.
INPUT InputRecordOf(const InputAction& action);
