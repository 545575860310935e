// Numbers above the seam that files and settings share with Windows, held against its headers.
#ifdef _WIN32
// For the function table of IUnknown.
#define CINTERFACE
#include <windows.h>

#include <objbase.h>

#include "model/button_flags.h"
#include "model/settings.h"
#include "platform/key_table.h"
#include "platform/win32/web_view2.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

static_assert(kSpaceKey == VK_SPACE);
static_assert(offsetof(IUnknownVtbl, QueryInterface) == kQueryInterface * sizeof(void*));
static_assert(offsetof(IUnknownVtbl, Release) == kRelease * sizeof(void*));
static_assert(sizeof(IUnknownVtbl) == 3 * sizeof(void*));  // the first slot of every other interface is 3

struct NamedKey {
    uint32_t virtualKey;
    const char* name;
};

constexpr NamedKey kNamedKeys[] = {
    {VK_ESCAPE, "Esc"},
    {VK_BACK, "Backspace"},
    {VK_TAB, "Tab"},
    {VK_RETURN, "Enter"},
    {VK_SPACE, "Space"},
    {VK_CAPITAL, "Caps Lock"},
    {VK_LSHIFT, "Left Shift"},
    {VK_RSHIFT, "Right Shift"},
    {VK_LCONTROL, "Ctrl"},
    {VK_RCONTROL, "Right Ctrl"},
    {VK_LMENU, "Alt"},
    {VK_RMENU, "Right Alt"},
    {VK_LWIN, "Left Windows"},
    {VK_RWIN, "Right Windows"},
    {VK_APPS, "Application"},
    {VK_PAUSE, "Pause"},
    {VK_NUMLOCK, "Num Lock"},
    {VK_SCROLL, "Scroll Lock"},
    {VK_SNAPSHOT, "Prnt Scrn"},
    {VK_PRIOR, "Page Up"},
    {VK_NEXT, "Page Down"},
    {VK_END, "End"},
    {VK_HOME, "Home"},
    {VK_LEFT, "Left"},
    {VK_UP, "Up"},
    {VK_RIGHT, "Right"},
    {VK_DOWN, "Down"},
    {VK_INSERT, "Insert"},
    {VK_DELETE, "Delete"},
    {VK_NUMPAD0, "Num 0"},
    {VK_NUMPAD9, "Num 9"},
    {VK_MULTIPLY, "Num *"},
    {VK_ADD, "Num +"},
    {VK_SUBTRACT, "Num -"},
    {VK_DECIMAL, "Num Del"},
    {VK_DIVIDE, "Num /"},
    {VK_F1, "F1"},
    {VK_F12, "F12"},
    {VK_F13, "F13"},
    {VK_F24, "F24"},
    {VK_OEM_1, ";"},
    {VK_OEM_PLUS, "="},
    {VK_OEM_COMMA, ","},
    {VK_OEM_MINUS, "-"},
    {VK_OEM_PERIOD, "."},
    {VK_OEM_2, "/"},
    {VK_OEM_3, "`"},
    {VK_OEM_4, "["},
    {VK_OEM_6, "]"},
    {VK_OEM_7, "'"},
    {VK_OEM_102, "\\"},
    {VK_CONVERT, "Convert"},
    {VK_NONCONVERT, "Nonconvert"},
    {VK_BROWSER_BACK, "Back"},
    {VK_BROWSER_HOME, "Web/Home"},
    {VK_VOLUME_MUTE, "Mute"},
    {VK_VOLUME_UP, "Volume Up"},
    {VK_MEDIA_NEXT_TRACK, "Next Track"},
    {VK_MEDIA_PLAY_PAUSE, "Play/Pause"},
    {VK_LAUNCH_MAIL, "Mail"},
    {VK_LAUNCH_APP2, "Calculator"},
    {VK_SLEEP, "Sleep"},
};

}  // namespace

TEST(SeamConstants, TheKeyTableHasTheSystemsVirtualKeys) {
    for (const NamedKey& row : kNamedKeys) {
        const KeyInfo* key = FindKeyByVirtualKey(row.virtualKey);
        ASSERT_NE(key, nullptr) << row.name;
        EXPECT_STREQ(key->name, row.name);
    }
}

TEST(SeamConstants, MacrosStoreTheSystemsButtonFlags) {
    EXPECT_EQ(ButtonFlagsOf({kLeftButton, true}), uint32_t{MOUSEEVENTF_LEFTDOWN});
    EXPECT_EQ(ButtonFlagsOf({kLeftButton, false}), uint32_t{MOUSEEVENTF_LEFTUP});
    EXPECT_EQ(ButtonFlagsOf({kRightButton, true}), uint32_t{MOUSEEVENTF_RIGHTDOWN});
    EXPECT_EQ(ButtonFlagsOf({kRightButton, false}), uint32_t{MOUSEEVENTF_RIGHTUP});
    EXPECT_EQ(ButtonFlagsOf({kMiddleButton, true}), uint32_t{MOUSEEVENTF_MIDDLEDOWN});
    EXPECT_EQ(ButtonFlagsOf({kMiddleButton, false}), uint32_t{MOUSEEVENTF_MIDDLEUP});
    EXPECT_EQ(ButtonFlagsOf({kFirstSideButton, true}), uint32_t{MOUSEEVENTF_XDOWN});
}

TEST(SeamConstants, HotkeysBeginWithTheSystemsFunctionKeys) {
    const HotkeyTable table;
    EXPECT_EQ(table.record, uint32_t{VK_F8});
    EXPECT_EQ(table.play, uint32_t{VK_F7});
    EXPECT_EQ(table.autoclicker, uint32_t{VK_F6});
    EXPECT_EQ(table.keySpammer, uint32_t{VK_F9});
    EXPECT_EQ(table.unlock, uint32_t{VK_F10});
}
#endif
