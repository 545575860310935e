// The one road for commands: raise a flag, wake the dispatcher, return.
#pragma once

#include <atomic>

// Any thread, the hook procedures included. Never waits.
void RaiseRequest(std::atomic<bool>& flag);
