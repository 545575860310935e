#include "engines/dispatcher.h"

#include "engines/hotkeys.h"
#include "engines/injection.h"
#include "engines/key_spammer.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/hooks.h"
#include "platform/wake.h"

#include <new>

namespace {

// Takes a request: it is over whether or not a guard lets it act.
bool Take(std::atomic<bool>& request) {
    return request.exchange(false);
}

// No wake: the pass that stops the macro serves these later on.
void StopToolsWithMacro() {
    if (engineState.stopToolsWithMacro) {
        engineState.requestStopAutoclicker = true;
        engineState.requestStopKeySpammer = true;
    }
}

void EndRecording() {
    engineState.recording = false;
    HookInterestChanged();
    FinishRecording();
    StopToolsWithMacro();
}

bool IsIdle() {
    return !engineState.playing && !engineState.recording;
}

void DispatchRecording() {
    if (Take(engineState.requestToggleRecord) && !engineState.playing) {
        if (engineState.recording) {
            EndRecording();
        } else {
            BeginFreshRecording();
        }
    }
    if (Take(engineState.requestStartRecord) && IsIdle()) {
        BeginFreshRecording();
    }
    if (Take(engineState.requestContinueRecord) && IsIdle()) {
        BeginContinuedRecording();
    }
    if (Take(engineState.requestUndoContinue)) {
        UndoContinuedRecording();
    }
    if (Take(engineState.requestStopRecord) && engineState.recording) {
        EndRecording();
    }
}

// Only the left and the right button: whatever else a macro holds down stays down.
void CleanUpAfterMacro() {
    SendMouseFlags(kMouseLeftUp);
    SendMouseFlags(kMouseRightUp);
    StopToolsWithMacro();
}

void SetPlaying(bool on) {
    engineState.playing = on;
    if (!on) {
        CleanUpAfterMacro();
    }
    SignalWake(engineState.playWakeEvent);
}

void DispatchPlayback() {
    if (Take(engineState.requestTogglePlay) && !engineState.recording) {
        SetPlaying(!engineState.playing);
    }
    if (Take(engineState.requestStartPlay) && IsIdle()) {
        SetPlaying(true);
    }
    if (Take(engineState.requestStopPlay) && engineState.playing && !engineState.recording) {
        SetPlaying(false);
    }
}

void SetAutoClicking(bool on) {
    engineState.autoClicking = on;
    if (!on) {
        // All three, whichever button is set: its setting may have changed since the press.
        SendMouseFlags(kMouseLeftUp);
        SendMouseFlags(kMouseRightUp);
        SendMouseFlags(kMouseMiddleUp);
    }
    SignalWake(engineState.autoclickerWakeEvent);
}

void DispatchAutoclicker() {
    if (Take(engineState.requestToggleAutoclicker)) {
        SetAutoClicking(!engineState.autoClicking);
    }
    if (Take(engineState.requestStartAutoclicker) && !engineState.autoClicking) {
        SetAutoClicking(true);
    }
    if (Take(engineState.requestStopAutoclicker) && engineState.autoClicking) {
        SetAutoClicking(false);
    }
}

void StopKeySpam() {
    engineState.keySpamming = false;
    ReleaseKeySpammerTargets();
    SignalWake(engineState.keySpammerWakeEvent);
}

void DispatchKeySpam() {
    const auto hasTarget = [] { return keySpammerSettings.targetCount > 0; };
    if (Take(engineState.requestToggleKeySpammer)) {
        if (engineState.keySpamming) {
            StopKeySpam();
        } else {
            engineState.keySpamming = hasTarget();
            SignalWake(engineState.keySpammerWakeEvent);
        }
    }
    if (Take(engineState.requestStartKeySpammer) && !engineState.keySpamming && hasTarget()) {
        engineState.keySpamming = true;
        SignalWake(engineState.keySpammerWakeEvent);
    }
    if (Take(engineState.requestStopKeySpammer) && engineState.keySpamming) {
        StopKeySpam();
    }
}

}  // namespace

void RecordToolState(uint32_t toolCode, bool on) {
    const double time = RecordingSeconds(ReadPerformanceCounter());
    AppendRecordedEvent({.type = EvToolState, .time = time, .virtualKey = toolCode, .down = on});
}

// The order decides how contradicting requests of one pass come out: captures, recording, playback, tools. The tools
// come last, so that the stops a macro's end raises are served at once.
void DispatchRequests() {
    const bool autoBefore = engineState.autoClicking;
    const bool keySpamBefore = engineState.keySpamming;
    if (engineState.reassignTarget != kReassignNone && engineState.capturedKey != 0) {
        ApplyCapturedKey();
    }
    DispatchRecording();
    DispatchPlayback();
    DispatchAutoclicker();
    DispatchKeySpam();
    if (engineState.recording) {
        if (const bool autoNow = engineState.autoClicking; autoNow != autoBefore) {
            RecordToolState(kToolAutoclicker, autoNow);
        }
        if (const bool keySpamNow = engineState.keySpamming; keySpamNow != keySpamBefore) {
            RecordToolState(kToolKeySpammer, keySpamNow);
        }
    }
}

void DispatcherThreadMain() {
    WakeEvent* const events[] = {engineState.dispatchEvent, engineState.quitEvent};
    while (engineState.running) {
        try {
            DispatchRequests();
        } catch (const std::bad_alloc&) {
            // A copy of the macro did not fit into memory. That request ends there; those behind it wait in their
            // flags for the next wake.
        }
        WaitForAny(events, 2, kNoLimit);
    }
}
