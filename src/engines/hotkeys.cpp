#include "engines/hotkeys.h"

#include "base/json_writer.h"
#include "editing/settings_updates.h"
#include "engines/key_spammer.h"
#include "model/engine_state.h"
#include "platform/input.h"
#include "platform/key_table.h"
#include "platform/wake.h"

#include <iterator>

namespace {

constexpr uint32_t kEscapeKey = 27;

// The keys and buttons that are physically held, and those whose press was consumed, so that the release must be too.
// Indexed by the low 8 bits of a code. Input thread only.
struct HeldInput {
    bool keyDown[256] = {};
    bool keySwallowed[256] = {};
    bool buttonDown[256] = {};
    bool buttonSwallowed[256] = {};
};
HeldInput held;

void WakeDispatcher() {
    SignalWake(engineState.dispatchEvent);
}

// The left button stays free for the page while the unlock key is chosen. No button can be a key spammer target.
bool CapturesButton(uint32_t target, uint32_t button) {
    switch (target) {
    case kReassignNone:
    case kReassignKeySpammerTarget:
        return false;
    case kReassignUnlock:
        return button != kLeftButton;
    default:
        return true;
    }
}

bool CapturesKey(uint32_t target, uint32_t /*key*/) {
    return target != kReassignNone;
}

// Stores `code` for the binding that waits for a key, if `captures` accepts it. Returns whether it was stored.
bool CaptureCode(uint32_t code, bool (*captures)(uint32_t target, uint32_t code)) {
    Capture waiting = engineState.capture;
    do {
        if (!captures(waiting.target, code)) {
            return false;
        }
        // Fails if the capture has ended or another binding waits now: then this one decides.
    } while (!engineState.capture.compare_exchange_weak(waiting, {waiting.target, code}));
    WakeDispatcher();
    return true;
}

// The caller wakes the dispatcher.
void SetUnlocked(bool unlocked) {
    engineState.unlocked = unlocked;
    if (!unlocked) {
        engineState.requestStopAutoclicker = true;
        engineState.requestStopKeySpammer = true;
        engineState.requestStopPlay = true;
    }
    HookInterestChanged();
}

// Raises the request of the first binding with this code. Returns false if there is none.
bool RaiseForBinding(uint32_t code) {
    if (code == hotkeyTable.record) {
        engineState.requestToggleRecord = true;
    } else if (code == hotkeyTable.play) {
        engineState.requestTogglePlay = true;
    } else if (code == hotkeyTable.autoclicker) {
        (hotkeyTable.holdAutoclicker ? engineState.requestStartAutoclicker
                                     : engineState.requestToggleAutoclicker) = true;
    } else if (code == hotkeyTable.keySpammer) {
        (hotkeyTable.holdKeySpammer ? engineState.requestStartKeySpammer
                                    : engineState.requestToggleKeySpammer) = true;
    } else {
        return false;
    }
    return true;
}

bool ConsumesFirstPress(bool& swallowed, uint32_t code) {
    swallowed = engineState.hotkeysEnabled && HotkeyPressed(code);
    return swallowed;
}

HookDecision DecideRelease(bool& down, bool& swallowed, uint32_t code) {
    down = false;
    if (!swallowed) {
        return HookDecision::Pass;
    }
    swallowed = false;
    HotkeyReleased(code);
    return HookDecision::Consume;
}

// Returns the binding of a capture, or null for none and for the key spammer's targets.
std::atomic<uint32_t>* BindingOf(uint32_t target) {
    switch (target) {
    case kReassignRecord:
        return &hotkeyTable.record;
    case kReassignPlay:
        return &hotkeyTable.play;
    case kReassignAutoclicker:
        return &hotkeyTable.autoclicker;
    case kReassignKeySpammer:
        return &hotkeyTable.keySpammer;
    case kReassignUnlock:
        return &hotkeyTable.unlock;
    default:
        return nullptr;
    }
}

// Returns whether a capture for this binding can end with the code: any key except Esc, and the buttons it may have.
bool IsCapturable(uint32_t target, uint32_t code) {
    constexpr uint32_t kLastKey = 255;
    if (code <= kSecondSideButton && code != 3) {
        return code != kNoButton && CapturesButton(target, code);
    }
    return code <= kLastKey && code != kEscapeKey;
}

// Indexed by ReassignTarget.
constexpr const char* kReassignTexts[] = {"",      "rec", "play", "auto", "keyspamhotkey", "keyspamtarget",
                                          "unlock"};

}  // namespace

HookDecision DecideKey(uint32_t virtualKey, bool down) {
    const uint32_t key = virtualKey & 0xFF;
    if (!down) {
        return DecideRelease(held.keyDown[key], held.keySwallowed[key], key);
    }
    if (CaptureCode(virtualKey, CapturesKey)) {
        return HookDecision::Consume;
    }
    if (held.keyDown[key]) {
        // A held key repeats. A repeat never triggers, and a hotkey stays hidden as long as it is held.
        return held.keySwallowed[key] ? HookDecision::Consume : HookDecision::Pass;
    }
    held.keyDown[key] = true;
    return ConsumesFirstPress(held.keySwallowed[key], key) ? HookDecision::Consume : HookDecision::Pass;
}

HookDecision DecideButton(uint32_t button, bool press) {
    const uint32_t index = button & 0xFF;
    if (!press) {
        return DecideRelease(held.buttonDown[index], held.buttonSwallowed[index], button);
    }
    if (CaptureCode(button, CapturesButton)) {
        return HookDecision::Consume;
    }
    if (held.buttonDown[index]) {
        return HookDecision::Pass;
    }
    held.buttonDown[index] = true;
    return ConsumesFirstPress(held.buttonSwallowed[index], button) ? HookDecision::Consume
                                                                   : HookDecision::Pass;
}

bool HotkeyPressed(uint32_t code) {
    if (code == hotkeyTable.unlock && engineState.lockOn) {
        SetUnlocked(!engineState.unlocked);
    } else if ((engineState.lockOn && !engineState.unlocked) || !RaiseForBinding(code)) {
        return false;
    }
    WakeDispatcher();
    return true;
}

void HotkeyReleased(uint32_t code) {
    if (code == hotkeyTable.autoclicker && hotkeyTable.holdAutoclicker) {
        RaiseRequest(engineState.requestStopAutoclicker);
    }
    if (code == hotkeyTable.keySpammer && hotkeyTable.holdKeySpammer) {
        RaiseRequest(engineState.requestStopKeySpammer);
    }
}

void SessionChanged(SessionChange /*change*/) {
    // The release may go to the other desktop. It must not leave a key marked as held, nor its tool running.
    ClearHeldInput();
    if (hotkeyTable.holdAutoclicker) {
        engineState.requestStopAutoclicker = true;
    }
    if (hotkeyTable.holdKeySpammer) {
        engineState.requestStopKeySpammer = true;
    }
    WakeDispatcher();
}

void ClearHeldInput() {
    held = HeldInput{};
}

void ReadHookInterest(HookInterest* interest) {
    *interest = HookInterest{};
    const auto addCode = [interest](uint32_t code) { interest->codes[interest->codeCount++] = code; };
    const bool lockOn = engineState.lockOn;
    if (engineState.hotkeysEnabled) {
        if (lockOn) {
            addCode(hotkeyTable.unlock);
        }
        if (!lockOn || engineState.unlocked) {
            addCode(hotkeyTable.record);
            addCode(hotkeyTable.play);
            addCode(hotkeyTable.autoclicker);
            addCode(hotkeyTable.keySpammer);
        }
    }
    const auto addButtons = [interest](auto wanted) {
        for (uint32_t button :
             {kLeftButton, kRightButton, kMiddleButton, kFirstSideButton, kSecondSideButton}) {
            if (wanted(button)) {
                interest->buttons |= 1U << button;
            }
        }
    };
    const uint32_t target = engineState.capture.load().target;
    interest->anyKey = target != kReassignNone;
    addButtons([target](uint32_t button) { return CapturesButton(target, button); });
    if (engineState.pickingLocation) {
        addButtons([](uint32_t button) { return button <= kMiddleButton; });
    }
    interest->everyEvent = engineState.recording;
    interest->rawMotion = engineState.recording && macroSettings.recordMoves && macroSettings.recordRawMoves;
}

std::string KeyNameText(uint32_t code) {
    if (const char* name = FixedCodeName(code)) {
        return name;
    }
    std::string name = SystemKeyName(ScanCodeOfKey(code), IsExtendedKey(code));
    return name.empty() ? "Key[" + std::to_string(code) + "]" : name;
}

std::string EventKeyName(uint32_t virtualKey) {
    constexpr uint32_t kNumLockKey = 144;
    if (const char* name = FixedCodeName(virtualKey)) {
        return name;
    }
    const KeyInfo* key = FindKeyByVirtualKey(virtualKey);
    if (key == nullptr) {
        return {};
    }
    if ((key->scanCode & kPrefixE1) != 0) {
        return key->name;  // no system names a key with this prefix
    }
    // NOTE: Windows names Num Lock as an extended key, although it has no prefix. Without the mark its name is Pause.
    const bool extended = (key->scanCode & kPrefixE0) != 0 || virtualKey == kNumLockKey;
    const std::string name = SystemKeyName(key->scanCode & 0xFFU, extended);
    return name.empty() ? key->name : name;
}

void ReassignKey(std::string_view target) {
    for (uint32_t code = kReassignRecord; code < std::size(kReassignTexts); ++code) {
        if (target == kReassignTexts[code]) {
            engineState.capture = {code, 0};
            HookInterestChanged();
        }
    }
}

const char* ReassignTargetText() {
    const uint32_t target = engineState.capture.load().target;
    return target < std::size(kReassignTexts) ? kReassignTexts[target] : "";
}

void ApplyCapturedKey() {
    Capture captured = engineState.capture;
    do {
        if (captured.target == kReassignNone || captured.key == 0) {
            return;
        }
        // Ended first: if storing a target fails, the capture does not run again and again.
    } while (!engineState.capture.compare_exchange_weak(captured, {}));
    const bool isCancelled = captured.key == kEscapeKey;
    std::atomic<uint32_t>* const binding = BindingOf(captured.target);
    if (!isCancelled && binding != nullptr) {
        *binding = captured.key;
    }
    HookInterestChanged();
    if (!isCancelled && captured.target == kReassignKeySpammerTarget) {
        AddKeySpammerTarget(captured.key);
    }
}

bool SetHotkey(std::string_view target, uint32_t code) {
    for (uint32_t index = kReassignRecord; index < std::size(kReassignTexts); ++index) {
        std::atomic<uint32_t>* binding = BindingOf(index);
        if (target == kReassignTexts[index] && binding != nullptr && IsCapturable(index, code)) {
            *binding = code;
            HookInterestChanged();
            return true;
        }
    }
    return false;
}

std::string HotkeyCodesReport() {
    std::string report;
    JsonWriter json(report);
    json.BeginObject();
    for (uint32_t index = kReassignRecord; index < std::size(kReassignTexts); ++index) {
        if (const std::atomic<uint32_t>* binding = BindingOf(index)) {
            json.IntField(kReassignTexts[index], binding->load());
        }
    }
    json.EndObject();
    return report;
}

void CancelLocationPick() {
    engineState.pickingLocation = false;
    HookInterestChanged();
}

bool LockHotkeys() {
    if (!engineState.lockOn || !engineState.hotkeysEnabled) {
        return false;
    }
    if (engineState.unlocked) {
        SetUnlocked(false);
        WakeDispatcher();
    }
    return true;
}

void ResetHotkeys() {
    hotkeyTable.record = 119;
    hotkeyTable.play = 118;
    hotkeyTable.autoclicker = 117;
    hotkeyTable.keySpammer = 120;
    hotkeyTable.unlock = 121;
    HookInterestChanged();
}
