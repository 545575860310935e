// Tells a running timeline editor that the engines have become busy. The body belongs to a higher floor: start-up sets
// the callable; without one there is nobody to tell.
#pragma once

#include <atomic>

extern std::atomic<void (*)(bool wait)> editorBusyNotice;
// Any thread. With `wait`, allows the editor up to 500 ms to answer.
void NotifyEditorBusy(bool wait);
