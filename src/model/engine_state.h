// The process-wide state that the engines, the hooks, the page commands and storage share. One definition, in
// engine_state.cpp.
#pragma once

#include "base/mutex.h"
#include "model/event.h"
#include "model/profile.h"
#include "model/settings.h"

#include <atomic>
#include <cstdint>
#include <vector>

struct WakeEvent;

struct EngineState {
    // State flags. Only DispatchRequests starts and stops engines; a worker clears its own flag at its normal end.
    std::atomic<bool> running{
        true};  // the only stop condition of loops; cleared at shutdown before quitEvent
    std::atomic<bool> recording{false};
    std::atomic<bool> playing{false};
    std::atomic<bool> autoClicking{false};
    std::atomic<bool> keySpamming{false};
    std::atomic<bool> pickingLocation{false};  // set by the page, cleared by the input thread
    std::atomic<bool> panelHover{false};       // stored and reported for the page; no effect in the engines
    std::atomic<bool> lockOn{true};            // the hotkey lock is in use
    std::atomic<bool> unlocked{true};          // with lockOn: the hotkeys act
    std::atomic<bool> hotkeysEnabled{true};
    std::atomic<bool> stopToolsWithMacro{true};

    // Request flags: raised by RaiseRequest from any thread, consumed by DispatchRequests.
    std::atomic<bool> requestToggleRecord{false};
    std::atomic<bool> requestStartRecord{false};
    std::atomic<bool> requestStopRecord{false};
    std::atomic<bool> requestContinueRecord{false};
    std::atomic<bool> requestUndoContinue{false};
    std::atomic<bool> requestTogglePlay{false};
    std::atomic<bool> requestStartPlay{false};
    std::atomic<bool> requestStopPlay{false};
    std::atomic<bool> requestToggleAutoclicker{false};
    std::atomic<bool> requestStartAutoclicker{false};
    std::atomic<bool> requestStopAutoclicker{false};
    std::atomic<bool> requestToggleKeySpammer{false};
    std::atomic<bool> requestStartKeySpammer{false};
    std::atomic<bool> requestStopKeySpammer{false};

    // Wake events: created before the threads start, closed and cleared after they are joined. Null is no event.
    std::atomic<WakeEvent*> dispatchEvent{nullptr};         // automatic: a request or a captured key waits
    std::atomic<WakeEvent*> autoclickerWakeEvent{nullptr};  // automatic: autoClicking changed
    std::atomic<WakeEvent*> keySpammerWakeEvent{nullptr};   // automatic: keySpamming changed
    std::atomic<WakeEvent*> playWakeEvent{nullptr};         // automatic: playing changed
    std::atomic<WakeEvent*> quitEvent{nullptr};             // manual: shutdown
    std::atomic<WakeEvent*> timelineAckEvent{nullptr};      // automatic: the editor has acknowledged

    // Counters and capture.
    std::atomic<int64_t> counterFrequency{1};  // ticks a second; set once at start
    std::atomic<int64_t> recordingStartCounter{
        0};  // counter at the start of the recording; dispatcher writes, hook reads
    std::atomic<int32_t> autoclickerCount{0};  // clicks of this run
    std::atomic<int32_t> keySpammerCount{0};   // rounds of this run
    std::atomic<uint32_t> reassignTarget{0};   // ReassignTarget: which binding is being captured
    std::atomic<uint32_t> capturedKey{0};      // the key or button caught for it, 0 none
};

enum ReassignTarget : uint32_t {
    kReassignNone = 0,
    kReassignRecord = 1,
    kReassignPlay = 2,
    kReassignAutoclicker = 3,
    kReassignKeySpammer = 4,
    kReassignKeySpammerTarget = 5,
    kReassignUnlock = 6,
};

extern EngineState engineState;

// Guards the profiles, every event list and the continued recording. Plain and not recursive. The input thread takes it
// for each recorded event: hold it briefly, never while waiting, writing files or signalling an event.
extern Mutex macroMutex;

struct MacroState {
    std::vector<Profile> profiles;  // never empty once start-up is past the session
    int32_t currentProfile = 0;     // index into profiles; "the macro" is that profile's event list

    // Every change of an event list or of currentProfile raises it (MarkMacroChanged), so that a report of the same
    // macro is not built again.
    uint64_t revision = 1;

    // Continued recording and its one step of undo.
    std::vector<UnifiedEvent> continueBaseline;  // the macro before the continued recording
    std::vector<UnifiedEvent> continueResult;    // the macro when it ended
    int32_t continueProfile = -1;                // index of their profile, -1 none
    uint64_t continueKeepCount = 0;              // number of old events at the front; 0 for a new recording
    bool takeOpen = false;  // a recording has started and its events are not joined to the macro yet
};
extern MacroState macroState GUARDED_BY(macroMutex);

// The current profile, or null if the index is out of range (before start-up has loaded a session).
Profile* CurrentProfile() REQUIRES(macroMutex);
void MarkMacroChanged() REQUIRES(macroMutex);

// Any thread, the hook procedures included. Raises a request flag, wakes the dispatcher and returns without waiting.
// Every command uses it.
void RaiseRequest(std::atomic<bool>& flag);

// Notifies a running timeline editor that the engines are busy. Start-up sets it; null notifies nobody.
extern std::atomic<void (*)(bool wait)> editorBusyNotice;
// Any thread. Calls editorBusyNotice. With `wait`, waits up to 500 ms for the editor's answer.
void NotifyEditorBusy(bool wait);

// Resets all of the above to its defaults. Tests only; no engine thread may run.
void ResetEngineState();
