// The process-wide state that the engines, the hooks, the page commands and storage share. One definition, in
// engine_state.cpp.
#pragma once

#include "base/mutex.h"
#include "base/relaxed.h"
#include "model/event.h"
#include "model/profile.h"

#include <atomic>
#include <cstdint>
#include <vector>

struct WakeEvent;

// The autoclicker's settings. Written by page commands, profile switches and (location) the hook thread; read by the
// autoclick thread. A reader may see one update half done.
struct SpammerSettings {
    Relaxed<int32_t> sh{0};       // interval: hours
    Relaxed<int32_t> sm{0};       // minutes
    Relaxed<int32_t> ss{0};       // seconds
    Relaxed<int32_t> sms{5};      // milliseconds
    Relaxed<int32_t> sbtn{0};     // 0 left, 1 right, 2 middle
    Relaxed<int32_t> stype{0};    // 1 double click, else single
    Relaxed<int32_t> rptMode{1};  // 0 stop after rptTimes clicks, else until stopped
    Relaxed<int32_t> rptTimes{10};
    Relaxed<int32_t> locMode{0};  // 1 click at fixedX, fixedY; else where the pointer is
    Relaxed<int32_t> fixedX{0};   // screen pixels
    Relaxed<int32_t> fixedY{0};
};

constexpr int kMaxKeySpamTargets = 256;
constexpr uint32_t kSpaceKey = 32;

// The key spammer's settings. Written by page commands, the dispatcher and profile switches; read by the key spam
// thread, entry by entry.
struct KeySpamSettings {
    Relaxed<int32_t> ksh{0};  // interval, as in SpammerSettings
    Relaxed<int32_t> ksm{0};
    Relaxed<int32_t> kss{0};
    Relaxed<int32_t> ksms{5};
    Relaxed<int32_t> ksRptMode{1};  // 0 stop after ksRptTimes rounds, else until stopped
    Relaxed<int32_t> ksRptTimes{10};
    // Virtual-key codes, in order of adding; the first keySpamTargetCount (0 to kMaxKeySpamTargets) are in use.
    std::atomic<uint32_t> keySpamTargets[kMaxKeySpamTargets] = {kSpaceKey};
    std::atomic<int32_t> keySpamTargetCount{1};
    // Copy of the first target, for the single-key field of older forms.
    std::atomic<uint32_t> ksKey{kSpaceKey};
    Relaxed<bool> keySpamChord{false};  // true presses all targets together, false takes them in turn
};

// What is recorded and how it is played. Written by page commands and the session reader; read by the hook thread and
// the playback thread at each use.
struct TrackerSettings {
    Relaxed<bool> tmv{true};        // record pointer moves
    Relaxed<bool> tclk{true};       // record buttons
    Relaxed<bool> tscr{true};       // record the wheel
    Relaxed<bool> tkey{true};       // record keys
    Relaxed<bool> trel{false};      // record moves as raw relative counts
    Relaxed<float> tspd{1.0F};      // speed: schedule times are divided by it; not checked
    Relaxed<bool> tloop{false};     // repeat until stopped
    Relaxed<int32_t> tloopMs{500};  // pause between rounds, milliseconds
};

// Virtual-key codes, or mouse buttons: 1 left, 2 right, 4 middle, 5 and 6 side.
struct HotkeyTable {
    std::atomic<uint32_t> rec{119};      // F8
    std::atomic<uint32_t> play{118};     // F7
    std::atomic<uint32_t> autoKey{117};  // F6; "auto" outside C++
    std::atomic<uint32_t> keyspam{120};  // F9
    std::atomic<uint32_t> unlock{121};   // F10
    Relaxed<bool> holdAuto{false};       // the autoclicker runs while its hotkey is held
    Relaxed<bool> holdKeySpam{false};
};

struct EngineState {
    // State flags. Only DispatchRequests starts and stops engines; a worker clears its own flag at its normal end.
    std::atomic<bool> running{
        true};  // the only stop condition of loops; cleared at shutdown before quitEvent
    std::atomic<bool> recording{false};
    std::atomic<bool> playing{false};
    std::atomic<bool> autoClicking{false};
    std::atomic<bool> keySpamming{false};
    std::atomic<bool> pickingLocation{false};  // set by the page, cleared by the mouse hook
    std::atomic<bool> panelHover{false};       // stored and reported for the page; no effect in the engines
    std::atomic<bool> lockOn{true};            // the hotkey lock is in use
    std::atomic<bool> unlocked{true};          // with lockOn: the hotkeys are live
    std::atomic<bool> hotkeysEnabled{true};
    std::atomic<bool> stopToolsWithMacro{true};

    // Request flags: raised by RaiseRequest from any thread, consumed by DispatchRequests.
    std::atomic<bool> reqToggleRecord{false};
    std::atomic<bool> reqStartRecord{false};
    std::atomic<bool> reqStopRecord{false};
    std::atomic<bool> reqContinueRecord{false};
    std::atomic<bool> reqUndoContinue{false};
    std::atomic<bool> reqTogglePlay{false};
    std::atomic<bool> reqStartPlay{false};
    std::atomic<bool> reqStopPlay{false};
    std::atomic<bool> reqToggleAuto{false};
    std::atomic<bool> reqStartAuto{false};
    std::atomic<bool> reqStopAuto{false};
    std::atomic<bool> reqToggleKeySpam{false};
    std::atomic<bool> reqStartKeySpam{false};
    std::atomic<bool> reqStopKeySpam{false};

    // Wake events: created before the threads start, closed and cleared after they are joined. Null is no event.
    std::atomic<WakeEvent*> dispatchEvent{nullptr};     // automatic: a request or a captured key waits
    std::atomic<WakeEvent*> autoWakeEvent{nullptr};     // automatic: autoClicking changed
    std::atomic<WakeEvent*> keySpamWakeEvent{nullptr};  // automatic: keySpamming changed
    std::atomic<WakeEvent*> playWakeEvent{nullptr};     // automatic: playing changed
    std::atomic<WakeEvent*> quitEvent{nullptr};         // manual: shutdown
    std::atomic<WakeEvent*> timelineAckEvent{nullptr};  // automatic: the editor has acknowledged

    // Counters and capture.
    std::atomic<int64_t> qpcFrequency{1};  // ticks a second; set once at start
    std::atomic<int64_t> recordStartQpc{
        0};  // counter at the start of the recording; dispatcher writes, hook reads
    std::atomic<int32_t> autoClickCount{0};   // clicks of this run
    std::atomic<int32_t> keySpamCount{0};     // rounds of this run
    std::atomic<uint32_t> reassignTarget{0};  // ReassignTarget: which binding is being captured
    std::atomic<uint32_t> capturedKey{0};     // the key or button caught for it, 0 none
};

enum ReassignTarget : uint32_t {
    kReassignNone = 0,
    kReassignRec = 1,
    kReassignPlay = 2,
    kReassignAuto = 3,
    kReassignKeySpamHotkey = 4,
    kReassignKeySpamTarget = 5,
    kReassignUnlock = 6,
};

extern SpammerSettings spammerSettings;
extern KeySpamSettings keySpamSettings;
extern TrackerSettings trackerSettings;
extern HotkeyTable hotkeyTable;
extern EngineState engineState;

// Guards the profiles, every event list and the continued recording. Plain and not recursive. The hook thread takes it
// for each recorded event: hold it briefly, never while waiting, writing files or signalling an event.
extern Mutex macroMutex;

struct MacroState {
    std::vector<Profile> profiles;  // never empty once start-up is past the session
    int32_t currentProfile = 0;     // index into profiles; "the macro" is that profile's event list

    // Raised by whoever changes an event list or currentProfile (MarkMacroChanged), so that a report that was built
    // from the same macro need not be built again.
    uint64_t revision = 1;

    // Continued recording and its one step of undo.
    std::vector<UnifiedEvent> continueBaseline;  // the macro before the continued recording
    std::vector<UnifiedEvent> continueResult;    // the macro when it ended
    int32_t continueProfile = -1;                // the profile these belong to, -1 none
    uint64_t continueKeepCount = 0;              // how many leading events are old; 0 for a fresh recording
    bool takeOpen = false;  // a recording has begun and its events are not joined to the macro yet
};
extern MacroState macroState GUARDED_BY(macroMutex);

// The current profile, or null if the index is out of range (before start-up has loaded a session).
Profile* CurrentProfile() REQUIRES(macroMutex);
void MarkMacroChanged() REQUIRES(macroMutex);

// Any thread, the hook procedures included. Raises a request flag, wakes the dispatcher and returns without waiting.
// Every command takes this way.
void RaiseRequest(std::atomic<bool>& flag);

// Notifies a running timeline editor that the engines are busy. Start-up sets it; null notifies nobody.
extern std::atomic<void (*)(bool wait)> editorBusyNotice;
// Any thread. Calls editorBusyNotice. With `wait`, waits up to 500 ms for the editor's answer.
void NotifyEditorBusy(bool wait);

// Puts all of the above back to its defaults. Tests only; no engine thread may run.
void ResetEngineState();
