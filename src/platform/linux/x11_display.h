// Connections to the X server. Linux home only.
//
// No error of the server and no lost connection ends the process: errors of our own requests are ignored (each
// function checks what it needs), and a connection that broke is not used again.
#pragma once

#include <X11/Xlib.h>
#include <cstdint>

// A new connection that reports nothing and survives the loss of the server; null if there is none to be had. The
// caller closes it with CloseDisplay. `lost` becomes true when the connection breaks; it must outlive it.
Display* OpenDisplay(bool* lost);
void CloseDisplay(Display* display);

// The calling thread's own connection, opened when first asked for and closed when the thread ends. Null without a
// server; a missing one is looked for again at most once a second.
Display* ThreadDisplay();

// Where the primary screen lies on the root window, in pixels. Its corner is the origin of all positions that cross
// the seam, as on Windows. Never empty.
struct ScreenArea {
    int32_t x = 0;
    int32_t y = 0;
    int32_t width = 1;
    int32_t height = 1;
};

// Asks the server.
ScreenArea QueryPrimaryScreen(Display* display);
// Asks the server only after it has told of a change; for the thread's own connection, which it reads for that.
ScreenArea PrimaryScreen();
