// Presses keys again and again, in turn or as a chord. Driven by engineState.keySpamming alone.
#pragma once

#include "model/engine_state.h"

#include <cstdint>

// What the key spam thread keeps to itself, for as long as it lives.
struct KeySpammerThreadState {
    // One target position's scan code, worked out anew when another key stands there.
    struct Slot {
        uint32_t cachedVk = 0xFFFFFFFF;
        uint32_t cachedScan = 0;
        bool cachedExtended = false;
    };
    Slot slots[kMaxKeySpammerTargets];
    int32_t nextTarget = 0;  // position whose turn it is; kept from run to run
    bool announced = false;  // the editor has been told of this run
};

// Thread body, from start to shutdown.
void KeySpammerThreadMain();

// One way round the thread's loop, up to its wait. True: wait *limitMilliseconds (kNoLimit: until woken) before the
// next round. False: go round at once.
bool KeySpammerRound(KeySpammerThreadState& state, uint32_t* limitMilliseconds);

// Any thread. A key-up for every target, in list order.
void ReleaseKeySpammerTargets();
