#include "platform/end_request.h"

// NOTE: the system ends a program with a window and without a console by messages to that window, at log-off and from the
// task manager. Console control events never reach it.
// HACK: so no handler is needed here. A close ends the main loop as usual. At log-off the last autosave is at most five
// seconds old.
void SetEndRequestHandler(void (*)()) {}
