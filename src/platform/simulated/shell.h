// What the program asked the desktop for outside its windows, in order.
#pragma once

#include <string>
#include <vector>

struct SimShell {
    std::vector<std::string> opened;    // OpenTarget
    std::vector<bool> launchAtStartup;  // SetLaunchAtStartup
};
SimShell& SimGetShell();
void SimResetShell();
