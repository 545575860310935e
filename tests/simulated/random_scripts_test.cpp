// Random scripts with invariants after every step and every sent action. A failing seed is printed with its script,
// ready to be kept in tests/simulated/scripts.
//
// The full number of seeds runs once, in a plain build; a sanitizer build runs a short sample.
//
// FUZZ_SEEDS: number of seeds (2000). FUZZ_STEPS: steps per seed (200). FUZZ_SECONDS: seeds for this long instead.
// FUZZ_FIRST_SEED: the first seed.
#include "editing/macro_history.h"
#include "platform/key_table.h"
#include "simulated/engine_rig.h"
#include "simulated/random_steps.h"
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
#include <map>

namespace {

// A double click that has begun sends its second click within this time after the autoclicker stops.
constexpr int64_t kDoubleClickTicks = 50 * kSimTicksPerMillisecond;
// A stopped round is left at its next turn. It then asks the tools to stop once more.
constexpr int64_t kRoundEndTicks = 2 * kSimTicksPerMillisecond;

struct EngineFlags {
    bool recording = false;
    bool playing = false;
    bool autoClicking = false;
    bool keySpamming = false;
};

EngineFlags ReadFlags() {
    return {engineState.recording, engineState.playing, engineState.autoClicking, engineState.keySpamming};
}

struct Store {
    int32_t current = 0;
    std::vector<Profile> profiles;
    MacroHistory history;

    const std::vector<UnifiedEvent>& Macro() const { return profiles[static_cast<size_t>(current)].events; }
};

Store ReadStore() {
    MutexLock lock(macroMutex);
    return {macroState.currentProfile, macroState.profiles, macroState.history};
}

// What holds at one moment, when all threads wait.
struct Moment {
    EngineFlags flags;
    Store store;
    bool canUndo = false;
    int32_t clicks = 0;
    int32_t keyRounds = 0;
    size_t sent = 0;
};

Moment ReadMoment() {
    return {ReadFlags(),
            ReadStore(),
            RigCanUndo(),
            engineState.autoclickerCount,
            engineState.keySpammerCount,
            SimSentLog().size()};
}

// One seed's run.
struct Run {
    std::vector<std::string> script;
    std::vector<std::string> trace;  // the flags after each step
    std::string fault;               // the first broken invariant
    std::vector<SimSeen> realInput;  // what the application received of the user's input in this step
    bool macroHadToolEvents = false;
    int64_t lastClickTicks = -kDoubleClickTicks;
    int64_t lastPlayTicks = -kRoundEndTicks;
};
Run run;

void Check(bool holds, const std::string& fault) {
    if (!holds && run.fault.empty()) {
        run.fault = fault;
    }
}

// A time that is not a number equals itself here.
bool IsSameEvent(UnifiedEvent a, UnifiedEvent b) {
    if (std::isnan(a.time) && std::isnan(b.time)) {
        a.time = 0;
        b.time = 0;
    }
    return a == b;
}

bool IsSameMacro(const std::vector<UnifiedEvent>& a, const std::vector<UnifiedEvent>& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), IsSameEvent);
}

bool IsSameStore(const Store& a, const Store& b) {
    return a.current == b.current &&
           std::equal(a.profiles.begin(), a.profiles.end(), b.profiles.begin(), b.profiles.end(),
                      [](const Profile& left, const Profile& right) {
                          return left.name == right.name && IsSameMacro(left.events, right.events);
                      });
}

bool HasToolEvents(const std::vector<UnifiedEvent>& macro) {
    return std::any_of(macro.begin(), macro.end(),
                       [](const UnifiedEvent& event) { return event.type == EvToolState; });
}

// Whether a round may still run, or be about to notice that it was stopped.
bool PlayedLately(const Moment& before) {
    return before.flags.playing || SimTicks() - run.lastPlayTicks < kRoundEndTicks;
}

bool MaySetFlags(const Step& step) {
    return step.kind == StepKind::Requests || step.kind == StepKind::Input ||
           step.kind == StepKind::Session || step.kind == StepKind::RemoveTarget;
}

// Flags change only through requests, except that a run may end by itself and a played macro may switch the tools.
void CheckFlags(const Step& step, const Moment& before, const Moment& after, bool played) {
    const EngineFlags& was = before.flags;
    const EngineFlags& is = after.flags;
    const bool anyRequest = MaySetFlags(step);
    const auto requested = [&](uint32_t requests) {
        return step.kind == StepKind::Requests ? (step.requests & requests) != 0 : anyRequest;
    };
    Check(is.recording == was.recording || requested(kRecordRequests), "recording changed without a request");
    Check(!is.playing || was.playing || requested(kPlayRequests), "playback started without a request");
    const bool toolEvents = (played || requested(kPlayRequests)) && run.macroHadToolEvents;
    Check(!is.autoClicking || was.autoClicking || toolEvents || requested(kAutoclickerRequests),
          "the autoclicker started without a request");
    Check(!is.keySpamming || was.keySpamming || toolEvents || requested(kKeySpammerRequests),
          "the key spammer started without a request");
    // A macro's end may stop both tools.
    const bool macroMayEnd = played || requested(kRecordRequests | kPlayRequests);
    Check(is.autoClicking || !was.autoClicking || macroMayEnd || autoclickerSettings.repeatMode == 0 ||
              requested(kAutoclickerRequests),
          "the autoclicker stopped without a request");
    Check(is.keySpamming || !was.keySpamming || macroMayEnd || keySpammerSettings.repeatMode == 0 ||
              keySpammerSettings.targetCount == 0 || requested(kKeySpammerRequests),
          "the key spammer stopped without a request");
}

// A stop that is alone in its step stops, unless a played macro switches the tool on again.
void CheckStops(const Step& step, const Moment& after, bool played) {
    const bool toolEvents = played && run.macroHadToolEvents;
    Check(step.requests != kStopRecord || !after.flags.recording, "a stopped recording runs on");
    Check(step.requests != kStopPlay || !after.flags.playing, "a stopped playback runs on");
    Check(step.requests != kStopAutoclicker || !after.flags.autoClicking || toolEvents,
          "a stopped autoclicker runs on");
    Check(step.requests != kStopKeySpammer || !after.flags.keySpamming || toolEvents,
          "a stopped key spammer runs on");
}

// A running tool only counts up, and nothing is sent while nothing runs.
void CheckWork(const Step& step, const Moment& before, const Moment& after, bool played) {
    if (MaySetFlags(step) || played) {
        return;
    }
    Check(!before.flags.autoClicking || !after.flags.autoClicking || after.clicks >= before.clicks,
          "the count of clicks decreased");
    Check(!before.flags.keySpamming || !after.flags.keySpamming || after.keyRounds >= before.keyRounds,
          "the count of key rounds decreased");
    const bool idle = !before.flags.autoClicking && !before.flags.keySpamming;
    const bool finishesClick = SimTicks() - run.lastClickTicks < kDoubleClickTicks;
    Check(!idle || finishesClick || after.sent == before.sent, "input was sent while nothing ran");
}

bool WasSeen(const UnifiedEvent& event, const SimSeen& seen) {
    switch (event.type) {
    case EvAbsMove:
        return seen.kind == SimSeenKind::Move && seen.x == event.x && seen.y == event.y;
    case EvMouseButton:
        return seen.kind == SimSeenKind::Button && seen.x == event.x && seen.y == event.y &&
               ActionOfFlags(event.flags).find(seen.down ? " down" : " up") != std::string::npos;
    case EvKey:
        return seen.kind == SimSeenKind::Key && seen.code == event.virtualKey && seen.down == event.down;
    case EvScroll:
        return seen.kind == SimSeenKind::Wheel && seen.wheel == event.wheel;
    default:
        return false;
    }
}

// A recording only grows, by what the application received from the user, in this order.
void CheckRecorded(const Step& step, const Moment& before, const Moment& after) {
    const std::vector<UnifiedEvent>& was = before.store.Macro();
    const std::vector<UnifiedEvent>& is = after.store.Macro();
    if (is.size() < was.size() ||
        !IsSameMacro(was, {is.begin(), is.begin() + static_cast<std::ptrdiff_t>(was.size())})) {
        Check(false, "a running recording changed what was recorded");
        return;
    }
    size_t seen = 0;
    for (size_t index = was.size(); index < is.size(); ++index) {
        const UnifiedEvent& event = is[index];
        if (event.type == EvToolState) {
            continue;
        }
        if (event.type == EvRelMove) {
            Check(step.kind == StepKind::RawMove, "a raw move was recorded that no mouse reported");
            continue;
        }
        while (seen < run.realInput.size() && !WasSeen(event, run.realInput[seen])) {
            ++seen;
        }
        Check(seen < run.realInput.size(),
              "recorded what the application did not receive from the user: " + EventText(event));
        ++seen;
    }
}

// A macro changes only through edits and recordings.
void CheckMacros(const Step& step, const Moment& before, const Moment& after) {
    if (step.kind == StepKind::Edit) {
        return;
    }
    const bool recordingMoved =
        MaySetFlags(step) && step.kind != StepKind::RemoveTarget &&
        (step.kind != StepKind::Requests || (step.requests & (kRecordRequests | kUndoContinue)) != 0);
    if (before.flags.recording && after.flags.recording && !recordingMoved) {
        CheckRecorded(step, before, after);
    } else if (!before.flags.recording && !after.flags.recording && !recordingMoved) {
        Check(IsSameStore(before.store, after.store), "the macro changed without an edit or a recording");
    }
    if (step.requests == kUndoContinue && before.canUndo) {
        Check(!after.canUndo, "the same recording can be undone twice");
        Check(after.store.Macro().size() <= before.store.Macro().size(), "an undo made the macro longer");
    }
}

// Returns whether the store still has these events: in a profile, at the start of one that grew, or in the history.
bool HasEvents(const Store& store, const std::vector<UnifiedEvent>& events) {
    const auto holds = [&events](const auto& holder) {
        return holder.events.size() >= events.size() &&
               std::equal(events.begin(), events.end(), holder.events.begin(), IsSameEvent);
    };
    return std::any_of(store.profiles.begin(), store.profiles.end(), holds) ||
           std::any_of(store.history.undo.begin(), store.history.undo.end(), holds) ||
           std::any_of(store.history.redo.begin(), store.history.redo.end(), holds);
}

bool IsStep(const Step& step, const char* command) {
    return step.text.compare(0, std::string(command).size(), command) == 0;
}

// No command and no new recording loses events while the history has room. Single edits are kept once a batch, and the
// end of a continued recording moves its events.
void CheckHistory(const Step& step, const Moment& before, const Moment& after) {
    const MacroHistory& history = after.store.history;
    const size_t steps = history.undo.size() + history.redo.size();
    Check(steps <= kMostHistorySteps, "the history has too many steps");
    const bool singleEdit = IsStep(step, "page deleteEvent") || IsStep(step, "page updateEventTime");
    const bool recorded = before.flags.recording || (after.flags.recording && step.requests != kStartRecord);
    if (recorded || singleEdit || steps == kMostHistorySteps) {
        return;
    }
    if (step.kind == StepKind::Edit || step.requests == kStartRecord) {
        for (const Profile& profile : before.store.profiles) {
            Check(HasEvents(after.store, profile.events), "events were lost");
        }
    }
    const bool restored = IsStep(step, "page restoreMacro");
    Check(!restored || !before.flags.playing || IsSameStore(before.store, after.store),
          "a macro was restored during a playback");
    // Undo and redo of the newest step change nothing.
    if (step.kind == StepKind::Edit && !after.flags.playing && !history.undo.empty()) {
        const std::string newest = std::to_string(history.undo.back().id);
        RigPage("restoreMacro", newest);
        RigPage("restoreMacro", newest);
        const Store again = ReadStore();
        Check(again.profiles.size() == after.store.profiles.size(), "undo and redo changed the profiles");
        for (size_t i = 0; i < again.profiles.size() && i < after.store.profiles.size(); ++i) {
            Check(IsSameMacro(again.profiles[i].events, after.store.profiles[i].events) &&
                      again.profiles[i].name == after.store.profiles[i].name,
                  "undo and redo changed a profile");
        }
        Check(again.history.undo.size() == history.undo.size(), "undo and redo changed the history");
    }
}

std::string FlagText(const EngineFlags& flags) {
    return "# " + TimeText(SimTicks()) + (flags.recording ? " recording" : "") +
           (flags.playing ? " playing" : "") + (flags.autoClicking ? " autoClicking" : "") +
           (flags.keySpamming ? " keySpamming" : "");
}

void TakeStep(const Step& step) {
    const Moment before = ReadMoment();
    const bool played = PlayedLately(before);
    run.macroHadToolEvents |= HasToolEvents(before.store.Macro());
    run.realInput.clear();
    run.script.push_back(step.text);

    Check(RunScriptStep(step.text), "not understood: " + step.text);

    const Moment after = ReadMoment();
    run.trace.push_back(FlagText(after.flags));
    run.macroHadToolEvents |= HasToolEvents(after.store.Macro());
    if (before.flags.playing || after.flags.playing) {
        run.lastPlayTicks = SimTicks();
    }
    Check(!(after.flags.recording && after.flags.playing), "recording and playing together");
    CheckFlags(step, before, after, played);
    CheckStops(step, after, played);
    CheckWork(step, before, after, played);
    CheckMacros(step, before, after);
    CheckHistory(step, before, after);
    Check(SimHookInterestIsCurrent(), "the hooks' interest changed without a notice");
    for (const std::string& complaint : SimHookComplaints()) {
        Check(false, complaint);
    }
}

// When the tools have run and stopped once more, they have released everything that they have pressed. A playback may
// leave a button down, if the macro has no release for it.
void CheckReleases() {
    RunScriptStep("request requestStopPlay requestStopRecord requestStopAutoclicker requestStopKeySpammer");
    RunScriptStep("wait 100");
    const size_t first = SimSentLog().size();
    RunScriptStep("request requestStartAutoclicker requestStartKeySpammer");
    RunScriptStep("wait 5");
    RunScriptStep("request requestStopAutoclicker requestStopKeySpammer");
    RunScriptStep("wait 100");
    std::map<uint32_t, bool> buttons;
    std::map<uint32_t, bool> keys;  // by scan code
    const std::vector<SimSent> sent = SimSentLog();
    for (size_t i = first; i < sent.size(); ++i) {
        const InputAction& action = sent[i].action;
        if (action.kind == InputKind::Button) {
            buttons[action.button] = action.down;
        } else if (action.kind == InputKind::Key) {
            keys[action.scanCode] = action.down;
        }
    }
    for (const auto& [button, down] : buttons) {
        Check(!down, NameOfButton(button) + " stayed down");
    }
    for (const auto& [scanCode, down] : keys) {
        Check(!down, "the key of scan code " + std::to_string(scanCode) + " stayed down");
    }
}

// Returns an empty string, or the broken invariant with the script.
std::string RunSeed(uint64_t seed, int steps) {
    Dice dice{seed * 7919};
    run = Run();
    const SimOptions options = RandomOptions(dice, seed);
    BeginRig(options);
    SimAddWindow("own", 1000, 0, 0, 150, 150);
    SimOnSeen([](const SimSeen& seen) {
        if (!seen.injected) {
            run.realInput.push_back(seen);
        }
    });
    SimOnSent([](const SimSent& sent) {
        run.lastClickTicks = engineState.autoClicking ? sent.ticks : run.lastClickTicks;
        run.lastPlayTicks = engineState.playing ? sent.ticks : run.lastPlayTicks;
        Check(!(engineState.recording && engineState.playing), "recording and playing together");
    });
    for (int step = 0; step < steps && run.fault.empty(); ++step) {
        TakeStep(RandomStep(dice));
    }
    if (run.fault.empty()) {
        CheckReleases();
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
    const uint64_t seeds = FromEnvironment("FUZZ_SEEDS", kSanitized ? 50 : 2000);
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
    const uint64_t seeds = kSanitized ? 3 : 20;
    for (uint64_t seed = 1; seed <= seeds; ++seed) {
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
