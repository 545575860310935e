#include "app/main_process.h"

#include "app/autosave.h"
#include "app/commands.h"
#include "app/session_notices.h"
#include "base/mutex.h"
#include "editing/profiles.h"
#include "engines/autoclicker.h"
#include "engines/dispatcher.h"
#include "engines/key_spammer.h"
#include "engines/playback.h"
#include "engines/recorder.h"
#include "imports/macro_import.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/end_request.h"
#include "platform/files.h"
#include "platform/hooks.h"
#include "platform/page_host.h"
#include "platform/process.h"
#include "platform/shell.h"
#include "platform/threads.h"
#include "platform/wake.h"
#include "platform/window_frame.h"
#include "storage/app_settings.h"
#include "storage/data_folder.h"
#include "storage/session.h"
#include "windows/main_page.h"
#include "windows/main_window.h"
#include "windows/page_loading.h"

#include <array>
#include <exception>
#include <thread>

namespace {

constexpr int kWindowWidth = 420;
constexpr int kWindowHeight = 560;

// ---- The end of input -------------------------------------------------------------------------------------------

// Any thread, any number of times. From here on nothing is sent or held back: the workers end their rounds, and the input
// thread releases its grabs. It comes before every step of the shutdown that may wait for a disk or for the window.
void EndInput() {
    engineState.running = false;
    StopInputThread();
    SignalWake(engineState.quitEvent);
}

// ---- Requests from outside to end -------------------------------------------------------------------------------

std::atomic<bool> endRequested{false};  // the system or another process asked this one to end

// Ends like closing the window. Before the page exists, ServePage sees the request and does not run the page.
void EndMainProcess() {
    endRequested = true;
    EndInput();
    TerminateMainPage();
}

// UI thread. The system may end the process as soon as this returns.
void EndWithSession() {
    EndInput();
    SaveSessionAfterCrash();  // waits for a save of another thread
    EndMainProcess();
}

void ListenForEndRequests() {
    endRequested = false;
    SetEndRequestHandler(EndMainProcess);
}

// ---- Threads ----------------------------------------------------------------------------------------------------

enum ThreadIndex { kAutoclicker, kKeySpammer, kInput, kPlayback, kAutosave, kDispatcher, kThreadCount };

std::array<std::atomic<bool>, kThreadCount> threadEnded;  // by ThreadIndex

template <ThreadIndex index, void (*body)()> void RunToItsEnd() {
    body();
    threadEnded[index] = true;
}

struct ThreadRow {
    const char* name;
    void (*body)();
};

// In the order of start, by ThreadIndex. Debuggers show the names.
constexpr std::array<ThreadRow, kThreadCount> kThreads = {{
    {"autoclicker", RunToItsEnd<kAutoclicker, AutoclickerThreadMain>},
    {"key spammer", RunToItsEnd<kKeySpammer, KeySpammerThreadMain>},
    {"input", RunToItsEnd<kInput, InputThreadMain>},
    {"playback", RunToItsEnd<kPlayback, PlaybackThreadMain>},
    {"autosave", RunToItsEnd<kAutosave, AutosaveThreadMain>},
    {"dispatcher", RunToItsEnd<kDispatcher, DispatcherThreadMain>},
}};

constexpr std::array<ThreadIndex, kThreadCount> kJoinOrder = {
    kAutoclicker, kKeySpammer, kInput, kPlayback, kDispatcher, kAutosave,
};

using MainProcessThreads = std::array<std::thread, kThreadCount>;

void StartThreads(MainProcessThreads* threads) {
    for (size_t i = 0; i < kThreads.size(); ++i) {
        threadEnded[i] = false;
        (*threads)[i] = StartThread(kThreads[i].name, kThreads[i].body);
    }
}

constexpr uint32_t kMostJoinMilliseconds = 5000;  // for all threads together

// Joins the threads that end in time and gives up the others. Returns whether all of them are joined.
bool JoinThreads(MainProcessThreads* threads) {
    const int64_t ticks = ReadPerformanceFrequency() / 1000 * kMostJoinMilliseconds;
    const int64_t deadline = ReadPerformanceCounter() + ticks;
    bool allJoined = true;
    for (const ThreadIndex index : kJoinOrder) {
        std::thread& thread = (*threads)[index];
        while (thread.joinable() && !threadEnded[index] && ReadPerformanceCounter() < deadline) {
            if (index == kInput) {
                // A stop has no effect before the thread has its wake-up channel.
                StopInputThread();
            }
            SleepMilliseconds(1);
        }
        if (!thread.joinable() || threadEnded[index]) {
            JoinThread(thread);
        } else {
            thread.detach();
            allJoined = false;
        }
    }
    return allJoined;
}

// ---- Start-up ---------------------------------------------------------------------------------------------------

// Returns the window of the running instance, or 0. Waits up to 5 seconds, because that instance may be starting.
WindowRef WaitForMainWindow() {
    constexpr int kRounds = 50;
    constexpr uint32_t kRoundMilliseconds = 100;
    WindowRef window = FindMainWindow();
    for (int round = 0; window == 0 && round < kRounds; ++round) {
        SleepMilliseconds(kRoundMilliseconds);
        window = FindMainWindow();
    }
    return window;
}

// Brings the running instance to the front. This one has nothing else to do.
int RunSecondInstance() {
    const WindowRef window = WaitForMainWindow();
    if (window == 0) {
        const uint32_t process = RunningInstanceProcessId();
        ShowErrorMessage("Varnelle",
                         "Varnelle is already running" +
                             (process == 0 ? std::string() : " as process " + std::to_string(process)) +
                             ", but it has no window. End that process, then start Varnelle again.");
    } else {
        if (IsWindowMinimised(window)) {
            RestoreWindow(window);
        }
        ForceForeground(window);
    }
    ReleaseSingleInstance();
    return 0;
}

// Loads the state of earlier runs. The order matters: files of older versions are moved before anything is read; from
// the crash handler on, a crash saves; the settings follow the session; a file of the command line comes last.
void LoadState(const LaunchOptions& options) {
    MigrateSessionFile();
    MigrateStateFile(DataFilePath("theme.txt"), "theme.txt");
    MigrateStateFile(DataFilePath("appsettings.txt"), "appsettings.txt");
    DeleteFromProgramFolder("status.txt");
    DeleteFromProgramFolder("macroevents.txt");
    SetCrashHandler(SaveSessionAfterCrash);
    const SessionLoad session = LoadSession();
    if (!session.loaded) {
        MutexLock lock(macroMutex);
        macroState.profiles.push_back(Profile{DefaultProfileName, {}, {}});
        MarkMacroChanged();
    }
    EnsureDefaultProfile();
    BeginTimerPeriod();
    engineState.counterFrequency = ReadPerformanceFrequency();
    LoadAppSettings();
    SetLaunchAtStartup(appSettings.launchOnStartup);
    if (!options.openMacroPath.empty()) {
        ImportFromCommandLine(options.openMacroPath);
    }
    if (session.damaged) {
        const std::string later = TakePendingThemeAlert();
        SetPendingThemeAlert(DamagedSessionText(session) + (later.empty() ? "" : "\n" + later));
    }
}

void CreateEvents() {
    engineState.quitEvent = CreateWakeEvent(WakeReset::Manual);
    engineState.dispatchEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.autoclickerWakeEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.keySpammerWakeEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.playWakeEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.timelineAckEvent = CreateWakeEvent(WakeReset::Automatic);
}

void LoadMainPage(PageHost* host) {
    const std::string programDirectory = ProgramDirectory();
    std::string page;
    std::string path;
    if (!ReadPage(programDirectory, "index.html", &page, &path)) {
        ShowErrorMessage("UI Error", "Failed to read:\n" + path);
        return;  // the window stays empty; engines and hotkeys still work
    }
    SetPageHtml(host, InlineScripts(std::move(page), programDirectory));
}

// SetPageSize shows the window. Restoring the placement before and after it keeps the window from appearing at another
// place first.
void ShowAtStoredPlacement(PageHost* host) {
    RestoreMainWindowPlacement(host);
    SetPageSize(host, kWindowWidth, kWindowHeight);
    RestoreMainWindowPlacement(host);
}

// Creates the web view and runs the main loop to its end. Returns an empty string, or the sentence for the user that says
// why there is no page.
std::string ServePage(PageHost** host) {
    if (std::string missing = CreatePageHost(host); !missing.empty()) {
        return missing;
    }
    SetMainPage(*host);
    SetPageTitle(*host, kMainWindowTitle);
    SetWindowIcons(PageHostWindow(*host));
    DisableBrowserFeatures(*host);
    ShowAtStoredPlacement(*host);
    BindMainProcessCommands(*host);
    LoadMainPage(*host);
    // Again: some backends create the window only when it is shown.
    SetWindowIcons(PageHostWindow(*host));
    SetUpMainWindow(*host, EndWithSession);
    if (!endRequested) {
        RunPage(*host);
    }
    EndInput();
    EndWindowWatch(*host);
    return {};
}

// ---- Shutdown ---------------------------------------------------------------------------------------------------

void CloseEvent(std::atomic<WakeEvent*>& event) {
    CloseWakeEvent(event.exchange(nullptr));
}

void CloseEvents() {
    CloseEvent(engineState.quitEvent);
    CloseEvent(engineState.timelineAckEvent);
    CloseEvent(engineState.dispatchEvent);
    CloseEvent(engineState.autoclickerWakeEvent);
    CloseEvent(engineState.keySpammerWakeEvent);
    CloseEvent(engineState.playWakeEvent);
}

void ReportSaveProblem() {
    if (const SaveProblem problem = LastSaveProblem(); problem != SaveProblem::None) {
        ShowErrorMessage("Varnelle", SaveProblemText(problem));
    }
}

// Returns false if a thread has not ended, because a disk or a server does not answer it. The thread goes on until the
// process ends, so everything that it may use stays.
bool Shutdown(MainProcessThreads* threads, PageHost* host) {
    EndInput();
    SaveSession();
    const bool allJoined = JoinThreads(threads);
    // Before the events close: a request to end signals one of them.
    SetEndRequestHandler(nullptr);
    if (!allJoined) {
        ReportSaveProblem();
        return false;
    }
    CloseEvents();
    EndTimerPeriod();
    SetMainPage(nullptr);
    if (host != nullptr) {
        DestroyPageHost(host);
    }
    ReportSaveProblem();
    return true;
}

}  // namespace

int RunMainProcess(const LaunchOptions& options) {
    if (ClaimSingleInstance(kSingleInstanceName) == InstanceResult::AlreadyRunning) {
        return RunSecondInstance();
    }
    LoadState(options);
    BeginTimerPeriod();  // the second call; shutdown ends one period, the end of the process the other
    KeepTimerResolutionWhenHidden();
    CreateEvents();

    // The engines start before the window, so that the hotkeys work from the first moment.
    MainProcessThreads threads;
    PageHost* host = nullptr;
    std::string failure;
    try {
        ListenForEndRequests();
        StartThreads(&threads);
        failure = ServePage(&host);
    } catch (const std::exception& error) {
        failure = std::string("Varnelle has to end: ") + error.what() + ". Your session is saved.";
    }
    if (!failure.empty()) {
        ShowErrorMessage("Varnelle", failure);
    }
    const int exitCode = failure.empty() ? 0 : 1;
    if (!Shutdown(&threads, host)) {
        EndProcessAtOnce(exitCode);
    }
    return exitCode;
}
