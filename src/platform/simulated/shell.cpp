#include "platform/simulated/shell.h"

#include "platform/shell.h"

static SimShell shell;

SimShell& SimGetShell() {
    return shell;
}

void OpenTarget(const std::string& target) {
    shell.opened.push_back(target);
}

void OpenFolder(const std::string& path) {
    shell.openedFolders.push_back(path);
}

SessionKind ReadSessionKind() {
    return shell.session;
}

void SetLaunchAtStartup(bool enabled) {
    shell.launchAtStartup.push_back(enabled);
}

void SimResetShell() {
    shell = SimShell();
}
