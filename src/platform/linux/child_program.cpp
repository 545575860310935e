#include "platform/linux/child_program.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

void BecomeProgram(const char* file, char* const* arguments, int output) {
    // The new program would inherit ignored and blocked signals.
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int each : {SIGPIPE, SIGXFSZ, SIGTSTP, SIGTTIN, SIGTTOU}) {
        signal(each, SIG_DFL);
    }
    const int nothing = open("/dev/null", O_RDWR);
    if (nothing >= 0 && dup2(nothing, STDIN_FILENO) >= 0 &&
        dup2(output >= 0 ? output : nothing, STDOUT_FILENO) >= 0 && dup2(nothing, STDERR_FILENO) >= 0) {
        close_range(STDERR_FILENO + 1, ~0U, 0);
        execvp(file, arguments);
    }
    _exit(kNotStarted);
}
