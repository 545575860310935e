// The numbers of the seam that are the system's own, held against its headers. No code.
#include "platform/hooks.h"
#include "platform/key_table.h"
#include "platform/process.h"
#include "platform/wake.h"

#include <windows.h>

#include <climits>

// Mouse buttons by their virtual keys.
static_assert(kLeftButton == VK_LBUTTON && kRightButton == VK_RBUTTON && kMiddleButton == VK_MBUTTON);
static_assert(kFirstSideButton == VK_XBUTTON1 && kSecondSideButton == VK_XBUTTON2);
// The codes that the seam adds are no button of the system.
static_assert(kNoButton == 0 && kUnnamedSideButton > VK_XBUTTON2 && kUnnamedSideButton < VK_BACK);

// The extended keys are two ranges of virtual keys.
static_assert(VK_PRIOR == 33 && VK_NEXT == 34 && VK_END == 35 && VK_HOME == 36);
static_assert(VK_LEFT == 37 && VK_UP == 38 && VK_RIGHT == 39 && VK_DOWN == 40);
static_assert(VK_INSERT == 45 && VK_DELETE == 46);
static_assert(IsExtendedKey(VK_PRIOR) && IsExtendedKey(VK_DOWN) && IsExtendedKey(VK_INSERT) &&
              IsExtendedKey(VK_DELETE));
static_assert(!IsExtendedKey(VK_SPACE) && !IsExtendedKey(VK_SELECT) && !IsExtendedKey(VK_SNAPSHOT) &&
              !IsExtendedKey(VK_HELP));
// The hooks report left and right modifiers by these.
static_assert(VK_LSHIFT == 160 && VK_RSHIFT == 161 && VK_LCONTROL == 162 && VK_RCONTROL == 163);
static_assert(VK_LMENU == 164 && VK_RMENU == 165);

// One notch of a wheel.
static_assert(WHEEL_DELTA == 120);

// Records of the seam hold what the system's do.
static_assert(sizeof(RawMouseRecord::dx) == sizeof(RAWMOUSE::lLastX));
static_assert(sizeof(MouseHookRecord::x) == sizeof(POINT::x));
static_assert(sizeof(KeyHookRecord::virtualKey) == sizeof(KBDLLHOOKSTRUCT::vkCode));
static_assert(sizeof(KeyHookRecord::counter) == sizeof(LARGE_INTEGER));

// Waits.
static_assert(kNoLimit == INFINITE);

// Paths and arguments.
static_assert(kPathSeparator == '\\');
static_assert(sizeof(char16_t) == sizeof(wchar_t) && CHAR_BIT == 8);
