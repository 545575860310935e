#include "editing/macro_edits.h"

#include "base/numbers.h"
#include "editing/event_list.h"
#include "model/engine_state.h"
#include "platform/files.h"
#include "test_support.h"

#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

namespace {

class MacroEditsTest : public DataFolderTest {
  protected:
    MacroEditsTest() { CreateDataFolder(); }

    static void SetMacro(std::vector<UnifiedEvent> events) {
        MutexLock lock(macroMutex);
        macroState.profiles = {Profile{DefaultProfileName, {}, std::move(events)}};
        MarkMacroChanged();
    }
    static std::vector<UnifiedEvent> Macro() {
        MutexLock lock(macroMutex);
        return macroState.profiles[0].events;
    }
    static uint64_t Revision() {
        MutexLock lock(macroMutex);
        return macroState.revision;
    }
    // Returns the mirror without its line end.
    static std::string Mirror() {
        const std::string text = ReadFile(DataFilePath("macroevents.txt"));
        return text.substr(0, text.find_first_of("\r\n"));
    }
};

UnifiedEvent Move(int32_t x, int32_t y) {
    return {.type = EvAbsMove, .x = x, .y = y};
}

UnifiedEvent Click(int32_t x, int32_t y) {
    return {.type = EvMouseButton, .x = x, .y = y, .flags = 2};
}

UnifiedEvent Key(double time) {
    return {.type = EvKey, .time = time, .virtualKey = 65, .down = true};
}

std::string PrintedTime(double time) {
    char text[512];
    std::snprintf(text, sizeof text, "%f", time);
    return text;
}

std::string JsonTime(double time) {
    const std::string json = MacroEventsJson({Key(time)});
    const std::string before = "[{\"id\":0,\"time\":";
    EXPECT_EQ(json.substr(0, before.size()), before);
    return json.substr(before.size(), json.find(",\"desc\"") - before.size());
}

using Points = std::vector<UnifiedEvent>;

}  // namespace

TEST(EventDescriptionTest, DescribesEveryType) {
    EXPECT_EQ(EventDescription(Move(100, -200)), "Abs Move to X:100 Y:-200");
    EXPECT_EQ(EventDescription({.type = EvRelMove, .x = -3, .y = 4}), "Rel Move dX:-3 dY:4");
    EXPECT_EQ(EventDescription(Click(7, 8)), "Mouse Click at X:7 Y:8");
    EXPECT_EQ(EventDescription({.type = EvMouseButton, .x = 7, .y = 8, .flags = 4}),
              "Mouse Click at X:7 Y:8");
    EXPECT_EQ(EventDescription({.type = EvKey, .virtualKey = 65, .down = true}), "Keyboard VK: 65 (DOWN)");
    EXPECT_EQ(EventDescription({.type = EvKey, .virtualKey = 4294967295}), "Keyboard VK: 4294967295 (UP)");
    EXPECT_EQ(EventDescription({.type = EvScroll, .wheel = -120}), "Mouse Scroll Delta: -120");
    EXPECT_EQ(EventDescription({.type = EvToolState, .virtualKey = 1, .down = true}), "Autoclicker ON");
    EXPECT_EQ(EventDescription({.type = EvToolState, .virtualKey = 2, .down = false}), "Key Spammer OFF");
    EXPECT_EQ(EventDescription({.type = EvToolState, .virtualKey = 9}), "Autoclicker OFF");
    EXPECT_EQ(EventDescription({.type = 6, .x = 1}), "");
    EXPECT_EQ(EventDescription({.type = EvMouseButton, .x = INT32_MIN, .y = INT32_MIN}),
              "Mouse Click at X:-2147483648 Y:-2147483648");
}

TEST(MacroEventsJsonTest, KeepsTheListOrderAndWritesNoSpaces) {
    EXPECT_EQ(MacroEventsJson({}), "[]");
    EXPECT_EQ(MacroEventsJson({Move(100, 200), Key(1.5)}),
              "[{\"id\":0,\"time\":0.000000,\"desc\":\"Abs Move to X:100 Y:200\"},"
              "{\"id\":1,\"time\":1.500000,\"desc\":\"Keyboard VK: 65 (DOWN)\"}]");
    EXPECT_EQ(MacroEventsJson({{.type = 77}}), "[{\"id\":0,\"time\":0.000000,\"desc\":\"\"}]");
}

TEST(MacroEventsJsonTest, NumbersTheEventsInOrder) {
    const std::string json = MacroEventsJson(std::vector<UnifiedEvent>(1001, Key(0)));
    EXPECT_NE(json.find("{\"id\":999,"), std::string::npos);
    EXPECT_EQ(json.substr(json.rfind("{\"id\":")),
              "{\"id\":1000,\"time\":0.000000,\"desc\":\"Keyboard VK: 65 (DOWN)\"}]");
}

TEST(MacroEventsJsonTest, WritesTimesAsPrintfDoes) {
    const double limits[] = {0.0,
                             -0.0,
                             1.0,
                             0.5,
                             0.9999994,
                             0.9999995,
                             0.9999996,
                             999999.9999999,
                             -12.3456789,
                             1e-7,
                             5e-7,
                             -1e-9,
                             123456789.123456789,
                             4503599627370495.5,
                             4503599627370496.0,
                             9007199254740993.0,
                             1e22,
                             -1e300,
                             std::numeric_limits<double>::max(),
                             std::numeric_limits<double>::lowest(),
                             std::numeric_limits<double>::min(),
                             std::numeric_limits<double>::denorm_min()};
    for (const double time : limits) {
        EXPECT_EQ(JsonTime(time), PrintedTime(time));
    }
    EXPECT_EQ(JsonTime(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(JsonTime(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(JsonTime(std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(MacroEventsJsonTest, RoundsHalvesOfTheLastDigitToEven) {
    // Odd multiples of 1/128 end in a 5 at the seventh decimal: exactly half of the sixth.
    EXPECT_EQ(JsonTime(0.0078125), "0.007812");
    EXPECT_EQ(JsonTime(0.0234375), "0.023438");
    for (int i = 0; i < 5000; ++i) {
        const double time = i * 7 + i / 128.0;
        ASSERT_EQ(JsonTime(time), PrintedTime(time));
        ASSERT_EQ(JsonTime(-time), PrintedTime(-time));
        ASSERT_EQ(JsonTime(std::nextafter(time, 1e9)), PrintedTime(std::nextafter(time, 1e9)));
        ASSERT_EQ(JsonTime(std::nextafter(time, -1e9)), PrintedTime(std::nextafter(time, -1e9)));
    }
}

TEST(MacroEventsJsonTest, WritesRandomTimesAsPrintfDoes) {
    std::mt19937_64 random(715);
    for (int i = 0; i < 200000; ++i) {
        // Random significands at every exponent near those of macros, and sometimes any pattern of bits.
        double time = std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 90) - 75);
        if (i % 8 == 0) {
            time = std::bit_cast<double>(random());
        }
        if (!std::isfinite(time)) {
            continue;
        }
        ASSERT_EQ(JsonTime(time), PrintedTime(time));
    }
}

TEST_F(MacroEditsTest, ListsTheCurrentMacroOrNothing) {
    EXPECT_EQ(ReportEventList(), "[]");  // no profile yet
    SetMacro({Key(2.0)});
    EXPECT_EQ(ReportEventList(), "[{\"id\":0,\"time\":2.000000,\"desc\":\"Keyboard VK: 65 (DOWN)\"}]");
}

TEST_F(MacroEditsTest, DeleteRemovesOneEventAndKeepsTheTimesOfTheOthers) {
    SetMacro({Key(1.0), Key(2.0), Key(3.0)});
    const uint64_t before = Revision();
    DeleteEvent("1");
    EXPECT_EQ(Macro(), (Points{Key(1.0), Key(3.0)}));
    EXPECT_NE(Revision(), before);
    EXPECT_EQ(Mirror(), ReportEventList());
    DeleteEvent("0");
    DeleteEvent("0");
    EXPECT_TRUE(Macro().empty());
    EXPECT_EQ(Mirror(), "[]");
}

TEST_F(MacroEditsTest, DeleteOutOfRangeOnlyWritesTheMirror) {
    SetMacro({Key(1.0)});
    for (const char* index : {"-1", "1", "2147483647", "-2147483648"}) {
        RemoveFile(DataFilePath("macroevents.txt"));
        DeleteEvent(index);
        EXPECT_EQ(Macro(), Points{Key(1.0)}) << index;
        EXPECT_EQ(Mirror(), ReportEventList()) << index;
    }
}

TEST_F(MacroEditsTest, DeleteReadsALeadingNumberOnly) {
    SetMacro({Key(1.0), Key(2.0)});
    for (const char* index : {"", "x", "-", "2147483648"}) {
        EXPECT_THROW(DeleteEvent(index), NumberError) << index;
    }
    EXPECT_EQ(Macro().size(), 2U);
    EXPECT_FALSE(FileExists(DataFilePath("macroevents.txt")));
    DeleteEvent(" 1abc");
    EXPECT_EQ(Macro(), Points{Key(1.0)});
}

TEST_F(MacroEditsTest, EditsWithoutAProfileDoNothing) {
    DeleteEvent("0");
    UpdateEventTime("0,1");
    OptimizeMacro();
    EXPECT_EQ(Mirror(), "[]");
}

TEST_F(MacroEditsTest, UpdateTimeKeepsTheOrder) {
    SetMacro({Key(1.0), Key(2.0), Key(3.0)});
    UpdateEventTime("2,0.25");
    EXPECT_EQ(Macro(), (Points{Key(1.0), Key(2.0), Key(0.25)}));
    UpdateEventTime("0,-4.5xyz");
    EXPECT_EQ(Macro()[0].time, -4.5);
    EXPECT_EQ(Mirror(), ReportEventList());
    EXPECT_NE(Mirror().find("\"id\":0,\"time\":-4.500000"), std::string::npos);
}

TEST_F(MacroEditsTest, UpdateTimeNeedsExactlyTwoFields) {
    SetMacro({Key(1.0), Key(2.0), Key(3.0), Key(4.0)});
    const uint64_t before = Revision();
    for (const char* text : {"", "3", "3,", "3,1.5,9", "x", "x,1,2"}) {
        RemoveFile(DataFilePath("macroevents.txt"));
        UpdateEventTime(text);
        EXPECT_EQ(Mirror(), ReportEventList()) << text;
    }
    EXPECT_EQ(Revision(), before);
    UpdateEventTime("4,1.5");
    UpdateEventTime("-1,1.5");
    EXPECT_EQ(Revision(), before);
    UpdateEventTime("3,1.5,");  // one comma at the end adds no field
    EXPECT_EQ(Macro()[3].time, 1.5);
}

TEST_F(MacroEditsTest, UpdateTimeWithAMalformedNumberDoesNotWriteTheMirror) {
    SetMacro({Key(1.0)});
    for (const char* text : {"0,abc", "abc,1.5", ",1.5", "9,abc", "0,1e999"}) {
        EXPECT_THROW(UpdateEventTime(text), NumberError) << text;
        EXPECT_FALSE(FileExists(DataFilePath("macroevents.txt"))) << text;
    }
    EXPECT_EQ(Macro(), Points{Key(1.0)});
}

TEST_F(MacroEditsTest, OptimizeThinsTheMacroAndWritesTheMirror) {
    SetMacro({Move(0, 0), Move(3, 4), Move(6, 8), Move(100, 100), Click(100, 100)});
    OptimizeMacro();
    EXPECT_EQ(Macro(), (Points{Move(0, 0), Move(100, 100), Click(100, 100)}));
    EXPECT_EQ(Mirror(), ReportEventList());
}

TEST(OptimizedEventsTest, TenPixelsAreNearAndElevenAreNot) {
    EXPECT_EQ(OptimizedEvents({Move(0, 0), Move(10, 0), Move(50, 0), Move(90, 0)}).size(), 3U);
    EXPECT_EQ(OptimizedEvents({Move(0, 0), Move(6, 8), Move(50, 0), Move(90, 0)}).size(), 3U);
    EXPECT_EQ(OptimizedEvents({Move(0, 0), Move(10, 1), Move(50, 0), Move(90, 0)}).size(), 4U);
}

TEST(OptimizedEventsTest, KeepsASlowDrift) {
    Points drift;
    for (int x = 0; x <= 100; ++x) {
        drift.push_back(Move(x, 0));
    }
    const Points expected = {Move(0, 0),  Move(11, 0), Move(22, 0), Move(33, 0), Move(44, 0), Move(55, 0),
                             Move(66, 0), Move(77, 0), Move(88, 0), Move(99, 0), Move(100, 0)};
    EXPECT_EQ(OptimizedEvents(drift), expected);
}

TEST(OptimizedEventsTest, KeepsMovesNextToOtherEvents) {
    const Points events = {Move(0, 0), Move(1, 0), Click(1, 0), Move(2, 0), Move(3, 0), Key(1.0)};
    EXPECT_EQ(OptimizedEvents(events),
              (Points{Move(0, 0), Move(1, 0), Click(1, 0), Move(2, 0), Move(3, 0), Key(1.0)}));
    // The first move after the click stays. The second is removed: it is near a kept move and a move follows it.
    EXPECT_EQ(OptimizedEvents({Click(0, 0), Move(1, 0), Move(2, 0), Move(3, 0), Click(3, 0)}),
              (Points{Click(0, 0), Move(1, 0), Move(3, 0), Click(3, 0)}));
}

TEST(OptimizedEventsTest, KeepsTheFirstAndTheLastEvent) {
    EXPECT_TRUE(OptimizedEvents({}).empty());
    EXPECT_EQ(OptimizedEvents({Move(1, 1)}).size(), 1U);
    EXPECT_EQ(OptimizedEvents({Move(1, 1), Move(1, 1)}).size(), 2U);
    EXPECT_EQ(OptimizedEvents({Move(1, 1), Move(1, 1), Move(1, 1)}).size(), 2U);
}

TEST(OptimizedEventsTest, KeepsRelativeMoves) {
    const UnifiedEvent relative = {.type = EvRelMove, .x = 1, .y = 1};
    EXPECT_EQ(OptimizedEvents({relative, relative, relative, relative}).size(), 4U);
    EXPECT_EQ(OptimizedEvents({Move(0, 0), relative, Move(0, 0), relative}).size(), 4U);
}

TEST(OptimizedEventsTest, DistancesWrapAt32Bits) {
    // dx is 65536: its square is 0 in 32 bits.
    EXPECT_EQ(OptimizedEvents({Move(0, 0), Move(65536, 0), Move(1, 0)}).size(), 2U);
    // dx is 46341: its square is negative as a signed number.
    EXPECT_EQ(OptimizedEvents({Move(0, 0), Move(46341, 0), Move(1, 0)}).size(), 2U);
    EXPECT_EQ(OptimizedEvents({Move(0, 0), Move(46340, 0), Move(1, 0)}).size(), 3U);
    EXPECT_EQ(OptimizedEvents({Move(INT32_MIN, 0), Move(INT32_MAX, 0), Move(0, 0)}).size(), 2U);
}

TEST(OptimizedEventsTest, KeepsTimesAndAllOtherEvents) {
    std::mt19937 random(99);
    for (int round = 0; round < 500; ++round) {
        Points events(random() % 40);
        for (size_t i = 0; i < events.size(); ++i) {
            events[i] = {.type = random() % 4 == 0 ? static_cast<uint32_t>(random() % 7) : 0U,
                         .time = static_cast<double>(i),
                         .x = static_cast<int32_t>(random() % 30),
                         .y = static_cast<int32_t>(random() % 30)};
        }
        const Points kept = OptimizedEvents(events);
        // The kept events are a subsequence of the old ones, found by their times, and all removed ones are moves.
        size_t next = 0;
        for (size_t i = 0; i < events.size(); ++i) {
            if (next < kept.size() && kept[next].time == events[i].time) {
                EXPECT_EQ(kept[next], events[i]);
                ++next;
            } else {
                EXPECT_EQ(events[i].type, static_cast<uint32_t>(EvAbsMove));
            }
        }
        EXPECT_EQ(next, kept.size());
    }
}
