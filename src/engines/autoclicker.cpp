#include "engines/autoclicker.h"

#include "engines/injection.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/key_table.h"
#include "platform/wake.h"

#include <algorithm>
#include <cmath>

namespace {

// An unknown setting clicks no button. Its empty actions are still sent and counted.
uint32_t ButtonOfSetting(int32_t setting) {
    switch (setting) {
    case 0:
        return kLeftButton;
    case 1:
        return kRightButton;
    case 2:
        return kMiddleButton;
    default:
        return kNoButton;
    }
}

// Waits 15 milliseconds. The deadline is set before the sleep, so that a sleep that is too long does not add to it.
void WaitDoubleClickGap() {
    const auto ticks = static_cast<int64_t>(static_cast<double>(engineState.counterFrequency.load()) * 0.015);
    const int64_t deadline = ReadPerformanceCounter() + ticks;
    SleepMilliseconds(13);
    while (ReadPerformanceCounter() < deadline) {
        SpinOnce();
    }
}

void ClickOnce() {
    if (autoclickerSettings.locationMode == 1) {
        MoveMouseAbsolute(autoclickerSettings.fixedX, autoclickerSettings.fixedY);
    }
    const uint32_t button = ButtonOfSetting(autoclickerSettings.button);
    const bool isDouble = autoclickerSettings.doubleClick == 1;
    SendButton(button, true);
    SendButton(button, false);
    if (isDouble) {
        WaitDoubleClickGap();
        SendButton(button, true);
        SendButton(button, false);
    }
}

}  // namespace

double ToolIntervalMilliseconds(int32_t hours, int32_t minutes, int32_t seconds, int32_t milliseconds) {
    const double sum = hours * 3600000.0 + minutes * 60000.0 + seconds * 1000.0 + milliseconds;
    return std::ceil(std::max(1.0, sum));
}

uint32_t ToolIntervalLimit(double intervalMilliseconds) {
    return static_cast<uint32_t>(static_cast<int64_t>(intervalMilliseconds));
}

bool AutoclickerRound(uint32_t* limitMilliseconds) {
    if (!engineState.autoClicking) {
        engineState.autoclickerCount = 0;
        *limitMilliseconds = kNoLimit;
        return true;
    }
    if (autoclickerSettings.repeatMode == 0 &&
        engineState.autoclickerCount >= autoclickerSettings.repeatCount) {
        engineState.autoClicking = false;
        return false;
    }
    ClickOnce();
    engineState.autoclickerCount.fetch_add(1);
    *limitMilliseconds = ToolIntervalLimit(ToolIntervalMilliseconds(
        autoclickerSettings.intervalHours, autoclickerSettings.intervalMinutes,
        autoclickerSettings.intervalSeconds, autoclickerSettings.intervalMilliseconds));
    return true;
}

void AutoclickerThreadMain() {
    WakeEvent* const events[] = {engineState.autoclickerWakeEvent, engineState.quitEvent};
    while (engineState.running) {
        uint32_t limit = kNoLimit;
        if (AutoclickerRound(&limit)) {
            WaitForAny(events, 2, limit);
        }
    }
}
