// A file dialog shown by the desktop, through its portal (org.freedesktop.portal.FileChooser). UI thread.
#pragma once

#include "platform/linux/dialog_loop.h"

// Returns false if the desktop has no portal, or the portal no file dialog. Otherwise sets *result.
bool AskByPortal(const DialogRequest& request, FileDialogResult* result);

// Returns the path of "file:///a%20b", empty if it is no file of this machine.
std::string PathOfFileUri(const std::string& uri);
