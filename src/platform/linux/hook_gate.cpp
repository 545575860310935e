#include "platform/linux/hook_gate.h"

#include "platform/key_table.h"
#include "platform/linux/hook_devices.h"
#include "platform/linux/x11_buttons.h"

#include <vector>

// NOTE: X11 has no hook that inspects an event before the application receives it. A passive grab in synchronous mode
// comes close: the server sends us the press of a reserved key and stops the device until we swallow the event or replay
// it to the application. We then receive the release too, but also every other key meanwhile.
// HACK: while a swallowed key is down, an explicit synchronous grab holds the whole device. Each foreign event is
// replayed, which ends the grab, and the device is grabbed again.
namespace {

// The events that a grab of this gate delivers. Raw events are among them: while a device is grabbed, the client with the
// grab receives them through the grab or not at all.
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

int GrabCode(InputThread& thread, Gate& gate, int code, std::vector<XIGrabModifiers>& modifiers) {
    GrabMask mask(gate);
    const int count = static_cast<int>(modifiers.size());
    if (gate.isKeyboard) {
        return XIGrabKeycode(thread.display, gate.device, code, thread.root, XIGrabModeSync, XIGrabModeAsync,
                             False, &mask.mask, count, modifiers.data());
    }
    return XIGrabButton(thread.display, gate.device, code, thread.root, None, XIGrabModeSync, XIGrabModeAsync,
                        False, &mask.mask, count, modifiers.data());
}

// Reserves the code with all modifiers. If another program has grabbed one combination, all others are still reserved.
void Reserve(InputThread& thread, Gate& gate, int code) {
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

void Unreserve(InputThread& thread, Gate& gate, int code) {
    XIGrabModifiers any{static_cast<int>(XIAnyModifier), 0};
    if (gate.isKeyboard) {
        XIUngrabKeycode(thread.display, gate.device, code, thread.root, 1, &any);
    } else {
        XIUngrabButton(thread.display, gate.device, code, thread.root, 1, &any);
    }
}

void ReserveOnly(InputThread& thread, Gate& gate, const std::bitset<kCodeLimit>& wanted) {
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

void AddCode(uint32_t code, std::bitset<kCodeLimit>& keycodes, std::bitset<kCodeLimit>& buttons) {
    if (const int xButton = XButtonOf(code)) {
        buttons.set(static_cast<size_t>(xButton));
        return;
    }
    if (code == 0) {
        return;
    }
    for (uint32_t keycode = 8; keycode < kCodeLimit; ++keycode) {
        const KeyInfo* key = FindKeyByKeycode(keycode);
        if (key != nullptr && (key->virtualKey == code || key->padVirtualKey == code)) {
            keycodes.set(keycode);
        }
    }
}

void Hold(InputThread& thread, Gate& gate) {
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

void ApplyInterest(InputThread& thread) {
    const HookInterest& interest = thread.interest;
    std::bitset<kCodeLimit> keycodes;
    std::bitset<kCodeLimit> buttons;
    for (int index = 0; index < interest.codeCount; ++index) {
        AddCode(interest.codes[index], keycodes, buttons);
    }
    for (uint32_t button = kLeftButton; button <= kSecondSideButton; ++button) {
        if ((interest.buttons & (1U << button)) != 0) {
            buttons.set(static_cast<size_t>(XButtonOf(button)));
        }
    }
    ReserveOnly(thread, thread.keyboard, keycodes);
    ReserveOnly(thread, thread.pointer, buttons);
    thread.keyboard.captureAll = interest.anyKey;
}

void AdjustHold(InputThread& thread, Gate& gate) {
    const bool leaves = gate.held && !WantsHold(gate);
    if (leaves || gate.released.any()) {
        // A release of the grab would lose an event that waits for its decision, so all events are handled first.
        XSync(thread.display, False);
        if (XEventsQueued(thread.display, QueuedAlready) > 0) {
            return;
        }
        // The release of these did not come through the grab.
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

void OnGrabbedEvent(InputThread& thread, const XIDeviceEvent& event) {
    Gate& gate = event.deviceid == thread.keyboard.device ? thread.keyboard : thread.pointer;
    const size_t code = static_cast<size_t>(event.detail) % kCodeLimit;
    const bool press = event.evtype == XI_KeyPress || event.evtype == XI_ButtonPress;
    const bool release = event.evtype == XI_KeyRelease || event.evtype == XI_ButtonRelease;
    HookDecision decision = HookDecision::Pass;
    if (gate.isKeyboard && (event.flags & XIKeyRepeat) != 0) {
        // A held key that was swallowed stays so; a repeat is never a press of its own.
        decision = gate.swallowed.test(code) ? HookDecision::Consume : HookDecision::Pass;
    } else if (press || release) {
        const bool injected = IsInjected(thread, event.sourceid);
        const GateDecisions& decisions = (injected ? gate.injected : gate.real)[code];
        decision = press ? decisions.press : decisions.release;
        if (!injected) {
            gate.swallowed.set(code, press && decision == HookDecision::Consume);
            gate.released.reset(code);
        }
    }
    if (decision == HookDecision::Pass) {
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
        // The grab of this press ends with its release, but other swallowed keys may still be down then.
        Hold(thread, gate);
        if (!gate.held) {
            XIAllowEvents(thread.display, gate.device, XISyncDevice, CurrentTime);
        }
    }
    XFlush(thread.display);
}

void PauseHold(InputThread& thread, Gate& gate) {
    if (gate.held) {
        XIUngrabDevice(thread.display, gate.device, CurrentTime);
        gate.held = false;
    }
}

bool HoldIsMissing(const Gate& gate) {
    return WantsHold(gate) && !gate.held;
}

void ReleaseGrabs(InputThread& thread) {
    for (Gate* gate : {&thread.keyboard, &thread.pointer}) {
        ReserveOnly(thread, *gate, {});
        XIUngrabDevice(thread.display, gate->device, CurrentTime);
        gate->held = false;
    }
    XFlush(thread.display);
}
