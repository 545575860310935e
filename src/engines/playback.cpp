#include "engines/playback.h"

#include "engines/autoclicker.h"
#include "engines/injection.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/wake.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace {

// Spins for this long before an event, since a sleep may be this much too long.
constexpr double kSpinSeconds = 0.002;

// Returns a copy of the macro. A macro that does not fit into memory plays like an empty one.
std::vector<UnifiedEvent> CopyOfMacro() {
    MutexLock lock(macroMutex);
    const Profile* profile = CurrentProfile();
    if (profile == nullptr) {
        return {};
    }
    try {
        return profile->events;
    } catch (const std::bad_alloc&) {
        return {};
    }
}

bool MustStop() {
    return !engineState.playing || !engineState.running;
}

double SecondsInto(const PlaybackRound& round) {
    const int64_t ticks = ReadPerformanceCounter() - round.roundStart;
    return static_cast<double>(ticks) / static_cast<double>(engineState.counterFrequency.load());
}

int32_t PointBetween(int32_t from, int32_t to, double fraction) {
    const double distance = static_cast<double>(to) - static_cast<double>(from);
    return static_cast<int32_t>(from + static_cast<int64_t>(distance * fraction));
}

void WaitForEvent(PlaybackRound& round, const UnifiedEvent& event, double target) {
    while (!MustStop()) {
        const double elapsed = SecondsInto(round);
        if (elapsed >= target) {
            return;
        }
        if (event.type == EvAbsMove && target > round.lastTarget) {
            GlideTowards(round, event, target, elapsed);
        }
        if (target - elapsed > kSpinSeconds) {
            SleepMilliseconds(1);
        } else {
            SpinOnce();
        }
    }
}

void PlayEvents(PlaybackRound& round, const std::vector<UnifiedEvent>& events) {
    int64_t played = 0;
    for (const UnifiedEvent& event : events) {
        if (MustStop()) {
            return;
        }
        // The speed is read for every event and applies to the whole time since the start of the round.
        const double target = event.time / static_cast<double>(macroSettings.playbackSpeed.Get());
        WaitForEvent(round, event, target);
        if (MustStop()) {
            return;
        }
        PerformEvent(round, event);
        round.lastTarget = target;
        engineState.playedEvents = ++played;
    }
}

void PerformToolEvent(const UnifiedEvent& event) {
    if (event.virtualKey == kToolAutoclicker) {
        RaiseRequest(event.down ? engineState.requestStartAutoclicker : engineState.requestStopAutoclicker);
    } else if (event.virtualKey == kToolKeySpammer) {
        RaiseRequest(event.down ? engineState.requestStartKeySpammer : engineState.requestStopKeySpammer);
    }
}

void EndRun() {
    engineState.playing = false;
    if (engineState.stopToolsWithMacro) {
        engineState.requestStopAutoclicker = true;
        engineState.requestStopKeySpammer = true;
        SignalWake(engineState.dispatchEvent);
    }
}

}  // namespace

void PositionForRound(PlaybackRound& round, const std::vector<UnifiedEvent>& events) {
    const auto first = std::find_if(events.begin(), events.end(), [](const UnifiedEvent& event) {
        return event.type == EvAbsMove || event.type == EvMouseButton;
    });
    if (first != events.end()) {
        MoveMouseAbsolute(first->x, first->y);
        round.fromX = round.sentX = first->x;
        round.fromY = round.sentY = first->y;
        return;
    }
    int32_t x = 0;
    int32_t y = 0;
    const bool known = ReadPointerPosition(&x, &y);
    round.fromX = known ? x : 0;
    round.fromY = known ? y : 0;
    round.sentX = -1;
    round.sentY = -1;
}

void GlideTowards(PlaybackRound& round, const UnifiedEvent& event, double target, double elapsed) {
    double fraction = (elapsed - round.lastTarget) / (target - round.lastTarget);
    // In this form a fraction that is not a number, which infinite times cause, counts as 0.
    fraction = fraction > 0.0 ? std::min(fraction, 1.0) : 0.0;
    const int32_t x = PointBetween(round.fromX, event.x, fraction);
    const int32_t y = PointBetween(round.fromY, event.y, fraction);
    if (x != round.sentX || y != round.sentY) {
        MoveMouseAbsolute(x, y);
        round.sentX = x;
        round.sentY = y;
    }
}

void PerformEvent(PlaybackRound& round, const UnifiedEvent& event) {
    switch (event.type) {
    case EvAbsMove:
        MoveMouseAbsolute(event.x, event.y);
        round.fromX = round.sentX = event.x;
        round.fromY = round.sentY = event.y;
        break;
    case EvRelMove:
        MoveMouseRelative(event.x, event.y);
        break;
    case EvMouseButton:
        MoveMouseAbsolute(event.x, event.y);
        SendMouseFlags(event.flags);
        round.fromX = event.x;
        round.fromY = event.y;
        break;
    case EvKey:
        SendKey(event.virtualKey, event.down);
        break;
    case EvScroll:
        SendWheel(event.wheel, MustStop);
        break;
    case EvToolState:
        PerformToolEvent(event);
        break;
    default:
        break;
    }
}

void PlaybackThreadMain() {
    WakeEvent* const events[] = {engineState.playWakeEvent, engineState.quitEvent};
    while (engineState.running) {
        if (!engineState.playing) {
            engineState.playRound = 0;
            WaitForAny(events, 2, kNoLimit);
            continue;
        }
        const std::vector<UnifiedEvent> macro = CopyOfMacro();
        if (macro.empty()) {
            engineState.playing = false;
            continue;
        }
        NotifyEditorBusy(true);
        PlaybackRound round;
        PositionForRound(round, macro);
        round.roundStart = ReadPerformanceCounter();
        engineState.playedEvents = 0;
        engineState.playRoundCounter = round.roundStart;
        engineState.playRound.fetch_add(1);
        PlayEvents(round, macro);
        if (macroSettings.loop && engineState.playing) {
            const double pause = std::ceil(macroSettings.loopPauseMilliseconds / 1000.0 * 1000.0);
            WaitForAny(events, 2, ToolIntervalLimit(pause));
        } else {
            EndRun();
        }
    }
}
