// Set-up of each thread of the program.
#pragma once

// Sets the least timer slack and a separate stack for the crash handler, so that a stack overflow is still handled. Acts
// on the calling thread. Further calls do nothing.
void SetUpThread();
