// A file dialog shown by the desktop, through its portal (org.freedesktop.portal.FileChooser). Linux home only, UI
// thread.
#pragma once

#include "platform/linux/dialog_loop.h"

// False if the desktop has no portal, or the portal no file dialog. Otherwise *result tells how it ended.
bool AskByPortal(const DialogRequest& request, FileDialogResult* result);

// "file:///a%20b" as a path; empty if it is no file of this machine.
std::string PathOfFileUri(const std::string& uri);
