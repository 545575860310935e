// Raw events of the server become records for the sinks. Input thread only.
#pragma once

#include "platform/linux/input_thread.h"

#include <X11/extensions/XInput2.h>

void OnRawKey(InputThread& thread, const XIRawEvent& event, bool press);
void OnRawButton(InputThread& thread, const XIRawEvent& event, bool press);
void OnRawMotion(InputThread& thread, const XIRawEvent& event);
// Reports a pending move to the sink. Call it before reporting anything that happened after the move.
void ReportMove(InputThread& thread);
// Stores the pointer position. Call it before the first report of a motion.
void RememberPointer(InputThread& thread);
// Reports key repeats that are due.
void ReportRepeats(InputThread& thread);
