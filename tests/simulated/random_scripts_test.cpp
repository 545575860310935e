// Random scripts with invariants after every step. A failing seed is printed with its script, ready to be kept in
// tests/simulated/scripts.
//
// FUZZ_SEEDS: how many seeds (2000). FUZZ_STEPS: steps a seed (200). FUZZ_SECONDS: seeds for as long instead.
// FUZZ_FIRST_SEED: where they begin.
#include "platform/hooks.h"
#include "simulated/engine_rig.h"
#include "simulated/random_model.h"
#include "simulated/sanitizers.h"
#include "simulated/script.h"
#include "simulated/script_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

struct Dice {
    uint64_t state;
    uint32_t Roll(uint32_t sides) {
        uint64_t value = (state += 0x9E3779B97F4A7C15ULL);
        value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
        value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
        return static_cast<uint32_t>((value ^ (value >> 31)) % sides);
    }
    bool Chance(uint32_t percent) { return Roll(100) < percent; }
    template <size_t Count> const char* Pick(const char* const (&words)[Count]) { return words[Roll(Count)]; }
};

enum class StepKind { Requests, Input, RawMove, Injected, Session, Wait, Setting, Edit, RemoveTarget };

struct Step {
    StepKind kind = StepKind::Wait;
    std::string text;
    uint32_t requests = 0;
    bool button = false;  // Input
    uint32_t code = 0;    // Input; 0 for moves and the wheel
    bool down = false;
    int32_t dx = 0;  // RawMove
    int32_t dy = 0;
};

std::string Number(uint32_t value) {
    return std::to_string(value);
}

Step RandomRequests(Dice& dice) {
    Step step;
    step.kind = StepKind::Requests;
    step.text = "request";
    const uint32_t count = dice.Chance(70) ? 1 : 1 + dice.Roll(4);
    for (uint32_t turn = 0; turn < count; ++turn) {
        const int bit = static_cast<int>(dice.Roll(kModelRequestCount));
        if ((step.requests & (1U << bit)) == 0) {
            step.requests |= 1U << bit;
            step.text += std::string(" ") + ModelRequestName(bit);
        }
    }
    return step;
}

Step RandomInput(Dice& dice) {
    static const char* const keys[] = {"F6", "F7", "F8", "F9", "F10", "F6", "F7",
                                       "F8", "F9", "A",  "B",  "C",   "Esc"};
    static const char* const buttons[] = {"left", "left", "right", "middle", "side1", "side2"};
    Step step;
    step.kind = StepKind::Input;
    const uint32_t what = dice.Roll(10);
    if (what < 2) {
        step.text = "move " + Number(dice.Roll(6) * 100) + " " + Number(dice.Roll(3) * 100);
        return step;
    }
    if (what < 3) {
        step.text = dice.Chance(70) ? "wheel 120" : dice.Chance(50) ? "wheel -240" : "hwheel 120";
        return step;
    }
    step.button = what < 6;
    const std::string name = step.button ? dice.Pick(buttons) : dice.Pick(keys);
    step.code = CodeFromName(name);
    step.down = dice.Chance(55);
    step.text = (step.down ? "down " : "up ") + name;
    return step;
}

Step RandomInjected(Dice& dice) {
    static const char* const words[] = {"press F6", "press F8",   "press A",     "down F10",  "up F6",
                                        "up F9",    "press left", "press side1", "wheel 360", "press Esc"};
    const std::string text = dice.Chance(30)
                                 ? "move " + Number(dice.Roll(6) * 100) + " " + Number(dice.Roll(3) * 100)
                                 : dice.Pick(words);
    return {.kind = StepKind::Injected, .text = "inject " + text};
}

Step RandomSession(Dice& dice) {
    static const char* const words[] = {"lock", "disconnect", "remoteDisconnect"};
    return {.kind = StepKind::Session, .text = std::string("session ") + dice.Pick(words)};
}

std::string RandomSetting(Dice& dice) {
    static const char* const flags[] = {"stopToolsWithMacro", "hotkeysEnabled", "lockOn"};
    static const char* const captures[] = {"rec", "play", "auto", "keyspamhotkey", "keyspamtarget", "unlock"};
    static const char* const holds[] = {"auto,1", "auto,0", "keyspam,1", "keyspam,0"};
    static const char* const speeds[] = {"1", "1", "2", "0.5", "-1", "0"};
    const auto truth = [&dice](uint32_t percent) { return dice.Chance(percent) ? "true" : "false"; };
    switch (dice.Roll(9)) {
    case 0:
        return "page updateSpammer 0,0,0," + Number(1 + dice.Roll(20)) + "," + Number(dice.Roll(4)) + "," +
               Number(dice.Roll(2)) + "," + Number(dice.Roll(3)) + "," + Number(dice.Roll(5)) + "," +
               Number(dice.Roll(2));
    case 1:
        return "page updateKeySpam 0,0,0," + Number(1 + dice.Roll(20)) + "," + Number(dice.Roll(3)) + "," +
               Number(dice.Roll(5));
    case 2:
        return std::string("page updateTracker ") + truth(70) + "," + truth(80) + "," + truth(80) + "," +
               truth(80) + "," + truth(30) + "," + dice.Pick(speeds) + "," + truth(40) + "," +
               Number(5 + dice.Roll(30));
    case 3:
        return std::string("set ") + dice.Pick(flags) + (dice.Chance(70) ? " on" : " off");
    case 4:
        return std::string("page reassignKey ") + dice.Pick(captures);
    case 5:
        return std::string("page setHoldMode ") + dice.Pick(holds);
    case 6:
        return "page setKeySpamChordMode " + Number(dice.Roll(2));
    case 7:
        return dice.Chance(50) ? "page resetHotkeys" : "set unlocked on";
    default:
        return "page pickLocation";
    }
}

std::string RandomEdit(Dice& dice) {
    static const char* const times[] = {"0", "0.01", "0.5", "-1", "nan", "x"};
    switch (dice.Roll(8)) {
    case 0:
        return "page deleteEvent " + Number(dice.Roll(10));
    case 1:
        return "page updateEventTime " + Number(dice.Roll(10)) + "," + dice.Pick(times);
    case 2:
        return "page optimizeMacro";
    case 3:
        return "page addProfile Other";
    case 4:
        return "page deleteProfile";
    case 5:
        return "page clearProfile";
    default:
        return "page switchProfile " + Number(dice.Roll(3));
    }
}

Step RandomStep(Dice& dice) {
    const uint32_t what = dice.Roll(100);
    if (what < 22) {
        return RandomRequests(dice);
    }
    if (what < 58) {
        return RandomInput(dice);
    }
    if (what < 61) {
        Step step;
        step.kind = StepKind::RawMove;
        step.dx = static_cast<int32_t>(dice.Roll(3)) - 1;
        step.dy = static_cast<int32_t>(dice.Roll(3)) - 1;
        step.text = "raw " + std::to_string(step.dx) + " " + std::to_string(step.dy);
        return step;
    }
    if (what < 67) {
        return RandomInjected(dice);
    }
    if (what < 69) {
        return RandomSession(dice);
    }
    if (what < 84) {
        return {.kind = StepKind::Wait, .text = "wait " + Number(dice.Roll(25))};
    }
    if (what < 93) {
        return {.kind = StepKind::Setting, .text = RandomSetting(dice)};
    }
    if (what < 94) {
        return {.kind = StepKind::RemoveTarget, .text = "page removeKeySpamTarget " + Number(dice.Roll(3))};
    }
    return {.kind = StepKind::Edit, .text = RandomEdit(dice)};
}

SimOptions RandomOptions(Dice& dice, uint64_t seed) {
    static constexpr uint32_t preempt[] = {0, 0, 20, 60};
    static constexpr int64_t overshoot[] = {0, 0, 500, 7000};
    SimOptions options;
    options.seed = seed;
    options.preemptPercent = preempt[dice.Roll(4)];
    options.overshootTicks = overshoot[dice.Roll(4)];
    return options;
}

// One seed's run: the script so far, what the models expect, and the first thing that went wrong.
struct Run {
    std::vector<std::string> script;
    HookModel hooks;
    RecorderModel recorder;
    std::vector<std::string> trace;  // what ran after each step
    std::string fault;
    bool realSeen = false;        // in this step
    bool playedLately = false;    // before this step: a round runs or is about to notice that it was stopped
    bool toolEventsSeen = false;  // in a macro of this run, which a round may have copied
    bool preempted = false;       // threads may be let in at every signal
    int64_t lastAutoOnTicks = -1'000'000;
    int64_t lastPlayOnTicks = -1'000'000;
    std::vector<UnifiedEvent> continueBaseline;
};
Run run;

void Fault(const std::string& text) {
    if (run.fault.empty()) {
        run.fault = text;
    }
}

void Check(bool holds, const std::string& text) {
    if (!holds) {
        Fault(text);
    }
}

std::vector<Profile> ReadStore(int32_t* current) {
    MutexLock lock(macroMutex);
    *current = macroState.currentProfile;
    return macroState.profiles;
}

// Equal except the stored settings; a time that is not a number equals itself here.
bool SameMacros(const std::vector<Profile>& left, const std::vector<Profile>& right) {
    if (left.size() != right.size()) {
        return false;
    }
    for (size_t index = 0; index < left.size(); ++index) {
        const std::vector<UnifiedEvent>& a = left[index].events;
        const std::vector<UnifiedEvent>& b = right[index].events;
        if (left[index].name != right[index].name || a.size() != b.size()) {
            return false;
        }
        for (size_t event = 0; event < a.size(); ++event) {
            if (a[event] != b[event] && !(std::isnan(a[event].time) && std::isnan(b[event].time))) {
                return false;
            }
        }
    }
    return true;
}

bool RoundCanEndAtOnce(const std::vector<UnifiedEvent>& macro) {
    for (const UnifiedEvent& event : macro) {
        const double target = event.time / static_cast<double>(macroSettings.playbackSpeed.Get());
        if (!(target <= 0)) {
            return false;
        }
    }
    return true;
}

bool HasToolEvents(const std::vector<UnifiedEvent>& macro) {
    for (const UnifiedEvent& event : macro) {
        if (event.type == EvToolState) {
            return true;
        }
    }
    return false;
}

size_t CountToolEvents(const std::vector<UnifiedEvent>& macro) {
    return macro.size() - Timeless(macro).size();
}

std::vector<InputAction> SentSince(size_t index) {
    std::vector<InputAction> actions;
    for (; index < SimSentLog().size(); ++index) {
        actions.push_back(SimSentLog()[index].action);
    }
    return actions;
}

bool IsSubsequence(const std::vector<InputAction>& wanted, const std::vector<InputAction>& actions) {
    size_t found = 0;
    for (const InputAction& action : actions) {
        if (found < wanted.size() && action == wanted[found]) {
            ++found;
        }
    }
    return found == wanted.size();
}

bool Works(const Situation& situation) {
    return situation.playing || situation.autoClicking || situation.keySpamming;
}

// While time passes, only what runs may end, and only a playing macro may start a tool.
void CheckWait(const Situation& before, const Situation& after, size_t sentBefore) {
    Check(after.recording == before.recording, "a wait changed recording");
    Check(before.playing || !after.playing, "a wait started the playback");
    // A round that was stopped is left at its next millisecond, and asks once more that the tools stop.
    const bool played = run.playedLately;
    const bool toolsPlayed = played && run.toolEventsSeen;
    Check(after.autoClicking == before.autoClicking ||
              (after.autoClicking ? toolsPlayed : played || autoclickerSettings.repeatMode == 0),
          "a wait changed the autoclicker");
    Check(after.keySpamming == before.keySpamming ||
              (after.keySpamming ? toolsPlayed
                                 : played || keySpammerSettings.repeatMode == 0 || before.targets.empty()),
          "a wait changed the key spammer");
    if (!Works(before)) {
        const std::vector<InputAction> sent = SentSince(sentBefore);
        // A double click that was running when the autoclicker stopped is finished.
        const bool finishing = SimTicks() - run.lastAutoOnTicks < 500'000 && sent.size() == 2;
        std::string texts;
        for (const InputAction& action : sent) {
            texts += " " + SentText(action) + ",";
        }
        Check(sent.empty() || finishing, "something was sent while nothing ran:" + texts);
    }
}

void CheckPass(const Situation& before, const PassOutcome& expected, const Situation& after,
               const std::vector<UnifiedEvent>& macroAfter, size_t sentBefore) {
    Check(after.recording == expected.after.recording, "recording is not as the state table says");
    // Let in at a signal of the pass, a worker may end its run itself before the pass is through.
    const bool mayEndWithin = (expected.playSet && RoundCanEndAtOnce(macroAfter)) ||
                              autoclickerSettings.repeatMode == 0 || keySpammerSettings.repeatMode == 0;
    if (run.preempted && mayEndWithin) {
        return;
    }
    const bool endedItself = expected.after.playing && !after.playing;
    Check(after.playing == expected.after.playing || (endedItself && RoundCanEndAtOnce(macroAfter)),
          "playing is not as the state table says");
    const bool played = expected.playSet && (HasToolEvents(macroAfter) || endedItself);
    if (!played) {
        Check(after.autoClicking == expected.after.autoClicking ||
                  (!after.autoClicking && autoclickerSettings.repeatMode == 0),
              "autoClicking is not as the state table says");
        Check(after.keySpamming == expected.after.keySpamming ||
                  (!after.keySpamming && keySpammerSettings.repeatMode == 0),
              "keySpamming is not as the state table says");
    }
    const std::vector<InputAction> sent = SentSince(sentBefore);
    Check(IsSubsequence(expected.cleanUps, sent), "a clean-up was not sent");
    Check(expected.somethingRan || sent.empty(), "something was sent while nothing ran");
    if (before.recording && after.recording && !expected.ended && autoclickerSettings.repeatMode != 0 &&
        keySpammerSettings.repeatMode != 0) {
        const size_t changes = (before.autoClicking != after.autoClicking ? 1U : 0U) +
                               (before.keySpamming != after.keySpamming ? 1U : 0U);
        Check(CountToolEvents(macroAfter) == changes, "tool events do not match the tools' changes");
    }
}

void CheckUndo(const Step& step, const PassOutcome& expected, bool couldUndo,
               const std::vector<UnifiedEvent>& before, const std::vector<UnifiedEvent>& after) {
    if ((step.requests & kUndoContinue) == 0 || expected.begunFresh || expected.begunContinued ||
        expected.ended || expected.after.recording) {
        return;
    }
    const std::vector<UnifiedEvent>& wanted = couldUndo ? run.continueBaseline : before;
    Check(SameMacros({Profile{"", "", after}}, {Profile{"", "", wanted}}), "the undo gave another macro");
}

// The requests of the step, and whether the user's input may be seen.
uint32_t ExpectRequests(const Step& step, HookVerdict* verdict, const Situation& before) {
    switch (step.kind) {
    case StepKind::Requests:
        return step.requests;
    case StepKind::Input:
        if (step.code != 0) {
            *verdict = ExpectInput(run.hooks, step.button, step.code, step.down);
        }
        return verdict->requests;
    case StepKind::Session: {
        run.hooks = HookModel();
        return (hotkeyTable.holdAutoclicker ? kStopAuto : 0U) |
               (hotkeyTable.holdKeySpammer ? kStopKeySpam : 0U);
    }
    case StepKind::RemoveTarget:
        return before.targets.size() == 1 && before.keySpamming && step.text.back() == '0' ? kStopKeySpam
                                                                                           : 0U;
    default:
        return 0;
    }
}

void ExpectRawMove(const Step& step) {
    if (step.kind == StepKind::RawMove && engineState.recording && macroSettings.recordMoves &&
        macroSettings.recordRawMoves && (step.dx != 0 || step.dy != 0)) {
        run.recorder.events.push_back({.type = EvRelMove, .x = step.dx, .y = step.dy});
    }
}

void TakeStep(const Step& step) {
    run.script.push_back(step.text);
    const Situation before = ReadSituation();
    int32_t currentBefore = 0;
    const std::vector<Profile> storeBefore = ReadStore(&currentBefore);
    const std::vector<UnifiedEvent>& macroBefore = storeBefore[static_cast<size_t>(currentBefore)].events;
    const bool couldUndo = RigCanUndo();
    const bool unlockedBefore = engineState.unlocked;
    const size_t sentBefore = SimSentLog().size();
    run.realSeen = false;
    run.playedLately = before.playing || SimTicks() - run.lastPlayOnTicks < 20'000;
    if (!before.recording) {
        run.recorder.events = Timeless(macroBefore);
    }
    HookVerdict verdict;
    const uint32_t requests = ExpectRequests(step, &verdict, before);
    ExpectRawMove(step);
    PassOutcome expected;

    Check(RunScriptStep(step.text), "not understood: " + step.text);

    Situation passBefore = before;
    if (step.kind == StepKind::RemoveTarget) {
        passBefore.targets = ReadSituation().targets;
    }
    expected = PredictPass(passBefore, requests);
    const Situation after = ReadSituation();
    int32_t currentAfter = 0;
    const std::vector<Profile> storeAfter = ReadStore(&currentAfter);
    const std::vector<UnifiedEvent>& macroAfter = storeAfter[static_cast<size_t>(currentAfter)].events;

    Check(!(after.recording && after.playing), "recording and playing together");
    if (step.kind == StepKind::Input) {
        Check(run.realSeen != verdict.consumed, verdict.consumed
                                                    ? "input that was to be hidden reached the application"
                                                    : "input was hidden that was to pass");
        Check(engineState.unlocked == (unlockedBefore != verdict.lockToggled),
              "the lock is not as it should be");
        Check(!verdict.captured || engineState.reassignTarget == 0, "a capture did not end");
    }
    if (step.kind == StepKind::Wait) {
        CheckWait(before, after, sentBefore);
    } else if (step.kind != StepKind::Edit && step.kind != StepKind::Setting) {
        std::vector<UnifiedEvent> counted = macroAfter;
        if (before.recording && after.recording && counted.size() >= macroBefore.size()) {
            counted.erase(counted.begin(), counted.begin() + static_cast<std::ptrdiff_t>(macroBefore.size()));
        }
        CheckPass(before, expected, after, before.recording && after.recording ? counted : macroAfter,
                  sentBefore);
        CheckUndo(step, expected, couldUndo, macroBefore, macroAfter);
    }
    if (expected.begunFresh) {
        run.recorder.events.clear();
    }
    if (expected.begunContinued) {
        // From the macro as it is now: a recording that ended in the same pass has moved its times.
        const size_t kept = expected.begunFresh ? 0 : std::min(macroBefore.size(), macroAfter.size());
        run.continueBaseline.assign(macroAfter.begin(),
                                    macroAfter.begin() + static_cast<std::ptrdiff_t>(kept));
    }
    const bool mayChange = step.kind == StepKind::Edit || before.recording || after.recording ||
                           expected.begunFresh || expected.begunContinued || (requests & kUndoContinue) != 0;
    Check(mayChange || (SameMacros(storeBefore, storeAfter) && currentBefore == currentAfter),
          "the macro changed by itself");
    if (step.kind == StepKind::Edit) {
        run.recorder.events = Timeless(macroAfter);
    } else if ((before.recording || after.recording) &&
               (requests & (kUndoContinue | kToggleRecord)) != (kUndoContinue | kToggleRecord)) {
        // A recording that ends early in the pass may be undone later in it.
        Check(Timeless(macroAfter) == run.recorder.events, "the macro is not what the user did");
    }
    run.trace.push_back("# " + TimeText(SimTicks()) + (after.recording ? " recording" : "") +
                        (after.playing ? " playing" : "") + (after.autoClicking ? " autoClicking" : "") +
                        (after.keySpamming ? " keySpamming" : ""));
    run.toolEventsSeen |= HasToolEvents(macroAfter);
    if (before.playing || after.playing || expected.playSet) {
        run.lastPlayOnTicks = SimTicks();
    }
    Check(SimHookInterestIsCurrent(), "the hooks' interest changed and nobody said so");
    for (const std::string& complaint : SimHookComplaints()) {
        Fault(complaint);
    }
}

// Empty, or what went wrong in which step.
std::string RunSeed(uint64_t seed, int steps) {
    Dice dice{seed * 7919};
    run = Run();
    const SimOptions options = RandomOptions(dice, seed);
    run.preempted = options.preemptPercent != 0;
    BeginRig(options);
    SimAddWindow("own", 1000, 0, 0, 150, 150);
    SimOnSeen([](const SimSeen& seen) {
        run.realSeen |= !seen.injected;
        RecordSeen(run.recorder, seen);
    });
    SimOnSent([](const SimSent& sent) {
        run.lastAutoOnTicks = engineState.autoClicking ? sent.ticks : run.lastAutoOnTicks;
        Check(!(engineState.recording && engineState.playing), "recording and playing together");
    });
    for (int step = 0; step < steps && run.fault.empty(); ++step) {
        TakeStep(RandomStep(dice));
    }
    EndRig();
    if (run.fault.empty()) {
        return "";
    }
    std::string text =
        "seed " + std::to_string(seed) + " (preemption " + std::to_string(options.preemptPercent) +
        " %, overshoot " + std::to_string(options.overshootTicks) + "), step " +
        std::to_string(run.script.size()) + ": " + run.fault + "\nset window own 0 0 150 150\n";
    for (size_t step = 0; step < run.script.size(); ++step) {
        text += run.script[step] + "\n" + run.trace[step] + "\n";
    }
    return text;
}

uint64_t FromEnvironment(const char* name, uint64_t fallback) {
    const char* text = std::getenv(name);
    return text == nullptr ? fallback : std::strtoull(text, nullptr, 10);
}

TEST(RandomScripts, KeepTheInvariants) {
    const uint64_t seconds = FromEnvironment("FUZZ_SECONDS", 0);
    const uint64_t seeds = FromEnvironment("FUZZ_SEEDS", kSanitized ? 100 : 2000);
    const int steps = static_cast<int>(FromEnvironment("FUZZ_STEPS", 200));
    const uint64_t first = FromEnvironment(
        "FUZZ_FIRST_SEED", seconds == 0 ? 1 : static_cast<uint64_t>(std::time(nullptr)) * 1000);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    uint64_t done = 0;
    while (seconds == 0 ? done < seeds : std::chrono::steady_clock::now() < end) {
        const std::string fault = RunSeed(first + done, steps);
        ASSERT_TRUE(fault.empty()) << fault;
        ++done;
    }
    std::printf("%llu seeds of %d steps%s\n", static_cast<unsigned long long>(done), steps,
                kSanitized ? " (fewer under a sanitizer)" : "");
}

TEST(RandomScripts, SameSeedSameRun) {
    for (uint64_t seed = 1; seed <= 20; ++seed) {
        ASSERT_TRUE(RunSeed(seed, 200).empty());
        const uint64_t hash = SimScheduleHash();
        const std::vector<SimSent> sent = SimSentLog();
        const size_t seen = SimSeenLog().size();
        ASSERT_TRUE(RunSeed(seed, 200).empty());
        ASSERT_EQ(SimScheduleHash(), hash);
        ASSERT_EQ(SimSeenLog().size(), seen);
        ASSERT_EQ(SimSentLog().size(), sent.size());
        for (size_t index = 0; index < sent.size(); ++index) {
            ASSERT_EQ(SimSentLog()[index].ticks, sent[index].ticks);
            ASSERT_EQ(SimSentLog()[index].action, sent[index].action);
        }
    }
}

}  // namespace
