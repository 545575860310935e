#include "engines/key_spammer.h"

#include "engines/autoclicker.h"
#include "engines/injection.h"
#include "model/engine_state.h"
#include "platform/key_table.h"
#include "platform/wake.h"

namespace {

void RefreshSlot(KeySpammerThreadState::Slot& slot, uint32_t virtualKey) {
    if (slot.cachedVk != virtualKey) {
        slot.cachedVk = virtualKey;
        slot.cachedScan = ScanCodeOfKey(virtualKey);
        slot.cachedExtended = IsExtendedKey(virtualKey);
    }
}

void SendSlot(const KeySpammerThreadState::Slot& slot, bool down) {
    SendInputAction(KeyAction(slot.cachedScan, slot.cachedExtended, down));
}

// Releases the keys of the slots, which are the keys that were pressed: the target list may change in between.
void SendChord(KeySpammerThreadState& state, int32_t count) {
    for (int32_t i = 0; i < count; ++i) {
        RefreshSlot(state.slots[i], keySpammerSettings.targets[i]);
        SendSlot(state.slots[i], true);
    }
    for (int32_t i = 0; i < count; ++i) {
        SendSlot(state.slots[i], false);
    }
}

void SendNextTarget(KeySpammerThreadState& state, int32_t count) {
    KeySpammerThreadState::Slot& slot = state.slots[state.nextTarget];
    RefreshSlot(slot, keySpammerSettings.targets[state.nextTarget]);
    SendSlot(slot, true);
    SendSlot(slot, false);
    state.nextTarget = (state.nextTarget + 1) % count;
}

}  // namespace

void ReleaseKeySpammerTargets() {
    const int32_t count = keySpammerSettings.targetCount;
    for (int32_t i = 0; i < count; ++i) {
        SendKey(keySpammerSettings.targets[i], false);
    }
}

bool KeySpammerRound(KeySpammerThreadState& state, uint32_t* limitMilliseconds) {
    if (!engineState.keySpamming) {
        state.announced = false;
        engineState.keySpammerCount = 0;
        *limitMilliseconds = kNoLimit;
        return true;
    }
    if (!state.announced) {
        NotifyEditorBusy(true);
        state.announced = true;
    }
    if (keySpammerSettings.repeatMode == 0 && engineState.keySpammerCount >= keySpammerSettings.repeatCount) {
        engineState.keySpamming = false;
        ReleaseKeySpammerTargets();
        return false;
    }
    const int32_t count = keySpammerSettings.targetCount;
    if (count < 1) {
        engineState.keySpamming = false;
        return false;
    }
    if (state.nextTarget >= count) {
        state.nextTarget = 0;
    }
    if (keySpammerSettings.chord) {
        SendChord(state, count);
    } else {
        SendNextTarget(state, count);
    }
    engineState.keySpammerCount.fetch_add(1);
    *limitMilliseconds = ToolIntervalLimit(ToolIntervalMilliseconds(
        keySpammerSettings.intervalHours, keySpammerSettings.intervalMinutes,
        keySpammerSettings.intervalSeconds, keySpammerSettings.intervalMilliseconds));
    return true;
}

void KeySpammerThreadMain() {
    KeySpammerThreadState state;
    WakeEvent* const events[] = {engineState.keySpammerWakeEvent, engineState.quitEvent};
    while (engineState.running) {
        uint32_t limit = kNoLimit;
        if (KeySpammerRound(state, &limit)) {
            WaitForAny(events, 2, limit);
        }
    }
}
