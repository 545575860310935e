// The hooks against real input: a person's keys and clicks come from the outer server. Run by tests/linux/run.sh.
#include "test_desktop.h"

#include "platform/input.h"

namespace {

class Hooks : public testing::Test {
  protected:
    Hooks() { person.MoveTo(400, 300); }

    // A key that nobody swallows, to see that everything before it has arrived or will not.
    void Fence() {
        const int before = target.Count('K', kKeyZ);
        person.Tap(kKeyZ);
        ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyZ) > before; })) << target.Text();
    }
    void ButtonFence() {
        const int before = target.Count('B', 1);
        person.Click(1);
        ASSERT_TRUE(WaitFor([&] { return target.Count('B', 1) > before; })) << target.Text();
    }

    Person person;
    TargetWindow target{100, 100, 800, 600};
    HookedThread hooks{person};
};

TEST_F(Hooks, PlainKeyIsHeardAndArrives) {
    target.Clear();
    person.Tap(kKeyA);
    ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyA) == 1; }));
    EXPECT_EQ(target.Text(), "k38 K38");
    EXPECT_EQ(hooks.KeyText(), "d65 u65");
}

TEST_F(Hooks, SwallowedKeyIsHiddenPressAndRelease) {
    hooks.Swallow({kCodeF6});
    target.Clear();
    person.Tap(kKeyF6);
    Fence();
    EXPECT_EQ(target.Text(), "k52 K52");
    EXPECT_EQ(hooks.KeyText(), "d117 u117 d90 u90");
}

TEST_F(Hooks, ReservedKeyThatPassesArrivesOnce) {
    hooks.Swallow({kCodeF6});
    {
        const std::lock_guard lock(TheSinks().mutex);
        TheSinks().swallow.clear();
    }
    target.Clear();
    person.Tap(kKeyF6);
    Fence();
    EXPECT_EQ(target.Text(), "k72 K72 k52 K52");
    EXPECT_EQ(hooks.KeyText(), "d117 u117 d90 u90");
}

TEST_F(Hooks, OwnKeysArriveWhileASwallowedKeyIsHeld) {
    hooks.Swallow({kCodeF6});
    target.Clear();
    person.Key(kKeyF6, true);
    ASSERT_TRUE(WaitFor([&] { return hooks.KeyText() == "d117"; }));
    constexpr int kTimes = 300;
    InputRecord record;
    record.type = kInputKeyboard;
    record.wScan = 0x1E;
    for (int time = 0; time < kTimes; ++time) {
        record.dwFlags = kKeyScanCode;
        SendInputRecord(record);
        record.dwFlags = kKeyScanCode | kKeyUp;
        SendInputRecord(record);
        SleepMilliseconds(1);
    }
    ASSERT_TRUE(WaitFor([&] { return target.Count('K', kKeyA) == kTimes; })) << target.Count('K', kKeyA);
    person.Key(kKeyF6, false);
    Fence();
    EXPECT_EQ(target.Count('k', kKeyA), kTimes);
    EXPECT_EQ(target.Count('k', kKeyF6), 0);
    EXPECT_EQ(target.Count('K', kKeyF6), 0);
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
