// What the program asked the desktop for outside its windows, in order.
#pragma once

#include "platform/shell.h"

#include <string>
#include <vector>

struct SimShell {
    std::vector<std::string> opened;         // OpenTarget
    std::vector<std::string> openedFolders;  // OpenFolder
    std::vector<bool> launchAtStartup;       // SetLaunchAtStartup
    SessionKind session = SessionKind::X11;  // that ReadSessionKind returns
};
SimShell& SimGetShell();
void SimResetShell();
