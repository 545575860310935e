// What the simulated platform shows of a session: input, hooks, windows, processes, the page, files.
#include "platform/simulated/simulation.h"

#include "engines/injection.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/key_table.h"
#include "platform/page_host.h"
#include "platform/process.h"
#include "platform/threads.h"
#include "simulated/engine_rig.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

class SimulatedSession : public testing::Test {
  protected:
    void SetUp() override { SimBegin(); }
    void TearDown() override { EXPECT_EQ(SimEnd(), ""); }
};

std::string Seen() {
    std::string text;
    for (const SimSeen& seen : SimSeenLog()) {
        switch (seen.kind) {
        case SimSeenKind::Key:
            text += SimNameOfKey(seen.code) + (seen.down ? "+" : "-");
            break;
        case SimSeenKind::Button:
            text += "b" + std::to_string(seen.code) + (seen.down ? "+" : "-");
            break;
        case SimSeenKind::Move:
            text += "m" + std::to_string(seen.x) + "," + std::to_string(seen.y);
            break;
        case SimSeenKind::Wheel:
            text += "w" + std::to_string(seen.wheel);
            break;
        case SimSeenKind::HorizontalWheel:
            text += "h" + std::to_string(seen.wheel);
            break;
        }
        text += seen.injected ? "! " : " ";
    }
    return text;
}

TEST_F(SimulatedSession, SentInputMovesThePointerAndReachesTheApplication) {
    int32_t x = 0;
    int32_t y = 0;
    for (int32_t pixel = 0; pixel < 1920; ++pixel) {
        SendInputAction({.kind = InputKind::MoveTo, .x = (pixel << 16) / 1920});
        ASSERT_TRUE(ReadPointerPosition(&x, &y));
        ASSERT_EQ(x, pixel);
    }
    for (int32_t pixel = 0; pixel < 1080; ++pixel) {
        SendInputAction({.kind = InputKind::MoveTo, .y = (pixel << 16) / 1080});
        ASSERT_TRUE(ReadPointerPosition(&x, &y));
        ASSERT_EQ(y, pixel);
    }
    SimSetPointer(100, 100);
    SendInputAction({.kind = InputKind::MoveBy, .x = -7, .y = 9});
    EXPECT_TRUE(ReadPointerPosition(&x, &y));
    EXPECT_EQ(x, 93);
    EXPECT_EQ(y, 109);
    SimHidePointer(true);
    EXPECT_FALSE(ReadPointerPosition(&x, &y));
}

TEST_F(SimulatedSession, SentKeysGoByScanCode) {
    SendInputAction(KeyAction(0x1E, false, true));
    EXPECT_TRUE(SimKeyIsDown('A'));
    SendInputAction(KeyAction(0x1E, false, false));
    EXPECT_FALSE(SimKeyIsDown('A'));
    SendInputAction(KeyAction(0x48, true, true));
    SendInputAction(KeyAction(0x48, false, true));
    SendInputAction(KeyAction(0, false, true));  // no key
    EXPECT_EQ(Seen(), "A+! A-! Up+! Num8+! ");
    EXPECT_EQ(SimSentCount(), 5U);
    EXPECT_EQ(SimSentKeys(true), 4U);
    EXPECT_EQ(SimSentKeys(false), 1U);
}

TEST_F(SimulatedSession, KeyTableAgreesWithItself) {
    for (uint32_t key = 1; key < 256; ++key) {
        const std::string name = SimNameOfKey(key);
        EXPECT_EQ(SimKeyFromName(name), key) << name;
    }
    EXPECT_EQ(SimKeyFromName("F6"), 117U);
    EXPECT_EQ(SimKeyFromName("Nonsense"), 0U);
    EXPECT_EQ(ScanCodeOfKey(17), ScanCodeOfKey(162));
    EXPECT_EQ(ScanCodeOfKey(255), 0U);
    EXPECT_EQ(SystemKeyName(0x57, false), "F11");
    EXPECT_EQ(SystemKeyName(0x48, true), "Up");
    EXPECT_EQ(SystemKeyName(0x48, false), "Num 8");
    EXPECT_EQ(SystemKeyName(0, false), "");
}

TEST_F(SimulatedSession, CountingKeepsNoRecords) {
    SimSetLogMode(SimLogMode::CountOnly);
    SendButton(kLeftButton, true);
    SimKey('A', true);
    EXPECT_EQ(SimSentLog().size(), 0U);
    EXPECT_EQ(SimSeenLog().size(), 0U);
    EXPECT_EQ(SimSentCount(), 1U);
    EXPECT_EQ(SimSeenCount(), 2U);
}

// Hooks: sinks that store what they receive and consume what the test asks for.

struct SinkNotes {
    std::vector<KeyHookRecord> keys;
    std::vector<MouseHookRecord> mouse;
    std::vector<RawMouseRecord> raw;
    std::vector<SessionChange> sessions;
    uint32_t consumedKey = 0;
    bool consumeButtons = false;
    int interestReads = 0;
    uint32_t interestCode = 0;
    bool wantsRawMotion = false;
};
SinkNotes notes;

HookDecision NoteKey(const KeyHookRecord& record) {
    notes.keys.push_back(record);
    return !record.injected && record.virtualKey == notes.consumedKey ? HookDecision::Consume
                                                                      : HookDecision::Pass;
}
HookDecision NoteMouse(const MouseHookRecord& record) {
    notes.mouse.push_back(record);
    return !record.injected && notes.consumeButtons && record.kind != PointerEvent::Move
               ? HookDecision::Consume
               : HookDecision::Pass;
}
void NoteRaw(const RawMouseRecord& record) {
    notes.raw.push_back(record);
}
void NoteSession(SessionChange change) {
    notes.sessions.push_back(change);
}
void NoteInterest(HookInterest* interest) {
    ++notes.interestReads;
    interest->codes[0] = notes.interestCode;
    interest->rawMotion = notes.wantsRawMotion;
    interest->codeCount = 1;
}

class SimulatedHooks : public SimulatedSession {
  protected:
    void SetUp() override {
        SimulatedSession::SetUp();
        notes = SinkNotes();
        thread_ = StartThread("hooks", [] {
            RunInputThread({NoteKey, NoteMouse, NoteRaw, NoteSession, NoteInterest});
        });
        SimSettle();
        ASSERT_TRUE(SimHooksInstalled());
    }
    void TearDown() override {
        StopInputThread();
        JoinThread(thread_);
        EXPECT_FALSE(SimHooksInstalled());
        SimulatedSession::TearDown();
    }
    std::thread thread_;
};

TEST_F(SimulatedHooks, RealInputIsNotInjectedAndSentInputIs) {
    SimKey('A', true);
    SimKey('B', true, true);
    SimSettle();
    SendInputAction(KeyAction(0x1E, false, false));
    ASSERT_EQ(notes.keys.size(), 3U);
    EXPECT_FALSE(notes.keys[0].injected);
    EXPECT_TRUE(notes.keys[0].down);
    EXPECT_EQ(notes.keys[0].virtualKey, 65U);
    EXPECT_TRUE(notes.keys[1].injected);
    EXPECT_TRUE(notes.keys[2].injected);
    EXPECT_FALSE(notes.keys[2].down);
    EXPECT_EQ(Seen(), "A+ B+! A-! ");
}

TEST_F(SimulatedHooks, ConsumedInputReachesNothing) {
    notes.consumedKey = 'A';
    notes.interestCode = 'A';
    HookInterestChanged();
    SimSettle();
    SimKey('A', true);
    SimKey('B', true);
    SimKey('A', false);
    SimSettle();
    EXPECT_EQ(Seen(), "B+ ");
    EXPECT_FALSE(SimKeyIsDown('A'));
    EXPECT_TRUE(SimHookComplaints().empty());
    notes.consumeButtons = true;
    SimButton(2, true);
    SimSettle();
    EXPECT_FALSE(SimButtonIsDown(2));
    EXPECT_EQ(Seen(), "B+ ");
    ASSERT_EQ(SimHookComplaints().size(), 1U);
    EXPECT_EQ(SimHookComplaints()[0], "consumed without announced interest: code 2");
}

TEST_F(SimulatedHooks, MouseEventsCarryPointButtonWheelAndTime) {
    SimMove(300, 200);
    SimRunFor(2);
    SimButton(1, true);
    SimButton(6, true);
    SimButton(6, false);
    SimWheel(-120);
    SimHorizontalWheel(240);
    SimSettle();
    ASSERT_EQ(notes.mouse.size(), 6U);
    EXPECT_EQ(notes.mouse[0].kind, PointerEvent::Move);
    EXPECT_EQ(notes.mouse[0].x, 300);
    EXPECT_EQ(notes.mouse[1].kind, PointerEvent::Press);
    EXPECT_EQ(notes.mouse[1].button, kLeftButton);
    EXPECT_EQ(notes.mouse[1].y, 200);
    EXPECT_EQ(notes.mouse[1].counter - notes.mouse[0].counter, 2 * kSimTicksPerMillisecond);
    EXPECT_EQ(notes.mouse[2].kind, PointerEvent::Press);
    EXPECT_EQ(notes.mouse[2].button, kSecondSideButton);
    EXPECT_EQ(notes.mouse[3].kind, PointerEvent::Release);
    EXPECT_EQ(notes.mouse[4].wheelDelta, -120);
    EXPECT_EQ(notes.mouse[5].kind, PointerEvent::HorizontalWheel);
    EXPECT_EQ(notes.mouse[5].wheelDelta, 240);
    EXPECT_EQ(Seen(), "m300,200 b1+ b6+ b6- w-120 h240 ");
}

TEST_F(SimulatedHooks, RawReportsAndSessionChangesArrive) {
    SimRawMove(1, 1);
    SimSettle();
    EXPECT_EQ(notes.raw.size(), 0U);  // nobody wants it
    notes.wantsRawMotion = true;
    HookInterestChanged();
    SimRawMove(4, -2);
    SimSessionChange(SessionChange::Lock);
    SimSettle();
    ASSERT_EQ(notes.raw.size(), 1U);
    EXPECT_EQ(notes.raw[0].dx, 4);
    EXPECT_EQ(notes.raw[0].dy, -2);
    EXPECT_EQ(notes.sessions, std::vector<SessionChange>{SessionChange::Lock});
}

TEST_F(SimulatedHooks, InterestIsReadAgainWhenItChanged) {
    notes.interestCode = 'Q';
    EXPECT_FALSE(SimHookInterestIsCurrent());
    const int before = notes.interestReads;
    HookInterestChanged();
    HookInterestChanged();
    SimSettle();
    EXPECT_EQ(notes.interestReads, before + 1);
    EXPECT_TRUE(SimHookInterestIsCurrent());
}

TEST_F(SimulatedSession, RefusedHooksLetInputThrough) {
    SimRefuseHooks(true);
    notes = SinkNotes();
    std::thread thread = StartThread("hooks", [] {
        RunInputThread({NoteKey, NoteMouse, NoteRaw, NoteSession, NoteInterest});
    });
    JoinThread(thread);
    SimKey('A', true);
    EXPECT_TRUE(notes.keys.empty());
    EXPECT_EQ(Seen(), "A+ ");
    StopInputThread();  // without effect
}

// Desktop, process, page, files.

TEST_F(SimulatedSession, TopmostVisibleWindowOwnsThePoint) {
    const WindowRef below = SimAddWindow("below", 7, 0, 0, 100, 100);
    const WindowRef above = SimAddWindow("above", 8, 50, 50, 150, 150);
    uint32_t process = 0;
    EXPECT_TRUE(ProcessAtPoint(60, 60, &process));
    EXPECT_EQ(process, 8U);
    EXPECT_TRUE(ProcessAtPoint(49, 60, &process));
    EXPECT_EQ(process, 7U);
    EXPECT_FALSE(ProcessAtPoint(150, 150, &process));
    ForceForeground(below);
    EXPECT_TRUE(ProcessAtPoint(60, 60, &process));
    EXPECT_EQ(process, 7U);
    EXPECT_EQ(SimGetDesktop().foreground, below);
    EXPECT_EQ(ListTopLevelWindows()[0].title, "below");
    EXPECT_EQ(FindWindowByTitle("above"), above);
    EXPECT_EQ(FindWindowByTitle("abov"), 0U);
    SimGetDesktop().windows[1].minimised = true;
    EXPECT_TRUE(IsWindowMinimised(below));
    EXPECT_TRUE(ProcessAtPoint(60, 60, &process));
    EXPECT_EQ(process, 8U);
    RestoreWindow(below);
    EXPECT_FALSE(IsWindowMinimised(below));
    SetWindowIcons(above);
    EXPECT_EQ(SimGetDesktop().icons, std::vector<WindowRef>{above});
    ShowErrorMessage("title", "text");
    EXPECT_EQ(SimGetDesktop().messages.at(0).text, "text");
}

TEST_F(SimulatedSession, ProcessIsWhatTheTestSays) {
    SimSetProgramPath("/some/where/varnelle");
    EXPECT_EQ(ProgramDirectory(), "/some/where");
    EXPECT_TRUE(IsOwnImage(OwnProcessId()));
    EXPECT_FALSE(IsOwnImage(2000));
    SimAddOwnImageProcess(2000);
    EXPECT_TRUE(IsOwnImage(2000));
    EXPECT_EQ(ClaimSingleInstance("a"), InstanceResult::First);
    EXPECT_TRUE(SimOwnsInstanceName("a"));
    SimTakeInstanceName("b");
    EXPECT_EQ(ClaimSingleInstance("b"), InstanceResult::AlreadyRunning);
    ReleaseSingleInstance();
    EXPECT_FALSE(SimOwnsInstanceName("a"));
    static int crashes;
    crashes = 0;
    SetCrashHandler([] { ++crashes; });
    SimCrash();
    EXPECT_EQ(crashes, 1);
    BeginTimerPeriod();
    BeginTimerPeriod();
    EndTimerPeriod();
    EXPECT_EQ(SimTimerPeriods(), 1);
}

void RunPageThread() {
    PageHost* host = nullptr;
    ASSERT_EQ(CreatePageHost(&host), "");
    SetPageTitle(host, "title");
    SetPageSize(host, 420, 560);
    BindPageFunction(host, "echo", [](const std::string& request) { return request; });
    BindPageFunction(host, "refuse",
                     [](const std::string&) -> std::string { throw std::runtime_error("no"); });
    SetPageHtml(host, "<p>");
    DispatchToPage(host, [host] { EvalInPage(host, "early()"); });
    RunPage(host);
    DestroyPageHost(host);
}

TEST_F(SimulatedSession, PageRunsUntilItIsClosed) {
    std::thread ui = StartThread("ui", RunPageThread);
    SimSettle();
    SimPage& page = SimGetPage();
    EXPECT_TRUE(page.running);
    EXPECT_EQ(page.title, "title");
    EXPECT_EQ(page.width, 420);
    EXPECT_EQ(page.html, "<p>");
    EXPECT_EQ(page.bound, (std::vector<std::string>{"echo", "refuse"}));
    EXPECT_EQ(page.evals, std::vector<std::string>{"early()"});
    EXPECT_NE(FindWindowByTitle("title"), 0U);
    const SimPageAnswer good = SimPageCall("echo", "[1]");
    EXPECT_TRUE(good.resolved);
    EXPECT_EQ(good.text, "[1]");
    const SimPageAnswer bad = SimPageCall("refuse", "[]");
    EXPECT_FALSE(bad.resolved);
    EXPECT_EQ(bad.text, "no");
    EXPECT_FALSE(SimPageCall("absent", "[]").resolved);
    SimClosePage();
    JoinThread(ui);
    EXPECT_FALSE(page.alive);
    EXPECT_EQ(FindWindowByTitle("title"), 0U);
}

TEST_F(SimulatedSession, PageOnTheDriver) {
    static SimPageAnswer answer;
    SimOnPageRun([] { answer = SimPageCall("echo", "[2]"); });
    RunPageThread();
    EXPECT_TRUE(answer.resolved);
    EXPECT_EQ(answer.text, "[2]");
    SimFailPageHost("missing");
    PageHost* host = nullptr;
    EXPECT_EQ(CreatePageHost(&host), "missing");
    EXPECT_EQ(host, nullptr);
}

TEST_F(SimulatedSession, FilesAreRealAndFailOnDemand) {
    const std::string path = RigFolder() + "/file";
    std::string bytes;
    EXPECT_TRUE(WriteFileBytes(path, std::string("a\r\n\0b", 5)));
    EXPECT_TRUE(ReadFileBytes(path, &bytes));
    EXPECT_EQ(bytes, std::string("a\r\n\0b", 5));
    EXPECT_TRUE(FileExists(path));
    EXPECT_EQ(SimFileOperations(), 3);
    SimFailFileOperation(2);
    EXPECT_TRUE(ReadFileBytes(path, &bytes));
    EXPECT_FALSE(ReadFileBytes(path, &bytes));
    EXPECT_TRUE(ReadFileBytes(path, &bytes));
    EXPECT_TRUE(MoveFileNoReplace(path, path + "2"));
    EXPECT_TRUE(WriteFileBytes(path, "c"));
    EXPECT_FALSE(MoveFileNoReplace(path, path + "2"));
    SimFailPath(path);
    EXPECT_FALSE(FileExists(path));
    EXPECT_FALSE(WriteFileBytes(path, "d"));
    EXPECT_FALSE(ReadFileBytes(RigFolder(), &bytes));
    EXPECT_TRUE(RemoveFile(path + "2"));
    EXPECT_FALSE(RemoveFile(path + "2"));
    EXPECT_TRUE(CreateFolder(RigFolder() + "/folder"));
    EXPECT_FALSE(CreateFolder(RigFolder() + "/folder"));
    EXPECT_TRUE(RemoveFile(RigFolder() + "/folder"));
}

TEST_F(SimulatedSession, DataFolderRootThatIsNotUsable) {
    EXPECT_EQ(DataFolderRoot(), ".");
    SimSetDataFolderRoot(std::string(259, 'a'));
    EXPECT_EQ(DataFolderRoot().size(), 259U);
    SimSetDataFolderRoot(std::string(260, 'a'));
    EXPECT_EQ(DataFolderRoot(), ".");
    SimSetTextLineEnd("\r\n");
    EXPECT_EQ(TextLineEnd(), "\r\n");
}

bool MacroMutexIsFree() {
    if (!macroMutex.TryLock()) {
        return false;
    }
    macroMutex.Unlock();
    return true;
}

TEST_F(SimulatedSession, HeldLockIsHeld) {
    EXPECT_TRUE(MacroMutexIsFree());
    WithMacroMutexHeld([] { EXPECT_FALSE(MacroMutexIsFree()); });
    EXPECT_TRUE(MacroMutexIsFree());
}

}  // namespace
