#include "platform/end_request.h"

// NOTE: a program with a window and no console of its own is asked to end by messages to that window, at log-off and
// by the task manager alike; console control events never reach it.
// HACK: there is nothing to listen to here. A close ends the main loop like any other, and at log-off the session that
// the autosave thread wrote last stands, at most five seconds old.
void SetEndRequestHandler(void (*)()) {}
