// The Windows backend against the system itself, with sent input only: hooks, sending, windows. Needs a desktop of its
// own.
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/files.h"
#include "platform/hooks.h"
#include "platform/input.h"
#include "platform/key_table.h"
#include "platform/process.h"
#include "platform/threads.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <wtsapi32.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

UINT WINAPI CountRawRead(HRAWINPUT report, UINT command, void* data, UINT* size, UINT headerSize);

}  // namespace

// In place of the entry that the linker would make.
extern "C" {
extern const decltype(&GetRawInputData) __imp_GetRawInputData;
const decltype(&GetRawInputData) __imp_GetRawInputData = CountRawRead;
}

namespace {

// ---- input and hooks ----

// What the sinks of RunInputThread received. `mutex` guards the lists: the input thread writes, the test reads.
struct Received {
    std::mutex mutex;
    std::vector<KeyHookRecord> keys;
    std::vector<MouseHookRecord> mice;
    std::vector<SessionChange> sessions;
    std::atomic<bool> throwAlways = false;
} received;

HookDecision ReceiveKey(const KeyHookRecord& record) {
    std::lock_guard lock(received.mutex);
    received.keys.push_back(record);
    if (received.throwAlways) {
        throw std::runtime_error("on purpose");
    }
    return HookDecision::Pass;
}

HookDecision ReceiveMouse(const MouseHookRecord& record) {
    std::lock_guard lock(received.mutex);
    received.mice.push_back(record);
    if (received.throwAlways) {
        throw std::runtime_error("on purpose");
    }
    return HookDecision::Pass;
}

// Raw reports that the backend has read from the system. The backend calls it through the import table, whose entry is
// replaced below.
std::atomic<int> rawReads = 0;

UINT WINAPI CountRawRead(HRAWINPUT report, UINT command, void* data, UINT* size, UINT headerSize) {
    static const auto read = reinterpret_cast<decltype(&GetRawInputData)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"user32.dll"), "GetRawInputData")));
    ++rawReads;
    return read(report, command, data, size, headerSize);
}

std::atomic<bool> rawMotionWanted = false;
std::atomic<int> rawReports = 0;
std::atomic<int> interestReads = 0;

void ReadInterest(HookInterest* interest) {
    ++interestReads;
    interest->rawMotion = rawMotionWanted;
}

void ReceiveRawMouse(const RawMouseRecord&) {
    ++rawReports;
    if (received.throwAlways) {
        throw std::runtime_error("on purpose");
    }
}

void ReceiveSession(SessionChange change) {
    std::lock_guard lock(received.mutex);
    received.sessions.push_back(change);
    if (received.throwAlways) {
        throw std::runtime_error("on purpose");
    }
}

void HookBody() {
    HookSinks sinks;
    sinks.onKey = ReceiveKey;
    sinks.onMouse = ReceiveMouse;
    sinks.onRawMouse = ReceiveRawMouse;
    sinks.onSessionChange = ReceiveSession;
    RunInputThread(sinks);
}

void HookBodyWithInterest() {
    HookSinks sinks;
    sinks.onMouse = ReceiveMouse;
    sinks.onRawMouse = ReceiveRawMouse;
    sinks.readInterest = ReadInterest;
    RunInputThread(sinks);
}

size_t KeyCount() {
    std::lock_guard lock(received.mutex);
    return received.keys.size();
}

size_t MouseCount() {
    std::lock_guard lock(received.mutex);
    return received.mice.size();
}

HWND FindHiddenWindow() {
    return FindWindowExW(HWND_MESSAGE, nullptr, L"RawInputHiddenWindow", nullptr);
}

void SendKey(uint16_t scanCode, bool extended, bool down) {
    SendInputAction({.kind = InputKind::Key, .down = down, .extended = extended, .scanCode = scanCode});
}

void SendMoveBy(int32_t dx, int32_t dy) {
    SendInputAction({.kind = InputKind::MoveBy, .x = dx, .y = dy});
}

void SendWheel(int32_t delta) {
    SendInputAction({.kind = InputKind::Wheel, .wheelDelta = delta});
}

class Hooks : public testing::Test {
  protected:
    void SetUp() override {
        Clear();
        received.throwAlways = false;
        thread_ = StartThread("hooks", HookBody);
        // The thread installs the hooks last. Only an event shows that they are installed.
        ASSERT_TRUE(Eventually([] {
            SendMoveBy(1, 0);
            SendKey(0x2A, false, false);
            return KeyCount() > 0 && MouseCount() > 0;
        }));
        // Events arrive in the order in which they were sent, so this one is the last of them.
        SendWheel(120);
        ASSERT_TRUE(Eventually([] {
            std::lock_guard lock(received.mutex);
            return std::any_of(received.mice.begin(), received.mice.end(), [](const MouseHookRecord& record) {
                return record.kind == PointerEvent::Wheel;
            });
        }));
        Clear();
    }
    void TearDown() override {
        StopInputThread();
        JoinThread(thread_);
    }
    static void Clear() {
        std::lock_guard lock(received.mutex);
        received.keys.clear();
        received.mice.clear();
        received.sessions.clear();
    }

    std::thread thread_;
};

TEST_F(Hooks, SentKeysAreInjected) {
    const int64_t before = ReadPerformanceCounter();
    SendKey(0x42, false, true);  // F8
    SendKey(0x42, false, false);
    ASSERT_TRUE(Eventually([] { return KeyCount() >= 2; }));
    const int64_t after = ReadPerformanceCounter();
    std::lock_guard lock(received.mutex);
    EXPECT_TRUE(received.keys[0].down);
    EXPECT_FALSE(received.keys[1].down);
    EXPECT_TRUE(received.keys[0].injected);
    EXPECT_TRUE(received.keys[1].injected);
    EXPECT_GE(received.keys[0].counter, before);
    EXPECT_LE(received.keys[0].counter, received.keys[1].counter);
    EXPECT_LE(received.keys[1].counter, after);
    // Wine reports no virtual key for a key sent by scan code; Windows reports the right one.
    EXPECT_TRUE(received.keys[0].virtualKey == VK_F8 || received.keys[0].virtualKey == 0);
}

TEST_F(Hooks, SentButtonsAndWheelsAreInjectedInOrder) {
    SendInputAction({.kind = InputKind::Button, .down = true, .button = kMiddleButton});
    SendInputAction({.kind = InputKind::Button, .down = false, .button = kMiddleButton});
    SendWheel(120);
    SendWheel(-240);
    ASSERT_TRUE(Eventually([] { return MouseCount() >= 4; }));
    std::lock_guard lock(received.mutex);
    const PointerEvent kinds[] = {PointerEvent::Press, PointerEvent::Release, PointerEvent::Wheel,
                                  PointerEvent::Wheel};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(received.mice[i].kind, kinds[i]);
        EXPECT_EQ(received.mice[i].button, i < 2 ? kMiddleButton : kNoButton);
        EXPECT_TRUE(received.mice[i].injected);
    }
    EXPECT_EQ(received.mice[2].wheelDelta, 120);
    EXPECT_EQ(received.mice[3].wheelDelta, -240);
}

TEST_F(Hooks, AnAbsoluteMoveIsReportedWhereThePointerGoes) {
    SendInputAction({.kind = InputKind::MoveTo, .x = 32768});
    ASSERT_TRUE(Eventually([] { return MouseCount() >= 1; }));
    const int32_t middle = PrimaryScreenWidth() / 2;
    {
        std::lock_guard lock(received.mutex);
        EXPECT_EQ(received.mice[0].kind, PointerEvent::Move);
        EXPECT_TRUE(received.mice[0].injected);
        EXPECT_EQ(received.mice[0].x, middle);
        EXPECT_EQ(received.mice[0].y, 0);
    }
    int32_t x = -1;
    int32_t y = -1;
    EXPECT_TRUE(Eventually([&] { return ReadPointerPosition(&x, &y) && x == middle && y == 0; }));
}

TEST_F(Hooks, AnEventPassesWhenItsSinkThrows) {
    received.throwAlways = true;
    SendKey(0x42, false, true);
    SendKey(0x42, false, false);
    SendMoveBy(3, 0);
    PostMessageW(FindHiddenWindow(), WM_WTSSESSION_CHANGE, WTS_SESSION_LOCK, 0);
    ASSERT_TRUE(Eventually([] {
        std::lock_guard lock(received.mutex);
        return received.keys.size() >= 2 && !received.mice.empty() && !received.sessions.empty();
    }));
    received.throwAlways = false;
    SendKey(0x42, false, false);
    EXPECT_TRUE(Eventually([] { return KeyCount() >= 3; }));
}

TEST_F(Hooks, OnlyLocksAndDisconnectsAreReported) {
    HWND window = FindHiddenWindow();
    ASSERT_NE(window, nullptr);
    for (WPARAM change = 0; change <= 14; ++change) {
        PostMessageW(window, WM_WTSSESSION_CHANGE, change, 0);
    }
    ASSERT_TRUE(Eventually([] {
        std::lock_guard lock(received.mutex);
        return received.sessions.size() >= 3;
    }));
    // Messages are handled in order: when this one returns, all before it have been handled.
    SendMessageW(window, WM_NULL, 0, 0);
    std::lock_guard lock(received.mutex);
    EXPECT_EQ(received.sessions, (std::vector{SessionChange::ConsoleDisconnect,
                                              SessionChange::RemoteDisconnect, SessionChange::Lock}));
}

TEST(HookLife, StopsAndStartsAgain) {
    for (int round = 0; round < 3; ++round) {
        std::thread thread = StartThread("hooks", HookBody);
        ASSERT_TRUE(Eventually([] { return FindHiddenWindow() != nullptr; }));
        StopInputThread();
        JoinThread(thread);
        EXPECT_EQ(FindHiddenWindow(), nullptr);
        WNDCLASSEXW windowClass = {};
        windowClass.cbSize = sizeof windowClass;
        EXPECT_FALSE(GetClassInfoExW(GetModuleHandleW(nullptr), L"RawInputHiddenWindow", &windowClass));
    }
}

TEST(HookLife, StopWithoutAThreadDoesNothing) {
    StopInputThread();
    HookInterestChanged();
    MSG message;
    EXPECT_FALSE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
}

// What a low-level hook of the test receives for sent input, including the fields that the seam leaves out.
KBDLLHOOKSTRUCT seenKeys[16];
std::atomic<int> seenKeyCount = 0;

LRESULT CALLBACK RememberKey(int code, WPARAM message, LPARAM data) {
    if (code >= 0 && seenKeyCount < 16) {
        seenKeys[seenKeyCount] = *reinterpret_cast<const KBDLLHOOKSTRUCT*>(data);
        ++seenKeyCount;
        return 1;
    }
    return CallNextHookEx(nullptr, code, message, data);
}

TEST(Input, KeysAreSentByScanCodeWithoutAMark) {
    seenKeyCount = 0;
    HHOOK hook = SetWindowsHookExW(WH_KEYBOARD_LL, RememberKey, nullptr, 0);
    ASSERT_NE(hook, nullptr);
    // This thread must handle messages for its hook to be called.
    std::thread sender([] {
        SendKey(0x1E, false, true);
        SendKey(0x1E, false, false);
        SendKey(0x53, true, true);
        SendKey(0x53, true, false);
    });
    EXPECT_TRUE(Eventually([] {
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);
        return seenKeyCount >= 4;
    }));
    sender.join();
    UnhookWindowsHookEx(hook);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(seenKeys[i].dwExtraInfo, 0u);
        EXPECT_NE(seenKeys[i].flags & LLKHF_INJECTED, 0u);
        EXPECT_EQ((seenKeys[i].flags & LLKHF_UP) != 0, i % 2 == 1);
        EXPECT_EQ((seenKeys[i].flags & LLKHF_EXTENDED) != 0, i >= 2);
        EXPECT_EQ(seenKeys[i].scanCode, i < 2 ? 0x1Eu : 0x53u);
    }
}

TEST(Input, SystemValuesAreUnchanged) {
    EXPECT_EQ(PrimaryScreenWidth(), GetSystemMetrics(SM_CXSCREEN));
    EXPECT_EQ(PrimaryScreenHeight(), GetSystemMetrics(SM_CYSCREEN));
    EXPECT_EQ(DoubleClickMilliseconds(), GetDoubleClickTime());
    EXPECT_EQ(ScanCodeOfKey('A'), MapVirtualKeyW('A', MAPVK_VK_TO_VSC));
    EXPECT_EQ(ScanCodeOfKey(255), 0u);
    wchar_t name[128];
    GetKeyNameTextW(0x42 << 16, name, 128);
    EXPECT_EQ(Widen(SystemKeyName(0x42, false)), name);
    GetKeyNameTextW((0x48 << 16) | (1 << 24), name, 128);
    EXPECT_EQ(Widen(SystemKeyName(0x48, true)), name);
    EXPECT_EQ(SystemKeyName(0, false), "");
}

// ---- raw motion ----

// Sends moves until the hook has seen `count` more. The raw report of a move arrives before the hook's or with it.
void SendMovesUntilSeen(size_t count) {
    const size_t before = MouseCount();
    ASSERT_TRUE(Eventually([&] {
        SendMoveBy(1, 0);
        SendMoveBy(-1, 0);
        return MouseCount() >= before + count;
    }));
}

TEST(RawMotion, IsReadOnlyWhileItIsWanted) {
    received.throwAlways = false;
    rawMotionWanted = false;
    rawReads = 0;
    rawReports = 0;
    interestReads = 0;
    std::thread thread = StartThread("hooks", HookBodyWithInterest);
    SendMovesUntilSeen(40);
    EXPECT_EQ(rawReads, 0);
    EXPECT_EQ(rawReports, 0);

    rawMotionWanted = true;
    HookInterestChanged();
    EXPECT_TRUE(Eventually([] {
        SendMoveBy(1, 0);
        SendMoveBy(-1, 0);
        return rawReports >= 20;
    }));
    EXPECT_GE(rawReads, rawReports);
    // The sinks are asked once for each change, not for each report.
    EXPECT_LE(interestReads, 2);

    rawMotionWanted = false;
    HookInterestChanged();
    EXPECT_TRUE(Eventually([] {
        SendMoveBy(1, 0);
        return interestReads == 3;
    }));
    const int reads = rawReads;
    SendMovesUntilSeen(40);
    EXPECT_EQ(rawReads, reads);
    StopInputThread();
    JoinThread(thread);
}

// ---- desktop ----

int focusCount = 0;  // WM_SETFOCUS of the test's own windows

LRESULT CALLBACK OwnWindowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    focusCount += message == WM_SETFOCUS;
    return DefWindowProcA(window, message, wParam, lParam);
}

class OwnWindow {
  public:
    OwnWindow(const char* title, int x, int y) {
        WNDCLASSA windowClass = {};
        windowClass.lpfnWndProc = OwnWindowProcedure;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = "VarnelleTestWindow";
        RegisterClassA(&windowClass);
        window_ = CreateWindowExA(0, "VarnelleTestWindow", title, WS_POPUP | WS_VISIBLE, x, y, 200, 150,
                                  nullptr, nullptr, windowClass.hInstance, nullptr);
    }
    ~OwnWindow() { DestroyWindow(window_); }
    OwnWindow(const OwnWindow&) = delete;
    OwnWindow& operator=(const OwnWindow&) = delete;

    HWND Handle() const { return window_; }
    WindowRef Ref() const { return reinterpret_cast<WindowRef>(window_); }

  private:
    HWND window_ = nullptr;
};

void PumpWaitingMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        DispatchMessageW(&message);
    }
}

TEST(Desktop, WindowsAreFoundByTheirExactTitle) {
    OwnWindow window("Varnelle test window 417", 10, 10);
    EXPECT_EQ(FindWindowByTitle("Varnelle test window 417"), window.Ref());
    EXPECT_EQ(FindWindowByTitle("Varnelle test window"), 0u);
}

TEST(Desktop, TheListHoldsTitlesOfAtMost255Bytes) {
    OwnWindow longTitle(std::string(400, 't').c_str(), 10, 10);
    OwnWindow noTitle("", 10, 10);
    bool found = false;
    for (const TitledWindow& entry : ListTopLevelWindows()) {
        EXPECT_FALSE(entry.title.empty());
        EXPECT_NE(entry.window, noTitle.Ref());
        if (entry.window == longTitle.Ref()) {
            found = true;
            EXPECT_EQ(entry.title, std::string(255, 't'));
        }
    }
    EXPECT_TRUE(found);
}

TEST(Desktop, MinimiseAndRestore) {
    OwnWindow window("Varnelle minimise", 10, 10);
    EXPECT_FALSE(IsWindowMinimised(window.Ref()));
    ShowWindow(window.Handle(), SW_MINIMIZE);
    EXPECT_TRUE(IsWindowMinimised(window.Ref()));
    RestoreWindow(window.Ref());
    EXPECT_FALSE(IsWindowMinimised(window.Ref()));
    EXPECT_FALSE(IsWindowMinimised(0));
}

TEST(Desktop, IconsAreLoadedOnce) {
    OwnWindow first("Varnelle icons 1", 10, 10);
    OwnWindow second("Varnelle icons 2", 10, 10);
    SetWindowIcons(first.Ref());
    SetWindowIcons(second.Ref());
    SetWindowIcons(second.Ref());
    for (const WPARAM kind : {ICON_BIG, ICON_SMALL}) {
        const LRESULT icon = SendMessageW(first.Handle(), WM_GETICON, kind, 0);
        EXPECT_NE(icon, 0);
        EXPECT_EQ(SendMessageW(second.Handle(), WM_GETICON, kind, 0), icon);
    }
}

int IconWidth(HWND window, WPARAM kind) {
    auto icon = reinterpret_cast<HICON>(SendMessageW(window, WM_GETICON, kind, 0));
    ICONINFO info = {};
    BITMAP bitmap = {};
    if (icon && GetIconInfo(icon, &info)) {
        GetObjectW(info.hbmMask, sizeof bitmap, &bitmap);
        DeleteObject(info.hbmMask);
        DeleteObject(info.hbmColor);
    }
    return bitmap.bmWidth;
}

TEST(Desktop, BothIconsAreSetInTheSystemsSizes) {
    OwnWindow window("Varnelle icons", 10, 10);
    EXPECT_EQ(IconWidth(window.Handle(), ICON_BIG), 0);
    SetWindowIcons(window.Ref());
    EXPECT_EQ(IconWidth(window.Handle(), ICON_BIG), GetSystemMetrics(SM_CXICON));
    EXPECT_EQ(IconWidth(window.Handle(), ICON_SMALL), GetSystemMetrics(SM_CXSMICON));
    SetWindowIcons(0);
}

std::wstring TargetCommand(const std::string& log, const std::wstring& rest) {
    std::wstring path = OwnProgram();
    path.resize(path.find_last_of(L'\\') + 1);
    return L"\"" + path + L"target.exe\" \"" + Widen(log) + L"\" " + rest;
}

TEST(Desktop, ForceForegroundTakesTheKeyboardFromAnotherProcess) {
    ScratchFolder scratch;
    const std::string log = scratch.File("target.log");
    OwnWindow window("Varnelle foreground", 10, 10);
    ChildProcess target(TargetCommand(log, L"Foreground 300 300 200 200"), nullptr);
    WindowRef other = 0;
    Eventually([&] {
        PumpWaitingMessages();
        return (other = FindWindowByTitle("Foreground")) != 0;
    });
    ASSERT_NE(other, 0u);
    ASSERT_TRUE(Eventually([&] {
        PumpWaitingMessages();
        return GetForegroundWindow() == reinterpret_cast<HWND>(other);
    }));
    focusCount = 0;
    ForceForeground(window.Ref());
    // Wine reports no foreground window once the input queues are separate again; Windows reports ours.
    EXPECT_TRUE(Eventually([&] {
        PumpWaitingMessages();
        std::string lines;
        return ReadFileBytes(log, &lines) && lines.find("focus 0") != std::string::npos && focusCount > 0 &&
               GetForegroundWindow() != reinterpret_cast<HWND>(other);
    }));
    EXPECT_EQ(GetFocus(), window.Handle());
    ForceForeground(0);
    EXPECT_EQ(GetFocus(), window.Handle());
}

TEST(Desktop, ProcessAtPointIsTheTopWindowsOwner) {
    ScratchFolder scratch;
    OwnWindow window("Varnelle point", 20, 20);
    // A child window leads to its top-level window, and that to the process.
    HWND child = CreateWindowExA(0, "STATIC", "", WS_CHILD | WS_VISIBLE, 0, 0, 100, 100, window.Handle(),
                                 nullptr, GetModuleHandleW(nullptr), nullptr);
    ASSERT_NE(child, nullptr);
    SetWindowPos(window.Handle(), HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    uint32_t process = 0;
    EXPECT_TRUE(ProcessAtPoint(30, 30, &process));
    EXPECT_EQ(process, OwnProcessId());

    ChildProcess target(TargetCommand(scratch.File("target.log"), L"PointTarget 600 300 200 200"), nullptr);
    ASSERT_TRUE(Eventually([&] {
        PumpWaitingMessages();
        return FindWindowByTitle("PointTarget") != 0 && ProcessAtPoint(700, 400, &process) &&
               process == target.Id();
    }));
    EXPECT_FALSE(IsOwnImage(process));
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
