// The hooks against real input: a user's keys and clicks come from the outer server. Run by tests/linux/run.sh.
#include "test_desktop.h"

#include "platform/desktop.h"
#include "platform/input.h"
#include "platform/key_table.h"
#include "platform/linux/grab_watch.h"
#include "platform/process.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <utility>

namespace {

void SendKey(uint16_t scanCode, bool down) {
    SendInputAction({.kind = InputKind::Key, .down = down, .scanCode = scanCode});
}

void SendButton(uint32_t button, bool down) {
    SendInputAction({.kind = InputKind::Button, .down = down, .button = button});
}

class Hooks : public testing::Test {
  protected:
    Hooks() {
        user.MoveTo(400, 300);
        SetRepeat(5000, 1000);  // none, unless a test asks for it
    }

    // No event of the preparations is pending when a test begins.
    void SetUp() override {
        Fence();
        target.Clear();
        hooks.Clear();
    }

    // A key that passes: once it has arrived, everything before it has arrived and was reported, or never will be.
    void Fence() {
        const int before = target.Count('K', kKeyZ);
        const int heard = CountKeys(90, false);
        user.Tap(kKeyZ);
        ASSERT_TRUE(WaitFor([&] {
            return target.Count('K', kKeyZ) > before && (hooks.Stopped() || CountKeys(90, false) > heard);
        })) << target.Text()
            << ", heard " << hooks.KeyText();
    }
    void ButtonFence() {
        const int before = target.Count('B', 1);
        user.Click(1);
        ASSERT_TRUE(WaitFor([&] { return target.Count('B', 1) > before; })) << target.Text();
    }

    // Expects the reports in the words of HookedThread. The input thread may be a little behind the windows.
    void ExpectKeys(const std::string& text) {
        EXPECT_TRUE(WaitFor([&] { return hooks.KeyText() == text; })) << hooks.KeyText() << " for " << text;
    }
    void ExpectButtons(const std::string& text) {
        EXPECT_TRUE(WaitFor([&] { return hooks.ButtonText() == text; }))
            << hooks.ButtonText() << " for " << text;
    }
    // Counts the reports of a key, injected or not.
    int CountKeys(uint32_t virtualKey, bool down) {
        int count = 0;
        for (const KeyHookRecord& each : hooks.Keys()) {
            count += each.virtualKey == virtualKey && each.down == down ? 1 : 0;
        }
        return count;
    }
    void ExpectCount(uint32_t virtualKey, bool down, int count) {
        EXPECT_TRUE(WaitFor([&] { return CountKeys(virtualKey, down) == count; }))
            << CountKeys(virtualKey, down);
    }
    std::pair<int, int> SumOfRaw() {
        std::pair<int, int> sum{0, 0};
        for (const RawMouseRecord& each : hooks.Raw()) {
            sum.first += each.dx;
            sum.second += each.dy;
        }
        return sum;
    }
    void SetRepeat(unsigned delay, unsigned interval) {
        OtherProgram other;
        XkbSetAutoRepeatRate(other.Connection(), XkbUseCoreKbd, delay, interval);
        XSync(other.Connection(), False);
    }
    bool CanGrabKeyboard(OtherProgram& other) {
        Display* display = other.Connection();
        const bool got = XGrabKeyboard(display, DefaultRootWindow(display), False, GrabModeAsync,
                                       GrabModeAsync, CurrentTime) == GrabSuccess;
        XUngrabKeyboard(display, CurrentTime);
        XSync(display, False);
        return got;
    }

    // One for all tests: a window manager moves the focus when a window closes.
    static TargetWindow& FocusedTarget(User& user) {
        static TargetWindow window(100, 100, 800, 600);
        window.AwaitFocus(user);
        return window;
    }

    User user;
    TargetWindow& target = FocusedTarget(user);
    HookedThread hooks{user};
};

TEST_F(Hooks, PlainKeyIsReportedAndArrives) {
    target.Clear();
    user.Tap(kKeyA);
    ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyA) == 1; }));
    EXPECT_EQ(target.Text(), "k38 K38");
    ExpectKeys("d65 u65");
}

TEST_F(Hooks, SwallowedKeyIsHiddenPressAndRelease) {
    hooks.Swallow({kCodeF6});
    target.Clear();
    user.Tap(kKeyF6);
    Fence();
    EXPECT_EQ(target.Text(), "k52 K52");
    ExpectKeys("d117 u117 d90 u90");
}

TEST_F(Hooks, ReservedKeyThatPassesArrivesOnce) {
    hooks.Swallow({kCodeF6});
    {
        const std::lock_guard lock(TheSinks().mutex);
        TheSinks().swallow.clear();
    }
    target.Clear();
    user.Tap(kKeyF6);
    Fence();
    EXPECT_EQ(target.Text(), "k72 K72 k52 K52");
    ExpectKeys("d117 u117 d90 u90");
}

// Own, foreign and real keys while a swallowed key is down: all arrive in order, and the swallowed one does not.
TEST_F(Hooks, OwnKeysArriveWhileASwallowedKeyIsHeld) {
    hooks.Swallow({kCodeF6});
    target.Clear();
    user.Key(kKeyF6, true);
    ASSERT_TRUE(WaitFor([&] { return hooks.KeyText() == "d117"; }));
    constexpr int kTimes = 300;
    for (int time = 0; time < kTimes; ++time) {
        SendKey(0x1E, true);
        SendKey(0x1E, false);
        SleepMilliseconds(1);
    }
    ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyA) == kTimes; })) << target.Count('K', kKeyA);
    user.Key(kKeyF6, false);
    Fence();
    EXPECT_EQ(target.Count('k', kKeyA), kTimes);
    EXPECT_EQ(target.Count('k', kKeyF6), 0);
    EXPECT_EQ(target.Count('K', kKeyF6), 0);
    ExpectCount(kCodeF6, true, 1);
    ExpectCount(kCodeF6, false, 1);
}

TEST_F(Hooks, OtherProgramsKeysArriveWhileASwallowedKeyIsHeld) {
    OtherProgram other;
    hooks.Swallow({kCodeF6});
    target.Clear();
    user.Key(kKeyF6, true);
    ASSERT_TRUE(WaitFor([&] { return hooks.KeyText() == "d117"; }));
    std::string expected;
    for (int time = 1; time <= 100; ++time) {
        other.Tap(kKeyA);
        expected += "k38 K38 ";
        ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyA) == time; }));
    }
    user.Tap(kKeyB);
    ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyB) == 1; }));
    user.Key(kKeyF6, false);
    Fence();
    EXPECT_EQ(target.Text(), expected + "k56 K56 k52 K52");
}

TEST_F(Hooks, TwoSwallowedKeysOverlap) {
    hooks.Swallow({kCodeF6, kCodeF7});
    target.Clear();
    user.Key(kKeyF6, true);
    user.Key(kKeyF7, true);
    user.Key(kKeyF6, false);
    user.Tap(kKeyA);
    ASSERT_TRUE(WaitFor([&] { return target.Text() == "k38 K38"; }))
        << target.Text() << " " << hooks.KeyText();
    user.Key(kKeyF7, false);
    Fence();
    EXPECT_EQ(target.Text(), "k38 K38 k52 K52");
    ExpectKeys("d117 d118 u117 d65 u65 u118 d90 u90");
}

TEST_F(Hooks, SwallowedKeysInABurst) {
    hooks.Swallow({kCodeF6});
    target.Clear();
    constexpr int kTimes = 200;
    for (int time = 0; time < kTimes; ++time) {
        user.Tap(kKeyF6);
        user.Tap(kKeyA);
    }
    Fence();
    EXPECT_EQ(target.Count('k', kKeyF6), 0);
    EXPECT_EQ(target.Count('K', kKeyF6), 0);
    EXPECT_EQ(target.Count('k', kKeyA), kTimes);
    EXPECT_EQ(target.Count('K', kKeyA), kTimes);
    ExpectCount(kCodeF6, true, kTimes);
    ExpectCount(kCodeF6, false, kTimes);
}

TEST_F(Hooks, SwallowedWithModifiersAndLocks) {
    hooks.Swallow({kCodeF6});
    for (const uint32_t modifier : {37U, 50U, 64U, 133U, 66U, 77U, 105U, 108U}) {
        target.Clear();
        const int presses = CountKeys(kCodeF6, true);
        user.Key(modifier, true);
        user.Key(kKeyF6, true);
        ASSERT_TRUE(WaitFor([&] { return CountKeys(kCodeF6, true) == presses + 1; }));
        user.Key(kKeyF6, false);
        ASSERT_TRUE(WaitFor([&] { return CountKeys(kCodeF6, false) == presses + 1; }));
        hooks.AwaitInterest();
        user.Key(modifier, false);
        Fence();
        EXPECT_EQ(target.Count('k', kKeyF6), 0) << modifier;
        EXPECT_EQ(target.Count('K', kKeyF6), 0) << modifier;
    }
    user.Tap(66);  // restores the lock
    user.Tap(77);
    Fence();
}

TEST_F(Hooks, AnEndedInterestFreesTheKey) {
    hooks.Swallow({kCodeF6});
    hooks.Swallow({});
    target.Clear();
    user.Tap(kKeyF6);
    Fence();
    EXPECT_EQ(target.Text(), "k72 K72 k52 K52");
}

TEST_F(Hooks, InjectedInputIsMarkedAndNeverHeldBack) {
    OtherProgram other;
    hooks.Swallow({kCodeF6, 4});
    target.Clear();
    hooks.Clear();
    SendKey(0x40, true);
    SendKey(0x40, false);
    ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyF6) == 1; }));
    other.Tap(kKeyF6);
    ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyF6) == 2; }));
    SendButton(kMiddleButton, true);
    SendButton(kMiddleButton, false);
    ASSERT_TRUE(WaitFor([&] { return target.Count('B', 2) == 1; }));
    other.Click(2);
    ASSERT_TRUE(WaitFor([&] { return target.Count('B', 2) == 2; }));
    EXPECT_EQ(target.Text(), "k72 K72 k72 K72 b2 B2 b2 B2");
    ExpectKeys("!d117 !u117 !d117 !u117");
    ExpectButtons("!d4 !u4 !d4 !u4");
}

// Reports that no sink wants are dropped at once. Real input is reported as before, and sent input is never held back.
TEST_F(Hooks, InjectedInputThatNobodyWantsIsNotReported) {
    OtherProgram other;
    {
        const std::lock_guard lock(TheSinks().mutex);
        TheSinks().wantsInjected = false;
    }
    hooks.Swallow({kCodeF6, 4});
    target.Clear();
    hooks.Clear();
    SendKey(0x40, true);
    SendKey(0x40, false);
    other.Tap(kKeyA);
    SendButton(kMiddleButton, true);
    SendButton(kMiddleButton, false);
    other.Click(4);
    ASSERT_TRUE(WaitFor([&] { return target.Count('B', 4) == 1; }));
    EXPECT_EQ(target.Text(), "k72 K72 k38 K38 b2 B2 b4 B4");
    user.Tap(kKeyF6);
    user.Click(2);
    ButtonFence();
    ExpectKeys("d117 u117");
    ExpectButtons("d4 u4 d1 u1");
    EXPECT_EQ(target.Count('k', kKeyF6), 1);
    EXPECT_EQ(target.Count('b', 2), 1);
}

// The server repeats a held key to its application. The sinks receive one press.
TEST_F(Hooks, RepeatsOfAPassedKeyAreNotReported) {
    SetRepeat(30, 10);
    hooks.Swallow({kCodeF6});
    {
        const std::lock_guard lock(TheSinks().mutex);
        TheSinks().swallow.clear();
    }
    target.Clear();
    user.Key(kKeyF6, true);
    ASSERT_TRUE(WaitFor([&] { return target.Count('k', kKeyF6) >= 8; }));
    user.Key(kKeyF6, false);
    Fence();
    ExpectKeys("d117 u117 d90 u90");
}

TEST_F(Hooks, RepeatOfASwallowedKeyStaysHidden) {
    SetRepeat(30, 10);
    hooks.Swallow({kCodeF6});
    target.Clear();
    user.Key(kKeyF6, true);
    // Long enough for several repeats: waits for some clicks.
    const int64_t start = ReadPerformanceCounter();
    do {
        ButtonFence();
    } while (ReadPerformanceCounter() < start + ReadPerformanceFrequency() / 4);
    user.Key(kKeyF6, false);
    Fence();
    EXPECT_EQ(target.Count('k', kKeyF6), 0);
    EXPECT_EQ(target.Count('K', kKeyF6), 0);
    ExpectKeys("d117 u117 d90 u90");
}

TEST_F(Hooks, RepeatsAreReportedDuringARecording) {
    SetRepeat(30, 10);
    HookInterest interest;
    interest.everyEvent = true;
    hooks.SetInterest(interest);
    user.Key(kKeyA, true);
    ASSERT_TRUE(WaitFor([&] { return CountKeys(65, true) >= 4; }));
    // Another key takes over the repeat. A modifier does not, since it does not repeat.
    user.Key(kKeyB, true);
    ASSERT_TRUE(WaitFor([&] { return CountKeys(66, true) >= 4; }));
    const int downsOfA = CountKeys(65, true);
    user.Key(kKeyShiftRight, true);
    const int downsOfB = CountKeys(66, true);
    ASSERT_TRUE(WaitFor([&] { return CountKeys(66, true) >= downsOfB + 3; }));
    user.Key(kKeyB, false);
    user.Key(kKeyA, false);
    user.Key(kKeyShiftRight, false);
    ASSERT_TRUE(WaitFor([&] { return CountKeys(161, false) == 1; }));
    ExpectCount(65, true, downsOfA);
    ExpectCount(65, false, 1);
    ExpectCount(66, false, 1);
    ExpectCount(161, true, 1);
    // The last event of B is its release, and times only grow.
    int64_t before = 0;
    bool lastOfB = true;
    for (const KeyHookRecord& each : hooks.Keys()) {
        EXPECT_GE(each.counter, before);
        before = each.counter;
        if (each.virtualKey == 66) {
            lastOfB = each.down;
        }
    }
    EXPECT_FALSE(lastOfB);
}

TEST_F(Hooks, NoRepeatsAreReportedWithoutARecording) {
    SetRepeat(30, 10);
    target.Clear();
    user.Key(kKeyA, true);
    ASSERT_TRUE(WaitFor([&] { return target.Count('k', kKeyA) >= 6; }));
    user.Key(kKeyA, false);
    Fence();
    ExpectCount(65, true, 1);
}

TEST_F(Hooks, CaptureSwallowsTheNextKey) {
    for (const uint32_t keycode : {kKeyEscape, kKeyA, kKeyF7, kKeyB}) {
        target.Clear();
        hooks.Clear();
        hooks.CaptureNextKey();
        user.Tap(keycode);
        ASSERT_TRUE(WaitFor([&] { return hooks.Keys().size() == 2; }));
        hooks.AwaitInterest();
        Fence();
        EXPECT_EQ(target.Count('k', keycode), 0) << keycode;
        // Captured once. The next press passes.
        user.Tap(keycode);
        Fence();
        EXPECT_EQ(target.Count('k', keycode), 1) << keycode;
    }
}

TEST_F(Hooks, CapturePassesInjectedKeys) {
    OtherProgram other;
    target.Clear();
    hooks.CaptureNextKey();
    other.Tap(kKeyB);
    ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyB) == 1; }));
    SendKey(0x1E, true);
    SendKey(0x1E, false);
    ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyA) == 1; }));
    user.Tap(kKeyF7);
    ASSERT_TRUE(WaitFor([&] { return hooks.KeyText().find("u118") != std::string::npos; }));
    Fence();
    EXPECT_EQ(target.Count('k', kKeyF7), 0);
    EXPECT_EQ(target.Text().substr(0, 15), "k56 K56 k38 K38");
}

TEST_F(Hooks, CaptureEndsWithoutAKey) {
    target.Clear();
    hooks.CaptureNextKey();
    {
        const std::lock_guard lock(TheSinks().mutex);
        TheSinks().captureKey = false;
    }
    hooks.SetInterest(HookInterest{});
    user.Tap(kKeyA);
    Fence();
    EXPECT_EQ(target.Text(), "k38 K38 k52 K52");
    OtherProgram other;
    EXPECT_TRUE(WaitFor([&] { return CanGrabKeyboard(other); })) << "the keyboard is released";
}

TEST_F(Hooks, PickSwallowsOneLeftPress) {
    target.Clear();
    hooks.PickNextClick();
    user.MoveTo(432, 321);
    user.Click(1);
    ASSERT_TRUE(WaitFor([&] { return hooks.ButtonText() == "d1 u1"; })) << hooks.ButtonText();
    EXPECT_EQ(hooks.Mouse().front().x, 432);
    EXPECT_EQ(hooks.Mouse().front().y, 321);
    hooks.SetInterest(HookInterest{});
    Fence();
    EXPECT_EQ(target.Text(), "B1 k52 K52") << "the release is not part of the pick";
    user.Click(1);
    ASSERT_TRUE(WaitFor([&] { return target.Text() == "B1 k52 K52 b1 B1"; })) << target.Text();
}

TEST_F(Hooks, PickSurvivesASideButtonThatPasses) {
    target.Clear();
    hooks.PickNextClick();
    user.Click(8);
    ASSERT_TRUE(WaitFor([&] { return target.Count('B', 8) == 1; }));
    user.Click(1);
    ASSERT_TRUE(WaitFor([&] { return hooks.ButtonText() == "d5 u5 d1 u1"; })) << hooks.ButtonText();
    Fence();
    EXPECT_EQ(target.Text(), "b8 B8 B1 k52 K52");
}

TEST_F(Hooks, SwallowedButtonIsHiddenPressAndRelease) {
    const struct {
        uint32_t code;
        uint32_t button;
    } kButtons[] = {{2, 3}, {4, 2}, {5, 8}, {6, 9}};
    for (const auto& each : kButtons) {
        if (each.button == 9) {
            continue;  // the inner server does not receive the ninth button
        }
        hooks.Swallow({each.code});
        target.Clear();
        hooks.Clear();
        user.Click(each.button);
        user.Click(1);
        ASSERT_TRUE(WaitFor([&] { return target.Count('B', 1) == 1; })) << target.Text();
        EXPECT_EQ(target.Text(), "b1 B1") << each.code;
        const std::string code = std::to_string(each.code);
        ExpectButtons("d" + code + " u" + code + " d1 u1");
    }
}

// X11 hides the moves from the applications meanwhile. The sinks receive them, and the pointer moves.
TEST_F(Hooks, MovesAreReportedWhileASwallowedButtonIsHeld) {
    HookInterest interest;
    interest.everyEvent = true;
    hooks.Swallow({4}, interest);
    target.Clear();
    user.Button(2, true);
    ASSERT_TRUE(WaitFor([&] { return hooks.ButtonText() == "d4"; }));
    user.MoveTo(450, 310);
    ASSERT_TRUE(WaitFor([&] { return hooks.Mouse().back().x == 450 && hooks.Mouse().back().y == 310; }));
    user.Button(2, false);
    ASSERT_TRUE(WaitFor([&] { return hooks.ButtonText() == "d4 u4"; }));
    user.MoveTo(460, 310);
    ASSERT_TRUE(WaitFor([&] { return !target.Log().empty() && target.Log().back().x == 460; }));
    EXPECT_EQ(target.Text(), "");
}

// The hold mode of the autoclicker: while a side button is held, our clicks reach the window under the pointer.
TEST_F(Hooks, OwnClicksArriveWhileASwallowedButtonIsHeld) {
    hooks.Swallow({5});
    target.Clear();
    user.Button(8, true);
    ASSERT_TRUE(WaitFor([&] { return hooks.ButtonText() == "d5"; }));
    constexpr int kTimes = 50;
    for (int time = 0; time < kTimes; ++time) {
        SendButton(kLeftButton, true);
        SendButton(kLeftButton, false);
        SleepMilliseconds(1);
    }
    ASSERT_TRUE(WaitFor([&] { return target.Count('B', 1) == kTimes; })) << target.Text();
    user.Button(8, false);
    ASSERT_TRUE(WaitFor([&] { return hooks.ButtonText().find("u5") != std::string::npos; }));
    Fence();
    EXPECT_EQ(target.Count('b', 1), kTimes);
    EXPECT_EQ(target.Count('b', 8), 0);
    // The button is free again.
    hooks.Swallow({});
    user.Click(8);
    ASSERT_TRUE(WaitFor([&] { return target.Count('b', 8) == 1; }));
}

TEST_F(Hooks, ButtonsAndWheelsAreReported) {
    hooks.Clear();
    for (const uint32_t button : {1U, 2U, 3U, 8U, 4U, 5U, 6U, 7U}) {
        user.Click(button);
    }
    ASSERT_TRUE(WaitFor([&] { return hooks.ButtonText().find("h120") != std::string::npos; }))
        << hooks.ButtonText();
    ExpectButtons("d1 u1 d4 u4 d2 u2 d5 u5 w120 w-120 h-120 h120");
}

TEST_F(Hooks, MovesAreReportedDuringARecording) {
    HookInterest interest;
    interest.everyEvent = true;
    hooks.SetInterest(interest);
    hooks.Clear();
    for (int step = 1; step <= 40; ++step) {
        user.MoveTo(400 + 2 * step, 300 + step);
        ASSERT_TRUE(WaitFor([&] {
            const std::vector<MouseHookRecord> mouse = hooks.Mouse();
            return !mouse.empty() && mouse.back().x == 400 + 2 * step && mouse.back().y == 300 + step;
        }));
    }
    for (const MouseHookRecord& each : hooks.Mouse()) {
        EXPECT_EQ(each.kind, PointerEvent::Move);
        EXPECT_FALSE(each.injected);
    }
    hooks.Clear();
    OtherProgram other;
    other.MoveTo(500, 400);
    ASSERT_TRUE(WaitFor([&] { return !hooks.Mouse().empty(); }));
    EXPECT_TRUE(hooks.Mouse().back().injected);
    EXPECT_EQ(hooks.Mouse().back().x, 500);
}

TEST_F(Hooks, NoMovesAreReportedWithoutARecording) {
    hooks.Clear();
    user.MoveTo(500, 400);
    user.Click(1);
    ASSERT_TRUE(WaitFor([&] { return hooks.ButtonText() == "d1 u1"; }));
    EXPECT_EQ(hooks.Mouse().size(), 2U);
    EXPECT_EQ(hooks.Mouse().front().x, 500);
    EXPECT_EQ(hooks.Mouse().front().y, 400);
}

// The inner server's pointer reports positions as counts, so this also tests their classification.
TEST_F(Hooks, RawMotionIsReportedInCounts) {
    HookInterest interest;
    interest.everyEvent = true;
    interest.rawMotion = true;
    hooks.SetInterest(interest);
    hooks.Clear();
    int sumX = 0;
    int sumY = 0;
    for (int step = 0; step < 60; ++step) {
        const int dx = step % 7 - 2;
        const int dy = 3 - step % 5;
        user.MoveBy(dx, dy);
        sumX += dx;
        sumY += dy;
    }
    ASSERT_TRUE(WaitFor([&] { return SumOfRaw() == std::make_pair(sumX, sumY); }))
        << SumOfRaw().first << "," << SumOfRaw().second << " for " << sumX << "," << sumY;
    OtherProgram other;
    other.MoveBy(50, 50);
    user.MoveBy(0, 1);
    ASSERT_TRUE(WaitFor(
        [&] { return !hooks.Mouse().empty() && hooks.Mouse().back().y >= 0 && hooks.Raw().size() > 1; }));
    for (const RawMouseRecord& each : hooks.Raw()) {
        EXPECT_FALSE(each.dx == 50 && each.dy == 50) << "an injected motion is no device count";
        EXPECT_TRUE(each.dx != 0 || each.dy != 0);
    }
}

TEST_F(Hooks, EveryKeyOfTheTable) {
    // The inner server matches its modifiers to the outer one's by its own presses.
    const std::set<uint32_t> kModifiers = {37, 50, 62, 64, 66, 77, 78, 105, 108, 133, 134};
    for (uint32_t keycode = 8; keycode < 256; ++keycode) {
        const KeyInfo* key = FindKeyByKeycode(keycode);
        if (key == nullptr) {
            continue;
        }
        hooks.Clear();
        user.Tap(keycode);
        const auto heard = [&](bool down) {
            return CountKeys(key->virtualKey, down) +
                   (key->padVirtualKey == 0 ? 0 : CountKeys(key->padVirtualKey, down));
        };
        ASSERT_TRUE(WaitFor([&] { return heard(false) > 0; })) << keycode << " " << key->name;
        EXPECT_GE(heard(true), 1) << key->name;
        if (kModifiers.count(keycode) == 0) {
            EXPECT_EQ(heard(true), 1) << key->name << " " << hooks.KeyText();
            EXPECT_EQ(heard(false), 1) << key->name << " " << hooks.KeyText();
        }
    }
    for (const uint32_t lock : {66U, 77U, 78U}) {
        user.Tap(lock);
    }
    Fence();
}

TEST_F(Hooks, NumberPadFollowsNumLock) {
    const auto heardFor = [&](uint32_t keycode) {
        hooks.Clear();
        user.Tap(keycode);
        WaitFor([&] { return hooks.Keys().size() == 2; });
        return hooks.Keys().empty() ? 0 : hooks.Keys().front().virtualKey;
    };
    constexpr uint32_t kNumLock = 77;
    constexpr uint32_t kPad4 = 83;
    const uint32_t first = heardFor(kPad4);
    EXPECT_EQ(heardFor(kNumLock), 144U);
    const uint32_t second = heardFor(kPad4);
    EXPECT_EQ(heardFor(kNumLock), 144U);
    EXPECT_EQ(std::min(first, second), 37U);
    EXPECT_EQ(std::max(first, second), 100U);
}

TEST_F(Hooks, NothingStaysReservedAfterTheEnd) {
    hooks.Swallow({kCodeF6, 4});
    user.Key(kKeyF6, true);
    ASSERT_TRUE(WaitFor([&] { return hooks.KeyText() == "d117"; }));
    hooks.Stop();
    user.Key(kKeyF6, false);
    target.Clear();
    user.Tap(kKeyF6);
    user.Click(2);
    ASSERT_TRUE(WaitFor([&] { return target.Count('B', 2) == 1; }));
    Fence();
    EXPECT_EQ(target.Count('k', kKeyF6), 1);
    EXPECT_EQ(target.Count('b', 2), 1);
}

// Input of a keyboard that another program has grabbed is invisible. The hooks continue when it is released.
TEST_F(Hooks, CaptureWaitsForAnotherProgramsGrab) {
    OtherProgram other;
    ASSERT_EQ(XGrabKeyboard(other.Connection(), DefaultRootWindow(other.Connection()), False, GrabModeAsync,
                            GrabModeAsync, CurrentTime),
              GrabSuccess);
    hooks.CaptureNextKey();
    XUngrabKeyboard(other.Connection(), CurrentTime);
    XSync(other.Connection(), False);
    // The hooks retry from time to time. Until then presses pass.
    target.Clear();
    ASSERT_TRUE(WaitFor([&] { return !CanGrabKeyboard(other); }));
    user.Tap(kKeyA);
    Fence();
    EXPECT_EQ(target.Count('k', kKeyA), 0);
}

// A killed process leaves no grab behind.
TEST_F(Hooks, NothingStaysGrabbedAfterAKill) {
    hooks.Stop();
    for (const char* mode : {"swallow", "capture"}) {
        int output[2];
        ASSERT_EQ(pipe2(output, O_CLOEXEC), 0);
        const pid_t child = fork();
        if (child == 0) {
            dup2(output[1], STDOUT_FILENO);
            execl("/proc/self/exe", "hooks_tests", "--hold", mode, nullptr);
            _exit(127);
        }
        close(output[1]);
        FILE* lines = fdopen(output[0], "r");
        char line[100] = {};
        ASSERT_NE(fgets(line, sizeof(line), lines), nullptr);
        ASSERT_STREQ(line, "ready\n");
        user.Key(kKeyF6, true);
        ASSERT_NE(fgets(line, sizeof(line), lines), nullptr);
        ASSERT_STREQ(line, "held\n");
        kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        fclose(lines);
        user.Key(kKeyF6, false);
        // The server may notice the closed connection late. Presses until then are lost.
        target.Clear();
        ASSERT_TRUE(WaitFor([&] {
            user.Tap(kKeyF6);
            user.Click(2);
            return target.Count('K', kKeyF6) > 0 && target.Count('B', 2) > 0;
        })) << mode;
    }
}

// A stopped process leaves a press of its hotkey undecided, which freezes the keyboard of the whole server.
TEST_F(Hooks, AStoppedProcessLosesItsGrabs) {
    hooks.Stop();
    int output[2];
    ASSERT_EQ(pipe2(output, O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        dup2(output[1], STDOUT_FILENO);
        execl("/proc/self/exe", "hooks_tests", "--hold", "swallow", nullptr);
        _exit(127);
    }
    close(output[1]);
    FILE* lines = fdopen(output[0], "r");
    char line[100] = {};
    ASSERT_NE(fgets(line, sizeof(line), lines), nullptr);
    ASSERT_STREQ(line, "ready\n");
    kill(child, SIGSTOP);
    target.Clear();
    user.Tap(kKeyF6);
    user.Tap(kKeyA);
    EXPECT_TRUE(WaitFor([&] { return target.Count('K', kKeyA) == 1; }));
    kill(child, SIGKILL);
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    fclose(lines);
}

// A sink that does not return has the same effect. The hooks come back with their grabs when it does.
TEST_F(Hooks, AnInputThreadThatHangsLosesItsGrabsUntilItReturns) {
    hooks.Swallow({kCodeF6});
    target.Clear();
    {
        const std::lock_guard lock(TheSinks().mutex);
        TheSinks().changes.clear();
        user.Tap(kKeyF6);
        user.Tap(kKeyA);
        EXPECT_TRUE(WaitFor([&] { return target.Count('K', kKeyA) == 1; }));
    }
    ASSERT_TRUE(WaitFor([] {
        const std::lock_guard lock(TheSinks().mutex);
        return !TheSinks().changes.empty();
    }));
    hooks.AwaitInterest();
    target.Clear();
    hooks.Clear();
    user.Tap(kKeyF6);
    Fence();
    EXPECT_EQ(target.Text(), "k52 K52");
    ExpectKeys("d117 u117 d90 u90");
}

// A lost server ends the hooks and not the process.
TEST_F(Hooks, TheLossOfTheServerEndsTheHooksOnly) {
    int number[2];
    int output[2];
    ASSERT_EQ(pipe(number), 0);
    ASSERT_EQ(pipe(output), 0);
    const pid_t server = fork();
    if (server == 0) {
        const std::string file = std::to_string(number[1]);
        execlp("Xvfb", "Xvfb", "-displayfd", file.c_str(), "-nolisten", "tcp", "-noreset", "-ac", nullptr);
        _exit(127);
    }
    close(number[1]);
    FILE* numbers = fdopen(number[0], "r");
    char display[100] = ":";
    ASSERT_NE(fgets(display + 1, 90, numbers), nullptr);
    display[strcspn(display, "\n")] = '\0';
    const pid_t child = fork();
    if (child == 0) {
        dup2(output[1], STDOUT_FILENO);
        setenv("DISPLAY", display, 1);
        execl("/proc/self/exe", "hooks_tests", "--lose", "server", nullptr);
        _exit(127);
    }
    close(output[1]);
    FILE* lines = fdopen(output[0], "r");
    char line[100] = {};
    ASSERT_NE(fgets(line, sizeof(line), lines), nullptr);
    kill(server, SIGKILL);
    waitpid(server, nullptr, 0);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 0);
    fclose(lines);
    fclose(numbers);
}

// The child of that test: calls every function once before the loss and once after it.
int LoseServer() {
    PrepareProcess();  // as the program does: a write to a lost server raises no signal
    const auto useAll = [] {
        int32_t x = 0;
        int32_t y = 0;
        uint32_t process = 0;
        SendKey(0x1E, true);
        SendKey(0x1E, false);
        SendButton(kLeftButton, true);
        SendButton(kLeftButton, false);
        ReadPointerPosition(&x, &y);
        ListTopLevelWindows();
        ProcessAtPoint(5, 5, &process);
        DoubleClickMilliseconds();
        return PrimaryScreenWidth() > 0;
    };
    std::thread thread = StartThread("hooks", RunNotingHooks);
    if (!useAll() || !WaitFor([] {
            const std::lock_guard lock(TheSinks().mutex);
            return TheSinks().interestReads > 0;
        })) {
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    JoinThread(thread);
    StopInputThread();
    HookInterestChanged();
    return useAll() && useAll() ? 0 : 2;
}

// The child of that test: holds F6, or captures, until it is killed.
void HoldUntilKilled(const std::string& mode) {
    User user;
    HookedThread hooks(user);
    if (mode == "capture") {
        hooks.CaptureNextKey();
    } else {
        hooks.Swallow({kCodeF6, 4});
    }
    std::puts("ready");
    std::fflush(stdout);
    WaitFor([&] { return hooks.KeyText() == "d117"; });
    hooks.AwaitInterest();
    std::puts("held");
    std::fflush(stdout);
    for (;;) {
        pause();
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (RunAsGrabWatch(argc, argv)) {
        return 0;
    }
    if (argc == 3 && std::string(argv[1]) == "--hold") {
        HoldUntilKilled(argv[2]);
    }
    if (argc == 3 && std::string(argv[1]) == "--lose") {
        return LoseServer();
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
