#include "engines/key_spammer.h"

#include "engines/autoclicker.h"
#include "engines/injection.h"
#include "model/engine_state.h"
#include "platform/wake.h"

namespace {

void RefreshSlot(KeySpamThreadState::Slot& slot, uint32_t virtualKey) {
    if (slot.cachedVk != virtualKey) {
        slot.cachedVk = virtualKey;
        slot.cachedScan = ScanCodeOfKey(virtualKey);
        slot.cachedExtended = IsExtendedKey(virtualKey);
    }
}

void SendSlot(const KeySpamThreadState::Slot& slot, bool down) {
    SendInputRecord(KeyRecord(slot.cachedScan, slot.cachedExtended, down));
}

// The releases go by the slots that the presses filled, whatever the list has become in between.
void SendChord(KeySpamThreadState& state, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        RefreshSlot(state.slots[i], keySpamSettings.keySpamTargets[i]);
        SendSlot(state.slots[i], true);
    }
    for (int32_t i = 0; i < count; ++i) {
        SendSlot(state.slots[i], false);
    }
}

void SendNextTarget(KeySpamThreadState& state, int32_t count) {
    KeySpamThreadState::Slot& slot = state.slots[state.nextTarget];
    RefreshSlot(slot, keySpamSettings.keySpamTargets[state.nextTarget]);
    SendSlot(slot, true);
    SendSlot(slot, false);
    state.nextTarget = (state.nextTarget + 1) % count;
}

}  // namespace

void ReleaseKeySpamTargets() {
    const int32_t count = keySpamSettings.keySpamTargetCount;
    for (int32_t i = 0; i < count; ++i) {
        SendKey(keySpamSettings.keySpamTargets[i], false);
    }
}

bool KeySpamRound(KeySpamThreadState& state, uint32_t* limitMilliseconds) {
    if (!engineState.keySpamming) {
        state.announced = false;
        engineState.keySpamCount = 0;
        *limitMilliseconds = kNoLimit;
        return true;
    }
    if (!state.announced) {
        NotifyEditorBusy(true);
        state.announced = true;
    }
    if (keySpamSettings.ksRptMode == 0 && engineState.keySpamCount >= keySpamSettings.ksRptTimes) {
        engineState.keySpamming = false;
        ReleaseKeySpamTargets();
        return false;
    }
    const int32_t count = keySpamSettings.keySpamTargetCount;
    if (count < 1) {
        engineState.keySpamming = false;
        return false;
    }
    if (state.nextTarget >= count) {
        state.nextTarget = 0;
    }
    if (keySpamSettings.keySpamChord) {
        SendChord(state, count);
    } else {
        SendNextTarget(state, count);
    }
    engineState.keySpamCount.fetch_add(1);
    *limitMilliseconds = ToolIntervalLimit(ToolIntervalMilliseconds(
        keySpamSettings.ksh, keySpamSettings.ksm, keySpamSettings.kss, keySpamSettings.ksms));
    return true;
}

void KeySpamThreadMain() {
    KeySpamThreadState state;
    WakeEvent* const events[] = {engineState.keySpamWakeEvent, engineState.quitEvent};
    while (engineState.running) {
        uint32_t limit = kNoLimit;
        if (KeySpamRound(state, &limit)) {
            WaitForAny(events, 2, limit);
        }
    }
}
