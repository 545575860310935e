// What both kinds of file dialog share: the request, and the UI thread's loop while a dialog of another process is open.
// UI thread.
#pragma once

#include "platform/dialogs.h"

#include <poll.h>

#include <string>

struct DialogRequest {
    bool save = false;
    std::span<const FileDialogFilter> filters;
    std::string title;
    std::string
        proposed;  // the name offered at first, possibly with its full path (saving only); empty: none
};

// Returns a filter's pattern for GTK, which is case-sensitive: "*.[vV][rR]...".
std::string DialogGlob(const char* pattern);

// The event loop of our own window if it runs on GLib, else null fields.
struct DialogLoop {
    int (*pending)(void* context) = nullptr;
    int (*iterate)(void* context, int mayBlock) = nullptr;
    void* (*listWindows)() = nullptr;
    unsigned (*countItems)(void* list) = nullptr;
};

bool FileDialogsAllowed();
DialogLoop OpenDialogLoop();
// Waits a few milliseconds for one of `files` and runs the events of our own window. Returns false once the dialog has to
// close: the program is ending, or its window has been closed.
bool TakeDialogTurn(const DialogLoop& loop, pollfd* files, nfds_t count);
