#include "platform/process.h"

#include "platform/files.h"

#include <windows.h>

#include <objbase.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

// Process-wide state, UI thread unless said otherwise.
static HRESULT comResult = E_FAIL;                    // of the UI thread's CoInitializeEx
static HANDLE instanceMutex = nullptr;                // held from ClaimSingleInstance on
static HANDLE dataFolderLock = INVALID_HANDLE_VALUE;  // the same
static std::atomic<void (*)()> crashSave = nullptr;   // taken by the first thread that crashes

void PrepareProcess() {
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    // These variables could redirect the web view.
    static const wchar_t* const kWebViewVariables[] = {
        L"WEBVIEW2_BROWSER_EXECUTABLE_FOLDER", L"WEBVIEW2_ADDITIONAL_BROWSER_ARGUMENTS",
        L"WEBVIEW2_USER_DATA_FOLDER",          L"WEBVIEW2_RELEASE_CHANNEL_PREFERENCE",
        L"WEBVIEW2_PIPE_FOR_SCRIPT_DEBUGGER",  L"WEBVIEW2_WAIT_FOR_SCRIPT_DEBUGGER",
    };
    for (const wchar_t* name : kWebViewVariables) {
        SetEnvironmentVariableW(name, nullptr);
    }
    comResult = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE);
    SetProcessDPIAware();
}

void EndProcess() {
    if (FAILED(comResult) && comResult != RPC_E_CHANGED_MODE) {
        return;
    }
    CoUninitialize();
}

// Not ExitProcess: it ends the other threads first and then waits for locks that they may hold.
void EndProcessAtOnce(int exitCode) {
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
}

void EnsureConsole() {
    HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    if (output != nullptr && output != INVALID_HANDLE_VALUE) {
        return;
    }
    if (AttachConsole(ATTACH_PARENT_PROCESS)) {
        FILE* reopened = nullptr;
        freopen_s(&reopened, "CONOUT$", "w", stdout);
    }
}

std::string ProgramPath() {
    char path[MAX_PATH];
    DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
    return std::string(path, length);
}

std::string ProgramDirectory() {
    std::string path = ProgramPath();
    size_t separator = path.find_last_of("\\/");
    return separator == std::string::npos ? std::string() : path.substr(0, separator);
}

uint32_t OwnProcessId() {
    return GetCurrentProcessId();
}

namespace {
struct ImagePath {
    wchar_t text[MAX_PATH] = {};
    DWORD length = 0;  // 0 if the path is unknown
};
}  // namespace

static ImagePath ReadOwnImagePath() {
    ImagePath path;
    path.length = GetModuleFileNameW(nullptr, path.text, MAX_PATH);
    if (path.length >= MAX_PATH) {
        path.length = 0;  // truncated, so equal to nothing
    }
    return path;
}

bool IsOwnImage(uint32_t processId) {
    static const ImagePath ownImagePath = ReadOwnImagePath();
    HANDLE process = OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId);
    if (!process) {
        return false;
    }
    ImagePath other;
    other.length = MAX_PATH;
    BOOL known = QueryFullProcessImageNameW(process, 0, other.text, &other.length);
    CloseHandle(process);
    if (!known || ownImagePath.length == 0) {
        return false;
    }
    return CompareStringOrdinal(ownImagePath.text, static_cast<int>(ownImagePath.length), other.text,
                                static_cast<int>(other.length), TRUE) == CSTR_EQUAL;
}

// Opened for as long as the process lives, and shared for reading only: a second open for writing fails. The name of
// the mutex holds for one log-on session; the file holds for the data folder.
static HANDLE OpenDataFolderLock() {
    const std::string folder = DataFolderRoot() + "\\Varnelle";
    CreatePrivateFolder(folder);
    return CreateFileA((folder + "\\instance.lock").c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                       OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

InstanceResult ClaimSingleInstance(const char* name) {
    instanceMutex = CreateMutexA(nullptr, TRUE, name);
    if (GetLastError() == ERROR_ALREADY_EXISTS) {
        return InstanceResult::AlreadyRunning;
    }
    dataFolderLock = OpenDataFolderLock();
    if (dataFolderLock == INVALID_HANDLE_VALUE) {
        return GetLastError() == ERROR_SHARING_VIOLATION ? InstanceResult::AlreadyRunning
                                                         : InstanceResult::First;
    }
    const std::string text = std::to_string(GetCurrentProcessId()) + "\r\n";
    DWORD written = 0;
    SetEndOfFile(dataFolderLock);
    WriteFile(dataFolderLock, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    return InstanceResult::First;
}

uint32_t RunningInstanceProcessId() {
    constexpr size_t kLongestNumber = 32;
    std::string text;
    const std::string path = DataFolderRoot() + "\\Varnelle\\instance.lock";
    if (ReadFileLimited(path, kLongestNumber, FileLinks::Refuse, &text) != FileResult::Done) {
        return 0;
    }
    return static_cast<uint32_t>(std::strtoul(text.c_str(), nullptr, 10));
}

void ReleaseSingleInstance() {
    if (instanceMutex) {
        CloseHandle(instanceMutex);
        instanceMutex = nullptr;
    }
    if (dataFolderLock != INVALID_HANDLE_VALUE) {
        CloseHandle(dataFolderLock);
        dataFolderLock = INVALID_HANDLE_VALUE;
    }
}

static void SaveOnce() {
    if (auto save = crashSave.exchange(nullptr)) {
        try {
            save();
        } catch (...) {
            // The process is ending. The failure cannot be reported.
        }
    }
}

static LONG WINAPI CrashSaveFilter(EXCEPTION_POINTERS*) {
    SaveOnce();
    return EXCEPTION_CONTINUE_SEARCH;
}

[[noreturn]] static void SaveAndAbort() {
    SaveOnce();
    std::abort();
}

void SetCrashHandler(void (*save)()) {
    crashSave = save;
    SetUnhandledExceptionFilter(CrashSaveFilter);
    // NOTE: a C++ exception that leaves a thread's function calls std::terminate and never reaches the filter.
    // HACK: the terminate handler saves too.
    std::set_terminate(SaveAndAbort);
}
