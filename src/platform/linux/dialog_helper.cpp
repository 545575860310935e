#include "platform/linux/dialog_helper.h"

#include "platform/linux/child_program.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace {

constexpr const char* kHelper = "zenity";
constexpr int kClosedByPerson = 1;
constexpr size_t kLongestAnswer = 64 * 1024;

// Returns an empty path if no folder of PATH has it.
std::string FindHelper() {
    const char* path = std::getenv("PATH");
    std::string_view folders = path == nullptr ? "" : path;
    while (!folders.empty()) {
        const size_t end = folders.find(':');
        const std::string_view folder = folders.substr(0, end);
        folders = end == std::string_view::npos ? "" : folders.substr(end + 1);
        // An empty or relative folder would mean the current one.
        if (!folder.empty() && folder.front() == '/') {
            std::string file = std::string(folder) + "/" + kHelper;
            if (access(file.c_str(), X_OK) == 0) {
                return file;
            }
        }
    }
    return "";
}

// The folder that the dialog opens, with a closing slash: that of the user's last choice, at first the home folder.
// Otherwise it opens a list of files that other programs have used.
std::string lastFolder;  // UI thread; empty at first

std::string FirstFolder() {
    if (!lastFolder.empty()) {
        return lastFolder;
    }
    const char* home = std::getenv("HOME");
    return home == nullptr || home[0] != '/' ? "" : std::string(home) + "/";
}

std::vector<std::string> HelperArguments(const DialogRequest& request) {
    std::vector<std::string> arguments = {kHelper, "--file-selection", "--title=" + request.title};
    if (request.save) {
        arguments.insert(arguments.end(), {"--save", "--confirm-overwrite"});
    }
    const bool hasFolder = request.proposed.find('/') != std::string::npos;
    const std::string first = hasFolder ? request.proposed : FirstFolder() + request.proposed;
    if (!first.empty()) {
        arguments.push_back("--filename=" + first);
    }
    for (const FileDialogFilter& filter : request.filters) {
        arguments.push_back(std::string("--file-filter=") + filter.name + " | " + DialogGlob(filter.pattern));
    }
    return arguments;
}

// Asks the helper to end, then kills it.
void EndChild(pid_t process) {
    constexpr int kPatienceTurns = 50;
    constexpr int kTurnMilliseconds = 10;
    kill(process, SIGTERM);
    for (int i = 0; i < kPatienceTurns; ++i) {
        if (waitpid(process, nullptr, WNOHANG) != 0) {
            return;
        }
        poll(nullptr, 0, kTurnMilliseconds);
    }
    kill(process, SIGKILL);
    while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

// The helper process. The destructor ends it and closes its output.
struct Helper {
    Helper() = default;
    ~Helper() {
        if (process > 0) {
            EndChild(process);
        }
        if (output >= 0) {
            close(output);
        }
    }
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    pid_t process = -1;  // -1 also once it is gone
    int output = -1;     // what it prints; does not block
};

// In the new process.
[[noreturn]] void BecomeHelper(const char* file, char* const* arguments, int output, pid_t parent) {
    // The dialog must not outlive this program.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() == parent) {
        BecomeProgram(file, arguments, output);
    }
    _exit(kNotStarted);
}

bool StartHelper(const std::string& file, std::vector<std::string> arguments, Helper* helper) {
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return false;
    }
    fcntl(ends[0], F_SETFL, O_NONBLOCK);
    const pid_t parent = getpid();
    helper->process = fork();
    if (helper->process == 0) {
        BecomeHelper(file.c_str(), pointers.data(), ends[1], parent);
    }
    close(ends[1]);
    helper->output = ends[0];
    return helper->process > 0;
}

// Reads the output that is available. Returns false at its end.
bool ReadOutput(int file, std::string* text) {
    char buffer[4096];
    for (;;) {
        const ssize_t got = read(file, buffer, sizeof buffer);
        if (got > 0 && text->size() < kLongestAnswer) {
            text->append(buffer, static_cast<size_t>(got));
        } else if (got == 0 || (got < 0 && errno != EINTR)) {
            return got < 0 && errno == EAGAIN;
        }
    }
}

enum class HelperEnd { Exited, Ended, Dismissed };

// Waits until the helper has ended, also if it leaves children behind, or until its dialog has to close.
HelperEnd WaitForHelper(Helper* helper, std::string* text, int* exitCode) {
    const DialogLoop loop = OpenDialogLoop();
    pollfd output = {helper->output, POLLIN, 0};
    for (;;) {
        if (!TakeDialogTurn(loop, &output, 1)) {
            return HelperEnd::Dismissed;
        }
        int status = 0;
        const pid_t ended = waitpid(helper->process, &status, WNOHANG);
        if (ended != 0) {
            helper->process = -1;
        }
        if (!ReadOutput(helper->output, text)) {
            output.fd = -1;  // closed: wait for the process only
        }
        if (ended > 0) {
            *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            return WIFEXITED(status) ? HelperEnd::Exited : HelperEnd::Ended;
        }
        if (ended < 0) {
            // NOTE: a parent that ignores SIGCHLD makes the system drop exit codes.
            // HACK: the printed output decides.
            *exitCode = text->empty() ? kClosedByPerson : 0;
            return HelperEnd::Exited;
        }
    }
}

FileDialogResult ResultOfHelper(HelperEnd end, int exitCode, std::string text) {
    if (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    if (end == HelperEnd::Exited && exitCode == 0 && !text.empty()) {
        lastFolder = text.substr(0, text.rfind('/') + 1);
        return {FileDialogOutcome::Chosen, std::move(text), {}};
    }
    if (end == HelperEnd::Dismissed ||
        (end == HelperEnd::Exited && (exitCode == 0 || exitCode == kClosedByPerson))) {
        return {};
    }
    return {FileDialogOutcome::Unavailable, {}, "The file dialog (zenity) broke off. Please try again."};
}

}  // namespace

bool AskByHelper(const DialogRequest& request, FileDialogResult* result) {
    const std::string file = FindHelper();
    Helper helper;
    if (file.empty() || !StartHelper(file, HelperArguments(request), &helper)) {
        return false;
    }
    std::string text;
    int exitCode = -1;
    const HelperEnd end = WaitForHelper(&helper, &text, &exitCode);
    *result = ResultOfHelper(end, exitCode, std::move(text));
    return true;
}
