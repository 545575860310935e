#include "simulated/script.h"

#include "base/numbers.h"
#include "base/text.h"
#include "engines/hotkeys.h"
#include "platform/process.h"
#include "simulated/engine_rig.h"
#include "simulated/script_text.h"
#include "storage/session.h"

#include <fstream>
#include <map>
#include <sstream>
#include <utility>

namespace {

// What the running script has written so far, and which of the two live logs it wants.
struct Output {
    std::vector<std::string> lines;
    bool sent = true;
    bool seen = false;
    bool seenInjected = false;
};
Output output;

using Words = std::vector<std::string>;

const std::map<std::string, Relaxed<int32_t>*>& IntSettings() {
    static const std::map<std::string, Relaxed<int32_t>*> settings = {
        {"autoclicker.intervalHours", &autoclickerSettings.intervalHours},
        {"autoclicker.intervalMinutes", &autoclickerSettings.intervalMinutes},
        {"autoclicker.intervalSeconds", &autoclickerSettings.intervalSeconds},
        {"autoclicker.intervalMilliseconds", &autoclickerSettings.intervalMilliseconds},
        {"autoclicker.button", &autoclickerSettings.button},
        {"autoclicker.doubleClick", &autoclickerSettings.doubleClick},
        {"autoclicker.repeatMode", &autoclickerSettings.repeatMode},
        {"autoclicker.repeatCount", &autoclickerSettings.repeatCount},
        {"autoclicker.locationMode", &autoclickerSettings.locationMode},
        {"autoclicker.fixedX", &autoclickerSettings.fixedX},
        {"autoclicker.fixedY", &autoclickerSettings.fixedY},
        {"keySpammer.intervalHours", &keySpammerSettings.intervalHours},
        {"keySpammer.intervalMinutes", &keySpammerSettings.intervalMinutes},
        {"keySpammer.intervalSeconds", &keySpammerSettings.intervalSeconds},
        {"keySpammer.intervalMilliseconds", &keySpammerSettings.intervalMilliseconds},
        {"keySpammer.repeatMode", &keySpammerSettings.repeatMode},
        {"keySpammer.repeatCount", &keySpammerSettings.repeatCount},
        {"macro.loopPauseMilliseconds", &macroSettings.loopPauseMilliseconds},
    };
    return settings;
}

const std::map<std::string, Relaxed<bool>*>& BoolSettings() {
    static const std::map<std::string, Relaxed<bool>*> settings = {
        {"keySpammer.chord", &keySpammerSettings.chord},
        {"macro.recordMoves", &macroSettings.recordMoves},
        {"macro.recordButtons", &macroSettings.recordButtons},
        {"macro.recordWheel", &macroSettings.recordWheel},
        {"macro.recordKeys", &macroSettings.recordKeys},
        {"macro.recordRawMoves", &macroSettings.recordRawMoves},
        {"macro.loop", &macroSettings.loop},
        {"holdAutoclicker", &hotkeyTable.holdAutoclicker},
        {"holdKeySpammer", &hotkeyTable.holdKeySpammer},
    };
    return settings;
}

const std::map<std::string, std::atomic<bool>*>& Flags() {
    static const std::map<std::string, std::atomic<bool>*> flags = {
        {"lockOn", &engineState.lockOn},
        {"unlocked", &engineState.unlocked},
        {"hotkeysEnabled", &engineState.hotkeysEnabled},
        {"stopToolsWithMacro", &engineState.stopToolsWithMacro},
        {"recording", &engineState.recording},
        {"playing", &engineState.playing},
        {"autoClicking", &engineState.autoClicking},
        {"keySpamming", &engineState.keySpamming},
        {"pickingLocation", &engineState.pickingLocation},
        {"requestToggleRecord", &engineState.requestToggleRecord},
        {"requestStartRecord", &engineState.requestStartRecord},
        {"requestStopRecord", &engineState.requestStopRecord},
        {"requestContinueRecord", &engineState.requestContinueRecord},
        {"requestUndoContinue", &engineState.requestUndoContinue},
        {"requestTogglePlay", &engineState.requestTogglePlay},
        {"requestStartPlay", &engineState.requestStartPlay},
        {"requestStopPlay", &engineState.requestStopPlay},
        {"requestToggleAutoclicker", &engineState.requestToggleAutoclicker},
        {"requestStartAutoclicker", &engineState.requestStartAutoclicker},
        {"requestStopAutoclicker", &engineState.requestStopAutoclicker},
        {"requestToggleKeySpammer", &engineState.requestToggleKeySpammer},
        {"requestStartKeySpammer", &engineState.requestStartKeySpammer},
        {"requestStopKeySpammer", &engineState.requestStopKeySpammer},
    };
    return flags;
}

const std::map<std::string, std::atomic<uint32_t>*>& Bindings() {
    static const std::map<std::string, std::atomic<uint32_t>*> bindings = {
        {"rec", &hotkeyTable.record},       {"play", &hotkeyTable.play},
        {"auto", &hotkeyTable.autoclicker}, {"keyspam", &hotkeyTable.keySpammer},
        {"unlock", &hotkeyTable.unlock},
    };
    return bindings;
}

bool ToInt(const Words& words, size_t index, int32_t* value) {
    return index < words.size() && ParseInt(words[index], value);
}

int32_t IntAt(const Words& words, size_t index) {
    int32_t value = 0;
    ToInt(words, index, &value);
    return value;
}

std::string At(const Words& words, size_t index) {
    return index < words.size() ? words[index] : std::string();
}

// `0.5 left down 10 20`, `1 key A up`, `1 wheel 120`, `2 tool 1 on`, `3 relative 5 -3`, `4 type 9`
bool ParseMacroEvent(const Words& words, UnifiedEvent* event) {
    if (!ParseDouble(At(words, 1), &event->time)) {
        return false;
    }
    const std::string kind = At(words, 2);
    if (kind == "move" || kind == "relative") {
        event->type = kind == "move" ? EvAbsMove : EvRelMove;
        event->x = IntAt(words, 3);
        event->y = IntAt(words, 4);
    } else if (kind == "key") {
        event->type = EvKey;
        event->virtualKey = SimKeyFromName(At(words, 3));
        event->down = At(words, 4) == "down";
    } else if (kind == "wheel") {
        event->type = EvScroll;
        event->wheel = IntAt(words, 3);
    } else if (kind == "tool") {
        event->type = EvToolState;
        event->virtualKey = static_cast<uint32_t>(IntAt(words, 3));
        event->down = At(words, 4) == "on";
    } else if (kind == "type") {
        event->type = static_cast<uint32_t>(IntAt(words, 3));
    } else {
        event->type = EvMouseButton;
        event->flags = FlagsOfAction(kind, At(words, 3));
        event->x = IntAt(words, 4);
        event->y = IntAt(words, 5);
        return event->flags != 0;
    }
    return true;
}

bool SetTargets(const std::string& list) {
    std::vector<uint32_t> targets;
    if (list != "none") {
        for (std::string_view name : SplitParts(list, ',')) {
            targets.push_back(SimKeyFromName(name));
        }
    }
    SetRigTargets(targets);
    return true;
}

// Everything of the surroundings: screen, pointer, windows, the clock's habits.
bool SetSurroundings(const Words& words) {
    const std::string& name = words[1];
    if (name == "screen") {
        SimSetScreen(IntAt(words, 2), IntAt(words, 3));
    } else if (name == "pointer") {
        SimSetPointer(IntAt(words, 2), IntAt(words, 3));
    } else if (name == "doubleClick") {
        SimSetDoubleClickMilliseconds(static_cast<uint32_t>(IntAt(words, 2)));
    } else if (name == "window") {
        uint32_t process = static_cast<uint32_t>(IntAt(words, 2));
        if (At(words, 2) == "own") {
            process = OwnProcessId();
        } else if (At(words, 2) == "panel") {
            process = OwnProcessId() + 1;
            SimAddOwnImageProcess(process);
        }
        SimAddWindow("window", process, IntAt(words, 3), IntAt(words, 4), IntAt(words, 5), IntAt(words, 6));
    } else {
        return false;
    }
    return true;
}

bool StepSet(const Words& words) {
    const std::string name = At(words, 1);
    const std::string value = At(words, 2);
    if (const auto found = IntSettings().find(name); found != IntSettings().end()) {
        *found->second = IntAt(words, 2);
        return true;
    }
    if (const auto found = BoolSettings().find(name); found != BoolSettings().end()) {
        *found->second = value == "on";
        HookInterestChanged();
        return true;
    }
    if (const auto found = Flags().find(name); found != Flags().end()) {
        *found->second = value == "on";
        HookInterestChanged();
        return true;
    }
    if (const auto found = Bindings().find(name); found != Bindings().end()) {
        *found->second = CodeFromName(value);
        HookInterestChanged();
        return true;
    }
    if (name == "macro.playbackSpeed") {
        macroSettings.playbackSpeed = std::stof(value);
        return true;
    }
    if (name == "targets") {
        return SetTargets(value);
    }
    return words.size() > 1 && SetSurroundings(words);
}

bool StepMacro(const Words& words) {
    UnifiedEvent event;
    if (!ParseMacroEvent(words, &event)) {
        return false;
    }
    std::vector<UnifiedEvent> events = RigMacro();
    events.push_back(event);
    SetRigMacro(events);
    return true;
}

// A key or a button, by name.
bool Press(const std::string& name, bool down, bool injected) {
    if (const auto button = Buttons().find(name); button != Buttons().end()) {
        SimButton(button->second, down, injected);
        return true;
    }
    const uint32_t key = SimKeyFromName(name);
    if (key == 0) {
        return false;
    }
    SimKey(key, down, injected);
    return true;
}

bool StepInput(const Words& words, bool injected) {
    const std::string word = At(words, 0);
    const std::string name = At(words, 1);
    if (word == "down" || word == "up") {
        return Press(name, word == "down", injected);
    }
    if (word == "press") {
        return Press(name, true, injected) && Press(name, false, injected);
    }
    if (word == "move") {
        SimMove(IntAt(words, 1), IntAt(words, 2), injected);
    } else if (word == "wheel") {
        SimWheel(IntAt(words, 1), injected);
    } else if (word == "hwheel") {
        SimHorizontalWheel(IntAt(words, 1));
    } else if (word == "raw") {
        SimRawMove(IntAt(words, 1), IntAt(words, 2));
    } else {
        return false;
    }
    return true;
}

bool StepSession(const Words& words) {
    static const std::map<std::string, SessionChange> changes = {
        {"disconnect", SessionChange::ConsoleDisconnect},
        {"remoteDisconnect", SessionChange::RemoteDisconnect},
        {"lock", SessionChange::Lock}};
    const auto found = changes.find(At(words, 1));
    if (found == changes.end()) {
        return false;
    }
    SimSessionChange(found->second);
    return true;
}

void Show(const std::string& line) {
    output.lines.push_back(line);
}

void ShowFlags() {
    std::string text;
    for (const char* name : {"recording", "playing", "autoClicking", "keySpamming", "pickingLocation"}) {
        if (*Flags().at(name)) {
            text += std::string(" ") + name;
        }
    }
    Show("flags:" + (text.empty() ? " none" : text));
}

bool StepShow(const Words& words) {
    const std::string what = At(words, 1);
    if (what == "flags") {
        ShowFlags();
    } else if (what == "macro") {
        const std::vector<UnifiedEvent> events = RigMacro();
        Show("macro: " + std::to_string(events.size()));
        for (const UnifiedEvent& event : events) {
            Show("  " + EventText(event));
        }
    } else if (what == "hotkeys") {
        std::string text = "hotkeys:";
        for (const char* name : {"rec", "play", "auto", "keyspam", "unlock"}) {
            text += std::string(" ") + name + "=" + NameOfCode(*Bindings().at(name));
        }
        Show(text);
    } else if (what == "names") {
        std::string text = "names:";
        for (const char* name : {"rec", "play", "auto", "keyspam", "unlock"}) {
            text += " [" + KeyNameText(*Bindings().at(name)) + "]";
        }
        Show(text);
    } else if (what == "targets") {
        std::string text = "targets:";
        for (int32_t index = 0; index < keySpammerSettings.targetCount; ++index) {
            text += " " + NameOfCode(keySpammerSettings.targets[index]);
        }
        Show(text + "; first " + NameOfCode(keySpammerSettings.singleKey));
    } else if (what == "location") {
        Show("location: mode " + std::to_string(autoclickerSettings.locationMode) + " at " +
             std::to_string(autoclickerSettings.fixedX) + " " + std::to_string(autoclickerSettings.fixedY));
    } else if (what == "counts") {
        Show("counts: " + std::to_string(engineState.autoclickerCount) + " clicks, " +
             std::to_string(engineState.keySpammerCount) + " rounds");
    } else if (what == "undo") {
        Show(std::string("undo: ") + (RigCanUndo() ? "possible" : "not possible"));
    } else if (what == "lock") {
        Show(std::string("lock: ") + (engineState.lockOn ? "on" : "off") +
             (engineState.unlocked ? ", unlocked" : ", locked"));
    } else if (what == "capture") {
        Show(std::string("capture: ") + (*ReassignTargetText() == '\0' ? "none" : ReassignTargetText()));
    } else if (what == "pointer") {
        int32_t x = 0;
        int32_t y = 0;
        ReadPointerPosition(&x, &y);
        Show("pointer: " + std::to_string(x) + " " + std::to_string(y));
    } else if (what == "profiles") {
        Show("profiles: " + RigPage("getProfiles"));
    } else {
        return false;
    }
    return true;
}

bool StepLog(const Words& words) {
    const std::string what = At(words, 1);
    if (what == "app") {
        output.seen = true;
        output.seenInjected = At(words, 2) == "all";
    } else if (what == "nothing-sent") {
        output.sent = false;
    } else if (what == "sent") {
        output.sent = true;
    } else {
        return false;
    }
    return true;
}

bool StepRequest(const Words& words) {
    std::vector<std::atomic<bool>*> requests;
    for (size_t index = 1; index < words.size(); ++index) {
        const auto found = Flags().find(words[index]);
        if (found == Flags().end()) {
            return false;
        }
        requests.push_back(found->second);
    }
    RigRequest(requests);
    return true;
}

bool StepPage(const Words& words) {
    std::string argument;
    for (size_t index = 2; index < words.size(); ++index) {
        argument += (index > 2 ? " " : "") + words[index];
    }
    if (constexpr std::string_view now = "now"; argument.compare(0, now.size(), now) == 0) {
        argument.replace(0, now.size(), std::to_string(engineState.macroRevision.load()));
    }
    const std::string answer = RigPage(At(words, 1), argument);
    if (!answer.empty()) {
        Show("answer: " + answer);
    }
    return true;
}

bool RunStep(Words words);

bool StepSwitch(const Words& words) {
    const std::string& word = words[0];
    if (word == "set") {
        return StepSet(words);
    }
    if (word == "macro") {
        return StepMacro(words);
    }
    if (word == "page") {
        return StepPage(words);
    }
    if (word == "request") {
        return StepRequest(words);
    }
    if (word == "wait") {
        double milliseconds = 0;
        if (!ParseDouble(At(words, 1), &milliseconds)) {
            return false;
        }
        SimRunFor(milliseconds);
        return true;
    }
    if (word == "session") {
        return StepSession(words);
    }
    if (word == "show") {
        return StepShow(words);
    }
    if (word == "log") {
        return StepLog(words);
    }
    if (word == "inject") {
        return StepInput(Words(words.begin() + 1, words.end()), true);
    }
    return StepInput(words, false);
}

// `quick` in front of a step: the next one follows before any thread has run.
bool RunStep(Words words) {
    const bool quick = words[0] == "quick";
    if (quick) {
        words.erase(words.begin());
    }
    const bool known = !words.empty() && StepSwitch(words);
    if (!quick) {
        SimSettle();
    }
    return known;
}

}  // namespace

bool RunScriptStep(const std::string& step) {
    std::istringstream stream(step);
    Words words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words.empty() || words[0][0] == '#' || RunStep(words);
}

std::vector<std::string> RunScript(const std::vector<std::string>& steps, uint64_t seed) {
    output = Output();
    BeginRig({.seed = seed});
    SimOnSent([](const SimSent& sent) {
        if (output.sent) {
            output.lines.push_back(TimeText(sent.ticks) + " " + SentText(sent.action));
        }
    });
    SimOnSeen([](const SimSeen& seen) {
        if (output.seen && (output.seenInjected || !seen.injected)) {
            output.lines.push_back(TimeText(seen.ticks) + " app: " + SeenText(seen));
        }
    });
    for (const std::string& step : steps) {
        if (!RunScriptStep(step)) {
            output.lines.push_back("not understood: " + step);
        }
    }
    for (const std::string& complaint : SimHookComplaints()) {
        output.lines.push_back(complaint);
    }
    std::vector<std::string> lines = output.lines;
    output.sent = false;
    output.seen = false;
    EndRig();
    return lines;
}

Script ReadScript(const std::string& path) {
    Script script;
    std::ifstream file(path, std::ios::binary);
    bool inExpected = false;
    for (std::string line; std::getline(file, line);) {
        if (inExpected) {
            script.expected.push_back(line);
            continue;
        }
        script.head += line + "\n";
        if (line == "expect") {
            inExpected = true;
        } else {
            script.steps.push_back(line);
        }
    }
    return script;
}

std::string JoinLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\n";
    }
    return text;
}
