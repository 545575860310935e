// NOTE: whoever opens an address or a session's programs on Linux is not one system: xdg-open knows how each desktop
// does the one, the autostart folder is what all of them read for the other.
#include "platform/shell.h"

#include "platform/files.h"
#include "platform/linux/autostart_entry.h"
#include "platform/linux/base_folders.h"
#include "platform/linux/child_program.h"
#include "platform/process.h"

#include <cerrno>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Starts a program that lives on without us, and leaves nothing to wait for.
void StartDetached(const char* const* arguments) {
    const pid_t middle = fork();
    if (middle == 0) {
        // The one in the middle ends at once, so that the program belongs to nobody and no dead child stays behind.
        setsid();
        if (fork() == 0) {
            BecomeProgram(arguments[0], const_cast<char* const*>(arguments), -1);
        }
        _exit(0);
    }
    while (middle > 0 && waitpid(middle, nullptr, 0) < 0 && errno == EINTR) {
    }
}

}  // namespace

void OpenTarget(const std::string& target) {
    const char* const arguments[] = {"xdg-open", target.c_str(), nullptr};
    StartDetached(arguments);
}

void SetLaunchAtStartup(bool enabled) {
    const std::string base = BaseFolder("XDG_CONFIG_HOME", ".config");
    if (base.empty()) {
        return;
    }
    const std::string folder = base + "/autostart";
    const std::string path = folder + "/varnelle.desktop";
    if (!enabled) {
        RemoveFile(path);
        return;
    }
    std::string present;
    if (ReadFileBytes(path, &present) && AutostartEntryStands(present, ProgramPath())) {
        return;
    }
    CreateFolderWithParents(folder);
    WriteFileBytes(path, AutostartEntryText(ProgramPath()));
}
