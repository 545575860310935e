// The key spammer: presses keys in turn or as a chord while engineState.keySpamming is set, at the interval of
// keySpammerSettings.
#pragma once

#include "model/engine_state.h"

#include <cstdint>

// State of the key spammer thread only.
struct KeySpammerThreadState {
    // The scan code of the target at one position. It is looked up again when the target there changes.
    struct Slot {
        uint32_t cachedVk = 0xFFFFFFFF;
        uint32_t cachedScan = 0;
        bool cachedExtended = false;
    };
    Slot slots[kMaxKeySpammerTargets];
    int32_t nextTarget = 0;  // position of the target to press next; kept from run to run
    bool announced = false;  // NotifyEditorBusy was called for this run
};

// Thread body, from start to shutdown.
void KeySpammerThreadMain();

// Key spammer thread. One round of the thread's loop, up to its wait. Returns true to wait *limitMilliseconds before the
// next round (kNoLimit: until woken), false to start the next round at once.
bool KeySpammerRound(KeySpammerThreadState& state, uint32_t* limitMilliseconds);

// Any thread. Sends a key-up for every target, in list order.
void ReleaseKeySpammerTargets();
