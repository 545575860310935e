// Control of the simulated platform: a virtual clock, threads that run one at a time in an order chosen by a seed, a
// scripted person at keyboard and mouse, an in-memory desktop, and failures on demand.
//
// The thread that calls SimBegin is the driver: it takes part like any other thread, and everything here is called on
// it unless said otherwise. The clock stands still while any thread can run; it moves on to the earliest deadline when
// all wait. The same seed and the same calls give the same run, byte for byte.
#pragma once

#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/hooks.h"
#include "platform/input.h"
#include "platform/window_frame.h"

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

constexpr int64_t kSimTicksPerMillisecond = 10000;  // the counter runs at 10 MHz

struct SimOptions {
    uint64_t seed = 1;
    int64_t spinTicks = 100;     // what one SpinOnce takes, and a wait with a limit of 0 that finds nothing
    int64_t sendTicks = 0;       // what one SendInputRecord takes
    int64_t overshootTicks = 0;  // sleeps and limited waits end late by a random amount up to this
    uint32_t preemptPercent =
        0;  // chance that SignalWake and SendInputRecord let another runnable thread go first
};

// Every thread waits and nothing will ever wake one. Thrown at the driver's waiting point; the text lists the waiters.
class SimDeadlock : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Puts every part of the simulated platform back to its defaults and the clock to its start.
void SimBegin(const SimOptions& options = {});
// Lets all other threads run to their end. Gives what the ones that never end are waiting for; empty when all ended.
std::string SimEnd();

// Time.
double SimMilliseconds();  // since SimBegin
int64_t SimTicks();        // since SimBegin
// Moves on by this much; on return all that can happen up to that moment has happened.
void SimRunFor(double milliseconds);
// All that can happen without the clock moving.
void SimSettle();
// Runs until `done` holds, looked at whenever all threads wait; false when the limit passes first.
bool SimRunUntil(const std::function<bool()>& done, double limitMilliseconds);
// A number for the order and the times in which threads ran so far.
uint64_t SimScheduleHash();
// How many threads started through StartThread have not ended.
int SimLiveThreads();

// The person. Real events go through the hooks on the input thread; what is passed reaches the application in front.
void SimKey(uint32_t virtualKey, bool down, bool injected = false);  // injected: made by another program
void SimSysKey(uint32_t virtualKey, bool down);  // as with Alt held: WM_SYSKEYDOWN, WM_SYSKEYUP
void SimButton(uint32_t code, bool down, bool injected = false);  // 1 left, 2 right, 4 middle, 5 and 6 side
void SimMove(int32_t x, int32_t y, bool injected = false);
void SimWheel(int32_t delta, bool injected = false);
void SimHorizontalWheel(int32_t delta);
void SimRawMove(int32_t dx, int32_t dy);
void SimSessionChange(uint32_t change);
// RunInputThread returns at once, as where the system refuses the hooks.
void SimRefuseHooks(bool refuse);
bool SimHooksInstalled();
// Presses that were consumed although the interest last read did not announce them.
const std::vector<std::string>& SimHookComplaints();
// Whether the interest last read is what would be read now: a change was announced. True without hooks.
bool SimHookInterestIsCurrent();

// What was sent and what arrived.
struct SimSent {
    int64_t ticks = 0;  // since SimBegin
    InputRecord record;
};
enum class SimSeenKind { Key, Button, Move, Wheel, HorizontalWheel };
struct SimSeen {
    int64_t ticks = 0;
    SimSeenKind kind = SimSeenKind::Key;
    uint32_t code = 0;  // virtual key or button code
    bool down = false;
    int32_t x = 0;  // pointer
    int32_t y = 0;
    int32_t wheel = 0;
    bool injected = false;
};
enum class SimLogMode { Full, CountOnly };
void SimSetLogMode(SimLogMode mode);
const std::vector<SimSent>& SimSentLog();  // every SendInputRecord, in order
const std::vector<SimSeen>& SimSeenLog();  // what the application in front saw, in order
uint64_t SimSentCount();
uint64_t SimSentCount(uint32_t type, uint32_t dwFlags);
uint64_t SimSeenCount();
int64_t SimLastSentTicks();
// Called with each sent record, on the sender's thread.
void SimOnSent(std::function<void(const SimSent&)> call);
void SimOnSeen(std::function<void(const SimSeen&)> call);
bool SimKeyIsDown(uint32_t virtualKey);  // as the application believes
bool SimButtonIsDown(uint32_t code);
void SimSetPointer(int32_t x, int32_t y);
void SimHidePointer(bool hidden);  // ReadPointerPosition fails
void SimSetScreen(int32_t width, int32_t height);
void SimSetDoubleClickMilliseconds(uint32_t milliseconds);
// The key of a name with its blanks left out ("F6", "A", "PageUp"), or of "#163"; 0 if there is none. And back.
uint32_t SimKeyFromName(std::string_view name);
std::string SimNameOfKey(uint32_t virtualKey);

// The desktop. Newer windows lie on top of older ones.
struct SimWindow {
    WindowRef window = 0;
    std::string title;
    uint32_t processId = 0;
    int32_t left = 0, top = 0, right = 0, bottom = 0;  // right and bottom are outside
    bool minimised = false;
    bool maximised = false;
    bool hidden = false;
    bool onTop = false;  // noted; does not change the order
};
struct SimMonitor {
    ScreenRectangle bounds;
    ScreenRectangle work;
};
struct SimDesktop {
    std::vector<SimWindow> windows;  // bottom first
    WindowRef foreground = 0;
    std::vector<WindowRef> icons;  // windows that were given icons, in order
    struct Message {
        std::string title;
        std::string text;
    };
    std::vector<Message> messages;    // ShowErrorMessage, in order
    std::function<void()> onMessage;  // called by it, while the person reads
    // The first one is the primary one.
    std::vector<SimMonitor> monitors = {{{0, 0, 1920, 1080}, {0, 0, 1920, 1040}}};
    int32_t frameWidth = 0;   // what a frame adds to a page's size
    int32_t frameHeight = 0;  // and to its height
    int32_t pageScale = 1;    // pixels of the screen to one of the page, in each direction
    // What was done to page windows and when they came to the front, in order: "size 420 560", "place 10 20 300 400",
    // "move 10 20", "watch", "maximise", "top 1", "minimise", "front".
    std::vector<std::string> frameCalls;
    WindowHandlers handlers;  // of the watched window
    WindowRef watched = 0;
};
SimDesktop& SimGetDesktop();
WindowRef SimAddWindow(const std::string& title, uint32_t processId, int32_t left, int32_t top, int32_t right,
                       int32_t bottom);
// The person moves or resizes the page's window, or drops files on it. On the UI thread.
void SimMovePageWindow(const ScreenRectangle& outer);
void SimMaximisePageWindow(bool maximised);
void SimDropFiles(const std::vector<std::string>& paths);

// The page.
struct SimPage {
    bool alive = false;    // created and not destroyed
    bool running = false;  // inside RunPage
    bool browserFeaturesOff = false;
    std::string title;
    int width = 0;
    int height = 0;
    std::string html;
    std::vector<std::string> bound;  // names in binding order
    std::vector<std::string> evals;
    int created = 0;  // how often a host was created since SimBegin
};
SimPage& SimGetPage();
struct SimPageAnswer {
    bool resolved = false;  // false: the promise was rejected with `text`, or nothing of that name is bound
    std::string text;
};
// The page calls a bound function: on the UI thread, waiting for it, or at once if this is the UI thread.
SimPageAnswer SimPageCall(const std::string& name, const std::string& request);
// The person closes the window.
void SimClosePage();
// Called on the UI thread inside RunPage, which returns when it does. For tests that run the master on the driver.
void SimOnPageRun(std::function<void()> call);
// The next CreatePageHost fails with this sentence.
void SimFailPageHost(const std::string& sentence);

// File dialogs. Each takes the next answer; without one the person closes it.
struct SimDialog {
    bool save = false;
    std::string defaultExtension;
    std::vector<std::string> filters;  // "name|pattern"
};
void SimAnswerDialog(FileDialogResult answer);
const std::vector<SimDialog>& SimShownDialogs();  // in order
void SimOnDialog(std::function<void()> call);     // called while one is open

// Files are real ones; these make them fail. Paths are compared as texts.
enum class SimFileFault {
    Refused,   // nothing happens
    HalfDone,  // half of the bytes are written or read; a moved file stays as well; everything else as Refused
};
// The number-th operation from now, 1 the next, 0 none; `forGood`: and every later one.
void SimFailFileOperation(int number, SimFileFault fault = SimFileFault::Refused, bool forGood = false);
void SimFailPath(const std::string& path);            // every operation on it, until SimBegin
int SimFileOperations();                              // how many there were since SimBegin
void SimSetDataFolderRoot(const std::string& value);  // what LOCALAPPDATA holds; empty: unset
void SimSetTextLineEnd(std::string_view lineEnd);     // must live on

// What the desktop is asked for outside our windows, in order.
struct SimShell {
    std::vector<std::string> opened;    // OpenTarget
    std::vector<bool> launchAtStartup;  // SetLaunchAtStartup
};
SimShell& SimGetShell();

// The process.
void SimSetProgramPath(const std::string& path);
void SimAddOwnImageProcess(uint32_t processId);
void SimTakeInstanceName(const std::string& name);  // another process holds it
bool SimOwnsInstanceName(const std::string& name);
void SimCrash();        // runs the crash handler, if one is set
int SimTimerPeriods();  // Begin calls without their End
bool SimTimerKeptWhenHidden();
void SimRequestEnd();  // somebody outside asks the program to end, as by SIGTERM
