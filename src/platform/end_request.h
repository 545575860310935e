// Requests from outside to end the program in order: SIGTERM, SIGINT and SIGHUP where there are signals.
#pragma once

// UI thread. Calls `handler` from now on whenever something asks the program to end, on a thread of its own. Null stops
// that and waits for a running call. If the thread cannot be started, such a request ends the process at once, as it
// does by default.
void SetEndRequestHandler(void (*handler)());
