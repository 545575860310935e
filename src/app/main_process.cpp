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

// ---- Requests from outside to end -------------------------------------------------------------------------------

std::atomic<bool> endRequested{false};  // the system or another process asked this one to end

// Ends like closing the window. Before the page exists, ServePage sees the request and does not run the page.
void EndMainProcess() {
    endRequested = true;
    TerminateMainPage();
}

void ListenForEndRequests() {
    endRequested = false;
    SetEndRequestHandler(EndMainProcess);
}

// ---- Threads ----------------------------------------------------------------------------------------------------

std::atomic<bool> inputThreadEnded{false};

void RunInputThreadToItsEnd() {
    InputThreadMain();
    inputThreadEnded = true;
}

enum ThreadIndex { kAutoclicker, kKeySpammer, kInput, kPlayback, kAutosave, kDispatcher, kThreadCount };

struct ThreadRow {
    const char* name;
    void (*body)();
};

// In the order of start, by ThreadIndex. Debuggers show the names.
constexpr std::array<ThreadRow, kThreadCount> kThreads = {{
    {"autoclicker", AutoclickerThreadMain},
    {"key spammer", KeySpammerThreadMain},
    {"input", RunInputThreadToItsEnd},
    {"playback", PlaybackThreadMain},
    {"autosave", AutosaveThreadMain},
    {"dispatcher", DispatcherThreadMain},
}};

constexpr std::array<ThreadIndex, kThreadCount> kJoinOrder = {
    kAutoclicker, kKeySpammer, kInput, kPlayback, kDispatcher, kAutosave,
};

using MainProcessThreads = std::array<std::thread, kThreadCount>;

void StartThreads(MainProcessThreads* threads) {
    inputThreadEnded = false;
    for (size_t i = 0; i < kThreads.size(); ++i) {
        (*threads)[i] = StartThread(kThreads[i].name, kThreads[i].body);
    }
}

void JoinThreads(MainProcessThreads* threads) {
    for (const ThreadIndex index : kJoinOrder) {
        std::thread& thread = (*threads)[index];
        if (index == kInput && thread.joinable()) {
            // A stop has no effect before the thread has its wake-up channel: repeat it until the thread has ended.
            while (!inputThreadEnded) {
                StopInputThread();
                SleepMilliseconds(1);
            }
        }
        JoinThread(thread);
    }
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
    SetUpMainWindow(*host);
    if (!endRequested) {
        RunPage(*host);
    }
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

void Shutdown(MainProcessThreads* threads, PageHost* host) {
    SaveSession();
    engineState.running = false;
    StopInputThread();
    SignalWake(engineState.quitEvent);
    JoinThreads(threads);
    CloseEvents();
    EndTimerPeriod();
    SetEndRequestHandler(nullptr);
    SetMainPage(nullptr);
    if (host != nullptr) {
        DestroyPageHost(host);
    }
    if (const SaveProblem problem = LastSaveProblem(); problem != SaveProblem::None) {
        ShowErrorMessage("Varnelle", SaveProblemText(problem));
    }
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
    Shutdown(&threads, host);
    return failure.empty() ? 0 : 1;
}
