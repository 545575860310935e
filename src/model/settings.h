// The live settings of the autoclicker, the key spammer, the macro and the hotkeys. One definition, in
// engine_state.cpp.
#pragma once

#include "base/relaxed.h"

#include <atomic>
#include <cstdint>

// The autoclicker's settings. Written by page commands, profile switches and (location) the input thread; read by the
// autoclicker thread. A reader may see one update half done.
struct AutoclickerSettings {
    Relaxed<int32_t> intervalHours{0};
    Relaxed<int32_t> intervalMinutes{0};
    Relaxed<int32_t> intervalSeconds{0};
    Relaxed<int32_t> intervalMilliseconds{5};
    Relaxed<int32_t> button{0};       // 0 left, 1 right, 2 middle
    Relaxed<int32_t> doubleClick{0};  // 1 double click, else single
    Relaxed<int32_t> repeatMode{1};   // 0 stop after repeatCount clicks, else until stopped
    Relaxed<int32_t> repeatCount{10};
    Relaxed<int32_t> locationMode{0};  // 1 click at fixedX, fixedY; else where the pointer is
    Relaxed<int32_t> fixedX{0};        // screen pixels
    Relaxed<int32_t> fixedY{0};
};

constexpr int kMaxKeySpammerTargets = 256;
constexpr uint32_t kSpaceKey = 32;

// The key spammer's settings. Written by page commands, the dispatcher and profile switches; read by the key spammer
// thread, value by value.
struct KeySpammerSettings {
    Relaxed<int32_t> intervalHours{0};  // interval, as in AutoclickerSettings
    Relaxed<int32_t> intervalMinutes{0};
    Relaxed<int32_t> intervalSeconds{0};
    Relaxed<int32_t> intervalMilliseconds{5};
    Relaxed<int32_t> repeatMode{1};  // 0 stop after repeatCount rounds, else until stopped
    Relaxed<int32_t> repeatCount{10};
    // Virtual-key codes, in order of adding; the first targetCount (0 to kMaxKeySpammerTargets) are in use.
    std::atomic<uint32_t> targets[kMaxKeySpammerTargets] = {kSpaceKey};
    std::atomic<int32_t> targetCount{1};
    // Copy of the first target, for the single-key field of older forms.
    std::atomic<uint32_t> singleKey{kSpaceKey};
    Relaxed<bool> chord{false};  // true presses all targets together, false takes them in turn
};

// What is recorded and how it is played. Written by page commands and the session reader; read by the input thread and
// the playback thread at each use.
struct MacroSettings {
    Relaxed<bool> recordMoves{true};
    Relaxed<bool> recordButtons{true};
    Relaxed<bool> recordWheel{true};
    Relaxed<bool> recordKeys{true};
    Relaxed<bool> recordRawMoves{false};  // record moves as raw relative counts
    Relaxed<float> playbackSpeed{1.0F};   // times of events are divided by it; any value, 0 and less included
    Relaxed<bool> loop{false};            // repeat until stopped
    Relaxed<int32_t> loopPauseMilliseconds{500};  // pause between rounds, milliseconds
};

// Virtual-key codes, or mouse buttons: 1 left, 2 right, 4 middle, 5 and 6 side.
struct HotkeyTable {
    std::atomic<uint32_t> record{119};       // F8
    std::atomic<uint32_t> play{118};         // F7
    std::atomic<uint32_t> autoclicker{117};  // F6
    std::atomic<uint32_t> keySpammer{120};   // F9
    std::atomic<uint32_t> unlock{121};       // F10
    Relaxed<bool> holdAutoclicker{false};    // the autoclicker runs while its hotkey is held
    Relaxed<bool> holdKeySpammer{false};
};

extern AutoclickerSettings autoclickerSettings;
extern KeySpammerSettings keySpammerSettings;
extern MacroSettings macroSettings;
extern HotkeyTable hotkeyTable;
