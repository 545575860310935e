// What the Windows test programs share: scratch folders, waiting for a condition, starting other programs and this test
// program itself in another role.
#pragma once

#include "platform/files.h"

#include <windows.h>

#include <string>

// A new, empty folder. The destructor removes it with its files.
class ScratchFolder {
  public:
    ScratchFolder() {
        char folder[MAX_PATH];
        GetTempPathA(sizeof folder, folder);
        static int number = 0;
        path_ = std::string(folder) + "varnelle-windows-" + std::to_string(GetCurrentProcessId()) + "-" +
                std::to_string(++number);
        CreateDirectoryA(path_.c_str(), nullptr);
    }
    ~ScratchFolder() {
        WIN32_FIND_DATAA found;
        HANDLE search = FindFirstFileA(File("*").c_str(), &found);
        if (search != INVALID_HANDLE_VALUE) {
            do {
                SetFileAttributesA(File(found.cFileName).c_str(), FILE_ATTRIBUTE_NORMAL);
                DeleteFileA(File(found.cFileName).c_str());
            } while (FindNextFileA(search, &found));
            FindClose(search);
        }
        RemoveDirectoryA(path_.c_str());
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string File(const std::string& name) const { return path_ + "\\" + name; }

  private:
    std::string path_;
};

// A running program. The destructor ends the process if it still runs.
class ChildProcess {
  public:
    // `output` becomes its standard output and error; with null it has no console and no standard handles.
    // `program`: the file to run; null: the first word of the command line.
    ChildProcess(const std::wstring& commandLine, HANDLE output, const wchar_t* program = nullptr) {
        STARTUPINFOW start = {};
        start.cb = sizeof start;
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdOutput = output;
        start.hStdError = output;
        std::wstring line = commandLine;
        started_ =
            CreateProcessW(program, line.data(), nullptr, nullptr, output != nullptr,
                           output ? 0 : DETACHED_PROCESS, nullptr, nullptr, &start, &process_) != FALSE;
    }
    ~ChildProcess() {
        if (started_) {
            TerminateProcess(process_.hProcess, 99);
            WaitForSingleObject(process_.hProcess, INFINITE);
            CloseHandle(process_.hProcess);
            CloseHandle(process_.hThread);
        }
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool Started() const { return started_; }
    DWORD Id() const { return process_.dwProcessId; }
    // Returns the exit code, STILL_ACTIVE (259) if it does not end within 60 seconds, or if it could not be started.
    DWORD ExitCode() const {
        DWORD code = STILL_ACTIVE;
        if (started_ && WaitForSingleObject(process_.hProcess, 60000) == WAIT_OBJECT_0) {
            GetExitCodeProcess(process_.hProcess, &code);
        }
        return code;
    }

  private:
    PROCESS_INFORMATION process_ = {};
    bool started_ = false;
};

inline std::wstring OwnProgram() {
    wchar_t path[MAX_PATH];
    return std::wstring(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
}

// Returns the command line of this program in the role `role`, followed by the rest of the line.
inline std::wstring OwnRole(const std::wstring& role, const std::wstring& rest = L"") {
    return L"\"" + OwnProgram() + L"\" --role=" + role + (rest.empty() ? L"" : L" " + rest);
}

// Waits up to 60 seconds until `condition` holds. Returns whether it does.
template <typename Condition> bool Eventually(Condition condition) {
    for (int i = 0; i < 6000; ++i) {
        if (condition()) {
            return true;
        }
        Sleep(10);
    }
    return condition();
}

inline std::wstring Widen(const std::string& text) {
    return std::wstring(text.begin(), text.end());
}

// Runs a command line to its end. Returns the exit code and the output.
inline DWORD RunToEnd(const std::wstring& commandLine, std::string* output,
                      const wchar_t* program = nullptr) {
    ScratchFolder scratch;
    const std::string path = scratch.File("output");
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                              CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD code = 0;
    {
        ChildProcess child(commandLine, file, program);
        code = child.ExitCode();
    }
    CloseHandle(file);
    ReadFileBytes(path, output);
    return code;
}
