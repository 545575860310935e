// Starts and joins the program's threads. Part of the seam because the simulated backend runs one thread at a time, in an
// order chosen by a seed.
#pragma once

#include <thread>

// Starts `body` on a new thread that debuggers show as `name` (at most 15 characters). Throws std::system_error if
// the thread cannot be started. `body` must not throw.
std::thread StartThread(const char* name, void (*body)());

// Joins a started thread. Does nothing if it is not joinable.
void JoinThread(std::thread& thread);
