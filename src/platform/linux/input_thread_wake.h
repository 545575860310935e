// Wakes the input thread from its poll. Any thread.
#pragma once

// Returns the descriptor that becomes readable. It stays open for the whole life of the process, since another thread
// may signal it while the input thread ends.
int InputThreadWakeFile();
// Has no effect while there is no input thread.
void WakeInputThread();
// Input thread: makes the descriptor unreadable until the next wake.
void ClearInputThreadWake();
