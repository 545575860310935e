// Waking the input thread from its poll. Linux home only; any thread.
#pragma once

// Without effect while there is no input thread.
void WakeHookThread();
