#include "engines/hotkeys.h"

#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/key_table.h"
#include "platform/wake.h"
#include "test_support.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <set>
#include <thread>

namespace {

constexpr uint32_t kF6 = 117;
constexpr uint32_t kF7 = 118;
constexpr uint32_t kF8 = 119;
constexpr uint32_t kF9 = 120;
constexpr uint32_t kF10 = 121;
constexpr uint32_t kKeyA = 65;
constexpr uint32_t kEscape = 27;

using Names = std::set<std::string>;

class HotkeysTest : public EngineStateTest {
  protected:
    HotkeysTest() {
        ResetInputState();
        engineState.dispatchEvent = CreateWakeEvent(WakeReset::Automatic);
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, {}, {}}};
    }
    ~HotkeysTest() override {
        CloseWakeEvent(engineState.dispatchEvent);
        engineState.dispatchEvent = nullptr;
        ResetInputState();
    }

    // The requests raised since the last call.
    static Names TakeRaised() {
        Names raised;
        const std::map<std::string, std::atomic<bool>*> requests = {
            {"toggleRecord", &engineState.requestToggleRecord},
            {"startRecord", &engineState.requestStartRecord},
            {"stopRecord", &engineState.requestStopRecord},
            {"continueRecord", &engineState.requestContinueRecord},
            {"undoContinue", &engineState.requestUndoContinue},
            {"togglePlay", &engineState.requestTogglePlay},
            {"startPlay", &engineState.requestStartPlay},
            {"stopPlay", &engineState.requestStopPlay},
            {"toggleAuto", &engineState.requestToggleAutoclicker},
            {"startAuto", &engineState.requestStartAutoclicker},
            {"stopAuto", &engineState.requestStopAutoclicker},
            {"toggleKeySpam", &engineState.requestToggleKeySpammer},
            {"startKeySpam", &engineState.requestStartKeySpammer},
            {"stopKeySpam", &engineState.requestStopKeySpammer},
        };
        for (const auto& [name, flag] : requests) {
            if (flag->exchange(false)) {
                raised.insert(name);
            }
        }
        return raised;
    }
    // Whether the dispatcher was woken since the last call.
    static bool TakeWake() {
        WakeEvent* const events[] = {engineState.dispatchEvent};
        return WaitForAny(events, 1, 0) == 0;
    }
    static bool PressConsumed(uint32_t key) { return DecideKey(key, true) == HookDecision::Consume; }
    static bool ReleaseConsumed(uint32_t key) { return DecideKey(key, false) == HookDecision::Consume; }
    static bool ClickConsumed(uint32_t button) { return DecideButton(button, true) == HookDecision::Consume; }
    static bool UnclickConsumed(uint32_t button) {
        return DecideButton(button, false) == HookDecision::Consume;
    }
    static std::set<uint32_t> InterestingCodes() {
        HookInterest interest;
        ReadHookInterest(&interest);
        return {interest.codes, interest.codes + interest.codeCount};
    }
    static uint32_t InterestingButtons() {
        HookInterest interest;
        ReadHookInterest(&interest);
        return interest.buttons;
    }
};

}  // namespace

TEST_F(HotkeysTest, EachBindingRaisesItsRequestAndWakesTheDispatcher) {
    const std::map<uint32_t, std::string> expected = {
        {kF8, "toggleRecord"}, {kF7, "togglePlay"}, {kF6, "toggleAuto"}, {kF9, "toggleKeySpam"}};
    for (const auto& [key, request] : expected) {
        EXPECT_TRUE(PressConsumed(key));
        EXPECT_EQ(TakeRaised(), Names{request});
        EXPECT_TRUE(TakeWake());
        EXPECT_TRUE(ReleaseConsumed(key));
        EXPECT_EQ(TakeRaised(), Names{});
        EXPECT_FALSE(TakeWake());
    }
}

TEST_F(HotkeysTest, OtherKeysPassAndWakeNobody) {
    EXPECT_FALSE(PressConsumed(kKeyA));
    EXPECT_FALSE(PressConsumed(kKeyA));
    EXPECT_FALSE(ReleaseConsumed(kKeyA));
    EXPECT_EQ(TakeRaised(), Names{});
    EXPECT_FALSE(TakeWake());
}

TEST_F(HotkeysTest, AHeldHotkeyFiresOnceAndStaysHidden) {
    EXPECT_TRUE(PressConsumed(kF6));
    EXPECT_EQ(TakeRaised(), Names{"toggleAuto"});
    EXPECT_TRUE(PressConsumed(kF6));
    EXPECT_TRUE(PressConsumed(kF6));
    EXPECT_EQ(TakeRaised(), Names{});
    EXPECT_TRUE(ReleaseConsumed(kF6));
    EXPECT_FALSE(ReleaseConsumed(kF6));
    EXPECT_TRUE(PressConsumed(kF6));
    EXPECT_EQ(TakeRaised(), Names{"toggleAuto"});
}

TEST_F(HotkeysTest, CodesAreReducedTo8Bits) {
    EXPECT_TRUE(PressConsumed(0x100 | kF6));
    EXPECT_EQ(TakeRaised(), Names{"toggleAuto"});
    EXPECT_TRUE(ReleaseConsumed(kF6));
}

TEST_F(HotkeysTest, HoldModeStartsAtThePressAndStopsAtTheRelease) {
    hotkeyTable.holdAutoclicker = true;
    hotkeyTable.holdKeySpammer = true;
    PressConsumed(kF6);
    PressConsumed(kF6);
    EXPECT_EQ(TakeRaised(), Names{"startAuto"});
    ReleaseConsumed(kF6);
    EXPECT_EQ(TakeRaised(), Names{"stopAuto"});
    PressConsumed(kF9);
    EXPECT_EQ(TakeRaised(), Names{"startKeySpam"});
    TakeWake();
    ReleaseConsumed(kF9);
    EXPECT_EQ(TakeRaised(), Names{"stopKeySpam"});
    EXPECT_TRUE(TakeWake());
}

TEST_F(HotkeysTest, TheReleaseFollowsTheHoldModeOfItsMoment) {
    hotkeyTable.holdAutoclicker = true;
    PressConsumed(kF6);
    TakeRaised();
    hotkeyTable.holdAutoclicker = false;
    EXPECT_TRUE(ReleaseConsumed(kF6));
    EXPECT_EQ(TakeRaised(), Names{});
    PressConsumed(kF6);
    EXPECT_EQ(TakeRaised(), Names{"toggleAuto"});
    hotkeyTable.holdAutoclicker = true;
    ReleaseConsumed(kF6);
    EXPECT_EQ(TakeRaised(), Names{"stopAuto"});
}

TEST_F(HotkeysTest, BothToolsOnOneHeldKeyStopTogether) {
    hotkeyTable.holdAutoclicker = true;
    hotkeyTable.holdKeySpammer = true;
    hotkeyTable.keySpammer = kF6;
    PressConsumed(kF6);
    EXPECT_EQ(TakeRaised(), Names{"startAuto"});  // the first match ends the comparison
    ReleaseConsumed(kF6);
    EXPECT_EQ(TakeRaised(), (Names{"stopAuto", "stopKeySpam"}));  // the release tests both
}

TEST_F(HotkeysTest, TheFirstBindingOfAKeyWins) {
    hotkeyTable.play = kF8;
    PressConsumed(kF8);
    EXPECT_EQ(TakeRaised(), Names{"toggleRecord"});
    hotkeyTable.unlock = kF7;
    hotkeyTable.record = kF7;
    PressConsumed(kF7);
    EXPECT_EQ(TakeRaised(), (Names{"stopAuto", "stopKeySpam", "stopPlay"}));
    EXPECT_FALSE(engineState.unlocked);
}

TEST_F(HotkeysTest, TheLockStopsToolsAndPlaybackAndDisablesTheOtherHotkeys) {
    EXPECT_TRUE(PressConsumed(kF10));
    EXPECT_FALSE(engineState.unlocked);
    EXPECT_EQ(TakeRaised(), (Names{"stopAuto", "stopKeySpam", "stopPlay"}));
    EXPECT_TRUE(TakeWake());
    EXPECT_TRUE(ReleaseConsumed(kF10));
    for (const uint32_t key : {kF6, kF7, kF8, kF9}) {
        EXPECT_FALSE(PressConsumed(key));
        EXPECT_FALSE(ReleaseConsumed(key));
    }
    EXPECT_EQ(TakeRaised(), Names{});
    EXPECT_FALSE(TakeWake());
    EXPECT_TRUE(PressConsumed(kF10));
    EXPECT_TRUE(engineState.unlocked);
    EXPECT_EQ(TakeRaised(), Names{});
    EXPECT_TRUE(TakeWake());
    EXPECT_TRUE(PressConsumed(kF6));
}

TEST_F(HotkeysTest, TheLockDoesNotReachTheReleaseOfAHeldTool) {
    hotkeyTable.holdAutoclicker = true;
    PressConsumed(kF6);
    PressConsumed(kF10);
    TakeRaised();
    EXPECT_TRUE(ReleaseConsumed(kF6));
    EXPECT_EQ(TakeRaised(), Names{"stopAuto"});
}

TEST_F(HotkeysTest, WithoutTheLockItsKeyIsOrdinary) {
    engineState.lockOn = false;
    engineState.unlocked = false;  // has no meaning then
    EXPECT_FALSE(PressConsumed(kF10));
    EXPECT_FALSE(engineState.unlocked);
    EXPECT_TRUE(PressConsumed(kF6));
    hotkeyTable.unlock = kF7;
    EXPECT_TRUE(PressConsumed(kF7));
    EXPECT_EQ(TakeRaised(), (Names{"toggleAuto", "togglePlay"}));
}

TEST_F(HotkeysTest, SwitchedOffHotkeysPassButTheTablesFollow) {
    engineState.hotkeysEnabled = false;
    EXPECT_FALSE(PressConsumed(kF6));
    engineState.hotkeysEnabled = true;
    EXPECT_FALSE(PressConsumed(kF6));  // a repeat of a press that passed
    EXPECT_FALSE(ReleaseConsumed(kF6));
    EXPECT_TRUE(PressConsumed(kF6));
    engineState.hotkeysEnabled = false;
    EXPECT_TRUE(PressConsumed(kF6));  // its repeat stays hidden
    EXPECT_TRUE(ReleaseConsumed(kF6));
}

TEST_F(HotkeysTest, AButtonCanBeAHotkey) {
    hotkeyTable.autoclicker = kFirstSideButton;
    EXPECT_TRUE(ClickConsumed(kFirstSideButton));
    EXPECT_EQ(TakeRaised(), Names{"toggleAuto"});
    EXPECT_TRUE(UnclickConsumed(kFirstSideButton));
    EXPECT_FALSE(UnclickConsumed(kFirstSideButton));
    EXPECT_FALSE(ClickConsumed(kSecondSideButton));
    EXPECT_FALSE(UnclickConsumed(kSecondSideButton));
    // Buttons and keys of one code are told apart only by the bindings, not by the tables.
    hotkeyTable.autoclicker = kF6;
    EXPECT_FALSE(ClickConsumed(kFirstSideButton));
}

TEST_F(HotkeysTest, CaptureTakesTheNextKeyWhateverItIsBoundTo) {
    ReassignKey("rec");
    TakeWake();
    EXPECT_TRUE(PressConsumed(kF6));
    EXPECT_EQ(engineState.capture.load().key, kF6);
    EXPECT_EQ(TakeRaised(), Names{});
    EXPECT_TRUE(TakeWake());
    EXPECT_FALSE(ReleaseConsumed(kF6));  // no swallow mark: the release passes
    ApplyCapturedKey();
    EXPECT_EQ(hotkeyTable.record, kF6);
    EXPECT_EQ(engineState.capture.load().target, 0U);
    EXPECT_EQ(engineState.capture.load().key, 0U);
    EXPECT_TRUE(PressConsumed(kF6));
    EXPECT_EQ(TakeRaised(), Names{"toggleRecord"});
}

// The key was pressed for the first binding, which no longer waits.
TEST_F(HotkeysTest, AKeyOfAnEarlierCaptureIsNotUsedForTheNext) {
    ReassignKey("rec");
    EXPECT_TRUE(PressConsumed(kKeyA));
    ReassignKey("play");
    ApplyCapturedKey();
    EXPECT_EQ(hotkeyTable.record, kF8);
    EXPECT_EQ(hotkeyTable.play, kF7);
    EXPECT_STREQ(ReassignTargetText(), "play");
    EXPECT_TRUE(PressConsumed(kF6));
    ApplyCapturedKey();
    EXPECT_EQ(hotkeyTable.play, kF6);
}

// The input thread captures while the dispatcher ends captures: no key is left for a later capture.
TEST_F(HotkeysTest, NoKeyIsLeftBehindByACaptureThatEndsMeanwhile) {
    std::atomic<bool> done{false};
    std::thread input([&done] {
        while (!done) {
            KeyboardHook({.virtualKey = kKeyA, .down = true});
            KeyboardHook({.virtualKey = kKeyA, .down = false});
        }
    });
    for (int round = 0; round < 2000; ++round) {
        ReassignKey("play");
        EXPECT_TRUE(WaitUntil([] {
            ApplyCapturedKey();
            return engineState.capture.load().target == 0;
        }));
        EXPECT_EQ(engineState.capture.load().key, 0U);
    }
    done = true;
    input.join();
}

TEST_F(HotkeysTest, CaptureByEachWord) {
    const std::map<std::string, uint32_t> codes = {{"rec", 1},           {"play", 2},          {"auto", 3},
                                                   {"keyspamhotkey", 4}, {"keyspamtarget", 5}, {"unlock", 6}};
    for (const auto& [word, code] : codes) {
        ReassignKey(word);
        EXPECT_EQ(engineState.capture.load().target, code) << word;
        EXPECT_EQ(ReassignTargetText(), word);
        for (const char* other : {"", "Rec", "rec ", "keyspam", "play2"}) {
            ReassignKey(other);
            EXPECT_EQ(engineState.capture.load().target, code) << other;
        }
        EXPECT_FALSE(TakeWake());
        engineState.capture = Capture{code, 200 + code};
        ApplyCapturedKey();
        EXPECT_STREQ(ReassignTargetText(), "");
    }
    EXPECT_EQ(hotkeyTable.record, 201U);
    EXPECT_EQ(hotkeyTable.play, 202U);
    EXPECT_EQ(hotkeyTable.autoclicker, 203U);
    EXPECT_EQ(hotkeyTable.keySpammer, 204U);
    EXPECT_EQ(hotkeyTable.unlock, 206U);
    EXPECT_EQ(keySpammerSettings.targetCount, 2);
    EXPECT_EQ(keySpammerSettings.targets[1], 205U);
}

TEST_F(HotkeysTest, EscapeCancelsACapture) {
    for (const char* word : {"rec", "play", "auto", "keyspamhotkey", "keyspamtarget", "unlock"}) {
        ReassignKey(word);
        EXPECT_TRUE(PressConsumed(kEscape));
        ApplyCapturedKey();
        EXPECT_EQ(engineState.capture.load().target, 0U);
        EXPECT_EQ(engineState.capture.load().key, 0U);
    }
    EXPECT_EQ(hotkeyTable.record, kF8);
    EXPECT_EQ(hotkeyTable.play, kF7);
    EXPECT_EQ(hotkeyTable.autoclicker, kF6);
    EXPECT_EQ(hotkeyTable.keySpammer, kF9);
    EXPECT_EQ(hotkeyTable.unlock, kF10);
    EXPECT_EQ(keySpammerSettings.targetCount, 1);
}

TEST_F(HotkeysTest, CaptureWorksWithHotkeysOffAndLocked) {
    engineState.hotkeysEnabled = false;
    engineState.unlocked = false;
    ReassignKey("play");
    EXPECT_TRUE(PressConsumed(kKeyA));
    ApplyCapturedKey();
    EXPECT_EQ(hotkeyTable.play, kKeyA);
}

TEST_F(HotkeysTest, ACaptureAcceptsTheseButtons) {
    const uint32_t buttons[] = {kLeftButton, kRightButton, kMiddleButton, kFirstSideButton,
                                kSecondSideButton};
    for (const char* word : {"rec", "play", "auto", "keyspamhotkey", "keyspamtarget", "unlock"}) {
        for (const uint32_t button : buttons) {
            ReassignKey(word);
            const bool isTarget = std::string(word) == "keyspamtarget";
            const bool isUnlockByLeft = std::string(word) == "unlock" && button == kLeftButton;
            const bool captured = !isTarget && !isUnlockByLeft;
            EXPECT_EQ(ClickConsumed(button), captured) << word << " " << button;
            EXPECT_EQ(engineState.capture.load().key, captured ? button : 0) << word << " " << button;
            EXPECT_EQ(TakeWake(), captured);
            EXPECT_FALSE(UnclickConsumed(button));
            EXPECT_STREQ(ReassignTargetText(), word);  // the capture ends in the dispatcher only
            engineState.capture = Capture{};
        }
    }
}

TEST_F(HotkeysTest, AButtonThatACapturePassesIsStillAHotkey) {
    hotkeyTable.autoclicker = kLeftButton;
    ReassignKey("unlock");
    EXPECT_TRUE(ClickConsumed(kLeftButton));
    EXPECT_EQ(TakeRaised(), Names{"toggleAuto"});
    EXPECT_EQ(engineState.capture.load().key, 0U);
    EXPECT_TRUE(UnclickConsumed(kLeftButton));
}

TEST_F(HotkeysTest, ResetRestoresTheFiveBindingsAndNothingElse) {
    for (std::atomic<uint32_t>* binding : {&hotkeyTable.record, &hotkeyTable.play, &hotkeyTable.autoclicker,
                                           &hotkeyTable.keySpammer, &hotkeyTable.unlock}) {
        *binding = 1;
    }
    hotkeyTable.holdAutoclicker = true;
    hotkeyTable.holdKeySpammer = true;
    engineState.unlocked = false;
    ReassignKey("auto");
    ResetHotkeys();
    EXPECT_EQ(hotkeyTable.record, 119U);
    EXPECT_EQ(hotkeyTable.play, 118U);
    EXPECT_EQ(hotkeyTable.autoclicker, 117U);
    EXPECT_EQ(hotkeyTable.keySpammer, 120U);
    EXPECT_EQ(hotkeyTable.unlock, 121U);
    EXPECT_TRUE(hotkeyTable.holdAutoclicker);
    EXPECT_TRUE(hotkeyTable.holdKeySpammer);
    EXPECT_FALSE(engineState.unlocked);
    EXPECT_STREQ(ReassignTargetText(), "auto");
}

TEST_F(HotkeysTest, SessionChangesClearHeldKeys) {
    for (const SessionChange change :
         {SessionChange::ConsoleDisconnect, SessionChange::RemoteDisconnect, SessionChange::Lock}) {
        hotkeyTable.autoclicker = kF6;
        PressConsumed(kF6);
        hotkeyTable.play = kFirstSideButton;
        ClickConsumed(kFirstSideButton);
        TakeRaised();
        TakeWake();
        SessionChanged(change);
        EXPECT_TRUE(TakeWake());
        EXPECT_EQ(TakeRaised(), Names{});
        EXPECT_FALSE(ReleaseConsumed(kF6));
        EXPECT_FALSE(UnclickConsumed(kFirstSideButton));
        EXPECT_TRUE(PressConsumed(kF6));
        EXPECT_TRUE(ReleaseConsumed(kF6));
    }
}

TEST_F(HotkeysTest, SessionChangesStopHeldTools) {
    hotkeyTable.holdAutoclicker = true;
    SessionChanged(SessionChange::Lock);
    EXPECT_EQ(TakeRaised(), Names{"stopAuto"});
    hotkeyTable.holdKeySpammer = true;
    SessionChanged(SessionChange::RemoteDisconnect);
    EXPECT_EQ(TakeRaised(), (Names{"stopAuto", "stopKeySpam"}));
}

TEST_F(HotkeysTest, InterestListsWhatCouldBeConsumedNow) {
    EXPECT_EQ(InterestingCodes(), (std::set<uint32_t>{kF6, kF7, kF8, kF9, kF10}));
    EXPECT_EQ(InterestingButtons(), 0U);
    engineState.unlocked = false;
    EXPECT_EQ(InterestingCodes(), std::set<uint32_t>{kF10});
    engineState.lockOn = false;
    EXPECT_EQ(InterestingCodes(), (std::set<uint32_t>{kF6, kF7, kF8, kF9}));
    engineState.hotkeysEnabled = false;
    EXPECT_EQ(InterestingCodes(), std::set<uint32_t>{});
}

TEST_F(HotkeysTest, InterestOfACapture) {
    constexpr uint32_t kAllButtons = 1U << 1 | 1U << 2 | 1U << 4 | 1U << 5 | 1U << 6;
    const std::map<std::string, uint32_t> expected = {
        {"rec", kAllButtons},           {"play", kAllButtons}, {"auto", kAllButtons},
        {"keyspamhotkey", kAllButtons}, {"keyspamtarget", 0},  {"unlock", kAllButtons & ~(1U << 1)}};
    for (const auto& [word, buttons] : expected) {
        ReassignKey(word);
        HookInterest interest;
        ReadHookInterest(&interest);
        EXPECT_TRUE(interest.anyKey);
        EXPECT_EQ(interest.buttons, buttons) << word;
    }
    engineState.capture = Capture{};
    HookInterest interest;
    ReadHookInterest(&interest);
    EXPECT_FALSE(interest.anyKey);
}

TEST_F(HotkeysTest, InterestOfPickingAndRecording) {
    engineState.pickingLocation = true;
    EXPECT_EQ(InterestingButtons(), 1U << 1 | 1U << 2 | 1U << 4);
    engineState.pickingLocation = false;
    HookInterest interest;
    macroSettings.recordRawMoves = true;
    ReadHookInterest(&interest);
    EXPECT_FALSE(interest.everyEvent);
    EXPECT_FALSE(interest.rawMotion);
    engineState.recording = true;
    ReadHookInterest(&interest);
    EXPECT_TRUE(interest.everyEvent);
    EXPECT_TRUE(interest.rawMotion);
    macroSettings.recordMoves = false;
    ReadHookInterest(&interest);
    EXPECT_FALSE(interest.rawMotion);
}

TEST_F(HotkeysTest, CodesWithANameOfOurOwn) {
    EXPECT_EQ(KeyNameText(192), "`");
    EXPECT_EQ(KeyNameText(1), "Left Mouse");
    EXPECT_EQ(KeyNameText(2), "Right Mouse");
    EXPECT_EQ(KeyNameText(4), "Middle Mouse");
    EXPECT_EQ(KeyNameText(5), "Mouse 4 (Side)");
    EXPECT_EQ(KeyNameText(6), "Mouse 5 (Side)");
    EXPECT_EQ(KeyNameText(255), "Key[255]");
    EXPECT_EQ(KeyNameText(3000000000), "Key[3000000000]");
    EXPECT_FALSE(KeyNameText(kF8).empty());
}

TEST_F(HotkeysTest, LockHotkeysLocksAndStopsAsTheUnlockHotkeyDoes) {
    std::atomic<bool>* const stops[] = {&engineState.requestStopAutoclicker,
                                        &engineState.requestStopKeySpammer, &engineState.requestStopPlay};
    EXPECT_TRUE(LockHotkeys());
    EXPECT_FALSE(engineState.unlocked);
    EXPECT_FALSE(engineState.requestStopRecord);
    for (std::atomic<bool>* stop : stops) {
        EXPECT_TRUE(stop->exchange(false));
    }
    EXPECT_TRUE(LockHotkeys());  // locked already
    for (std::atomic<bool>* stop : stops) {
        EXPECT_FALSE(*stop);
    }
    EXPECT_EQ(DecideKey(kF6, true), HookDecision::Pass);
    EXPECT_EQ(DecideKey(hotkeyTable.unlock, true), HookDecision::Consume);
    EXPECT_TRUE(engineState.unlocked);
}

TEST_F(HotkeysTest, LockHotkeysRefusesIfNoKeyCouldUnlock) {
    engineState.lockOn = false;
    EXPECT_FALSE(LockHotkeys());
    engineState.lockOn = true;
    engineState.hotkeysEnabled = false;
    EXPECT_FALSE(LockHotkeys());
    EXPECT_TRUE(engineState.unlocked);
    EXPECT_FALSE(engineState.requestStopAutoclicker);
}

TEST_F(HotkeysTest, SetHotkeyStoresWhatACaptureCould) {
    const std::pair<const char*, std::atomic<uint32_t>*> bindings[] = {
        {"rec", &hotkeyTable.record},       {"play", &hotkeyTable.play},
        {"auto", &hotkeyTable.autoclicker}, {"keyspamhotkey", &hotkeyTable.keySpammer},
        {"unlock", &hotkeyTable.unlock},
    };
    for (const auto& [word, binding] : bindings) {
        for (uint32_t code = 0; code <= 300; ++code) {
            *binding = 200;
            const bool isButton = code == 1 || code == 2 || (code >= 4 && code <= 6);
            const bool isKey = code != 0 && code <= 255 && code != kEscape && !isButton;
            const bool leftUnlock = code == 1 && binding == &hotkeyTable.unlock;
            const bool stored = SetHotkey(word, code);
            EXPECT_EQ(stored, isKey || (isButton && !leftUnlock)) << word << " " << code;
            EXPECT_EQ(*binding, stored ? code : 200) << word << " " << code;
        }
    }
}

TEST_F(HotkeysTest, SetHotkeyRefusesOtherWords) {
    for (const char* word : {"", "keyspamtarget", "Rec", "record"}) {
        EXPECT_FALSE(SetHotkey(word, kKeyA)) << word;
    }
    EXPECT_EQ(HotkeyCodesReport(), R"({"rec":119,"play":118,"auto":117,"keyspamhotkey":120,"unlock":121})");
}
