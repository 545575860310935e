// The process-wide state that the engines, the hooks, the page commands and storage share. One definition, in
// engine_state.cpp.
#pragma once

#include "base/mutex.h"
#include "model/event.h"
#include "model/macro_history.h"
#include "model/profile.h"
#include "model/settings.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

struct WakeEvent;

// A binding that waits for a key. One atomic value, so that a key counts only for the binding it was pressed for. Aligned as
// one number: without that, clang calls a library function that the program does not link.
struct alignas(uint64_t) Capture {
    uint32_t target = 0;  // ReassignTarget
    uint32_t key = 0;     // the key or button captured for it; 0: none yet
};

struct EngineState {
    // State flags. Only DispatchRequests starts and stops engines; a worker clears its own flag at its normal end.
    // The only stop condition of loops; cleared at shutdown before quitEvent is signalled.
    std::atomic<bool> running{true};
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

    // Wake events: created before the threads start, closed and cleared after they are joined. Null: no event.
    std::atomic<WakeEvent*> dispatchEvent{nullptr};  // automatic: a request or a captured key is pending
    std::atomic<WakeEvent*> autoclickerWakeEvent{nullptr};  // automatic: autoClicking changed
    std::atomic<WakeEvent*> keySpammerWakeEvent{nullptr};   // automatic: keySpamming changed
    std::atomic<WakeEvent*> playWakeEvent{nullptr};         // automatic: playing changed
    std::atomic<WakeEvent*> quitEvent{nullptr};             // manual: shutdown
    std::atomic<WakeEvent*> timelineAckEvent{nullptr};      // automatic: the editor has acknowledged

    // Counters and capture.
    std::atomic<int64_t> counterFrequency{1};  // ticks a second; set once at start
    // Counter at the start of the recording. The dispatcher writes it, the input thread reads it.
    std::atomic<int64_t> recordingStartCounter{0};
    std::atomic<int32_t> autoclickerCount{0};  // clicks of this run
    std::atomic<int32_t> keySpammerCount{0};   // rounds of this run
    std::atomic<int64_t> recordedEvents{0};    // events of this recording
    // Progress of the playback. Written by the playback thread.
    std::atomic<int32_t> playRound{0};         // from 1; 0 while nothing plays
    std::atomic<int64_t> playRoundCounter{0};  // counter at the start of the round
    std::atomic<int64_t> playedEvents{0};      // events of the round that are performed
    // Copies of MacroState::revision and ::rewrittenRevision, for readers without the lock.
    std::atomic<uint64_t> macroRevision{0};
    std::atomic<uint64_t> macroRewrittenRevision{0};
    std::atomic<Capture> capture{Capture{}};
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

// Guards the profiles, every event list and the continued recording. Not recursive. The input thread takes it for each
// recorded event: hold it briefly, never while waiting, writing files or signalling an event.
extern Mutex macroMutex;

struct MacroState {
    std::vector<Profile> profiles;  // never empty once start-up is past the session
    int32_t currentProfile = 0;     // index into profiles; "the macro" is that profile's event list

    // Every change of an event list, of currentProfile or of the undo raises it. A report that was built from the same
    // revision is still right.
    uint64_t revision = 1;
    // The revision of the last change other than an append at the end of the macro. A reader of the macro at this
    // revision or later needs only the events that follow.
    uint64_t rewrittenRevision = 1;

    MacroHistory history;
    uint64_t lastProfileId = 0;  // ids up to this one are taken

    // Continued recording and its one step of undo.
    std::vector<UnifiedEvent> continueBaseline;  // the macro before the continued recording
    std::vector<UnifiedEvent> continueResult;    // the macro when it ended
    int32_t continueProfile = -1;                // the profile that these belong to; -1: none
    uint64_t continueKeepCount = 0;  // number of leading events that are old; 0 for a fresh recording
    bool takeOpen = false;           // a recording has begun and its events are not yet joined to the macro
};
extern MacroState macroState GUARDED_BY(macroMutex);

// Returns the current profile, or null if the index is out of range (before start-up has loaded a session).
Profile* CurrentProfile() REQUIRES(macroMutex);
// Raises both revisions. Call it after each change of an event list or of currentProfile.
void MarkMacroChanged() REQUIRES(macroMutex);
// Raises the revision after an append at the end of the macro.
void MarkEventAppended() REQUIRES(macroMutex);

// The largest number of events that is copied under one hold of macroMutex while a recording may be running: some tens of
// microseconds. The input thread waits meanwhile.
constexpr size_t kEventsPerHold = 4096;

// Any thread, the hook procedures included. Raises a request flag of engineState and wakes the dispatcher, without
// waiting. Every command that starts or stops an engine calls it.
void RaiseRequest(std::atomic<bool>& flag);

// Notifies a running timeline editor that the engines are busy. Start-up sets it; null: no notice.
extern std::atomic<void (*)(bool wait)> editorBusyNotice;
// Any thread. Calls editorBusyNotice. With `wait`, waits up to 500 ms for the editor's acknowledgement.
void NotifyEditorBusy(bool wait);

// Resets all of the above to its defaults. Tests only; no engine thread may run.
void ResetEngineState();
