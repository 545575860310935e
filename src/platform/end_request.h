// Requests from outside the program to end in order: SIGTERM, SIGINT and SIGHUP where there are signals.
#pragma once

// From now on `handler` is called, on a thread of this module's own, whenever somebody asks the program to end; null
// ends that, and waits for a call under way. Where the thread cannot be had, such a request ends the process at once,
// as it does by default. UI thread.
void SetEndRequestHandler(void (*handler)());
