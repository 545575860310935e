#include "simulated/random_steps.h"

#include <iterator>

namespace {

constexpr const char* kRequestNames[] = {
    "requestToggleRecord",     "requestStartRecord",     "requestContinueRecord",
    "requestUndoContinue",     "requestStopRecord",      "requestTogglePlay",
    "requestStartPlay",        "requestStopPlay",        "requestToggleAutoclicker",
    "requestStartAutoclicker", "requestStopAutoclicker", "requestToggleKeySpammer",
    "requestStartKeySpammer",  "requestStopKeySpammer"};

std::string Number(uint32_t value) {
    return std::to_string(value);
}

Step RandomRequests(Dice& dice) {
    Step step;
    step.kind = StepKind::Requests;
    step.text = "request";
    const uint32_t count = dice.Chance(70) ? 1 : 1 + dice.Roll(4);
    for (uint32_t turn = 0; turn < count; ++turn) {
        const int bit = static_cast<int>(dice.Roll(std::size(kRequestNames)));
        if ((step.requests & (1U << bit)) == 0) {
            step.requests |= 1U << bit;
            step.text += std::string(" ") + kRequestNames[bit];
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
    const std::string name = what < 6 ? dice.Pick(buttons) : dice.Pick(keys);
    step.text = (dice.Chance(55) ? "down " : "up ") + name;
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
    switch (dice.Roll(15)) {
    case 7:
        return "page addMissingReleases now";
    case 8:
        return "page deleteMacroEvents now," + Number(dice.Roll(3)) + "-" + Number(2 + dice.Roll(3));
    case 9:
        return "page shiftMacroEvents now,0.01," + Number(dice.Roll(4));
    case 10:
        return "page duplicateProfile " + Number(dice.Roll(3));
    case 11:
        return "page moveProfile " + Number(dice.Roll(3)) + "," + Number(dice.Roll(3));
    case 12:
    case 13:
    case 14:
        return "page restoreMacro " + Number(1 + dice.Roll(20));
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

}  // namespace

uint32_t Dice::Roll(uint32_t sides) {
    uint64_t value = (state += 0x9E3779B97F4A7C15ULL);
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9ULL;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBULL;
    return static_cast<uint32_t>((value ^ (value >> 31)) % sides);
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
        const int dx = static_cast<int>(dice.Roll(3)) - 1;
        const int dy = static_cast<int>(dice.Roll(3)) - 1;
        return {.kind = StepKind::RawMove, .text = "raw " + std::to_string(dx) + " " + std::to_string(dy)};
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
