#include "platform/process.h"

#include "platform/files.h"
#include "platform/linux/last_save.h"
#include "platform/linux/threads.h"

#include <X11/Xlib.h>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Variables that can redirect or inspect the web view: those of the Windows runtime, so that both backends follow the
// same rule, and those of the runtime on Linux.
constexpr const char* kRedirectingVariables[] = {
    "WEBVIEW2_BROWSER_EXECUTABLE_FOLDER",
    "WEBVIEW2_ADDITIONAL_BROWSER_ARGUMENTS",
    "WEBVIEW2_USER_DATA_FOLDER",
    "WEBVIEW2_RELEASE_CHANNEL_PREFERENCE",
    "WEBVIEW2_PIPE_FOR_SCRIPT_DEBUGGER",
    "WEBVIEW2_WAIT_FOR_SCRIPT_DEBUGGER",
    "WEBKIT_EXEC_PATH",
    "WEBKIT_INJECTED_BUNDLE_PATH",
    "WEBKIT_INSPECTOR_SERVER",
    "WEBKIT_INSPECTOR_HTTP_SERVER",
};

// The claimed lock files: one in the folder of the log-on session, one in the data folder. The second keeps two
// programs with different or unusable session folders from writing one session file. Guarded by instanceMutex; a lock
// ends with its descriptor, also when the process is killed.
std::mutex instanceMutex;
int instanceLock = -1;
int dataFolderLock = -1;

// NOTE: a file opened while a standard stream is closed takes its descriptor and receives the output of that stream.
// HACK: closed streams are opened on /dev/null.
void OpenStandardStreams() {
    int file = -1;
    do {
        file = open("/dev/null", O_RDWR);
    } while (file >= 0 && file <= STDERR_FILENO);
    if (file >= 0) {
        close(file);
    }
}

std::string ClaimedDataFolder() {
    std::string folder = DataFolderRoot() + "/Varnelle";
    CreatePrivateFolder(folder);
    return folder;
}

std::string DataFolderLockPath() {
    return ClaimedDataFolder() + "/instance.lock";
}

// The folder of the log-on session; empty if there is none that can be used.
std::string SessionLockFolder() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    struct stat status {};
    if (runtime != nullptr && runtime[0] == '/' && stat(runtime, &status) == 0 && S_ISDIR(status.st_mode) &&
        access(runtime, W_OK | X_OK) == 0) {
        return runtime;
    }
    return {};
}

std::string LockFileName(const char* name) {
    std::string file = "varnelle-";
    for (const char* each = name; *each != '\0'; ++each) {
        const bool plain =
            std::isalnum(static_cast<unsigned char>(*each)) != 0 || *each == '-' || *each == '_';
        file += plain ? *each : '_';
    }
    return file + ".lock";
}

// Locks the file at `path`, which is created if it is missing. False if another process holds the lock. *lock is the
// descriptor, or -1 where the system fails. The file stays when the claim ends: removing it would let two processes lock
// two files of one name.
bool TakeLock(const std::string& path, int* lock) {
    // For reading: a file that is open for writing would keep its disk from becoming read-only.
    *lock = open(path.c_str(), O_RDONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    if (*lock < 0) {
        return true;
    }
    int result = 0;
    do {
        result = flock(*lock, LOCK_EX | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    if (result == 0) {
        return true;
    }
    const bool isHeld = errno == EWOULDBLOCK;
    close(*lock);
    *lock = -1;
    return !isHeld;
}

void ReleaseLock(int* lock) {
    if (*lock >= 0) {
        close(*lock);
        *lock = -1;
    }
}

std::atomic<pid_t> crashingThread{0};

constexpr unsigned kSaveSeconds = 5;  // a save that waits for a lock of the crashed thread must end

void OnFatalSignal(int signalNumber) {
    const pid_t self = gettid();
    pid_t nobody = 0;
    if (crashingThread.compare_exchange_strong(nobody, self)) {
        std::signal(SIGALRM, SIG_DFL);
        alarm(kSaveSeconds);
        RunLastSave();
    } else if (nobody != self) {
        // Another thread is saving. The process ends when it has finished.
        for (;;) {
            pause();
        }
    }
    std::signal(signalNumber, SIG_DFL);
    raise(signalNumber);
}

}  // namespace

void PrepareProcess() {
    OpenStandardStreams();
    for (const char* name : kRedirectingVariables) {
        unsetenv(name);
    }
    // A lost display, a closed reader of our output and a file at its size limit only make that write fail.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    XInitThreads();
    SetUpThread();
}

void EndProcess() {}

void EndProcessAtOnce(int exitCode) {
    _exit(exitCode);
}

void EnsureConsole() {}

std::string ProgramPath() {
    char path[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
    return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string();
}

std::string ProgramDirectory() {
    const std::string path = ProgramPath();
    const size_t separator = path.rfind('/');
    return separator == std::string::npos ? std::string(".") : path.substr(0, separator);
}

uint32_t OwnProcessId() {
    return static_cast<uint32_t>(getpid());
}

bool IsOwnImage(uint32_t processId) {
    struct stat own {};
    struct stat other {};
    const std::string link = "/proc/" + std::to_string(processId) + "/exe";
    return stat("/proc/self/exe", &own) == 0 && stat(link.c_str(), &other) == 0 &&
           own.st_dev == other.st_dev && own.st_ino == other.st_ino;
}

InstanceResult ClaimSingleInstance(const char* name) {
    const std::lock_guard lock(instanceMutex);
    if (instanceLock >= 0 || dataFolderLock >= 0) {
        return InstanceResult::First;
    }
    const std::string session = SessionLockFolder();
    const std::string folder = session.empty() ? ClaimedDataFolder() : session;
    if (!TakeLock(folder + "/" + LockFileName(name), &instanceLock)) {
        return InstanceResult::AlreadyRunning;
    }
    if (!TakeLock(DataFolderLockPath(), &dataFolderLock)) {
        ReleaseLock(&instanceLock);
        return InstanceResult::AlreadyRunning;
    }
    if (dataFolderLock >= 0) {
        WriteStateFile(DataFolderLockPath(), std::to_string(getpid()) + "\n");
    }
    return InstanceResult::First;
}

uint32_t RunningInstanceProcessId() {
    constexpr size_t kLongestNumber = 32;
    std::string text;
    if (ReadFileLimited(DataFolderLockPath(), kLongestNumber, FileLinks::Refuse, &text) != FileResult::Done) {
        return 0;
    }
    return static_cast<uint32_t>(std::strtoul(text.c_str(), nullptr, 10));
}

void ReleaseSingleInstance() {
    const std::lock_guard lock(instanceMutex);
    ReleaseLock(&instanceLock);
    ReleaseLock(&dataFolderLock);
}

void SetCrashHandler(void (*save)()) {
    SetLastSave(save);
    SetUpThread();
    struct sigaction action {};
    action.sa_handler = OnFatalSignal;
    action.sa_flags = SA_ONSTACK | SA_NODEFER;  // a fault inside the save ends the process at once
    sigemptyset(&action.sa_mask);
    for (const int signalNumber : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        sigaction(signalNumber, &action, nullptr);
    }
}
