#include "platform/clock.h"
#include "platform/linux/hook_thread.h"
#include "platform/linux/keys.h"

#include <X11/XKBlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/keysym.h>
#include <algorithm>
#include <cstring>

namespace {

constexpr int32_t kNotch = 120;
constexpr int64_t kTicksPerMillisecond = 1'000'000;  // the counter is in nanoseconds on this home

uint32_t HighWord(int32_t value) {
    return static_cast<uint32_t>(value) << 16;
}

bool HasXtestMark(Display* display, int device) {
    const Atom mark = XInternAtom(display, "XTEST Device", True);
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    if (mark == None || XIGetProperty(display, device, mark, 0, 1, False, AnyPropertyType, &type, &format,
                                      &count, &left, &data) != Success) {
        return false;
    }
    const bool marked = data != nullptr && format == 8 && count > 0 && data[0] != 0;
    if (data != nullptr) {
        XFree(data);
    }
    return marked;
}

// What the device says of its first axis.
bool SaysAbsolute(const XIDeviceInfo& info) {
    for (int index = 0; index < info.num_classes; ++index) {
        if (info.classes[index]->type == XIValuatorClass) {
            const auto* axis = reinterpret_cast<const XIValuatorClassInfo*>(info.classes[index]);
            if (axis->number == 0) {
                return axis->mode == XIModeAbsolute;
            }
        }
    }
    return false;
}

bool QueryPointer(HookThread& thread, int* x, int* y) {
    Window root = None;
    Window child = None;
    int inWindowX = 0;
    int inWindowY = 0;
    unsigned mask = 0;
    return XQueryPointer(thread.display, thread.root, &root, &child, x, y, &inWindowX, &inWindowY, &mask) !=
           0;
}

bool NumLockIsOn(HookThread& thread) {
    XkbStateRec state{};
    XkbGetState(thread.display, XkbUseCoreKbd, &state);
    return (state.locked_mods & XkbKeysymToModifiers(thread.display, XK_Num_Lock)) != 0;
}

uint32_t VirtualKeyOf(HookThread& thread, const KeyPlace& place) {
    if (place.padVirtualKey != 0 && !NumLockIsOn(thread)) {
        return place.padVirtualKey;
    }
    return place.virtualKey;
}

HookAnswer TellKey(HookThread& thread, uint32_t virtualKey, bool press, bool injected, int64_t counter) {
    KeyHookRecord record;
    record.message = press ? kKeyDownMessage : kKeyUpMessage;
    record.virtualKey = virtualKey;
    record.injected = injected;
    record.counter = counter;
    thread.lastCounter = counter;
    return thread.sinks.onKey(record);
}

// The repeat that the server gives the focused application, which is all that it tells nobody else about.
void StartRepeat(HookThread& thread, uint32_t keycode, uint32_t virtualKey, int64_t now) {
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

struct ButtonMessages {
    uint32_t press;
    uint32_t release;
    uint32_t mouseData;
};

// A wheel's buttons have a press only.
bool MessagesOfButton(int button, ButtonMessages* messages) {
    switch (button) {
    case 1:
        *messages = {kLeftDownMessage, kLeftUpMessage, 0};
        return true;
    case 2:
        *messages = {kMiddleDownMessage, kMiddleUpMessage, 0};
        return true;
    case 3:
        *messages = {kRightDownMessage, kRightUpMessage, 0};
        return true;
    case 4:
        *messages = {kWheelMessage, 0, HighWord(kNotch)};
        return true;
    case 5:
        *messages = {kWheelMessage, 0, HighWord(-kNotch)};
        return true;
    case 6:
        *messages = {kHorizontalWheelMessage, 0, HighWord(-kNotch)};
        return true;
    case 7:
        *messages = {kHorizontalWheelMessage, 0, HighWord(kNotch)};
        return true;
    case 8:
        *messages = {kSideDownMessage, kSideUpMessage, HighWord(1)};
        return true;
    case 9:
        *messages = {kSideDownMessage, kSideUpMessage, HighWord(2)};
        return true;
    default:
        return false;
    }
}

void TellRawCounts(HookThread& thread, const std::vector<RawCounts>& counts) {
    if (!thread.interest.rawMotion) {
        return;
    }
    for (const RawCounts& each : counts) {
        thread.sinks.onRawMouse(RawMouseRecord{each.dx, each.dy, each.counter});
    }
}

}  // namespace

void ReadDevices(HookThread& thread) {
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(thread.display, XIAllDevices, &count);
    if (devices == nullptr) {
        return;
    }
    std::map<int, PointerDevice> known;
    for (int index = 0; index < count; ++index) {
        const XIDeviceInfo& info = devices[index];
        if (info.use != XISlavePointer && info.use != XISlaveKeyboard && info.use != XIFloatingSlave) {
            continue;
        }
        PointerDevice device;
        const auto before = thread.devices.find(info.deviceid);
        if (before != thread.devices.end()) {
            device = before->second;
        }
        device.injects = HasXtestMark(thread.display, info.deviceid);
        if (SaysAbsolute(info)) {
            device.motion.kind = RawKind::Positions;
        }
        known.emplace(info.deviceid, std::move(device));
    }
    XIFreeDeviceInfo(devices);
    thread.devices.swap(known);
}

bool IsInjected(const HookThread& thread, int sourceDevice) {
    const auto device = thread.devices.find(sourceDevice);
    return device != thread.devices.end() && device->second.injects;
}

void OnRawKey(HookThread& thread, const XIRawEvent& event, bool press) {
    const int64_t now = ReadPerformanceCounter();
    const uint32_t keycode = static_cast<uint32_t>(event.detail);
    const KeyPlace* place = KeyPlaceOfKeycode(keycode);
    if (place == nullptr) {
        return;
    }
    ReportMove(thread);
    const bool injected = IsInjected(thread, event.sourceid);
    // Num Lock may have changed in between: a release is that of the key that was pressed.
    uint32_t virtualKey = thread.pressedAs[keycode];
    if (press || virtualKey == 0) {
        virtualKey = VirtualKeyOf(thread, *place);
    }
    thread.pressedAs[keycode] = press ? virtualKey : 0;
    if (!press && !injected && thread.repeat.keycode == keycode) {
        thread.repeat.keycode = 0;
    }
    const HookAnswer answer = TellKey(thread, virtualKey, press, injected, now);
    GateAnswers& answers = (injected ? thread.keyboard.injected : thread.keyboard.real)[keycode];
    (press ? answers.press : answers.release) = answer;
    if (!press && !injected) {
        thread.keyboard.released.set(keycode, thread.keyboard.swallowed.test(keycode));
    }
    if (press && !injected) {
        if (answer == HookAnswer::Consume) {
            thread.repeat.keycode = 0;
        } else if (thread.interest.everyEvent) {
            StartRepeat(thread, keycode, virtualKey, now);
        }
    }
}

void ReportRepeats(HookThread& thread) {
    if (!thread.interest.everyEvent) {
        thread.repeat.keycode = 0;
    }
    while (thread.repeat.keycode != 0 && ReadPerformanceCounter() >= thread.repeat.nextAt) {
        // The time at which it was due, so that a late turn of this thread does not show in a recording.
        const int64_t counter = std::max(thread.repeat.nextAt, thread.lastCounter);
        TellKey(thread, thread.repeat.virtualKey, true, false, counter);
        thread.repeat.nextAt += thread.repeat.interval;
    }
}

void OnRawButton(HookThread& thread, const XIRawEvent& event, bool press) {
    const int64_t now = ReadPerformanceCounter();
    ButtonMessages messages{};
    if (!MessagesOfButton(event.detail, &messages)) {
        return;
    }
    const uint32_t message = press ? messages.press : messages.release;
    if (message == 0) {
        return;
    }
    ReportMove(thread);
    int x = 0;
    int y = 0;
    if (!QueryPointer(thread, &x, &y)) {
        return;
    }
    const bool injected = IsInjected(thread, event.sourceid);
    MouseHookRecord record;
    record.message = message;
    record.x = x - thread.screen.x;
    record.y = y - thread.screen.y;
    record.mouseData = messages.mouseData;
    record.injected = injected;
    record.counter = now;
    thread.lastCounter = now;
    const HookAnswer answer = thread.sinks.onMouse(record);
    const uint32_t button = static_cast<uint32_t>(event.detail);
    GateAnswers& answers = (injected ? thread.pointer.injected : thread.pointer.real)[button];
    (press ? answers.press : answers.release) = answer;
    if (!press && !injected) {
        thread.pointer.released.set(button, thread.pointer.swallowed.test(button));
    }
}

void OnRawMotion(HookThread& thread, const XIRawEvent& event) {
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
    if (thread.moveWaits && thread.moveInjected != injected) {
        ReportMove(thread);
    }
    thread.moveWaits = true;
    thread.moveInjected = injected;
    if (device != thread.devices.end() && !injected) {
        thread.moveDevice = event.sourceid;
        std::vector<RawCounts> counts;
        TakeRawReport(device->second.motion, report, thread.pointerX, thread.pointerY, counts);
        TellRawCounts(thread, counts);
    }
}

void RememberPointer(HookThread& thread) {
    int x = 0;
    int y = 0;
    if (QueryPointer(thread, &x, &y)) {
        thread.pointerX = x;
        thread.pointerY = y;
    }
}

void ReportMove(HookThread& thread) {
    if (!thread.moveWaits) {
        return;
    }
    thread.moveWaits = false;
    const int64_t now = ReadPerformanceCounter();
    int x = 0;
    int y = 0;
    if (!QueryPointer(thread, &x, &y)) {
        return;
    }
    const auto device = thread.devices.find(thread.moveDevice);
    // The question above brought in every event before its answer: if none is left, this is where the last report led.
    if (!thread.moveInjected && device != thread.devices.end() &&
        XEventsQueued(thread.display, QueuedAlready) == 0) {
        std::vector<RawCounts> counts;
        JudgeRawMotion(device->second.motion, x, y, counts);
        TellRawCounts(thread, counts);
    }
    thread.pointerX = x;
    thread.pointerY = y;
    if (!thread.interest.everyEvent) {
        return;
    }
    MouseHookRecord record;
    record.message = kMouseMoveMessage;
    record.x = x - thread.screen.x;
    record.y = y - thread.screen.y;
    record.injected = thread.moveInjected;
    record.counter = now;
    thread.lastCounter = now;
    thread.sinks.onMouse(record);
}
