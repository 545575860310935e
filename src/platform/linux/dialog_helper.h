// A file dialog shown by the program zenity. UI thread.
#pragma once

#include "platform/linux/dialog_loop.h"

// Returns false if there is no such program. Otherwise sets *result.
bool AskByHelper(const DialogRequest& request, FileDialogResult* result);
