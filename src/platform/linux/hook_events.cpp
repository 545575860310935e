#include "platform/linux/hook_events.h"

#include "platform/clock.h"
#include "platform/key_table.h"
#include "platform/linux/hook_devices.h"
#include "platform/linux/x11_buttons.h"

#include <X11/XKBlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/keysym.h>
#include <algorithm>
#include <vector>

namespace {

constexpr int64_t kTicksPerMillisecond = 1'000'000;  // the counter is in nanoseconds on this backend

bool QueryPointer(InputThread& thread, int* x, int* y) {
    Window root = None;
    Window child = None;
    int inWindowX = 0;
    int inWindowY = 0;
    unsigned mask = 0;
    return XQueryPointer(thread.display, thread.root, &root, &child, x, y, &inWindowX, &inWindowY, &mask) !=
           0;
}

// NOTE: playback sends tens of thousands of events a second, and the real key that stops it waits behind their reports.
// HACK: reports that no sink wants are dropped before anything is asked from the server. Their decision is Pass.
bool IsUnwanted(const InputThread& thread, bool injected) {
    return injected && !thread.interest.injectedCodes;
}

bool NumLockIsOn(InputThread& thread) {
    XkbStateRec state{};
    XkbGetState(thread.display, XkbUseCoreKbd, &state);
    return (state.locked_mods & XkbKeysymToModifiers(thread.display, XK_Num_Lock)) != 0;
}

uint32_t VirtualKeyOf(InputThread& thread, const KeyInfo& key) {
    if (key.padVirtualKey != 0 && !NumLockIsOn(thread)) {
        return key.padVirtualKey;
    }
    return key.virtualKey;
}

HookDecision ReportKey(InputThread& thread, uint32_t virtualKey, bool press, bool injected, int64_t counter) {
    KeyHookRecord record;
    record.virtualKey = virtualKey;
    record.down = press;
    record.injected = injected;
    record.counter = counter;
    thread.lastCounter = counter;
    return thread.sinks.onKey(record);
}

// Starts the repeat that the server sends to the focused application only.
void StartRepeat(InputThread& thread, uint32_t keycode, uint32_t virtualKey, int64_t now) {
    XkbDescPtr description = XkbAllocKeyboard();
    if (description == nullptr) {
        return;
    }
    constexpr unsigned kWanted = XkbRepeatKeysMask | XkbPerKeyRepeatMask | XkbControlsEnabledMask;
    if (XkbGetControls(thread.display, kWanted, description) == Success && description->ctrls != nullptr) {
        const XkbControlsRec& controls = *description->ctrls;
        const bool repeats = (controls.enabled_ctrls & XkbRepeatKeysMask) != 0 &&
                             (controls.per_key_repeat[keycode / 8] & (1U << (keycode % 8))) != 0;
        // A key that does not repeat leaves the repeat of another one alone.
        if (repeats && controls.repeat_interval > 0) {
            thread.repeat.keycode = keycode;
            thread.repeat.virtualKey = virtualKey;
            thread.repeat.nextAt = now + controls.repeat_delay * kTicksPerMillisecond;
            thread.repeat.interval = controls.repeat_interval * kTicksPerMillisecond;
        }
    }
    XkbFreeKeyboard(description, XkbAllComponentsMask, True);
}

void ReportRawCounts(InputThread& thread, const std::vector<RawCounts>& counts) {
    if (!thread.interest.rawMotion) {
        return;
    }
    for (const RawCounts& each : counts) {
        thread.sinks.onRawMouse(RawMouseRecord{each.dx, each.dy, each.counter});
    }
}

}  // namespace

void OnRawKey(InputThread& thread, const XIRawEvent& event, bool press) {
    const int64_t now = ReadPerformanceCounter();
    const uint32_t keycode = static_cast<uint32_t>(event.detail);
    const KeyInfo* key = FindKeyByKeycode(keycode);
    if (key == nullptr) {
        return;
    }
    const bool injected = IsInjected(thread, event.sourceid);
    if (IsUnwanted(thread, injected)) {
        return;
    }
    ReportMove(thread);
    // Num Lock may have changed meanwhile: the release belongs to the key that was pressed.
    uint32_t virtualKey = thread.pressedAs[keycode];
    if (press || virtualKey == 0) {
        virtualKey = VirtualKeyOf(thread, *key);
    }
    thread.pressedAs[keycode] = press ? virtualKey : 0;
    if (!press && !injected && thread.repeat.keycode == keycode) {
        thread.repeat.keycode = 0;
    }
    const HookDecision decision = ReportKey(thread, virtualKey, press, injected, now);
    GateDecisions& decisions = (injected ? thread.keyboard.injected : thread.keyboard.real)[keycode];
    (press ? decisions.press : decisions.release) = decision;
    if (!press && !injected) {
        thread.keyboard.released.set(keycode, thread.keyboard.swallowed.test(keycode));
    }
    if (press && !injected) {
        if (decision == HookDecision::Consume) {
            thread.repeat.keycode = 0;
        } else if (thread.interest.everyEvent) {
            StartRepeat(thread, keycode, virtualKey, now);
        }
    }
}

void ReportRepeats(InputThread& thread) {
    if (!thread.interest.everyEvent) {
        thread.repeat.keycode = 0;
    }
    while (thread.repeat.keycode != 0 && ReadPerformanceCounter() >= thread.repeat.nextAt) {
        // The time at which the repeat was due, so that a late turn of this thread does not show in a recording.
        const int64_t counter = std::max(thread.repeat.nextAt, thread.lastCounter);
        ReportKey(thread, thread.repeat.virtualKey, true, false, counter);
        thread.repeat.nextAt += thread.repeat.interval;
    }
}

void OnRawButton(InputThread& thread, const XIRawEvent& event, bool press) {
    const int64_t now = ReadPerformanceCounter();
    const XButtonMeaning* meaning = MeaningOfXButton(event.detail);
    if (meaning == nullptr || (!press && meaning->kind != PointerEvent::Press)) {
        return;
    }
    const bool injected = IsInjected(thread, event.sourceid);
    if (IsUnwanted(thread, injected)) {
        return;
    }
    ReportMove(thread);
    int x = 0;
    int y = 0;
    if (!QueryPointer(thread, &x, &y)) {
        return;
    }
    MouseHookRecord record;
    record.kind = press ? meaning->kind : PointerEvent::Release;
    record.button = meaning->button;
    record.x = x - thread.screen.x;
    record.y = y - thread.screen.y;
    record.wheelDelta = meaning->wheelDelta;
    record.injected = injected;
    record.counter = now;
    thread.lastCounter = now;
    const HookDecision decision = thread.sinks.onMouse(record);
    const uint32_t button = static_cast<uint32_t>(event.detail);
    GateDecisions& decisions = (injected ? thread.pointer.injected : thread.pointer.real)[button];
    (press ? decisions.press : decisions.release) = decision;
    if (!press && !injected) {
        thread.pointer.released.set(button, thread.pointer.swallowed.test(button));
    }
}

void OnRawMotion(InputThread& thread, const XIRawEvent& event) {
    RawReport report;
    report.counter = ReadPerformanceCounter();
    const double* value = event.raw_values;
    for (int axis = 0; axis < event.valuators.mask_len * 8; ++axis) {
        if (!XIMaskIsSet(event.valuators.mask, axis)) {
            continue;
        }
        if (axis == 0) {
            report.x = *value;
            report.movedX = true;
        } else if (axis == 1) {
            report.y = *value;
            report.movedY = true;
        }
        ++value;
    }
    if (!report.movedX && !report.movedY) {
        return;  // a wheel
    }
    const auto device = thread.devices.find(event.sourceid);
    const bool injected = device != thread.devices.end() && device->second.injects;
    if (thread.movePending && thread.moveInjected != injected) {
        ReportMove(thread);
    }
    thread.movePending = true;
    thread.moveInjected = injected;
    if (device != thread.devices.end() && !injected) {
        thread.moveDevice = event.sourceid;
        std::vector<RawCounts> counts;
        TakeRawReport(device->second.motion, report, thread.pointerX, thread.pointerY, counts);
        ReportRawCounts(thread, counts);
    }
}

void RememberPointer(InputThread& thread) {
    int x = 0;
    int y = 0;
    if (QueryPointer(thread, &x, &y)) {
        thread.pointerX = x;
        thread.pointerY = y;
    }
}

void ReportMove(InputThread& thread) {
    if (!thread.movePending) {
        return;
    }
    thread.movePending = false;
    const int64_t now = ReadPerformanceCounter();
    int x = 0;
    int y = 0;
    if (!QueryPointer(thread, &x, &y)) {
        return;
    }
    const auto device = thread.devices.find(thread.moveDevice);
    // The query above delivered every event before its reply. If none is left, the last report led to this position.
    if (!thread.moveInjected && device != thread.devices.end() &&
        XEventsQueued(thread.display, QueuedAlready) == 0) {
        std::vector<RawCounts> counts;
        ClassifyRawMotion(device->second.motion, x, y, counts);
        ReportRawCounts(thread, counts);
    }
    thread.pointerX = x;
    thread.pointerY = y;
    if (!thread.interest.everyEvent) {
        return;
    }
    MouseHookRecord record;
    record.kind = PointerEvent::Move;
    record.x = x - thread.screen.x;
    record.y = y - thread.screen.y;
    record.injected = thread.moveInjected;
    record.counter = now;
    thread.lastCounter = now;
    thread.sinks.onMouse(record);
}
