#include "storage/macro_file.h"

#include "platform/files.h"
#include "storage/settings_text.h"
#include "unit/test_support.h"

#include <cmath>
#include <filesystem>
#include <ios>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr const char* kNameMissing = "That macro file is missing its profile name.";
constexpr const char* kCannotOpen = "Couldn't open that macro file.";
constexpr const char* kDefaultProfile = "0,0,0,5,0,0,1,10,0,0,0,0,0,0,5,1,10,32,32,0";
constexpr const char* kStrangerProfile = "1,2,3,77,1,1,0,9,1,100,200,0,0,1,88,0,4,69,69|70,1";

class MacroFileTest : public EngineStateTest {
  protected:
    TempFolder folder_;
};

UnifiedEvent Event(uint32_t type, double time, int32_t x, int32_t y, uint32_t flags, uint32_t vk, bool down,
                   int32_t wheel) {
    return UnifiedEvent{type, time, x, y, flags, vk, down, wheel};
}

ParsedMacro Fixture(const char* name) {
    ParsedMacro macro;
    EXPECT_EQ(ReadMacroFile(FixturePath("macros/" + std::string(name)), &macro), "") << name;
    return macro;
}

UnifiedEvent Line(std::string_view text) {
    UnifiedEvent event;
    EXPECT_TRUE(ParseEventLine(text, &event)) << text;
    return event;
}

bool Dropped(std::string_view text) {
    UnifiedEvent event = Event(9, 9, 9, 9, 9, 9, true, 9);
    const bool dropped = !ParseEventLine(text, &event);
    EXPECT_TRUE(!dropped || event == Event(9, 9, 9, 9, 9, 9, true, 9)) << "a dropped line leaves no trace";
    return dropped;
}

std::string Written(const UnifiedEvent& event) {
    std::string text;
    AppendEventLine(text, event);
    return text;
}

TEST(EventLine, HasEightFields) {
    EXPECT_EQ(Line("2,0.5,10,-20,4,65,1,-120"), Event(2, 0.5, 10, -20, 4, 65, true, -120));
    EXPECT_EQ(Written(Event(2, 0.5, 10, -20, 4, 65, true, -120)), "2,0.5,10,-20,4,65,1,-120");
    EXPECT_EQ(Written(UnifiedEvent{}), "0,0,0,0,0,0,0,0");
}

TEST(EventLine, TheEighthFieldMayBeMissing) {
    EXPECT_EQ(Line("0,0.5,10,10,0,0,7"), Event(0, 0.5, 10, 10, 0, 0, true, 0));
    EXPECT_EQ(Line("0,0.5,10,10,0,0,7,"), Event(0, 0.5, 10, 10, 0, 0, true, 0));
}

TEST(EventLine, AShortLineRepeatsItsLastField) {
    EXPECT_EQ(Line("5"), Event(5, 5.0, 5, 5, 5, 5, true, 0));
    EXPECT_EQ(Line("3,1.5"), Event(3, 1.5, 1, 1, 1, 1, true, 0));
    EXPECT_EQ(Line("0,0.5,7"), Event(0, 0.5, 7, 7, 7, 7, true, 0));
    EXPECT_EQ(Line("0,0.5,7,0"), Event(0, 0.5, 7, 0, 0, 0, false, 0));
    EXPECT_EQ(Line("0,0.5,7,8,-1"), Event(0, 0.5, 7, 8, 4294967295U, 4294967295U, true, 0));
    EXPECT_EQ(Line("0,0.5,7,8,9,10"), Event(0, 0.5, 7, 8, 9, 10, true, 0));
    EXPECT_EQ(Line("0,0.5,"), Event(0, 0.5, 0, 0, 0, 0, false, 0)) << "one trailing comma adds no field";
    EXPECT_EQ(Line("7x"), Event(7, 7.0, 7, 7, 7, 7, true, 0));
}

TEST(EventLine, ARepeatedFieldMustFitEveryPosition) {
    EXPECT_TRUE(Dropped("0,.5")) << "a time, but not an integer";
    EXPECT_TRUE(Dropped("0,inf"));
    EXPECT_TRUE(Dropped("0,3000000000"));
    EXPECT_TRUE(Dropped("0,0.5,1,2,3000000000")) << "fits flags but not vk";
}

TEST(EventLine, ConversionStopsAtTheFirstOtherCharacter) {
    EXPECT_EQ(Line(" 12abc,\t1.5x, 7y,+8z,-1 ,0x41,2-,+3 4"), Event(12, 1.5, 7, 8, 4294967295U, 0, true, 3));
    EXPECT_EQ(Line("0,0x1p-1,1,2,3,4,-1,5,6,7,rest"), Event(0, 0.5, 1, 2, 3, 4, true, 5));
}

TEST(EventLine, AMalformedFieldDropsTheLine) {
    const std::vector<std::string> good = {"0", "0.5", "1", "2", "3", "4", "1", "5"};
    for (size_t bad = 0; bad < good.size(); ++bad) {
        for (const char* text : {"", "abc", "-", "99999999999e999", " "}) {
            std::string line;
            for (size_t i = 0; i < good.size(); ++i) {
                line += (i > 0 ? "," : "") + (i == bad ? std::string(text) : good[i]);
            }
            if (bad == 7 && *text == '\0') {
                continue;  // a trailing comma: no field
            }
            EXPECT_TRUE(Dropped(line)) << line;
        }
    }
    EXPECT_TRUE(Dropped(""));
    EXPECT_TRUE(Dropped(","));
    EXPECT_TRUE(Dropped(",5"));
    EXPECT_TRUE(Dropped("0,0.5,1,2,3,4,1,,"));
    EXPECT_TRUE(Dropped("SETTINGS:1,2,3,4,5,6,7,8"));
}

TEST(EventLine, IntegersHave32Bits) {
    EXPECT_EQ(Line("-2147483648,0,2147483647,-2147483648,4294967295,-1,-1,2147483647"),
              Event(2147483648U, 0, 2147483647, std::numeric_limits<int32_t>::min(), 4294967295U, 4294967295U,
                    true, 2147483647));
    for (const char* line :
         {"2147483648,0,0,0,0,0,0,0", "0,0,2147483648,0,0,0,0,0", "0,0,0,-2147483649,0,0,0,0",
          "0,0,0,0,4294967296,0,0,0", "0,0,0,0,0,2147483648,0,0", "0,0,0,0,0,0,2147483648,0",
          "0,0,0,0,0,0,0,2147483648"}) {
        EXPECT_TRUE(Dropped(line)) << line;
    }
    EXPECT_EQ(Written(Event(4294967295U, 0, -2147483647 - 1, 0, 4294967295U, 4294967294U, false, 0)),
              "-1,0,-2147483648,0,4294967295,-2,0,0");
}

TEST(EventLine, TheLongestLineFits) {
    const int32_t least = std::numeric_limits<int32_t>::min();
    EXPECT_EQ(
        Written(Event(2147483648U, -1.23456789e-300, least, least, 4294967295U, 2147483648U, true, least)),
        "-2147483648,-1.23457e-300,-2147483648,-2147483648,4294967295,-2147483648,1,-2147483648");
}

TEST(EventLine, TimesKeepSixDigits) {
    EXPECT_EQ(Written(Event(0, 1234.5678, 0, 0, 0, 0, false, 0)), "0,1234.57,0,0,0,0,0,0");
    EXPECT_EQ(Line("0,1.23457e+06,0,0,0,0,0,0").time, 1234570.0);
    EXPECT_TRUE(std::isnan(Line("0,nan,0,0,0,0,0,0").time));
}

TEST(SessionEventLine, AlwaysConvertsAnEighthPosition) {
    UnifiedEvent event;
    ASSERT_TRUE(ParseSessionEventLine("0,0.5,10,10,0,0,7", &event));
    EXPECT_EQ(event, Event(0, 0.5, 10, 10, 0, 0, true, 7)) << "wheel from the text of down";
    ASSERT_TRUE(ParseSessionEventLine("0,0.5,10,10,0,0,1,", &event));
    EXPECT_EQ(event.wheel, 1);
    ASSERT_TRUE(ParseSessionEventLine("5", &event));
    EXPECT_EQ(event, Event(5, 5.0, 5, 5, 5, 5, true, 5));
    ASSERT_TRUE(ParseSessionEventLine("0,0.5,1,2,3,4,0,-120,rest", &event));
    EXPECT_EQ(event, Event(0, 0.5, 1, 2, 3, 4, false, -120));
    EXPECT_FALSE(ParseSessionEventLine("0,0.5,1,2,3,4,0,x", &event));
    EXPECT_FALSE(ParseSessionEventLine("", &event));
}

TEST_F(MacroFileTest, ReadsEveryFixture) {
    std::istringstream expected(ReadFile(FixturePath("macros/expected.txt")));
    std::string line;
    int count = 0;
    while (std::getline(expected, line)) {
        const size_t colon = line.find(": ");
        const std::string name = line.substr(0, colon);
        ParsedMacro macro;
        const std::string error = ReadMacroFile(FixturePath("macros/" + name), &macro);
        EXPECT_EQ(error.empty() ? "OK " + std::to_string(macro.events.size()) + " events" : "REJECT " + error,
                  line.substr(colon + 2))
            << name;
        ++count;
    }
    EXPECT_EQ(count, 30);
}

TEST_F(MacroFileTest, TheSmallestFileChangesNoSetting) {
    const std::string before = BuildSettingsLine();
    const ParsedMacro macro = Fixture("bare.vrlmacro");
    EXPECT_EQ(macro.name, "Bare");
    EXPECT_EQ(macro.settings, "");
    ASSERT_EQ(macro.events.size(), 1U);
    EXPECT_EQ(macro.events[0], Event(EvAbsMove, 0.5, 10, 10, 0, 0, false, 0));
    EXPECT_EQ(BuildSettingsLine(), before);
}

TEST_F(MacroFileTest, ReadsSettingsOfEveryForm) {
    const std::map<std::string, std::string> settings = {
        {"form-36.vrlmacro", kStrangerProfile},
        {"form-35.vrlmacro", kStrangerProfile},
        {"form-33.vrlmacro", kStrangerProfile},
        {"form-31.vrlmacro", "1,2,3,77,1,1,0,9,1,100,200,0,0,1,88,0,4,69,69,0"},
        {"form-23.vrlmacro", "1,2,3,77,1,1,0,9,1,100,200,0,0,0,5,1,10,32,32,0"},
        {"form-22.vrlmacro", kDefaultProfile},
        {"settings-empty.vrlmacro", kDefaultProfile},
        {"form-36-default.vrlmacro", kDefaultProfile},
        {"bad-spammer-field.vrlmacro", "0,0,0,5,0,0,1,10,0,0,0,0,0,1,88,0,4,69,69|70,1"},
        {"bad-keyspam-field.vrlmacro", "1,2,3,77,1,1,0,9,1,100,200,0,0,0,5,1,10,32,69|70,1"},
        {"bad-targets.vrlmacro", "1,2,3,77,1,1,0,9,1,100,200,0,0,1,88,0,4,69,x|66||67y|99999999999,1"},
        {"settings-late.vrlmacro", ""},
        {"name-settings.vrlmacro", ""},
    };
    for (const auto& [name, text] : settings) {
        EXPECT_EQ(Fixture(name.c_str()).settings, text) << name;
    }
    EXPECT_EQ(Fixture("name-settings.vrlmacro").name, "SETTINGS:not settings");
}

TEST_F(MacroFileTest, UnreadableTargetsAreSkippedWhenTheProfileIsApplied) {
    ApplyProfileSettings(Fixture("bad-targets.vrlmacro").settings);
    EXPECT_EQ(keySpammerSettings.targetCount, 2);
    EXPECT_EQ(keySpammerSettings.targets[0], 66U);
    EXPECT_EQ(keySpammerSettings.targets[1], 67U);
}

TEST_F(MacroFileTest, ReadsTheLineEndsOfBothSystems) {
    const ParsedMacro lf = Fixture("lines-lf.vrlmacro");
    ASSERT_EQ(lf.events.size(), 3U);
    for (const char* name : {"lines-crlf.vrlmacro", "lines-mixed.vrlmacro"}) {
        const ParsedMacro other = Fixture(name);
        EXPECT_EQ(other.name, lf.name) << name;
        EXPECT_EQ(other.settings, lf.settings) << name;
        EXPECT_EQ(other.events, lf.events) << name;
    }
}

TEST_F(MacroFileTest, RemovesOneOfTwoCarriageReturns) {
    const ParsedMacro macro = Fixture("lines-two-cr.vrlmacro");
    EXPECT_EQ(macro.name, "Two\r");
    EXPECT_EQ(macro.settings, kStrangerProfile) << "it stands behind the last field, which is not read here";
    ASSERT_EQ(macro.events.size(), 1U);
    EXPECT_EQ(macro.events[0].wheel, 7);
}

TEST_F(MacroFileTest, ReadsShortLinesAndSkipsMalformedOnes) {
    const std::vector<UnifiedEvent> shortLines = Fixture("short-lines.vrlmacro").events;
    ASSERT_EQ(shortLines.size(), 9U);
    EXPECT_EQ(shortLines[3], Event(2, 1, 30, 40, 8, 8, true, 0));
    const std::vector<UnifiedEvent> survivors = Fixture("bad-lines.vrlmacro").events;
    ASSERT_EQ(survivors.size(), 3U);
    EXPECT_EQ(survivors[0].type, 12U);
    EXPECT_EQ(survivors[1], Event(0, 1.5, 7, -8, 4294967295U, 0, true, 3));
    EXPECT_EQ(survivors[2].virtualKey, 65U);
}

TEST_F(MacroFileTest, KeepsTheBytesOfNames) {
    EXPECT_EQ(Fixture("name-bytes.vrlmacro").name, "N\xE4me \xFF\xC3\xA4, \"quoted\"\tand\x01");
    EXPECT_EQ(Fixture("name-only-unended.vrlmacro").name, "Only a name");
}

TEST_F(MacroFileTest, ARejectedFileKeepsTheResult) {
    ParsedMacro macro;
    macro.name = "before";
    macro.events.resize(2);
    EXPECT_EQ(ReadMacroFile(folder_.File("missing.vrlmacro"), &macro), kCannotOpen);
    const std::string large = folder_.File("large.vrlmacro");
    WriteFile(large, "Large\n0,0.5,10,10,0,0,0\n");
    std::filesystem::resize_file(large, kLargestFile + 1);
    EXPECT_EQ(ReadMacroFile(large, &macro), "That macro file is too large.");
    EXPECT_EQ(ReadMacroFile(FixturePath("macros/empty-name.vrlmacro"), &macro), kNameMissing);
    EXPECT_EQ(ReadMacroFile(FixturePath("macros/empty.vrlmacro"), &macro), kNameMissing);
    EXPECT_EQ(ParseMacroText("", &macro), kNameMissing);
    EXPECT_EQ(ParseMacroText("\r\nx", &macro), kNameMissing);
    EXPECT_EQ(macro.name, "before");
    EXPECT_EQ(macro.events.size(), 2U);
}

TEST_F(MacroFileTest, ReadingReplacesTheResult) {
    ParsedMacro macro;
    macro.settings = "old";
    macro.events.resize(5);
    EXPECT_EQ(ParseMacroText("Name\n", &macro), "");
    EXPECT_EQ(macro.settings, "");
    EXPECT_TRUE(macro.events.empty());
}

TEST_F(MacroFileTest, WritesNameLiveSettingsAndEvents) {
    ApplySettingsLine(
        "1,2,3,77,1,1,0,9,1,100,200,0,0,0,0,1,3.0,1,500,65,66,0,67,0,0,1,88,0,4,68,69,69|70,1,1,1");
    const Profile profile{"Str\xE4nger",
                          "the stored text is not what is written",
                          {Event(0, 0.5, 10, 10, 0, 0, false, 0), Event(3, 1234.5678, 0, 0, 0, 65, true, 0)}};
    const std::string path = folder_.File("out.vrlmacro");
    WriteFile(path, std::string(1000, 'x'));
    WriteMacroFile(path, profile);
    const std::string end(TextLineEnd());
    EXPECT_EQ(ReadFile(path),
              "Str\xE4nger" + end +
                  "SETTINGS:1,2,3,77,1,1,0,9,1,100,200,0,0,0,0,1,3,1,500,65,66,0,67,0,0,1,88,0,4,"
                  "68,69,69|70,1,1,1,121" +
                  end + "0,0.5,10,10,0,0,0,0" + end + "3,1234.57,0,0,0,65,1,0" + end);
}

TEST_F(MacroFileTest, WritingAndReadingKeepsEverythingExceptTheLastDigitsOfTimes) {
    const Profile profile{"Round trip", "", Fixture("all-types.vrlmacro").events};
    const std::string path = folder_.File("out.vrlmacro");
    WriteMacroFile(path, profile);
    ParsedMacro macro;
    ASSERT_EQ(ReadMacroFile(path, &macro), "");
    EXPECT_EQ(macro.name, profile.name);
    EXPECT_EQ(macro.settings, kDefaultProfile);
    EXPECT_EQ(macro.events, profile.events);

    Profile later = profile;
    later.events[0].time = 12345.678;
    WriteMacroFile(path, later);
    ASSERT_EQ(ReadMacroFile(path, &macro), "");
    EXPECT_EQ(macro.events[0].time, 12345.7);
}

TEST_F(MacroFileTest, WritingIgnoresAFileThatCannotBeOpened) {
    const std::string path = folder_.File("missing/out.vrlmacro");
    EXPECT_NO_THROW(WriteMacroFile(path, Profile{"Name", "", {}}));
    EXPECT_FALSE(FileExists(path));
    EXPECT_NO_THROW(WriteMacroFile(folder_.Path(), Profile{"Name", "", {}})) << "a folder";
}

#ifndef _WIN32
TEST_F(MacroFileTest, AFullDiskIsAnError) {
    EXPECT_THROW(WriteMacroFile("/dev/full", Profile{"Name", "", {}}), std::ios_base::failure);
}
#endif

}  // namespace
