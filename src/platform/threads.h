// Starting and joining the program's threads. A seam of its own because the simulated platform runs one thread at a
// time, in an order chosen by a seed.
#pragma once

#include <thread>

// Starts `body` on a new thread that debuggers show as `name` (at most 15 characters). Throws std::system_error where
// a thread cannot be started. `body` must not throw.
std::thread StartThread(const char* name, void (*body)());

// Joins a started thread; does nothing for one that is not joinable.
void JoinThread(std::thread& thread);
