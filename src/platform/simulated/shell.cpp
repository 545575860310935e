#include "platform/shell.h"

#include "platform/simulated/scheduler.h"

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
