// What each thread of the program sets for itself before it works. Linux home only.
#pragma once

// The least timer slack, and a stack of its own for the crash handler, so that an overflown stack can still be
// reported. Acts on the calling thread; further calls do nothing.
void SetUpThread();
