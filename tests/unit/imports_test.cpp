#include "imports/macro_import.h"

#include "base/json_writer.h"
#include "base/text.h"
#include "editing/profiles.h"
#include "engines/recorder.h"
#include "event_times.h"
#include "imports/self_check.h"
#include "pending_import.h"
#include "platform/files.h"
#include "storage/settings_text.h"
#include "unit/failing_memory.h"
#include "unit/test_support.h"
#include "windows/main_page.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <new>
#include <set>
#include <sstream>
#include <thread>

namespace {

constexpr const char* kImported = R"({"outcome":"imported"})";
constexpr const char* kNothingPending = R"({"outcome":"none"})";
constexpr const char* kDefaults = "0,0,0,5,0,0,1,10,0,0,0,0,0,0,5,1,10,32,32,0";
// Win+R, a "CAUTION" at 1.5 seconds.
constexpr const char* kCautionEvents =
    "3,1.25,0,0,0,91,1,0\n3,1.5,0,0,0,82,1,0\n3,1.75,0,0,0,91,0,0\n3,1.8,0,0,0,82,0,0\n";
constexpr const char* kCleanEvents = "0,0.5,10,10,0,0,0\n";

class ImportsTest : public DataFolderTest {
  protected:
    ImportsTest() {
        DropPendingImport();
        TakePendingThemeAlert();
        MutexLock lock(macroMutex);
        macroState.profiles = {{DefaultProfileName, {}, {}}};
        macroState.currentProfile = 0;
    }
    ~ImportsTest() override {
        DropPendingImport();
        TakePendingThemeAlert();
    }

    std::string File(const std::string& name, const std::string& text) {
        std::string path = root_.File(name);
        WriteFile(path, text);
        return path;
    }
    static std::vector<std::string> Names() {
        MutexLock lock(macroMutex);
        std::vector<std::string> names;
        for (const Profile& profile : macroState.profiles) {
            names.push_back(profile.name);
        }
        return names;
    }
    static Profile Current() {
        MutexLock lock(macroMutex);
        return *CurrentProfile();
    }
    static uint64_t Revision() {
        MutexLock lock(macroMutex);
        return macroState.revision;
    }
    static ParsedMacro Macro(const std::string& text) {
        ParsedMacro macro;
        EXPECT_EQ(ParseMacroText(text, &macro), "");
        return macro;
    }
    static void Append(ParsedMacro macro) {
        MutexLock lock(macroMutex);
        AppendProfile(std::move(macro));
    }
    static ParsedMacro Risky(const std::string& name) {
        return Macro(name + "\nSETTINGS:\n" + kCautionEvents);
    }
    static ParsedMacro Clean(const std::string& name) { return Macro(name + "\nSETTINGS:\n" + kCleanEvents); }

    // Writes a file where a second instance writes it.
    std::string Stage(const std::string& stem, const std::string& text) {
        std::filesystem::create_directories(DataFilePath("themes"));
        std::string path = (std::filesystem::path(DataFilePath("themes")) / (stem + ".vrlmacro")).string();
        WriteFile(path, text);
        return path;
    }
};

using NameList = std::vector<std::string>;

}  // namespace

TEST_F(ImportsTest, AddsAMacroWithoutFindingsAndMakesItCurrent) {
    const uint64_t before = Revision();
    EXPECT_EQ(ImportMacroFile(File("Farm.vrlmacro", std::string("Farm\nSETTINGS:\n") + kCleanEvents)),
              kImported);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Farm (Imported)"}));
    EXPECT_EQ(Current().name, "Farm (Imported)");
    EXPECT_EQ(Current().events.size(), 1U);
    EXPECT_GT(Revision(), before);
    EXPECT_EQ(GetPendingMacroImport(), kNothingPending);
    // No events at all.
    EXPECT_EQ(ImportMacroFile(File("empty.vrlmacro", "Nothing\n")), kImported);
    EXPECT_EQ(Current().name, "Nothing (Imported)");
}

TEST_F(ImportsTest, AppendsTheNextNumberToARepeatedName) {
    const std::string path = File("Farm.vrlmacro", std::string("Farm\n") + kCleanEvents);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(ImportMacroFile(path), kImported);
    }
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Farm (Imported)", "Farm (Imported) (2)",
                                 "Farm (Imported) (3)"}));
}

TEST_F(ImportsTest, NumbersEndAt999AndFillGapsFirst) {
    for (int number = 1; number <= 999; ++number) {
        Append(Clean("Farm"));
        EXPECT_EQ(Current().name, number == 1 ? "Farm" : "Farm (" + std::to_string(number) + ")");
    }
    Append(Clean("Farm"));
    EXPECT_EQ(Current().name, "Farm");  // the name without a number, now twice in the list
    {
        MutexLock lock(macroMutex);
        std::erase_if(macroState.profiles, [](const Profile& p) { return p.name == "Farm (500)"; });
    }
    Append(Clean("Farm"));
    EXPECT_EQ(Current().name, "Farm (500)");
    Append(Clean("Farm"));
    EXPECT_EQ(Current().name, "Farm");
}

TEST_F(ImportsTest, ComparesNamesByteByByte) {
    Append(Clean("farm"));
    Append(Clean("Farm"));
    Append(Clean("Farm (2)"));
    Append(Clean("Farm"));
    Append(Clean(DefaultProfileName));
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "farm", "Farm", "Farm (2)", "Farm (3)",
                                 "Default Tracking Profile (2)"}));
}

TEST_F(ImportsTest, AFileWithSettingsLeavesTheLiveSettingsUnchanged) {
    ApplyProfileSettings("0,0,0,44,1,1,0,3,1,7,8,0,0,0,2,0,4,65,65|66,1");
    const std::string live = BuildSettingsLine();
    const std::string line =
        "1,2,3,77,1,1,0,9,1,100,200,0,0,0,0,1,3.0,1,500,65,66,0,67,0,0,1,88,0,4,68,69,69|"
        "70,1,1,1";
    EXPECT_EQ(ImportMacroFile(File("a.vrlmacro", "A\nSETTINGS:" + line + "\n" + kCleanEvents)), kImported);
    EXPECT_EQ(BuildSettingsLine(), live);
    EXPECT_EQ(Current().settings, "1,2,3,77,1,1,0,9,1,100,200,0,0,1,88,0,4,69,69|70,1");
    // Switching to the profile applies them.
    SwitchProfile("1");
    EXPECT_EQ(BuildProfileSettings(), Current().settings);
}

TEST_F(ImportsTest, AFileWithoutSettingsAppliesTheDefaults) {
    ApplyProfileSettings("0,0,0,44,1,1,0,3,1,7,8,0,0,0,2,0,4,65,65|66,1");
    hotkeyTable.record = 65;
    EXPECT_EQ(ImportMacroFile(File("a.vrlmacro", std::string("A\n") + kCleanEvents)), kImported);
    EXPECT_EQ(BuildProfileSettings(), kDefaults);
    EXPECT_EQ(Current().settings, kDefaults);
    EXPECT_EQ(hotkeyTable.record, 65U);
}

TEST_F(ImportsTest, APendingImportWithoutSettingsAppliesTheDefaultsOnlyWhenConfirmed) {
    ApplyProfileSettings("0,0,0,44,1,1,0,3,1,7,8,0,0,0,2,0,4,65,65|66,1");
    const std::string live = BuildProfileSettings();
    const std::string document = ImportMacroFile(File("a.vrlmacro", std::string("A\n") + kCautionEvents));
    EXPECT_EQ(BuildProfileSettings(), live);
    ConfirmMacroImport(PendingIdIn(document));
    EXPECT_EQ(BuildProfileSettings(), kDefaults);
    EXPECT_EQ(Current().settings, kDefaults);
}

TEST_F(ImportsTest, RejectsAnMcrFileByItsName) {
    const std::string refusal =
        R"({"outcome":"error","message":".mcr files are no longer supported. Re-export that profile as )"
        R"(.vrlmacro from whatever version of Varnelle created it, then import that instead."})";
    EXPECT_EQ(ImportMacroFile(root_.File("OLD.MCR")), refusal);  // does not exist
    EXPECT_EQ(ImportMacroFile(File("old.mCr", std::string("Old\n") + kCleanEvents)), refusal);
    EXPECT_EQ(ImportMacroFile(".mcr"), refusal);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName}));
}

TEST_F(ImportsTest, ReadsAnyOtherNameAsAMacro) {
    for (const char* name : {"a.txt", "b", "c.mcr.bak", "d.vrltheme", "mcr"}) {
        EXPECT_EQ(ImportMacroFile(File(name, std::string(name) + "\n" + kCleanEvents)), kImported) << name;
        EXPECT_EQ(Current().name, std::string(name) + " (Imported)");
    }
}

TEST_F(ImportsTest, ReportsWhyAFileCannotBeRead) {
    EXPECT_EQ(ImportMacroFile(root_.File("none.vrlmacro")),
              R"({"outcome":"error","message":"Couldn't open that macro file."})");
    EXPECT_EQ(ImportMacroFile(root_.Path()),
              R"({"outcome":"error","message":"Couldn't open that macro file."})");
    EXPECT_EQ(ImportMacroFile(File("a.vrlmacro", "\n0,0.5,10,10,0,0,0\n")),
              R"({"outcome":"error","message":"That macro file is missing its profile name."})");
    EXPECT_EQ(Names(), (NameList{DefaultProfileName}));
    EXPECT_EQ(TakePendingThemeAlert(), "");
}

TEST_F(ImportsTest, OneFindingMakesAnImportPending) {
    const std::string path = File("a.vrlmacro", std::string("A\nSETTINGS:\n") + kCautionEvents);
    const std::string document = ImportMacroFile(path);
    const std::string id = PendingIdIn(document);
    ASSERT_EQ(id.size(), 32U);
    EXPECT_EQ(id.find_first_not_of("0123456789abcdef"), std::string::npos);
    const auto matches = MacroScan::ScanMacro(Risky("A").events).matches;
    ASSERT_EQ(matches.size(), 1U);
    EXPECT_EQ(document, R"({"outcome":"pending","pendingId":")" + id +
                            R"(","level":"caution","matches":[{"severity":"CAUTION","message":)" +
                            JsonText(matches[0].message) + R"(,"atSec":1.5}]})");
    EXPECT_EQ(GetPendingMacroImport(), document);
    EXPECT_EQ(GetPendingMacroImport(), document);  // reading does not clear it
    EXPECT_EQ(Names(), (NameList{DefaultProfileName}));
    ConfirmMacroImport(id);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "A (Imported)"}));
    EXPECT_EQ(Current().events.size(), 4U);
    EXPECT_EQ(GetPendingMacroImport(), kNothingPending);
}

TEST_F(ImportsTest, FindingsHaveTheOrderOfTheReport) {
    // The Task Manager at one second is a caution. Win+R, typing and Enter at nine seconds are a danger and come first.
    const OfferResult offer =
        OfferMacro(Macro("A\n3,1,0,0,0,17,1,0\n3,1.1,0,0,0,16,1,0\n3,1.2,0,0,0,27,1,0\n3,1.3,0,0,0,27,0,0\n"
                         "3,1.4,0,0,0,16,0,0\n3,1.5,0,0,0,17,0,0\n3,9,0,0,0,91,1,0\n3,9.1,0,0,0,82,1,0\n"
                         "3,9.2,0,0,0,82,0,0\n3,9.3,0,0,0,91,0,0\n3,9.4,0,0,0,65,1,0\n3,9.5,0,0,0,65,0,0\n"
                         "3,9.6,0,0,0,13,1,0\n"));
    EXPECT_FALSE(offer.committed);
    EXPECT_EQ(offer.level, "danger");
    ASSERT_GE(offer.matches.size(), 2U);
    const std::string document = GetPendingMacroImport();
    EXPECT_EQ(document, OfferDocument(offer));
    size_t at = 0;
    for (const MacroScan::ScanMatch& match : offer.matches) {
        const size_t next = document.find(JsonText(match.message));
        ASSERT_NE(next, std::string::npos);
        EXPECT_GT(next, at);
        at = next;
    }
    EXPECT_EQ(offer.matches.front().severity, "DANGER");
    EXPECT_EQ(offer.matches.back().severity, "CAUTION");
}

// JSON has no such numbers: the page could not read the document, and the user could neither see nor cancel the import.
TEST_F(ImportsTest, AFindingWithoutAFiniteTimeIsPutAtTheStart) {
    for (const std::string time : {"inf", "-inf", "nan", "infinity"}) {
        const std::string path = File("odd.vrlmacro", "Odd\nSETTINGS:\n3," + time + ",0,0,0,91,1,0\n3," +
                                                          time + ",0,0,0,82,1,0\n3,1.75,0,0,0,91,0,0\n");
        const std::string document = ImportMacroFile(path);
        EXPECT_EQ(document, "{\"outcome\":\"pending\",\"pendingId\":\"" + PendingId() +
                                "\",\"level\":\"caution\",\"matches\":[{\"severity\":\"CAUTION\",\"message\":"
                                "\"Uses Windows system shortcuts.\",\"atSec\":0}]}")
            << time;
        EXPECT_EQ(document, GetPendingMacroImport());
    }
}

TEST_F(ImportsTest, AnOfferReportsItsResultInBothCases) {
    const OfferResult clean = OfferMacro(Clean("Clean"));
    EXPECT_TRUE(clean.committed);
    EXPECT_EQ(clean.pendingId, "");
    EXPECT_EQ(clean.level, "none");
    EXPECT_TRUE(clean.matches.empty());
    EXPECT_EQ(OfferDocument(clean), kImported);
    const OfferResult risky = OfferMacro(Risky("Risky"));
    EXPECT_FALSE(risky.committed);
    EXPECT_EQ(risky.pendingId, PendingId());
    EXPECT_EQ(risky.level, "caution");
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Clean"}));  // only the dialog adds " (Imported)"
}

TEST_F(ImportsTest, ASecondConfirmationDoesNothing) {
    const std::string id = OfferMacro(Risky("A")).pendingId;
    ConfirmMacroImport(id);
    const uint64_t revision = Revision();
    ConfirmMacroImport(id);
    CancelMacroImport(id);
    ConfirmMacroImport("");
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "A"}));
    EXPECT_EQ(Revision(), revision);
}

TEST_F(ImportsTest, CancellingDropsThePendingImport) {
    const std::string id = OfferMacro(Risky("A")).pendingId;
    CancelMacroImport(id);
    EXPECT_EQ(GetPendingMacroImport(), kNothingPending);
    ConfirmMacroImport(id);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName}));
}

TEST_F(ImportsTest, AWrongIdDoesNothing) {
    const std::string id = OfferMacro(Risky("A")).pendingId;
    std::string upper = id;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c; });
    std::string other = id;
    other[31] = other[31] == '0' ? '1' : '0';
    for (const std::string& wrong :
         {std::string(), id.substr(1), id + "0", " " + id, id + " ", other, id + '\0'}) {
        ConfirmMacroImport(wrong);
        CancelMacroImport(wrong);
    }
    if (upper != id) {
        ConfirmMacroImport(upper);
    }
    EXPECT_EQ(PendingId(), id);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName}));
}

TEST_F(ImportsTest, TheSummaryIsEmptyWithoutAPendingImport) {
    EXPECT_EQ(GetPendingMacroSummary(), "{}");
}

TEST_F(ImportsTest, TheSummaryCountsEventsByTime) {
    // Win+R for a caution; moves at the start, in the middle and at the end of 4 seconds.
    const std::string text = std::string("A \"name\"\nSETTINGS:\n0,0,1,1,0,0,0,0\n") + kCautionEvents +
                             "2,2,5,5,2,0,0,0\n4,2.01,0,0,0,0,0,120\n1,4,1,1,0,0,0,0\n0,nan,1,1,0,0,0,0\n";
    const OfferResult offer = OfferMacro(Macro(text));
    ASSERT_FALSE(offer.committed);
    const std::string summary = GetPendingMacroSummary();
    const auto lane = [&](const std::string& name) {
        std::vector<int64_t> counts;
        const size_t at = summary.find("\"" + name + "\":[");
        EXPECT_NE(at, std::string::npos);
        std::istringstream list(summary.substr(at + name.size() + 4));
        for (int64_t count = 0; list >> count;) {
            counts.push_back(count);
            if (list.get() != ',') {
                break;
            }
        }
        counts.resize(std::max<size_t>(counts.size(), kSummaryParts));
        return counts;
    };
    const auto expect = [](std::map<int, int64_t> filled) {
        std::vector<int64_t> counts(kSummaryParts);
        for (const auto& [index, count] : filled) {
            counts[index] = count;
        }
        return counts;
    };
    const size_t events = Macro(text).events.size();
    EXPECT_EQ(summary.find("{\"pendingId\":\"" + offer.pendingId +
                           "\",\"name\":\"A \\\"name\\\"\",\"events\":" + std::to_string(events) +
                           ",\"seconds\":4,\"moves\":["),
              0u);
    EXPECT_EQ(lane("moves"), expect({{0, 2}, {99, 1}}));
    EXPECT_EQ(lane("clicks"), expect({{50, 2}}));
    EXPECT_EQ(lane("keys"), expect({{31, 1}, {37, 1}, {43, 1}, {45, 1}}));
}

TEST_F(ImportsTest, ASecondPendingImportReplacesTheFirst) {
    const std::string first = OfferMacro(Risky("First")).pendingId;
    const std::string second = OfferMacro(Risky("Second")).pendingId;
    EXPECT_NE(first, second);
    EXPECT_EQ(PendingId(), second);
    ConfirmMacroImport(first);  // the page's older dialog
    CancelMacroImport(first);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName}));
    ConfirmMacroImport(second);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Second"}));
}

TEST_F(ImportsTest, ARepeatedOfferHasANewId) {
    std::set<std::string> ids;
    for (int i = 0; i < 100; ++i) {
        ids.insert(OfferMacro(Risky("A")).pendingId);
    }
    EXPECT_EQ(ids.size(), 100U);
}

TEST_F(ImportsTest, AMacroWithoutFindingsIsAddedBesideAPendingImport) {
    const std::string id = OfferMacro(Risky("Risky")).pendingId;
    EXPECT_TRUE(OfferMacro(Clean("Clean")).committed);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Clean"}));
    EXPECT_EQ(PendingId(), id);
    ConfirmMacroImport(id);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Clean", "Risky"}));
}

// A recording continues after the events of each new profile. Those events and the ones recorded before stay unchanged.
TEST_F(ImportsTest, ARecordingContinuesAfterTheImportedEvents) {
    using Times = std::vector<double>;
    {
        MutexLock lock(macroMutex);
        macroState.profiles[0].events = {{.type = EvKey, .time = 4}, {.type = EvKey, .time = 2}};
    }
    const std::string id = OfferMacro(Risky("Risky")).pendingId;
    BeginContinuedRecording();
    AppendRecordedEvent({.type = EvKey, .time = 9});
    EXPECT_TRUE(OfferMacro(Clean("Clean")).committed);
    EXPECT_EQ(EventTimes(0), (Times{4, 2, 4.1}));
    AppendRecordedEvent({.type = EvKey, .time = 20});
    ConfirmMacroImport(id);
    engineState.recording = false;
    FinishRecording();  // with no event recorded after the last import
    EXPECT_EQ(EventTimes(0), (Times{4, 2, 4.1}));
    EXPECT_EQ(EventTimes(1), (Times{0.5, 0.6}));
    EXPECT_EQ(EventTimes(2), (Times{1.25, 1.5, 1.75, 1.8}));
    // Without a recording the times stay unchanged.
    OfferMacro(Clean("Later"));
    OfferMacro(Clean("Last"));
    EXPECT_EQ(EventTimes(3), (Times{0.5}));
    MutexLock lock(macroMutex);
    EXPECT_FALSE(CanUndoContinue());
    macroState.currentProfile = 0;
    EXPECT_TRUE(CanUndoContinue());
}

TEST_F(ImportsTest, WithoutMemoryForTheImportTheRecordingGoesOnInItsOwnMacro) {
    REQUIRE_FAILING_MEMORY();
    {
        MutexLock lock(macroMutex);
        macroState.profiles[0].events = {{.type = EvKey, .time = 4}};
        macroState.profiles.shrink_to_fit();
    }
    ParsedMacro macro = Clean("Clean");
    BeginContinuedRecording();
    AppendRecordedEvent({.type = EvKey, .time = 9});
    {
        const FailingMemory failing(2 * sizeof(Profile));
        EXPECT_THROW(OfferMacro(std::move(macro)), std::bad_alloc);
    }
    AppendRecordedEvent({.type = EvKey, .time = 9.5});
    EXPECT_EQ(Names(), (NameList{DefaultProfileName}));
    engineState.recording = false;
    FinishRecording();
    EXPECT_EQ(EventTimes(0), (std::vector<double>{4, 4.1, 4.6}));  // joined once
}

TEST_F(ImportsTest, TheNumberOfANameIsChosenAtConfirmation) {
    const std::string id = OfferMacro(Risky("Farm")).pendingId;
    Append(Clean("Farm"));
    ConfirmMacroImport(id);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Farm", "Farm (2)"}));
}

TEST_F(ImportsTest, AStagedFileIsImportedUnderItsOwnNameAndDeleted) {
    const std::string path = Stage("Farm", std::string("Farm\n") + kCleanEvents);
    ImportStagedMacro("Farm");
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Farm"}));
    EXPECT_FALSE(FileExists(path));
    ImportStagedMacro("Farm");  // the file is gone
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Farm"}));
    EXPECT_EQ(TakePendingThemeAlert(), "");
}

TEST_F(ImportsTest, APendingOrUnreadableStagedFileIsDeletedToo) {
    const std::string risky = Stage("Risky", std::string("Risky\n") + kCautionEvents);
    ImportStagedMacro("Risky");
    EXPECT_FALSE(FileExists(risky));
    EXPECT_EQ(Names(), (NameList{DefaultProfileName}));
    EXPECT_EQ(PendingId().size(), 32U);
    const std::string bad = Stage("Bad", "");
    ImportStagedMacro("Bad");
    EXPECT_FALSE(FileExists(bad));
    EXPECT_EQ(TakePendingThemeAlert(), kUnreadableMacro);  // kept until there is a page
    EXPECT_EQ(TakePendingThemeAlert(), "");
    EXPECT_EQ(PendingId().size(), 32U);
}

TEST_F(ImportsTest, AMacroOfTheCommandLineIsAddedOrPending) {
    const std::string clean = File("clean.vrlmacro", std::string("Clean\n") + kCleanEvents);
    ImportFromCommandLine(clean);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Clean"}));
    const std::string risky = File("risky.vrlmacro", std::string("Risky\n") + kCautionEvents);
    ImportFromCommandLine(risky);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Clean"}));
    ConfirmMacroImport(PendingId());
    EXPECT_EQ(Names(), (NameList{DefaultProfileName, "Clean", "Risky"}));
    EXPECT_EQ(TakePendingThemeAlert(), "");
    ImportFromCommandLine(root_.File("none.vrlmacro"));
    EXPECT_EQ(TakePendingThemeAlert(), kUnreadableMacro);
    ImportFromCommandLine(File("empty.vrlmacro", ""));
    EXPECT_EQ(TakePendingThemeAlert(), kUnreadableMacro);
    EXPECT_TRUE(FileExists(clean));
    EXPECT_TRUE(FileExists(risky));
}

TEST_F(ImportsTest, TheSelfCheckPassesAndLeavesNoFile) {
    hotkeyTable.record = 65;
    ApplyProfileSettings("0,0,0,44,1,1,0,3,1,7,8,0,0,0,2,0,4,65,65|66,1");
    const std::string live = BuildSettingsLine();
    std::string log = "before\n";
    EXPECT_TRUE(ImportSelfCheck(root_.File("check.vrlmacro"), &log));
    EXPECT_EQ(log, "before\n"
                   "PASS import: current-format macro parses\n"
                   "PASS import: hotkeys, Hold, Tracker and live setup unchanged\n"
                   "PASS import: profile gets the file's Spammer + Key Spammer setup\n"
                   "PASS import: 23-field macro parses, globals unchanged\n"
                   "PASS import: 23-field macro keeps the importer's Key Spammer setup\n"
                   "PASS import: macro with no SETTINGS line still imports\n");
    EXPECT_FALSE(FileExists(root_.File("check.vrlmacro")));
    EXPECT_EQ(BuildSettingsLine(), live);
    EXPECT_EQ(Names(), (NameList{DefaultProfileName}));
}

TEST_F(ImportsTest, TheSelfCheckFailsIfItCannotWrite) {
    std::string log;
    EXPECT_FALSE(ImportSelfCheck(root_.File("no/such/folder.vrlmacro"), &log));
    EXPECT_EQ(log, "FAIL import: current-format macro parses\n"
                   "PASS import: hotkeys, Hold, Tracker and live setup unchanged\n"
                   "FAIL import: profile gets the file's Spammer + Key Spammer setup\n"
                   "FAIL import: 23-field macro parses, globals unchanged\n"
                   "FAIL import: 23-field macro keeps the importer's Key Spammer setup\n"
                   "FAIL import: macro with no SETTINGS line still imports\n");
}

// Offers, decisions and the page's other commands from several threads: no deadlock, and every macro is added once. The
// thread sanitizer also reports an inverted lock order.
TEST_F(ImportsTest, OffersAndDecisionsFromSeveralThreadsAddEveryMacroOnce) {
    constexpr int kRounds = 200;
    std::atomic<int> offered{0};
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 2; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < kRounds; ++round) {
                OfferMacro(round % 2 == 0 ? Risky("Risky") : Clean("Clean"));
                ++offered;
            }
        });
    }
    threads.emplace_back([&] {
        while (!done) {
            ConfirmMacroImport(PendingId());
        }
    });
    threads.emplace_back([&] {
        while (!done) {
            GetProfiles();
            SyncProfileSettings();
            SwitchProfile("0");
            ClearProfile();
        }
    });
    EXPECT_TRUE(WaitUntil([&] { return offered == 2 * kRounds; }));
    done = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    ConfirmMacroImport(PendingId());
    EXPECT_EQ(GetPendingMacroImport(), kNothingPending);

    const NameList names = Names();
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
    const auto count = [&](const char* name) {
        return std::count_if(names.begin(), names.end(),
                             [name](const std::string& each) { return StartsWith(each, name); });
    };
    EXPECT_EQ(count("Clean"), kRounds);
    EXPECT_GE(count("Risky"), 1);
    EXPECT_LE(count("Risky"), kRounds) << "a replaced one is dropped";
    EXPECT_EQ(names.size(), static_cast<size_t>(1 + count("Clean") + count("Risky")));
}
