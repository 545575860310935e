// A file dialog shown by the program zenity. Linux home only, UI thread.
#pragma once

#include "platform/linux/dialog_loop.h"

// False if there is no such program. Otherwise *result tells how it ended.
bool AskByHelper(const DialogRequest& request, FileDialogResult* result);
