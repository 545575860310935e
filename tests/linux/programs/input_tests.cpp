// Sent input as another application receives it. Run by tests/linux/run.sh.
#include "test_desktop.h"

#include "platform/input.h"
#include "platform/key_table.h"

#include <X11/Xatom.h>
#include <string>

namespace {

void SendMoveTo(int32_t x, int32_t y) {
    SendInputAction({.kind = InputKind::MoveTo, .x = x, .y = y});
}

void SendMoveBy(int32_t dx, int32_t dy) {
    SendInputAction({.kind = InputKind::MoveBy, .x = dx, .y = dy});
}

void SendButton(uint32_t button, bool down) {
    SendInputAction({.kind = InputKind::Button, .down = down, .button = button});
}

void SendWheel(int32_t delta) {
    SendInputAction({.kind = InputKind::Wheel, .wheelDelta = delta});
}

void SendKey(uint16_t scanCode, bool extended, bool down) {
    SendInputAction({.kind = InputKind::Key, .down = down, .extended = extended, .scanCode = scanCode});
}

class Input : public testing::Test {
  protected:
    static TargetWindow& FocusedTarget(User& user) {
        static TargetWindow window(100, 100, 800, 600);
        window.AwaitFocus(user);
        return window;
    }

    // A press that arrives: once it has, everything before it has arrived or never will.
    void Fence() {
        const int before = target.Count('B', 3);
        SendButton(kRightButton, true);
        SendButton(kRightButton, false);
        ASSERT_TRUE(WaitFor([&] { return target.Count('B', 3) > before; }));
    }
    void MoveInside() {
        user.MoveTo(500, 400);
        target.Clear();
    }
    bool PointerIsAt(int32_t x, int32_t y) {
        int32_t nowX = 0;
        int32_t nowY = 0;
        return ReadPointerPosition(&nowX, &nowY) && nowX == x && nowY == y;
    }

    User user;
    TargetWindow& target = FocusedTarget(user);
};

TEST_F(Input, ScreenSize) {
    EXPECT_EQ(PrimaryScreenWidth(), 1600);
    EXPECT_EQ(PrimaryScreenHeight(), 1000);
}

// Every pixel that is scaled as in the engines is reached exactly.
TEST_F(Input, AbsoluteMovesLandExactly) {
    for (int32_t x = 0; x < 1600; x += 1) {
        const int32_t y = x * 999 / 1599;
        SendMoveTo((x << 16) / 1600, (y << 16) / 1000);
        ASSERT_TRUE(WaitFor([&] { return PointerIsAt(x, y); })) << x << "," << y;
    }
}

TEST_F(Input, MovesOutsideStopAtTheEdge) {
    SendMoveTo(70000, 32768);
    EXPECT_TRUE(WaitFor([&] { return PointerIsAt(1599, 500); }));
    SendMoveTo(-4000, -1);
    EXPECT_TRUE(WaitFor([&] { return PointerIsAt(0, 0); }));
    SendMoveTo(INT32_MIN, INT32_MAX);
    EXPECT_TRUE(WaitFor([&] { return PointerIsAt(0, 999); }));
}

TEST_F(Input, RelativeMovesAreCounts) {
    SendMoveTo(32768, 32768);
    ASSERT_TRUE(WaitFor([&] { return PointerIsAt(800, 500); }));
    SendMoveBy(37, -20);
    EXPECT_TRUE(WaitFor([&] { return PointerIsAt(837, 480); }));
    SendMoveBy(-7, 5);
    EXPECT_TRUE(WaitFor([&] { return PointerIsAt(830, 485); }));
}

TEST_F(Input, Buttons) {
    MoveInside();
    for (const uint32_t button :
         {kLeftButton, kRightButton, kMiddleButton, kFirstSideButton, kSecondSideButton}) {
        SendButton(button, true);
        SendButton(button, false);
    }
    ASSERT_TRUE(WaitFor([&] { return target.Count('B', 9) == 1; }));
    EXPECT_EQ(target.Text(), "b1 B1 b3 B3 b2 B2 b8 B8 b9 B9");
}

TEST_F(Input, UnnamedSideButtonNoButtonAndUnknownFlagsDoNothing) {
    MoveInside();
    SendButton(kUnnamedSideButton, true);
    SendButton(kNoButton, true);
    SendInputAction({.kind = InputKind::ButtonFlags, .buttonFlags = 32769});
    Fence();
    EXPECT_EQ(target.Text(), "b3 B3");
}

TEST_F(Input, WheelInNotches) {
    MoveInside();
    SendWheel(120);
    SendWheel(-240);
    SendWheel(30);
    SendWheel(0);
    Fence();
    EXPECT_EQ(target.Text(), "b4 B4 b5 B5 b5 B5 b4 B4 b3 B3");
}

int stopChecks = 0;
bool StopAtTheThirdCheck() {
    return ++stopChecks == 3;
}

TEST_F(Input, ALongTurnOfTheWheelEndsWhenItsSenderMustStop) {
    MoveInside();
    for (const int32_t delta : {INT32_MAX, INT32_MIN}) {
        stopChecks = 0;
        SendInputAction({.kind = InputKind::Wheel, .wheelDelta = delta}, StopAtTheThirdCheck);
    }
    Fence();
    EXPECT_EQ(target.Text(), "b4 B4 b4 B4 b4 B4 b5 B5 b5 B5 b5 B5 b3 B3");
}

TEST_F(Input, EveryKeyArrivesWithItsKeycode) {
    for (uint32_t keycode = 8; keycode < 256; ++keycode) {
        const KeyInfo* key = FindKeyByKeycode(keycode);
        if (key == nullptr) {
            continue;
        }
        const bool extended = (key->scanCode & kPrefixE0) != 0;
        const uint16_t scanCode = extended ? static_cast<uint16_t>(key->scanCode & 0xFFU) : key->scanCode;
        target.Clear();
        SendKey(scanCode, extended, true);
        SendKey(scanCode, extended, false);
        ASSERT_TRUE(WaitFor([&] { return target.Count('K', keycode) == 1; })) << key->name << target.Text();
        EXPECT_EQ(target.Count('k', keycode), 1) << key->name;
    }
    constexpr uint16_t kLocks[] = {0x3A, 0x45, 0x46};
    for (const uint16_t lock : kLocks) {
        SendKey(lock, false, true);
        SendKey(lock, false, false);
    }
}

TEST_F(Input, UnknownKeysDoNothing) {
    MoveInside();
    SendKey(0, false, true);
    SendKey(0, true, true);
    SendKey(0x7F, false, true);
    SendKey(0xFFFF, true, true);
    Fence();
    EXPECT_EQ(target.Text(), "b3 B3");
}

TEST_F(Input, ScanCodes) {
    EXPECT_EQ(ScanCodeOfKey(65), 0x1EU);
    EXPECT_EQ(ScanCodeOfKey(13), 0x1CU);
    EXPECT_EQ(ScanCodeOfKey(32), 0x39U);
    EXPECT_EQ(ScanCodeOfKey(117), 0x40U);
    EXPECT_EQ(ScanCodeOfKey(123), 0x58U);
    EXPECT_EQ(ScanCodeOfKey(135), 0x76U);
    EXPECT_EQ(ScanCodeOfKey(16), 0x2AU);
    EXPECT_EQ(ScanCodeOfKey(160), 0x2AU);
    EXPECT_EQ(ScanCodeOfKey(161), 0x36U);
    EXPECT_EQ(ScanCodeOfKey(17), 0x1DU);
    EXPECT_EQ(ScanCodeOfKey(162), 0x1DU);
    EXPECT_EQ(ScanCodeOfKey(163) & 0xFF, 0x1DU);
    EXPECT_EQ(ScanCodeOfKey(18), 0x38U);
    EXPECT_EQ(ScanCodeOfKey(100), 0x4BU);
    EXPECT_EQ(ScanCodeOfKey(37), 0x4BU);
    EXPECT_EQ(ScanCodeOfKey(46), 0x53U);
    EXPECT_EQ(ScanCodeOfKey(226), 0x56U);
    for (const uint32_t none : {0U, 1U, 2U, 4U, 5U, 6U, 7U, 255U, 256U, 0xFFFFFFFFU}) {
        EXPECT_EQ(ScanCodeOfKey(none), 0U) << none;
    }
}

std::string NameOf(uint32_t virtualKey) {
    return SystemKeyName(ScanCodeOfKey(virtualKey), IsExtendedKey(virtualKey));
}

TEST_F(Input, KeyNames) {
    const struct {
        uint32_t virtualKey;
        const char* name;
    } kNames[] = {{119, "F8"},          {117, "F6"},       {32, "Space"},
                  {160, "Left Shift"},  {100, "Num 4"},    {163, "Right Ctrl"},
                  {162, "Ctrl"},        {164, "Alt"},      {165, "Right Alt"},
                  {161, "Right Shift"}, {65, "A"},         {48, "0"},
                  {37, "Left"},         {46, "Delete"},    {33, "Page Up"},
                  {13, "Enter"},        {27, "Esc"},       {9, "Tab"},
                  {20, "Caps Lock"},    {144, "Num Lock"}, {145, "Scroll Lock"},
                  {19, "Pause"},        {44, "Prnt Scrn"}, {91, "Left Windows"},
                  {111, "Num /"},       {96, "Num 0"},     {110, "Num Del"},
                  {135, "F24"},         {255, ""},         {0, ""}};
    for (const auto& each : kNames) {
        EXPECT_EQ(NameOf(each.virtualKey), each.name) << each.virtualKey;
    }
}

// A fake settings manager.
class SettingsManager {
  public:
    explicit SettingsManager(const std::string& bytes) : display_(OpenTestDisplay(nullptr)) {
        window_ = XCreateSimpleWindow(display_, DefaultRootWindow(display_), 0, 0, 1, 1, 0, 0, 0);
        const Atom property = XInternAtom(display_, "_XSETTINGS_SETTINGS", False);
        XChangeProperty(display_, window_, property, property, 8, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<int>(bytes.size()));
        XSetSelectionOwner(display_, XInternAtom(display_, "_XSETTINGS_S0", False), window_, CurrentTime);
        XSync(display_, False);
    }
    ~SettingsManager() { XCloseDisplay(display_); }
    SettingsManager(const SettingsManager&) = delete;
    SettingsManager& operator=(const SettingsManager&) = delete;

  private:
    Display* display_;
    Window window_;
};

std::string Number(uint32_t value, int bytes, bool bigEndian) {
    std::string text;
    for (int each = 0; each < bytes; ++each) {
        const int shift = 8 * (bigEndian ? bytes - 1 - each : each);
        text += static_cast<char>(value >> shift & 0xFF);
    }
    return text;
}

std::string Padded(std::string text) {
    while (text.size() % 4 != 0) {
        text += '\0';
    }
    return text;
}

std::string Settings(bool bigEndian, const std::string& name, uint32_t value) {
    const auto head = [&](char kind, const std::string& key) {
        return std::string(1, kind) + std::string(1, '\0') +
               Number(static_cast<uint32_t>(key.size()), 2, bigEndian) + Padded(key) +
               Number(7, 4, bigEndian);
    };
    return std::string(1, bigEndian ? 1 : 0) + std::string(3, '\0') + Number(1, 4, bigEndian) +
           Number(3, 4, bigEndian) + head(1, "Net/ThemeName") + Number(5, 4, bigEndian) + Padded("Plain") +
           head(2, "Gtk/Colour") + std::string(8, 'c') + head(0, name) + Number(value, 4, bigEndian);
}

TEST_F(Input, DoubleClickTime) {
    EXPECT_EQ(DoubleClickMilliseconds(), 500U);
    {
        SettingsManager manager(Settings(false, "Net/DoubleClickTime", 333));
        EXPECT_EQ(DoubleClickMilliseconds(), 333U);
    }
    {
        SettingsManager manager(Settings(true, "Net/DoubleClickTime", 444));
        EXPECT_EQ(DoubleClickMilliseconds(), 444U);
    }
    {
        SettingsManager manager(Settings(false, "Net/DoubleClickTimf", 444));
        EXPECT_EQ(DoubleClickMilliseconds(), 500U);
    }
    const std::string whole = Settings(false, "Net/DoubleClickTime", 333);
    for (size_t length = 0; length < whole.size(); ++length) {
        SettingsManager manager(whole.substr(0, length));
        EXPECT_EQ(DoubleClickMilliseconds(), 500U) << length;
    }
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
