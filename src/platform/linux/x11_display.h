// Connections to the X server.
//
// No error of the server and no lost connection ends the process. Errors of our own requests are ignored: each function
// checks what it needs. A lost connection is not used again.
#pragma once

#include <X11/Xlib.h>
#include <cstdint>

// Opens a connection that reports no errors and survives the loss of the server. Returns null if that fails. The caller
// closes it with CloseDisplay. `lost` becomes true when the connection breaks; it must outlive the connection.
Display* OpenDisplay(bool* lost);
void CloseDisplay(Display* display);

// Returns the calling thread's own connection, which opens at the first call and closes when the thread ends. Returns
// null without a server, and tries to connect again at most once per second.
Display* ThreadDisplay();

// The primary screen on the root window, in pixels. Its corner is the origin of all positions that cross the seam, as on
// Windows. Never empty.
struct ScreenArea {
    int32_t x = 0;
    int32_t y = 0;
    int32_t width = 1;
    int32_t height = 1;
};

// Queries the server.
ScreenArea QueryPrimaryScreen(Display* display);
// Queries the server only after it has reported a change. Reads the events of the calling thread's own connection.
ScreenArea PrimaryScreen();
