// A request from outside to end the program, as by SIGTERM.
#pragma once

void SimRequestEnd();
