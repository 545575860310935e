#include "scan/scenarios.h"

namespace MacroScan {

namespace {

using Keys = std::vector<KeyEv>;

constexpr int32_t kBackspace = 8;
constexpr int32_t kTab = 9;
constexpr int32_t kEnter = 13;
constexpr int32_t kEsc = 27;
constexpr int32_t kPrintScreen = 44;
constexpr int32_t kDelete = 46;
constexpr int32_t kF4 = 115;
constexpr int32_t kF6 = 117;

constexpr double kEnterAfterBurstSeconds = 10.0;

KeyPredicate Enter() {
    return Combo({}, kEnter);
}

KeyPredicate Copy() {
    return AnyOf({Combo({ModCtrl}, 'C'), Combo({ModCtrl}, 'X')});
}

KeyPredicate Paste() {
    return Combo({ModCtrl}, 'V');
}

SeqResult RunCommand(const Keys& keys) {
    return MatchSequence(keys, {Combo({ModWin}, 'R'), IsTypingKey, Enter()});
}

SeqResult AdminApprove(const Keys& keys) {
    const KeyPredicate approve = AnyOf({Combo({ModCtrl, ModShift}, kEnter), Combo({ModAlt}, 'Y')});
    const SeqResult fromRun = MatchSequence(keys, {Combo({ModWin}, 'R'), approve});
    return fromRun.matched ? fromRun : MatchSequence(keys, {IsBareWinKey, IsTypingKey, approve});
}

SeqResult PowerMenu(const Keys& keys) {
    return MatchSequence(keys, {Combo({ModWin}, 'X'),
                                AnyOf({Combo({}, 'I'), Combo({}, 'A'), Combo({}, 'T'), Combo({}, 'G')})});
}

SeqResult StartLaunch(const Keys& keys) {
    return MatchSequence(keys, {IsBareWinKey, IsTypingKey, Enter()});
}

SeqResult CopyPasteSend(const Keys& keys) {
    return MatchSequence(keys, {Copy(), Paste(), Enter()});
}

SeqResult ScreenshotPaste(const Keys& keys) {
    return MatchSequence(keys, {AnyOf({Combo({}, kPrintScreen), Combo({ModWin, ModShift}, 'S'),
                                       Combo({ModAlt}, kPrintScreen)}),
                                Paste()});
}

SeqResult SelectAllDelete(const Keys& keys) {
    return MatchSequence(keys, {Combo({ModCtrl}, 'A'), AnyOf({Combo({}, kDelete), Combo({}, kBackspace)})});
}

SeqResult PermanentDelete(const Keys& keys) {
    return MatchSequence(keys, {Combo({ModShift}, kDelete)});
}

SeqResult WipeAndSave(const Keys& keys) {
    return MatchSequence(keys, {Combo({ModCtrl}, 'A'),
                                AnyOf({Combo({}, kDelete), Combo({}, kBackspace), IsTypingKey}),
                                Combo({ModCtrl}, 'S')});
}

SeqResult OpenAddress(const Keys& keys) {
    return MatchSequence(keys, {AnyOf({Combo({ModCtrl}, 'L'), Combo({}, kF6)}), IsTypingKey, Enter()}, 30.0);
}

SeqResult CopyPaste(const Keys& keys) {
    return MatchSequence(keys, {Copy(), Paste()}, 60.0);
}

// Only the first burst of the macro counts. An Enter that comes too late after it ends the search.
SeqResult TypeAndSend(const Keys& keys) {
    const TypingBurst burst = FindTypingBurst(keys);
    if (!burst.found) {
        return {};
    }
    const KeyPredicate enter = Enter();
    for (size_t i = burst.lastIndex + 1; i < keys.size(); ++i) {
        if (keys[i].event.time - burst.atSec > kEnterAfterBurstSeconds) {
            return {};
        }
        if (enter(keys[i].event, keys[i].held)) {
            return {true, burst.atSec};
        }
    }
    return {};
}

SeqResult CloseWindows(const Keys& keys) {
    return CountWithin(keys, AnyOf({Combo({ModAlt}, kF4), Combo({ModCtrl}, 'W')}), 2, 30.0);
}

SeqResult TaskManager(const Keys& keys) {
    return MatchSequence(keys,
                         {AnyOf({Combo({ModCtrl, ModShift}, kEsc), Combo({ModCtrl, ModAlt}, kDelete)})});
}

SeqResult SwitchWindows(const Keys& keys) {
    return CountWithin(keys, Combo({ModAlt}, kTab), 3, 10.0);
}

SeqResult SystemKeys(const Keys& keys) {
    for (const KeyEv& key : keys) {
        if (key.held.win && FamilyOfKey(key.event.virtualKey) == ModNone) {
            return {true, key.event.time};
        }
    }
    return {};
}

}  // namespace

const std::vector<Scenario>& Scenarios() {
    static const std::vector<Scenario> scenarios = {
        {"run-command", "DANGER", "Opens Run and executes",
         "Opens the Windows Run box, types something and presses Enter. This can start programs or run "
         "commands on your PC.",
         RunCommand},
        {"admin-approve", "DANGER", "Approves admin permission",
         "Tries to run something as administrator and may approve the permission prompt.", AdminApprove},
        {"power-menu", "DANGER", "Opens the power menu",
         "Opens the Windows power menu and picks an item such as Terminal or Task Manager.", PowerMenu},
        {"start-launch", "DANGER", "Searches and launches",
         "Searches the Start menu and launches whatever it finds.", StartLaunch},
        {"copy-paste-send", "DANGER", "Copies, pastes and sends",
         "Copies something, pastes it somewhere else and presses Enter. It could send private text such as "
         "passwords or messages.",
         CopyPasteSend},
        {"screenshot-paste", "DANGER", "Screenshots and pastes",
         "Takes a screenshot and pastes it somewhere. It could share what is on your screen.",
         ScreenshotPaste},
        {"select-all-delete", "DANGER", "Selects all and deletes", "Selects everything and deletes it.",
         SelectAllDelete},
        {"permanent-delete", "DANGER", "Permanently deletes",
         "Permanently deletes the selection and skips the Recycle Bin.", PermanentDelete},
        {"wipe-and-save", "DANGER", "Replaces and overwrites a file",
         "Replaces a document's contents and saves over it.", WipeAndSave},
        {"open-address", "CAUTION", "Opens a web address", "Types a web address and opens it.", OpenAddress},
        {"copy-paste", "CAUTION", "Copies and pastes", "Copies something and pastes it into another place.",
         CopyPaste},
        {"type-and-send", "CAUTION", "Types and presses Enter",
         "Types text and presses Enter. It could send a message or submit a form.", TypeAndSend},
        {"close-windows", "CAUTION", "Closes windows", "Closes windows or tabs. You could lose unsaved work.",
         CloseWindows},
        {"task-manager", "CAUTION", "Opens Task Manager", "Opens Task Manager or the security screen.",
         TaskManager},
        {"switch-windows", "CAUTION", "Switches windows",
         "Switches between your open windows, so its keys and clicks may land somewhere unexpected.",
         SwitchWindows},
        {"system-keys", "CAUTION", "Uses Windows shortcuts", "Uses Windows system shortcuts.", SystemKeys},
    };
    return scenarios;
}

}  // namespace MacroScan
