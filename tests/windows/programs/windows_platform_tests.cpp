// The Windows backend against the system itself: clock, events, threads, files, processes.
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/files.h"
#include "platform/page_host.h"
#include "platform/process.h"
#include "platform/shell.h"
#include "platform/threads.h"
#include "platform/wake.h"
#include "platform/win32/arguments.h"
#include "platform/win32/system_library.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <objbase.h>
#include <timeapi.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <stdexcept>

extern "C" uintptr_t __stack_chk_guard;

namespace {

// ---- clock ----

TEST(Clock, CounterRunsAtItsFrequency) {
    const int64_t frequency = ReadPerformanceFrequency();
    ASSERT_GT(frequency, 0);
    EXPECT_EQ(ReadPerformanceFrequency(), frequency);
    BeginTimerPeriod();
    const int64_t begin = ReadPerformanceCounter();
    SleepMilliseconds(20);
    const double seconds =
        static_cast<double>(ReadPerformanceCounter() - begin) / static_cast<double>(frequency);
    EndTimerPeriod();
    EXPECT_GE(seconds, 0.018);
    int64_t last = ReadPerformanceCounter();
    for (int i = 0; i < 1000; ++i) {
        SpinOnce();
        const int64_t now = ReadPerformanceCounter();
        ASSERT_GE(now, last);
        last = now;
    }
}

TEST(Clock, KeepingTheTimerResolutionEndsNothing) {
    KeepTimerResolutionWhenHidden();  // refused by systems that do not know the throttle
    SUCCEED();
}

// ---- wake ----

TEST(Wake, AutomaticEventIsTakenByOneWait) {
    WakeEvent* event = CreateWakeEvent(WakeReset::Automatic);
    EXPECT_EQ(WaitForAny(&event, 1, 0), -1);
    SignalWake(event);
    SignalWake(event);
    EXPECT_EQ(WaitForAny(&event, 1, 1000), 0);
    EXPECT_EQ(WaitForAny(&event, 1, 0), -1);
    CloseWakeEvent(event);
}

TEST(Wake, ManualEventStaysSet) {
    WakeEvent* event = CreateWakeEvent(WakeReset::Manual);
    SignalWake(event);
    EXPECT_EQ(WaitForAny(&event, 1, 1000), 0);
    EXPECT_EQ(WaitForAny(&event, 1, kNoLimit), 0);
    CloseWakeEvent(event);
}

TEST(Wake, LowestSetEventWinsAndOnlyItIsTaken) {
    WakeEvent* events[4] = {};
    for (WakeEvent*& event : events) {
        event = CreateWakeEvent(WakeReset::Automatic);
    }
    SignalWake(events[3]);
    SignalWake(events[1]);
    EXPECT_EQ(WaitForAny(events, 4, 1000), 1);
    EXPECT_EQ(WaitForAny(events, 4, 1000), 3);
    EXPECT_EQ(WaitForAny(events, 4, 0), -1);
    for (WakeEvent* event : events) {
        CloseWakeEvent(event);
    }
}

TEST(Wake, NullEventsAreNeverSet) {
    SignalWake(nullptr);
    CloseWakeEvent(nullptr);
    WakeEvent* events[2] = {nullptr, CreateWakeEvent(WakeReset::Automatic)};
    SignalWake(events[1]);
    EXPECT_EQ(WaitForAny(events, 2, 1000), 1);
    EXPECT_EQ(WaitForAny(events, 2, 10), -1);
    EXPECT_EQ(WaitForAny(events, 1, 10), -1);
    CloseWakeEvent(events[1]);
}

// ---- threads ----

std::atomic<bool> threadRan = false;
std::wstring threadName;

void NamedBody() {
    using GetDescription = HRESULT(WINAPI*)(HANDLE, PWSTR*);
    auto getDescription = reinterpret_cast<GetDescription>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "GetThreadDescription")));
    PWSTR name = nullptr;
    if (getDescription && SUCCEEDED(getDescription(GetCurrentThread(), &name))) {
        threadName = name;
        LocalFree(name);
    }
    threadRan = true;
}

TEST(Threads, BodyRunsUnderItsName) {
    std::thread thread = StartThread("autoclicker", NamedBody);
    JoinThread(thread);
    EXPECT_TRUE(threadRan);
    EXPECT_FALSE(thread.joinable());
    if (!threadName.empty()) {  // Wine 8 keeps no names
        EXPECT_EQ(threadName, L"autoclicker");
    }
    JoinThread(thread);
}

// ---- files ----

TEST(Files, LinesEndInCarriageReturnAndLineFeed) {
    EXPECT_EQ(TextLineEnd(), "\r\n");
}

TEST(Files, DataFolderRootNeedsAUsableVariable) {
    SetEnvironmentVariableA("LOCALAPPDATA", "C:\\users\\somebody");
    EXPECT_EQ(DataFolderRoot(), "C:\\users\\somebody");
    SetEnvironmentVariableA("LOCALAPPDATA", std::string(259, 'x').c_str());
    EXPECT_EQ(DataFolderRoot(), std::string(259, 'x'));
    SetEnvironmentVariableA("LOCALAPPDATA", std::string(260, 'x').c_str());
    EXPECT_EQ(DataFolderRoot(), ".");
    SetEnvironmentVariableA("LOCALAPPDATA", std::string(2000, 'x').c_str());
    EXPECT_EQ(DataFolderRoot(), ".");
    SetEnvironmentVariableA("LOCALAPPDATA", nullptr);
    EXPECT_EQ(DataFolderRoot(), ".");
}

TEST(Files, BytesAreReadAsWritten) {
    ScratchFolder scratch;
    std::string bytes;
    for (int i = 0; i < 70000; ++i) {
        bytes.push_back(static_cast<char>(i % 256));
    }
    const std::string path = scratch.File("bytes");
    EXPECT_FALSE(FileExists(path));
    ASSERT_TRUE(WriteFileBytes(path, bytes));
    EXPECT_TRUE(FileExists(path));
    std::string back = "before";
    ASSERT_TRUE(ReadFileBytes(path, &back));
    EXPECT_EQ(back, bytes);
    ASSERT_TRUE(WriteFileBytes(path, "short"));
    ASSERT_TRUE(ReadFileBytes(path, &back));
    EXPECT_EQ(back, "short");
    ASSERT_TRUE(WriteFileBytes(path, ""));
    ASSERT_TRUE(ReadFileBytes(path, &back));
    EXPECT_EQ(back, "");
}

TEST(Files, FailuresReturnFalse) {
    ScratchFolder scratch;
    std::string bytes;
    EXPECT_FALSE(ReadFileBytes(scratch.File("missing"), &bytes));
    EXPECT_FALSE(WriteFileBytes(scratch.File("missing\\file"), "x"));
    EXPECT_FALSE(RemoveFile(scratch.File("missing")));
    EXPECT_FALSE(MoveFileNoReplace(scratch.File("missing"), scratch.File("other")));
    EXPECT_FALSE(ReadFileBytes("", &bytes));
    EXPECT_FALSE(WriteFileBytes("", "x"));
    EXPECT_FALSE(FileExists(""));
}

TEST(Files, AReadOnlyFileIsNotRemoved) {
    ScratchFolder scratch;
    const std::string path = scratch.File("fixed");
    ASSERT_TRUE(WriteFileBytes(path, "x"));
    SetFileAttributesA(path.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(RemoveFile(path));
    std::string bytes;
    ASSERT_TRUE(ReadFileBytes(path, &bytes));
    EXPECT_EQ(bytes, "x");
}

TEST(Files, MoveReplacesNothing) {
    ScratchFolder scratch;
    ASSERT_TRUE(WriteFileBytes(scratch.File("a"), "a"));
    ASSERT_TRUE(WriteFileBytes(scratch.File("b"), "b"));
    EXPECT_FALSE(MoveFileNoReplace(scratch.File("a"), scratch.File("b")));
    EXPECT_TRUE(FileExists(scratch.File("a")));
    EXPECT_TRUE(MoveFileNoReplace(scratch.File("a"), scratch.File("c")));
    EXPECT_FALSE(FileExists(scratch.File("a")));
    std::string bytes;
    ASSERT_TRUE(ReadFileBytes(scratch.File("b"), &bytes));
    EXPECT_EQ(bytes, "b");
    ASSERT_TRUE(ReadFileBytes(scratch.File("c"), &bytes));
    EXPECT_EQ(bytes, "a");
}

TEST(Files, AFileIsReadWhileAnotherWritesIt) {
    ScratchFolder scratch;
    const std::string path = scratch.File("mirror");
    HANDLE writer = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(writer, "half", 4, &written, nullptr);
    std::string bytes;
    EXPECT_TRUE(ReadFileBytes(path, &bytes));
    EXPECT_EQ(bytes, "half");
    CloseHandle(writer);
}

TEST(Files, AFolderIsCreatedOnce) {
    ScratchFolder scratch;
    EXPECT_TRUE(CreateFolder(scratch.File("folder")));
    EXPECT_TRUE(FileExists(scratch.File("folder")));
    EXPECT_FALSE(CreateFolder(scratch.File("folder")));
    std::string bytes;
    EXPECT_FALSE(ReadFileBytes(scratch.File("folder"), &bytes));
    RemoveDirectoryA(scratch.File("folder").c_str());
}

// ---- process ----

TEST(Process, PathsNameThisProgram) {
    const std::string path = ProgramPath();
    EXPECT_EQ(Widen(path), OwnProgram());
    EXPECT_EQ(ProgramDirectory() + "\\windows_platform_tests.exe", path);
}

TEST(Process, OwnImageKnowsOtherProcessesOfThisProgram) {
    EXPECT_TRUE(IsOwnImage(OwnProcessId()));
    ChildProcess same(OwnRole(L"wait"), nullptr);
    ASSERT_TRUE(same.Started());
    EXPECT_TRUE(IsOwnImage(same.Id()));
    EXPECT_FALSE(IsOwnImage(0));
    EXPECT_FALSE(IsOwnImage(0xFFFFFFF0));
}

// A program started by a name in another case keeps that name, while other processes see the name of the file.
TEST(Process, OwnImageComparesWithoutCase) {
    std::wstring shouted = OwnRole(L"same-image", std::to_wstring(OwnProcessId()));
    const size_t name = shouted.find(L"windows_platform_tests");
    ASSERT_NE(name, std::wstring::npos);
    shouted.replace(name, 7, L"WINDOWS");
    std::string output;
    EXPECT_EQ(RunToEnd(shouted, &output), 20u);
    EXPECT_NE(output.find("WINDOWS_platform_tests"), std::string::npos) << output;
}

// The data folder of this process and of those that it starts.
static void UseDataFolderIn(const ScratchFolder& folder) {
    SetEnvironmentVariableA("LOCALAPPDATA", folder.File(".").c_str());
}

static void RemoveDataFolderIn(const ScratchFolder& folder) {
    DeleteFileA(folder.File("Varnelle\\instance.lock").c_str());
    RemoveDirectoryA(folder.File("Varnelle").c_str());
}

TEST(Process, TheNameIsClaimedOnce) {
    ScratchFolder own;
    ScratchFolder other;
    std::string output;
    UseDataFolderIn(own);
    EXPECT_EQ(ClaimSingleInstance("Local\\VarnelleTestInstance"), InstanceResult::First);
    EXPECT_EQ(RunToEnd(OwnRole(L"claim", L"Local\\VarnelleTestInstance"), &output), 11u);
    // Another name stands for another log-on session. The data folder is the same.
    EXPECT_EQ(RunToEnd(OwnRole(L"claim", L"Local\\VarnelleOtherInstance"), &output), 11u);
    EXPECT_EQ(RunningInstanceProcessId(), GetCurrentProcessId());
    UseDataFolderIn(other);
    EXPECT_EQ(RunToEnd(OwnRole(L"claim", L"Local\\VarnelleOtherInstance"), &output), 10u);
    UseDataFolderIn(own);
    ReleaseSingleInstance();
    EXPECT_EQ(RunToEnd(OwnRole(L"claim", L"Local\\VarnelleTestInstance"), &output), 10u);
    ReleaseSingleInstance();
    RemoveDataFolderIn(own);
    RemoveDataFolderIn(other);
}

TEST(Process, AFailedClaimCountsAsFirst) {
    ScratchFolder own;
    UseDataFolderIn(own);
    HANDLE event =
        CreateEventA(nullptr, TRUE, FALSE, "Local\\VarnelleNoMutex");  // the name is of another kind
    EXPECT_EQ(ClaimSingleInstance("Local\\VarnelleNoMutex"), InstanceResult::First);
    ReleaseSingleInstance();
    CloseHandle(event);
    RemoveDataFolderIn(own);
}

TEST(Process, ACrashSavesOnceAndStillEndsTheProcess) {
    for (const wchar_t* role : {L"crash", L"crash-thread", L"throw"}) {
        ScratchFolder scratch;
        const std::string saved = scratch.File("saved");
        std::string output;
        const DWORD code = RunToEnd(OwnRole(role, Widen(saved)), &output);
        EXPECT_NE(code, 0u);
        EXPECT_NE(code, static_cast<DWORD>(STILL_ACTIVE));
        if (wcscmp(role, L"throw") != 0) {
            EXPECT_EQ(code, static_cast<DWORD>(EXCEPTION_ACCESS_VIOLATION));
        }
        std::string bytes;
        ReadFileBytes(saved, &bytes);
        EXPECT_EQ(bytes, "1") << "role " << std::string(role, role + wcslen(role));
    }
}

TEST(Process, ACrashInTheSaveItselfEndsTheProcessToo) {
    std::string output;
    EXPECT_NE(RunToEnd(OwnRole(L"crash-twice"), &output), static_cast<DWORD>(STILL_ACTIVE));
}

TEST(Process, RedirectedOutputStaysWhereItIs) {
    std::string output;
    EXPECT_EQ(RunToEnd(OwnRole(L"console"), &output), 3u);
    EXPECT_EQ(output, "a line\r\n");
}

TEST(Process, WithoutAConsoleTheOutputIsLostAndTheExitCodeIsKept) {
    ChildProcess detached(OwnRole(L"console"), nullptr);
    EXPECT_EQ(detached.ExitCode(), 3u);
}

TEST(Process, PreparationClearsTheWebViewVariables) {
    for (const char* name : {"WEBVIEW2_BROWSER_EXECUTABLE_FOLDER", "WEBVIEW2_ADDITIONAL_BROWSER_ARGUMENTS",
                             "WEBVIEW2_USER_DATA_FOLDER", "WEBVIEW2_RELEASE_CHANNEL_PREFERENCE",
                             "WEBVIEW2_PIPE_FOR_SCRIPT_DEBUGGER", "WEBVIEW2_WAIT_FOR_SCRIPT_DEBUGGER"}) {
        SetEnvironmentVariableA(name, "set");
    }
    SetEnvironmentVariableA("WEBVIEW2_SOMETHING_ELSE", "set");
    std::string output;
    EXPECT_EQ(RunToEnd(OwnRole(L"prepare"), &output), 0u);
    EXPECT_EQ(output, "WEBVIEW2_SOMETHING_ELSE=set\r\napartment 0\r\n");
}

// In the system's code page.
std::string NarrowBySystem(const std::wstring& text) {
    char bytes[256] = {};
    WideCharToMultiByte(CP_ACP, 0, text.c_str(), -1, bytes, sizeof bytes - 1, nullptr, nullptr);
    return bytes;
}

TEST(Process, ArgumentsComeFromTheWideLineAndTheRestFromTheNarrowOne) {
    std::string output;
    const std::wstring rest = L"--x=\"C:\\two words\" \x0141\x20ACz \"\"";
    RunToEnd(OwnRole(L"arguments", rest), &output);
    EXPECT_EQ(output,
              "valid 1\r\nline --role=arguments " + NarrowBySystem(rest) +
                  "\r\n[45 45 114 111 108 101 61 97 114 103 117 109 101 110 116 115]\r\n"
                  "[45 45 120 61 67 58 92 116 119 111 32 119 111 114 100 115]\r\n[321 8364 122]\r\n[]\r\n");
}

// The program is named by the first word, whatever file really runs.
TEST(Process, AnUnquotedNameWithOtherLettersThanAsciiEndsAtItsSpace) {
    for (const wchar_t* name : {L"C:\\J\u00FCrgen\\Varnelle.exe", L"C:\\\u0418\u0432\u0430\u043D\\x.exe",
                                L"C:\\\u30BD\u30D5\u30C8\\x.exe", L"\"C:\\J\u00FCrgen und\\x.exe\""}) {
        std::string output;
        RunToEnd(std::wstring(name) + L" --role=arguments --timeline", &output, OwnProgram().c_str());
        EXPECT_EQ(output.substr(0, output.find("\r\n[")), "valid 1\r\nline --role=arguments --timeline");
    }
}

// ---- stack protector ----

TEST(StackProtector, EndsTheProcessAtOnceWithoutASave) {
    ScratchFolder scratch;
    const std::string saved = scratch.File("saved");
    std::string output;
    EXPECT_EQ(RunToEnd(OwnRole(L"overflow", Widen(saved)), &output),
              DWORD{0xC0000602});  // STATUS_FAIL_FAST_EXCEPTION
    EXPECT_EQ(output, "overwritten\r\n");
    EXPECT_FALSE(FileExists(saved));
}

TEST(StackProtector, EachProcessHasAnotherGuard) {
    std::string first;
    std::string second;
    EXPECT_EQ(RunToEnd(OwnRole(L"guard"), &first), 0u);
    EXPECT_EQ(RunToEnd(OwnRole(L"guard"), &second), 0u);
    EXPECT_GT(first.size(), 8u);
    EXPECT_NE(first, second);
}

// ---- library search ----

TEST(LibrarySearch, TheProgramFolderAnswersNoName) {
    std::wstring folder = OwnProgram();
    folder.resize(folder.find_last_of(L'\\') + 1);
    // Any library that loads will do.
    const std::wstring planted = folder + L"varnelle-planted.dll";
    ASSERT_TRUE(CopyFileW((folder + L"webview\\libwebview.dll").c_str(), planted.c_str(), FALSE));
    std::string output;
    RunToEnd(OwnRole(L"library-search"), &output);
    DeleteFileW(planted.c_str());
    EXPECT_EQ(output, "system library 0\r\nbare name 1\r\nbare name beside the view 0\r\nsystem 1\r\n");
}

// ---- desktop ----

bool IsTopmost(HWND window) {
    return (GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0;
}

TEST(Desktop, OnTopKeepsPlaceAndSize) {
    HWND window = CreateWindowExW(0, L"STATIC", L"Varnelle on top", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 30, 40,
                                  320, 210, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(window, nullptr);
    const WindowRef found = FindWindowByTitle("Varnelle on top");
    EXPECT_EQ(found, reinterpret_cast<WindowRef>(window));
    RECT before = {};
    GetWindowRect(window, &before);
    EXPECT_FALSE(IsTopmost(window));
    for (bool onTop : {true, true, false, false, true, false}) {
        SetWindowOnTop(found, onTop);
        EXPECT_EQ(IsTopmost(window), onTop);
        RECT after = {};
        GetWindowRect(window, &after);
        EXPECT_TRUE(EqualRect(&before, &after));
    }
    SetWindowOnTop(0, true);
    DestroyWindow(window);
    SetWindowOnTop(found, true);
}

// ---- shell ----

const char* const kRunKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";

// Returns the type and the value of that name under the key, "none" if there is none.
std::string RunValue(const char* name) {
    char text[1024];
    DWORD size = sizeof text;
    DWORD type = 0;
    if (RegGetValueA(HKEY_CURRENT_USER, kRunKey, name, RRF_RT_ANY, &type, text, &size) != ERROR_SUCCESS) {
        return "none";
    }
    return (type == REG_SZ ? "REG_SZ " : "other ") + std::string(text, size);
}

TEST(Shell, TheRunValueFollowsTheSetting) {
    RegSetKeyValueA(HKEY_CURRENT_USER, kRunKey, "Another program", REG_SZ, "x", 2);
    SetLaunchAtStartup(false);
    EXPECT_EQ(RunValue("Varnelle"), "none");
    SetLaunchAtStartup(true);
    const std::string quoted = std::string("REG_SZ \"") + ProgramPath() + "\"" + '\0';
    EXPECT_EQ(RunValue("Varnelle"), quoted);
    RegSetKeyValueA(HKEY_CURRENT_USER, kRunKey, "Varnelle", REG_SZ, "elsewhere", 10);
    SetLaunchAtStartup(true);
    EXPECT_EQ(RunValue("Varnelle"), quoted);
    SetLaunchAtStartup(false);
    EXPECT_EQ(RunValue("Varnelle"), "none");
    SetLaunchAtStartup(false);
    EXPECT_EQ(RunValue("Another program"), std::string("REG_SZ x") + '\0');
    RegDeleteKeyValueA(HKEY_CURRENT_USER, kRunKey, "Another program");
}

TEST(Shell, WithoutTheRunKeyNothingHappens) {
    ASSERT_EQ(RegDeleteTreeA(HKEY_CURRENT_USER, kRunKey), ERROR_SUCCESS);
    SetLaunchAtStartup(true);
    SetLaunchAtStartup(false);
    EXPECT_EQ(RunValue("Varnelle"), "none");
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kRunKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
}

// ---- this program in its other roles ----

std::string savePath;

void CountSave() {
    std::string before;
    ReadFileBytes(savePath, &before);
    WriteFileBytes(savePath, before + "1");
}

__attribute__((noinline)) void OverflowStack(size_t count) {
    char buffer[16];
    volatile char* byte = buffer;
    for (size_t written = 0; written < count; ++written) {
        byte[written] = 'x';
    }
    printf("overwritten\n");
    fflush(stdout);
}

[[noreturn]] void Crash() {
    volatile int* nowhere = nullptr;
    *nowhere = 1;
    abort();
}

int RunPrepareRole() {
    PrepareProcess();
    wchar_t* block = GetEnvironmentStringsW();
    for (const wchar_t* entry = block; *entry; entry += wcslen(entry) + 1) {
        if (wcsncmp(entry, L"WEBVIEW2_", 9) == 0) {
            printf("%ls\n", entry);
        }
    }
    FreeEnvironmentStringsW(block);
    APTTYPE apartment = APTTYPE_MTA;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    CoGetApartmentType(&apartment, &qualifier);
    // The first single-threaded apartment of a process is its main one.
    printf("apartment %d\n", apartment == APTTYPE_STA || apartment == APTTYPE_MAINSTA ? 0 : 1);
    EndProcess();
    return 0;
}

// Whether the planted library is found, by each way in which the program and the web view library load libraries.
int RunLibrarySearchRole() {
    const wchar_t name[] = L"varnelle-planted.dll";
    PrepareProcess();
    const SystemLibrary fromSystem(name);
    void* found = fromSystem.Find("webview_create");
    printf("system library %d\n", found != nullptr);
    HMODULE module = LoadLibraryW(name);
    printf("bare name %d\n", module != nullptr);
    FreeLibrary(module);
    PageHost* host = nullptr;
    CreatePageHost(&host);  // fails, since there is no library beside this program
    printf("bare name beside the view %d\n", LoadLibraryW(name) != nullptr);
    const SystemLibrary system(L"winmm.dll");
    decltype(&timeBeginPeriod) begin = system.Find("timeBeginPeriod");
    printf("system %d\n", begin != nullptr);
    EndProcess();
    return 0;
}

int RunArgumentsRole() {
    const ProcessArguments arguments = ReadProcessArguments();
    printf("valid %d\nline %s\n", arguments.wideViewValid, arguments.line.c_str());
    for (const std::u16string& argument : arguments.arguments) {
        printf("[");
        for (size_t i = 0; i < argument.size(); ++i) {
            printf(i == 0 ? "%d" : " %d", argument[i]);
        }
        printf("]\n");
    }
    return 0;
}

int RunCrashRole(const std::string& role) {
    SetErrorMode(SEM_NOGPFAULTERRORBOX);
    SetCrashHandler(role == "crash-twice" ? [] { Crash(); } : CountSave);
    if (role == "crash-thread") {
        std::thread thread([] { Crash(); });
        thread.join();
    }
    if (role == "throw") {
        std::thread thread([] { throw std::runtime_error("not caught"); });
        thread.join();
    }
    Crash();
}

int RunRole(const std::string& role, const char* argument) {
    if (role == "claim") {
        return ClaimSingleInstance(argument) == InstanceResult::First ? 10 : 11;
    }
    if (role == "same-image") {
        printf("%s\n", ProgramPath().c_str());
        return IsOwnImage(static_cast<uint32_t>(atol(argument))) ? 20 : 21;
    }
    if (role == "console") {
        EnsureConsole();
        printf("a line\n");
        return 3;
    }
    if (role == "prepare") {
        return RunPrepareRole();
    }
    if (role == "overflow") {
        savePath = argument;
        SetCrashHandler(CountSave);
        OverflowStack(200);
        return 0;
    }
    if (role == "guard") {
        printf("%llx\n", static_cast<unsigned long long>(__stack_chk_guard));
        return 0;
    }
    if (role == "library-search") {
        return RunLibrarySearchRole();
    }
    if (role == "arguments") {
        return RunArgumentsRole();
    }
    if (role == "wait") {
        Sleep(60000);
        return 0;
    }
    savePath = argument;
    return RunCrashRole(role);
}

}  // namespace

int main(int argc, char** argv) {
    const char kRole[] = "--role=";
    if (argc > 1 && strncmp(argv[1], kRole, strlen(kRole)) == 0) {
        return RunRole(argv[1] + strlen(kRole), argc > 2 ? argv[2] : "");
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
