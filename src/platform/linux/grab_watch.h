// Releases the grabs of the input thread when it does not answer, for example because the process was stopped.
//
// A grabbed press freezes its device for every program until the input thread decides, and a stopped process decides
// nothing. So a small process of its own, the watch, asks the input thread once a second for a sign of life. After two
// seconds without an answer it closes the thread's connection to the server, which releases all of its grabs.
#pragma once

#include <X11/Xlib.h>
#include <cstdint>
#include <sys/types.h>

// Call first in main. Runs the watch to its end and returns true if this process was started as one. Otherwise returns
// false, and StartGrabWatch may start this program once more. A program that does not call it has no watch.
bool RunAsGrabWatch(int argumentCount, char** arguments);

// The input thread's end. No watch: socket -1.
struct GrabWatch {
    int socket = -1;
    pid_t process = -1;
    int64_t startedAt = 0;  // counter
};

// Input thread. Starts the watch of a connection; without an effect if the system refuses.
void StartGrabWatch(GrabWatch* watch, Display* display);
// Input thread. Answers the watch, if it has asked. Starts it again if it has ended.
void AnswerGrabWatch(GrabWatch* watch, Display* display);
// Input thread. Ends the watch.
void StopGrabWatch(GrabWatch* watch);
