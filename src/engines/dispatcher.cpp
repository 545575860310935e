#include "engines/dispatcher.h"

#include "engines/hotkeys.h"
#include "engines/injection.h"
#include "engines/key_spammer.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/hooks.h"
#include "platform/key_table.h"
#include "platform/wake.h"

#include <new>

namespace {

// Returns whether a request is pending and clears it. A guard that then ignores it ends it.
bool Take(std::atomic<bool>& request) {
    return request.exchange(false);
}

// No wake: the pass that stops the macro runs these requests after it.
void StopToolsWithMacro() {
    if (engineState.stopToolsWithMacro) {
        engineState.requestStopAutoclicker = true;
        engineState.requestStopKeySpammer = true;
    }
}

void EndRecording() {
    engineState.recording = false;
    HookInterestChanged();
    StopToolsWithMacro();
    FinishRecording();
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

// Releases the left and the right button only: other buttons and keys that the macro pressed stay pressed.
void CleanUpAfterMacro() {
    SendButton(kLeftButton, false);
    SendButton(kRightButton, false);
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
        // Release all three: the button setting may have changed since the press.
        SendButton(kLeftButton, false);
        SendButton(kRightButton, false);
        SendButton(kMiddleButton, false);
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

void StopKeySpammer() {
    engineState.keySpamming = false;
    ReleaseKeySpammerTargets();
    SignalWake(engineState.keySpammerWakeEvent);
}

void DispatchKeySpammer() {
    const auto hasTarget = [] { return keySpammerSettings.targetCount > 0; };
    if (Take(engineState.requestToggleKeySpammer)) {
        if (engineState.keySpamming) {
            StopKeySpammer();
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
        StopKeySpammer();
    }
}

}  // namespace

void RecordToolState(uint32_t toolCode, bool on) {
    const double time = RecordingSeconds(ReadPerformanceCounter());
    AppendRecordedEvent({.type = EvToolState, .time = time, .virtualKey = toolCode, .down = on});
}

// The order (captures, recording, playback, tools) decides between contradicting requests of one pass. The tools come
// last, so that stops that the end of a macro requests run in the same pass.
void DispatchRequests() {
    const bool autoBefore = engineState.autoClicking;
    const bool keySpamBefore = engineState.keySpamming;
    ApplyCapturedKey();
    DispatchRecording();
    DispatchPlayback();
    DispatchAutoclicker();
    DispatchKeySpammer();
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
            // A copy of the macro did not fit into memory. That request is dropped. The next pass serves the ones after it;
            // each pass ends or drops one, so this ends.
            continue;
        }
        WaitForAny(events, 2, kNoLimit);
    }
}
