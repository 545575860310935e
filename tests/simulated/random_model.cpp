#include "simulated/random_model.h"

#include "model/engine_state.h"
#include "platform/key_table.h"
#include "platform/process.h"

const char* ModelRequestName(int bit) {
    static const char* const names[kModelRequestCount] = {
        "requestToggleRecord", "requestStartRecord",   "requestContinueRecord", "requestUndoContinue", "requestStopRecord",
        "requestTogglePlay",   "requestStartPlay",     "requestStopPlay",       "requestToggleAutoclicker",   "requestStartAutoclicker",
        "requestStopAutoclicker",     "requestToggleKeySpammer", "requestStartKeySpammer",   "requestStopKeySpammer"};
    return names[bit];
}

Situation ReadSituation() {
    Situation now;
    now.recording = engineState.recording;
    now.playing = engineState.playing;
    now.autoClicking = engineState.autoClicking;
    now.keySpamming = engineState.keySpamming;
    now.stopToolsWithMacro = engineState.stopToolsWithMacro;
    for (int32_t index = 0; index < keySpammerSettings.targetCount; ++index) {
        now.targets.push_back(keySpammerSettings.targets[index]);
    }
    return now;
}

namespace {

void AddReleases(PassOutcome& outcome, std::initializer_list<uint32_t> buttons) {
    for (uint32_t button : buttons) {
        outcome.cleanUps.push_back({.kind = InputKind::Button, .down = false, .button = button});
    }
}

void AddKeyUps(PassOutcome& outcome) {
    for (uint32_t key : outcome.after.targets) {
        outcome.cleanUps.push_back({.kind = InputKind::Key,
                                    .down = false,
                                    .extended = IsExtendedKey(key),
                                    .scanCode = static_cast<uint16_t>(ScanCodeOfKey(key))});
    }
}

void NoteRunning(PassOutcome& outcome) {
    outcome.somethingRan |= outcome.after.playing || outcome.after.autoClicking || outcome.after.keySpamming;
}

}  // namespace

PassOutcome PredictPass(const Situation& before, uint32_t requests) {
    PassOutcome outcome;
    outcome.after = before;
    Situation& now = outcome.after;
    uint32_t raised = requests;
    const auto stopTools = [&] {
        if (now.stopToolsWithMacro) {
            raised |= kStopAuto | kStopKeySpam;
        }
    };
    const auto begin = [&](bool& kind) {
        now.recording = true;
        kind = true;
    };
    const auto end = [&] {
        now.recording = false;
        outcome.ended = true;
        stopTools();
    };
    const auto setPlaying = [&](bool on) {
        now.playing = on;
        outcome.playSet |= on;
        if (!on) {
            AddReleases(outcome, {kLeftButton, kRightButton});
            stopTools();
        }
    };
    const auto setAuto = [&](bool on) {
        now.autoClicking = on;
        if (!on) {
            AddReleases(outcome, {kLeftButton, kRightButton, kMiddleButton});
        }
    };
    const auto setKeySpam = [&](bool on) {
        now.keySpamming = on;
        if (!on) {
            AddKeyUps(outcome);
        }
    };
    NoteRunning(outcome);
    if ((raised & kToggleRecord) != 0 && !now.playing) {
        if (now.recording) {
            end();
        } else {
            begin(outcome.begunFresh);
        }
    }
    if ((raised & kStartRecord) != 0 && !now.playing && !now.recording) {
        begin(outcome.begunFresh);
    }
    if ((raised & kContinueRecord) != 0 && !now.playing && !now.recording) {
        begin(outcome.begunContinued);
    }
    if ((raised & kStopRecord) != 0 && now.recording) {
        end();
    }
    if ((raised & kTogglePlay) != 0 && !now.recording) {
        setPlaying(!now.playing);
        NoteRunning(outcome);
    }
    if ((raised & kStartPlay) != 0 && !now.recording && !now.playing) {
        setPlaying(true);
        NoteRunning(outcome);
    }
    if ((raised & kStopPlay) != 0 && now.playing) {
        setPlaying(false);
    }
    if ((raised & kToggleAuto) != 0) {
        setAuto(!now.autoClicking);
        NoteRunning(outcome);
    }
    if ((raised & kStartAuto) != 0 && !now.autoClicking) {
        setAuto(true);
        NoteRunning(outcome);
    }
    if ((raised & kStopAuto) != 0 && now.autoClicking) {
        setAuto(false);
    }
    if ((raised & kToggleKeySpam) != 0 && (now.keySpamming || !now.targets.empty())) {
        setKeySpam(!now.keySpamming);
        NoteRunning(outcome);
    }
    if ((raised & kStartKeySpam) != 0 && !now.keySpamming && !now.targets.empty()) {
        setKeySpam(true);
        NoteRunning(outcome);
    }
    if ((raised & kStopKeySpam) != 0 && now.keySpamming) {
        setKeySpam(false);
    }
    return outcome;
}

namespace {

HookVerdict ExpectHotkey(uint32_t code) {
    HookVerdict verdict;
    const bool locked = engineState.lockOn && !engineState.unlocked;
    if (engineState.lockOn && code == hotkeyTable.unlock) {
        verdict.lockToggled = true;
        verdict.requests = locked ? 0 : kStopAuto | kStopKeySpam | kStopPlay;
    } else if (locked) {
        return verdict;
    } else if (code == hotkeyTable.record) {
        verdict.requests = kToggleRecord;
    } else if (code == hotkeyTable.play) {
        verdict.requests = kTogglePlay;
    } else if (code == hotkeyTable.autoclicker) {
        verdict.requests = hotkeyTable.holdAutoclicker ? kStartAuto : kToggleAuto;
    } else if (code == hotkeyTable.keySpammer) {
        verdict.requests = hotkeyTable.holdKeySpammer ? kStartKeySpam : kToggleKeySpam;
    } else {
        return verdict;
    }
    verdict.consumed = true;
    return verdict;
}

HookVerdict ExpectPress(bool& down, bool& swallowed, bool repeatsHide, uint32_t code) {
    if (down) {
        HookVerdict verdict;
        verdict.consumed = repeatsHide && swallowed;
        return verdict;
    }
    down = true;
    const HookVerdict verdict = engineState.hotkeysEnabled ? ExpectHotkey(code) : HookVerdict();
    swallowed = verdict.consumed;
    return verdict;
}

HookVerdict ExpectRelease(bool& down, bool& swallowed, uint32_t code) {
    HookVerdict verdict;
    down = false;
    if (!swallowed) {
        return verdict;
    }
    swallowed = false;
    verdict.consumed = true;
    if (code == hotkeyTable.autoclicker && hotkeyTable.holdAutoclicker) {
        verdict.requests |= kStopAuto;
    }
    if (code == hotkeyTable.keySpammer && hotkeyTable.holdKeySpammer) {
        verdict.requests |= kStopKeySpam;
    }
    return verdict;
}

}  // namespace

HookVerdict ExpectInput(HookModel& model, bool button, uint32_t code, bool down) {
    bool& isDown = button ? model.buttonDown[code] : model.keyDown[code];
    bool& swallowed = button ? model.buttonSwallowed[code] : model.keySwallowed[code];
    if (!down) {
        return ExpectRelease(isDown, swallowed, code);
    }
    HookVerdict verdict;
    if (button && engineState.pickingLocation && (code == 1 || code == 2 || code == 4)) {
        verdict.consumed = true;
        return verdict;
    }
    const uint32_t target = engineState.reassignTarget;
    if (target != 0 && (!button || (target != 5 && !(target == 6 && code == 1)))) {
        verdict.consumed = true;
        verdict.captured = true;
        return verdict;
    }
    return ExpectPress(isDown, swallowed, !button, code);
}

namespace {

uint32_t RecordedFlags(uint32_t button, bool down) {
    switch (button) {
    case 1:
        return down ? 2 : 4;
    case 2:
        return down ? 8 : 16;
    case 4:
        return down ? 32 : 64;
    default:
        return down ? 128 : 0;
    }
}

void RecordSeenButton(RecorderModel& model, const SimSeen& seen) {
    bool& onOwn = model.pressOnOwn[seen.code];
    bool own = onOwn;
    if (seen.down) {
        uint32_t process = 0;
        own = ProcessAtPoint(seen.x, seen.y, &process) && process == OwnProcessId();
    }
    onOwn = seen.down && own;
    const uint32_t flags = RecordedFlags(seen.code, seen.down);
    if (macroSettings.recordButtons && !own && flags != 0) {
        model.events.push_back({.type = EvMouseButton, .x = seen.x, .y = seen.y, .flags = flags});
    }
}

}  // namespace

void RecordSeen(RecorderModel& model, const SimSeen& seen) {
    const bool recording = engineState.recording && !seen.injected;
    if (seen.kind == SimSeenKind::Move) {
        const bool same = seen.x == model.lastX && seen.y == model.lastY;
        if (recording && !macroSettings.recordMoves) {
            return;
        }
        if (recording && !macroSettings.recordRawMoves && !same) {
            model.events.push_back({.type = EvAbsMove, .x = seen.x, .y = seen.y});
        }
        model.lastX = seen.x;
        model.lastY = seen.y;
        return;
    }
    if (!recording) {
        return;
    }
    if (seen.kind == SimSeenKind::Button) {
        RecordSeenButton(model, seen);
    } else if (seen.kind == SimSeenKind::Key && macroSettings.recordKeys) {
        model.events.push_back({.type = EvKey, .virtualKey = seen.code, .down = seen.down});
    } else if (seen.kind == SimSeenKind::Wheel && macroSettings.recordWheel) {
        model.events.push_back({.type = EvScroll, .wheel = seen.wheel});
    }
}

std::vector<UnifiedEvent> Timeless(const std::vector<UnifiedEvent>& events) {
    std::vector<UnifiedEvent> timeless;
    for (UnifiedEvent event : events) {
        event.time = 0;
        if (event.type != EvToolState) {
            timeless.push_back(event);
        }
    }
    return timeless;
}
