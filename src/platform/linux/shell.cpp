// NOTE: whoever opens an address or a session's programs on Linux is not one system: xdg-open knows how each desktop
// does the one, the autostart folder is what all of them read for the other.
#include "platform/shell.h"

#include "platform/files.h"
#include "platform/linux/autostart_entry.h"
#include "platform/linux/base_folders.h"
#include "platform/process.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Between fork and exec of a program with threads: only calls that are safe in a signal handler.
[[noreturn]] void BecomeProgram(const char* const* arguments) {
    // What we ignore or block would stay so in the other program.
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    const int nothing = open("/dev/null", O_RDWR);
    if (nothing >= 0) {
        dup2(nothing, STDIN_FILENO);
        dup2(nothing, STDOUT_FILENO);
        dup2(nothing, STDERR_FILENO);
    }
    close_range(STDERR_FILENO + 1, ~0U, 0);
    execvp(arguments[0], const_cast<char* const*>(arguments));
    _exit(127);
}

// Starts a program that lives on without us, and leaves nothing to wait for.
void StartDetached(const char* const* arguments) {
    const pid_t middle = fork();
    if (middle == 0) {
        // The one in the middle ends at once, so that the program belongs to nobody and no dead child stays behind.
        setsid();
        if (fork() == 0) {
            BecomeProgram(arguments);
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
