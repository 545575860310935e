#include "app/commands.h"

#include "base/numbers.h"
#include "imports/pending_import.h"
#include "model/engine_state.h"
#include "test_support.h"
#include "windows/main_page.h"

#include <cstring>

namespace {

class CommandsTest : public DataFolderTest {
  protected:
    CommandsTest() {
        MutexLock lock(macroMutex);
        macroState.profiles.push_back(Profile{DefaultProfileName, {}, {}});
        MarkMacroChanged();
    }

    // As the page calls: a JSON array text in, a JSON text or an empty one out.
    static std::string Call(const char* name, const std::string& request = "[]") {
        int count = 0;
        const PageCommand* commands = MainProcessCommands(&count);
        for (int i = 0; i < count; ++i) {
            if (std::strcmp(commands[i].name, name) == 0) {
                return commands[i].function(request);
            }
        }
        ADD_FAILURE() << "no command " << name;
        return {};
    }

    static void SetMacro(std::vector<UnifiedEvent> events) {
        MutexLock lock(macroMutex);
        macroState.profiles[0].events = std::move(events);
        MarkMacroChanged();
    }

    static std::vector<UnifiedEvent> Macro() {
        MutexLock lock(macroMutex);
        return macroState.profiles[0].events;
    }

    static UnifiedEvent KeyDown(double time, uint32_t vk) {
        UnifiedEvent event;
        event.type = EvKey;
        event.time = time;
        event.virtualKey = vk;
        event.down = true;
        return event;
    }

    static std::string Mirror() { return ReadFile(DataFilePath("macroevents.txt")); }
};

}  // namespace

TEST_F(CommandsTest, AreBoundInTheirFixedOrder) {
    const char* const expected[] = {
        "resizeWindow",
        "updateSpammer",
        "startSpammer",
        "stopSpammer",
        "updateKeySpam",
        "startKeySpam",
        "stopKeySpam",
        "removeKeySpamTarget",
        "setKeySpamChordMode",
        "pickLocation",
        "setHoldMode",
        "getPendingThemeAlert",
        "getAppSettings",
        "markWarningSeen",
        "setAppSetting",
        "setPanelOrder",
        "resetHotkeys",
        "openLink",
        "updateTracker",
        "startRecording",
        "stopRecording",
        "continueRecording",
        "undoContinueRecording",
        "startPlayback",
        "stopPlayback",
        "optimizeMacro",
        "getTrackerStatus",
        "getMacroEvents",
        "deleteEvent",
        "updateEventTime",
        "clearProfile",
        "addProfile",
        "deleteProfile",
        "switchProfile",
        "getProfiles",
        "exportProfile",
        "importProfile",
        "confirmMacroImport",
        "cancelMacroImport",
        "getPendingMacroImport",
        "getSettings",
        "reassignKey",
        "getPendingMacroSummary",
        "getProgress",
        "getMacroRows",
        "getKeyNames",
        "cancelPick",
        "getHotkeys",
        "setHotkey",
        "moveKeySpamTarget",
        "renameProfile",
        "duplicateProfile",
        "moveProfile",
        "getMacroHistory",
        "restoreMacro",
        "deleteMacroEvents",
        "shiftMacroEvents",
        "retimeMacroEvents",
        "addMissingReleases",
        "getAdditionalSettings",
        "setAdditionalSetting",
        "getAbout",
        "openDataFolder",
        "getLastImport",
        "useImportedSettings",
        "exportMacro",
        "lockHotkeys",
    };
    constexpr int kCommon = 42;  // additional ones follow
    int count = 0;
    const PageCommand* commands = MainProcessCommands(&count);
    ASSERT_EQ(count, static_cast<int>(std::size(expected)));
    for (int i = 0; i < count; ++i) {
        EXPECT_STREQ(commands[i].name, expected[i]) << i;
        EXPECT_NE(commands[i].function, nullptr) << expected[i];
        EXPECT_NE(commands[i].action[0], '\0') << expected[i];
        EXPECT_EQ(commands[i].additional, i >= kCommon) << expected[i];
    }
}

TEST_F(CommandsTest, StartAndStopOnlyRaiseTheirRequest) {
    const struct {
        const char* name;
        std::atomic<bool> EngineState::*flag;
    } rows[] = {
        {"startSpammer", &EngineState::requestStartAutoclicker},
        {"stopSpammer", &EngineState::requestStopAutoclicker},
        {"startKeySpam", &EngineState::requestStartKeySpammer},
        {"stopKeySpam", &EngineState::requestStopKeySpammer},
        {"startRecording", &EngineState::requestStartRecord},
        {"stopRecording", &EngineState::requestStopRecord},
        {"continueRecording", &EngineState::requestContinueRecord},
        {"undoContinueRecording", &EngineState::requestUndoContinue},
        {"startPlayback", &EngineState::requestStartPlay},
        {"stopPlayback", &EngineState::requestStopPlay},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Call(row.name), "");
        for (const auto& other : rows) {
            EXPECT_EQ((engineState.*other.flag).exchange(false), other.flag == row.flag)
                << row.name << " and " << other.name;
        }
    }
    EXPECT_FALSE(engineState.autoClicking);
    EXPECT_FALSE(engineState.recording);
    EXPECT_FALSE(engineState.playing);
    EXPECT_FALSE(engineState.keySpamming);
}

TEST_F(CommandsTest, OneStringAndSeparateArgumentsAreTheSame) {
    for (const char* request : {"[1,2,3,4,1,1,0,10,0]", "[\"1,2,3,4,1,1,0,10,0\"]"}) {
        autoclickerSettings.intervalHours = 0;
        autoclickerSettings.repeatMode = 1;
        EXPECT_EQ(Call("updateSpammer", request), "");
        EXPECT_EQ(autoclickerSettings.intervalHours, 1);
        EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 4);
        EXPECT_EQ(autoclickerSettings.repeatMode, 0);
        EXPECT_EQ(autoclickerSettings.repeatCount, 10);
    }
}

TEST_F(CommandsTest, AMalformedNumberEndsTheUpdateAndKeepsTheEarlierFields) {
    EXPECT_THROW(Call("updateSpammer", "[7,8,x,4,1,1,0,10,0]"), NumberError);
    EXPECT_EQ(autoclickerSettings.intervalHours, 7);
    EXPECT_EQ(autoclickerSettings.intervalMinutes, 8);
    EXPECT_EQ(autoclickerSettings.intervalSeconds, 0);
    EXPECT_EQ(autoclickerSettings.intervalMilliseconds, 5);
    EXPECT_THROW(Call("updateKeySpam", "[3,x,0,0,0,0]"), NumberError);
    EXPECT_EQ(keySpammerSettings.intervalHours, 3);
    EXPECT_THROW(Call("updateTracker", "[0,1,1,1,0,x,0,500]"), NumberError);
    EXPECT_FALSE(macroSettings.recordMoves);
}

TEST_F(CommandsTest, RemovingATargetIgnoresAMalformedNumber) {
    EXPECT_EQ(Call("removeKeySpamTarget", "[\"x\"]"), "");
    EXPECT_EQ(Call("removeKeySpamTarget", "[]"), "");
    EXPECT_EQ(Call("removeKeySpamTarget", "[99999999999]"), "");
    EXPECT_EQ(Call("removeKeySpamTarget", "[5]"), "");
    EXPECT_EQ(keySpammerSettings.targetCount, 1);
    EXPECT_EQ(Call("removeKeySpamTarget", "[0]"), "");
    EXPECT_EQ(keySpammerSettings.targetCount, 0);
}

TEST_F(CommandsTest, StoresChordAndHoldModes) {
    EXPECT_EQ(Call("setKeySpamChordMode", "[\"1\"]"), "");
    EXPECT_TRUE(keySpammerSettings.chord);
    EXPECT_EQ(Call("setKeySpamChordMode", "[true]"), "");
    EXPECT_FALSE(keySpammerSettings.chord);
    EXPECT_EQ(Call("setHoldMode", "[\"auto\",1]"), "");
    EXPECT_EQ(Call("setHoldMode", "[\"keyspam,1\"]"), "");
    EXPECT_TRUE(hotkeyTable.holdAutoclicker);
    EXPECT_TRUE(hotkeyTable.holdKeySpammer);
}

TEST_F(CommandsTest, PickLocationSetsThePickingFlag) {
    EXPECT_EQ(Call("pickLocation"), "");
    EXPECT_TRUE(engineState.pickingLocation);
}

TEST_F(CommandsTest, ReassignKeyAcceptsSixWords) {
    const char* const words[] = {"rec", "play", "auto", "keyspamhotkey", "keyspamtarget", "unlock"};
    uint32_t target = 0;
    for (const char* word : words) {
        EXPECT_EQ(Call("reassignKey", "[\"" + std::string(word) + "\"]"), "");
        EXPECT_EQ(engineState.capture.load().target, ++target) << word;
    }
    EXPECT_EQ(Call("reassignKey", "[\"other\"]"), "");
    EXPECT_EQ(engineState.capture.load().target, target);
}

TEST_F(CommandsTest, ResetHotkeysRestoresTheFiveBindings) {
    hotkeyTable.record = 65;
    hotkeyTable.play = 66;
    hotkeyTable.autoclicker = 67;
    hotkeyTable.keySpammer = 68;
    hotkeyTable.unlock = 69;
    EXPECT_EQ(Call("resetHotkeys"), "");
    EXPECT_EQ(hotkeyTable.record, 119U);
    EXPECT_EQ(hotkeyTable.play, 118U);
    EXPECT_EQ(hotkeyTable.autoclicker, 117U);
    EXPECT_EQ(hotkeyTable.keySpammer, 120U);
    EXPECT_EQ(hotkeyTable.unlock, 121U);
}

TEST_F(CommandsTest, ReturnsAndMirrorsTheEventList) {
    EXPECT_EQ(Call("getMacroEvents"), "[]");
    EXPECT_EQ(Mirror(), "[]");
    SetMacro({KeyDown(0.5, 65)});
    EXPECT_EQ(Call("getMacroEvents"), "[{\"id\":0,\"time\":0.500000,\"desc\":\"Keyboard VK: 65 (DOWN)\"}]");
    EXPECT_EQ(Mirror(), "[{\"id\":0,\"time\":0.500000,\"desc\":\"Keyboard VK: 65 (DOWN)\"}]");
}

TEST_F(CommandsTest, EditsRewriteTheMirror) {
    SetMacro({KeyDown(0.0, 65), KeyDown(1.0, 66), KeyDown(2.0, 67)});
    EXPECT_EQ(Call("deleteEvent", "[1]"), "");
    EXPECT_EQ(Macro(), (std::vector<UnifiedEvent>{KeyDown(0.0, 65), KeyDown(2.0, 67)}));
    EXPECT_EQ(Mirror(), Call("getMacroEvents"));
    EXPECT_EQ(Call("updateEventTime", "[1,2.5]"), "");
    EXPECT_EQ(Macro()[1], KeyDown(2.5, 67));
    EXPECT_NE(Mirror().find("2.500000"), std::string::npos);

    std::filesystem::remove(DataFilePath("macroevents.txt"));
    EXPECT_EQ(Call("deleteEvent", "[-1]"), "");
    EXPECT_EQ(Macro().size(), 2U);
    EXPECT_EQ(Mirror(), Call("getMacroEvents"));
    std::filesystem::remove(DataFilePath("macroevents.txt"));
    EXPECT_EQ(Call("optimizeMacro"), "");
    EXPECT_EQ(Mirror(), Call("getMacroEvents"));
}

TEST_F(CommandsTest, EditsRejectAMalformedNumber) {
    SetMacro({KeyDown(0.0, 65)});
    EXPECT_THROW(Call("deleteEvent", "[\"x\"]"), NumberError);
    EXPECT_THROW(Call("updateEventTime", "[0,\"abc\"]"), NumberError);
    EXPECT_EQ(Call("updateEventTime", "[0]"), "");
    EXPECT_EQ(Call("updateEventTime", "[0,1.5,9]"), "");
    EXPECT_EQ(Macro(), std::vector<UnifiedEvent>{KeyDown(0.0, 65)});
}

TEST_F(CommandsTest, ProfilesAreAddedSwitchedClearedAndDeleted) {
    EXPECT_EQ(Call("addProfile", "[\"Farm [1]\"]"), "");
    EXPECT_EQ(Call("getProfiles"),
              "{\"current\":1,\"names\":[\"Default Tracking Profile\",\"Farm 1\"],\"cap\":-1,"
              "\"defaultName\":\"Default Tracking Profile\"}");
    EXPECT_EQ(Call("addProfile", "[\"[]\"]"), "");
    EXPECT_EQ(Call("switchProfile", "[0]"), "");
    SetMacro({KeyDown(0.0, 65)});
    EXPECT_EQ(Call("clearProfile"), "");
    EXPECT_TRUE(Macro().empty());
    EXPECT_EQ(Call("switchProfile", "[\"1\"]"), "");
    EXPECT_EQ(Call("deleteProfile"), "");
    EXPECT_EQ(Call("getProfiles"), "{\"current\":0,\"names\":[\"Default Tracking Profile\"],\"cap\":-1,"
                                   "\"defaultName\":\"Default Tracking Profile\"}");
}

TEST_F(CommandsTest, ReturnsThePendingMessageOnce) {
    TakePendingThemeAlert();
    SetPendingThemeAlert("It is \"broken\".");
    EXPECT_EQ(Call("getPendingThemeAlert"), R"("It is \"broken\".")");
    EXPECT_EQ(Call("getPendingThemeAlert"), "\"\"");
}

TEST_F(CommandsTest, ConfirmsAndCancelsAPendingImportByItsId) {
    EXPECT_EQ(Call("getPendingMacroImport"), R"({"outcome":"none"})");
    ParsedMacro macro;
    ASSERT_EQ(ParseMacroText("Held\n3,1.25,0,0,0,91,1,0\n3,1.5,0,0,0,82,1,0\n", &macro), "");
    const std::string first = OfferMacro(macro).pendingId;
    const std::string begin = R"({"outcome":"pending","pendingId":")" + first + R"(","level":"caution")";
    EXPECT_EQ(Call("getPendingMacroImport").substr(0, begin.size()), begin);
    EXPECT_EQ(Call("cancelMacroImport", "[\"" + first + "\"]"), "");
    EXPECT_EQ(Call("getPendingMacroImport"), R"({"outcome":"none"})");
    const std::string second = OfferMacro(macro).pendingId;
    EXPECT_EQ(Call("confirmMacroImport", "[\"" + first + "\"]"), "");
    EXPECT_EQ(Call("confirmMacroImport", "[\"" + second + "\"]"), "");
    EXPECT_NE(Call("getProfiles").find(R"("current":1,"names":["Default Tracking Profile","Held"])"),
              std::string::npos);
}

TEST_F(CommandsTest, AdditionalCommandsSayWhetherTheyWereDone) {
    const std::string done = R"({"done":true})";
    const std::string refused = R"({"done":false,"reason":"argument"})";
    EXPECT_EQ(Call("addProfile", "[\"A\"]"), "");
    EXPECT_EQ(Call("renameProfile", "[\"1,B, C\"]"), done);
    EXPECT_EQ(Call("renameProfile", "[\"0,B\"]"), R"({"done":false,"reason":"default"})");
    EXPECT_EQ(Call("duplicateProfile", "[\"1\"]"), done);
    EXPECT_EQ(Call("moveProfile", "[\"2,0\"]"), done);
    EXPECT_NE(
        Call("getProfiles").find(R"j("current":0,"names":["B, C (2)","Default Tracking Profile","B, C"])j"),
        std::string::npos);
    engineState.recording = true;
    EXPECT_EQ(Call("moveProfile", "[\"2,0\"]"), R"({"done":false,"reason":"recording"})");
    EXPECT_EQ(Call("setHotkey", "[\"rec,65\"]"), done);
    EXPECT_EQ(Call("cancelPick"), done);
    EXPECT_EQ(Call("moveKeySpamTarget", "[\"0,0\"]"), done);
    for (const char* request : {"[]", "[\"x\"]", "[\"1\"]", "[\"1,\"]", "[\",1\"]", "[\"x,1\"]"}) {
        EXPECT_EQ(Call("renameProfile", request), refused) << request;
        EXPECT_EQ(Call("moveKeySpamTarget", request), refused) << request;
        EXPECT_EQ(Call("setHotkey", request), refused) << request;
    }
    EXPECT_EQ(Call("setHotkey", "[\"rec,-1\"]"), refused);
    EXPECT_EQ(Call("moveKeySpamTarget", "[\"0,0,0\"]"), refused);
    EXPECT_EQ(Call("duplicateProfile", "[\"1,2\"]"), refused);
}
