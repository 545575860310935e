// NOTE: Linux has no single service that opens an address or starts programs at log-in. xdg-open knows each desktop's way
// for the first, and all desktops read the autostart folder for the second.
#include "platform/shell.h"

#include "platform/files.h"
#include "platform/linux/autostart_entry.h"
#include "platform/linux/base_folders.h"
#include "platform/linux/child_program.h"
#include "platform/process.h"

#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Starts a program that may outlive this one.
void StartDetached(const char* const* arguments) {
    const pid_t middle = fork();
    if (middle == 0) {
        // The process in between ends at once, so that the system adopts the program and no zombie remains.
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

void OpenFolder(const std::string& path) {
    OpenTarget(path);
}

SessionKind ReadSessionKind() {
    const char* type = std::getenv("XDG_SESSION_TYPE");
    const char* display = std::getenv("WAYLAND_DISPLAY");
    const bool isWayland = (type != nullptr && std::string_view(type) == "wayland") ||
                           (display != nullptr && display[0] != '\0');
    return isWayland ? SessionKind::Wayland : SessionKind::X11;
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
