// NOTE: X11 lets nobody look at an event and then decide. A passive grab in synchronous mode comes close: the server
// hands us the press of a reserved key and stops the device until we say whether the event is swallowed or replayed to
// the application that would have had it. The release then comes to us too, but so does every other key meanwhile.
// HACK: while a swallowed key is down the whole device is held by an explicit synchronous grab, and each foreign event
// is replayed, which ends the grab, and the device is taken hold of again.
#include "platform/linux/hook_thread.h"
#include "platform/linux/keys.h"

#include <vector>

namespace {

// The events that a grab of this gate hands over. Raw events are among them: while a device is grabbed, the client that
// has the grab gets them through the grab or not at all.
struct GrabMask {
    explicit GrabMask(const Gate& gate) {
        if (gate.isKeyboard) {
            XISetMask(bits, XI_KeyPress);
            XISetMask(bits, XI_KeyRelease);
            XISetMask(bits, XI_RawKeyPress);
            XISetMask(bits, XI_RawKeyRelease);
        } else {
            XISetMask(bits, XI_ButtonPress);
            XISetMask(bits, XI_ButtonRelease);
            XISetMask(bits, XI_RawButtonPress);
            XISetMask(bits, XI_RawButtonRelease);
            XISetMask(bits, XI_RawMotion);
            XISetMask(bits, XI_Motion);
        }
        mask.deviceid = gate.device;
        mask.mask_len = sizeof(bits);
        mask.mask = bits;
    }
    GrabMask(const GrabMask&) = delete;
    GrabMask& operator=(const GrabMask&) = delete;

    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XIEventMask mask{};
};

int GrabCode(HookThread& thread, Gate& gate, int code, std::vector<XIGrabModifiers>& modifiers) {
    GrabMask mask(gate);
    const int count = static_cast<int>(modifiers.size());
    if (gate.isKeyboard) {
        return XIGrabKeycode(thread.display, gate.device, code, thread.root, XIGrabModeSync, XIGrabModeAsync,
                             False, &mask.mask, count, modifiers.data());
    }
    return XIGrabButton(thread.display, gate.device, code, thread.root, None, XIGrabModeSync, XIGrabModeAsync,
                        False, &mask.mask, count, modifiers.data());
}

// With whatever modifiers are down. Where another program has one combination for itself, all others are still taken.
void Reserve(HookThread& thread, Gate& gate, int code) {
    std::vector<XIGrabModifiers> any = {{static_cast<int>(XIAnyModifier), 0}};
    if (GrabCode(thread, gate, code, any) == 0) {
        return;
    }
    std::vector<XIGrabModifiers> each;
    each.reserve(256);
    for (int combination = 0; combination < 256; ++combination) {
        each.push_back({combination, 0});
    }
    GrabCode(thread, gate, code, each);
}

void Unreserve(HookThread& thread, Gate& gate, int code) {
    XIGrabModifiers any{static_cast<int>(XIAnyModifier), 0};
    if (gate.isKeyboard) {
        XIUngrabKeycode(thread.display, gate.device, code, thread.root, 1, &any);
    } else {
        XIUngrabButton(thread.display, gate.device, code, thread.root, 1, &any);
    }
}

void ReserveOnly(HookThread& thread, Gate& gate, const std::bitset<kCodeLimit>& wanted) {
    const std::bitset<kCodeLimit> changed = gate.reserved ^ wanted;
    if (changed.none()) {
        return;
    }
    for (int code = 0; code < kCodeLimit; ++code) {
        if (changed.test(static_cast<size_t>(code))) {
            if (wanted.test(static_cast<size_t>(code))) {
                Reserve(thread, gate, code);
            } else {
                Unreserve(thread, gate, code);
            }
        }
    }
    gate.reserved = wanted;
}

constexpr int kButtonCodes[][2] = {{1, 1}, {2, 3}, {4, 2}, {5, 8}, {6, 9}};  // button code, X button

void WantCode(uint32_t code, std::bitset<kCodeLimit>& keycodes, std::bitset<kCodeLimit>& buttons) {
    for (const auto& each : kButtonCodes) {
        if (static_cast<uint32_t>(each[0]) == code) {
            buttons.set(static_cast<size_t>(each[1]));
            return;
        }
    }
    if (code == 0) {
        return;
    }
    for (uint32_t keycode = 8; keycode < kCodeLimit; ++keycode) {
        const KeyPlace* place = KeyPlaceOfKeycode(keycode);
        if (place != nullptr && (place->virtualKey == code || place->padVirtualKey == code)) {
            keycodes.set(keycode);
        }
    }
}

void Hold(HookThread& thread, Gate& gate) {
    GrabMask mask(gate);
    gate.held = XIGrabDevice(thread.display, gate.device, thread.root, CurrentTime, None, XIGrabModeSync,
                             XIGrabModeAsync, False, &mask.mask) == XIGrabSuccess;
    if (gate.held) {
        XIAllowEvents(thread.display, gate.device, XISyncDevice, CurrentTime);
    }
}

bool WantsHold(const Gate& gate) {
    return gate.captureAll || gate.swallowed.any();
}

}  // namespace

void ApplyInterest(HookThread& thread) {
    const HookInterest& interest = thread.interest;
    std::bitset<kCodeLimit> keycodes;
    std::bitset<kCodeLimit> buttons;
    for (int index = 0; index < interest.codeCount; ++index) {
        WantCode(interest.codes[index], keycodes, buttons);
    }
    for (const auto& each : kButtonCodes) {
        if ((interest.buttons & (1U << each[0])) != 0) {
            buttons.set(static_cast<size_t>(each[1]));
        }
    }
    ReserveOnly(thread, thread.keyboard, keycodes);
    ReserveOnly(thread, thread.pointer, buttons);
    thread.keyboard.captureAll = interest.anyKey;
}

void AdjustHold(HookThread& thread, Gate& gate) {
    const bool leaves = gate.held && !WantsHold(gate);
    if (leaves || gate.released.any()) {
        // Letting go while an event waits for its answer would lose it: first everything that is on its way.
        XSync(thread.display, False);
        if (XEventsQueued(thread.display, QueuedAlready) > 0) {
            return;
        }
        // A release that did not come through the grab went past it.
        gate.swallowed &= ~gate.released;
        gate.released.reset();
    }
    if (WantsHold(gate) == gate.held) {
        return;
    }
    if (gate.held) {
        XIUngrabDevice(thread.display, gate.device, CurrentTime);
        gate.held = false;
    } else {
        Hold(thread, gate);
    }
}

void OnGrabbedEvent(HookThread& thread, const XIDeviceEvent& event) {
    Gate& gate = event.deviceid == thread.keyboard.device ? thread.keyboard : thread.pointer;
    const size_t code = static_cast<size_t>(event.detail) % kCodeLimit;
    const bool press = event.evtype == XI_KeyPress || event.evtype == XI_ButtonPress;
    const bool release = event.evtype == XI_KeyRelease || event.evtype == XI_ButtonRelease;
    HookAnswer answer = HookAnswer::Pass;
    if (gate.isKeyboard && (event.flags & XIKeyRepeat) != 0) {
        // A held key that was swallowed stays so; a repeat is never a press of its own.
        answer = gate.swallowed.test(code) ? HookAnswer::Consume : HookAnswer::Pass;
    } else if (press || release) {
        const bool injected = IsInjected(thread, event.sourceid);
        const GateAnswers& answers = (injected ? gate.injected : gate.real)[code];
        answer = press ? answers.press : answers.release;
        if (!injected) {
            gate.swallowed.set(code, press && answer == HookAnswer::Consume);
            gate.released.reset(code);
        }
    }
    if (answer == HookAnswer::Pass) {
        XIAllowEvents(thread.display, gate.device, XIReplayDevice, CurrentTime);
        gate.held = false;
        if (WantsHold(gate)) {
            Hold(thread, gate);
        }
    } else if (!WantsHold(gate)) {
        XIUngrabDevice(thread.display, gate.device, CurrentTime);
        gate.held = false;
    } else if (gate.held) {
        XIAllowEvents(thread.display, gate.device, XISyncDevice, CurrentTime);
    } else {
        // The grab of the press would end with its release, and other swallowed keys may then still be down.
        Hold(thread, gate);
        if (!gate.held) {
            XIAllowEvents(thread.display, gate.device, XISyncDevice, CurrentTime);
        }
    }
    XFlush(thread.display);
}

void PauseHold(HookThread& thread, Gate& gate) {
    if (gate.held) {
        XIUngrabDevice(thread.display, gate.device, CurrentTime);
        gate.held = false;
    }
}

bool HoldIsMissing(const Gate& gate) {
    return WantsHold(gate) && !gate.held;
}

void ReleaseGrabs(HookThread& thread) {
    for (Gate* gate : {&thread.keyboard, &thread.pointer}) {
        ReserveOnly(thread, *gate, {});
        XIUngrabDevice(thread.display, gate->device, CurrentTime);
        gate->held = false;
    }
    XFlush(thread.display);
}
