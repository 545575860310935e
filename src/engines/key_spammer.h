// Presses keys repeatedly, in turn or as a chord. Controlled only by engineState.keySpamming.
#pragma once

#include "model/engine_state.h"

#include <cstdint>

// The state of the key spammer thread, for its whole life.
struct KeySpammerThreadState {
    // The scan code of one target position, computed again when its key changes.
    struct Slot {
        uint32_t cachedVk = 0xFFFFFFFF;
        uint32_t cachedScan = 0;
        bool cachedExtended = false;
    };
    Slot slots[kMaxKeySpammerTargets];
    int32_t nextTarget = 0;  // position of the next key; kept from run to run
    bool announced = false;  // the editor was notified of this run
};

// Thread body, from start to shutdown.
void KeySpammerThreadMain();

// Runs one round of the thread's loop, up to its wait. Returns true to wait *limitMilliseconds (kNoLimit: until woken)
// before the next round, false to continue at once.
bool KeySpammerRound(KeySpammerThreadState& state, uint32_t* limitMilliseconds);

// Any thread. Sends a key-up for every target, in list order.
void ReleaseKeySpammerTargets();
