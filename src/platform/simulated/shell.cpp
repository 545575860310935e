#include "platform/simulated/shell.h"

#include "platform/shell.h"

static SimShell shell;

SimShell& SimGetShell() {
    return shell;
}

void OpenTarget(const std::string& target) {
    shell.opened.push_back(target);
}

void SetLaunchAtStartup(bool enabled) {
    shell.launchAtStartup.push_back(enabled);
}

void SimResetShell() {
    shell = SimShell();
}
