#include "base/relaxed.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <thread>

namespace {

struct Settings {
    Relaxed<int32_t> number{5};
    Relaxed<bool> flag{true};
    Relaxed<float> speed{1.0F};
};

TEST(Relaxed, BehavesLikeAPlainValue) {
    Settings settings;
    const int32_t number = settings.number;
    EXPECT_EQ(number, 5);
    settings.number = -7;
    EXPECT_EQ(settings.number + 1, -6);
    settings.flag = false;
    EXPECT_FALSE(settings.flag);
    settings.speed.Set(2.5F);
    EXPECT_EQ(settings.speed.Get(), 2.5F);
}

TEST(Relaxed, ARecordCopiesFieldByField) {
    Settings changed;
    changed.number = 1;
    changed.flag = false;
    Settings copy = changed;
    EXPECT_EQ(copy.number, 1);
    changed = Settings{};
    EXPECT_EQ(changed.number, 5);
    EXPECT_TRUE(changed.flag);
    EXPECT_FALSE(copy.flag);
}

// The thread sanitizer fails this test if a shared setting is a data race.
TEST(Relaxed, OneThreadMayWriteWhileAnotherReads) {
    Relaxed<int32_t> setting{0};
    std::thread writer([&setting] {
        for (int32_t i = 1; i <= 10000; ++i) {
            setting = i;
        }
    });
    int32_t last = 0;
    while (last < 10000) {
        const int32_t now = setting;
        ASSERT_GE(now, last);
        last = now;
    }
    writer.join();
}

}  // namespace
