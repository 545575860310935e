#include "platform/input.h"

#include "platform/clock.h"
#include "platform/key_table.h"
#include "platform/linux/hook_injection.h"
#include "platform/linux/x11_buttons.h"
#include "platform/linux/x11_display.h"

#include <X11/Xatom.h>
#include <X11/extensions/XTest.h>
#include <cstdlib>
#include <cstring>

namespace {

constexpr uint32_t kDefaultDoubleClick = 500;

// A turn of more notches than this goes on at a rate that applications and the window manager can follow. Otherwise they
// would be busy with it for minutes after its end, and nobody could close the program's window meanwhile.
constexpr int64_t kNotchesAtOnce = 200;
constexpr int64_t kNotchesPerMillisecond = 2;

// Pixel of an absolute coordinate: the least one whose coordinate is not below it, so that every pixel that was scaled
// with (x << 16) / size comes back exactly. Values outside 0..65535 lie outside the screen and stay outside.
int32_t PixelOfAbsolute(int32_t coordinate, int32_t size) {
    const int64_t scaled = static_cast<int64_t>(std::abs(static_cast<int64_t>(coordinate))) * size;
    const int64_t pixel = (scaled + 65535) / 65536;
    return static_cast<int32_t>(coordinate < 0 ? -pixel : pixel);
}

void SendWheel(Display* display, int32_t delta, StopCondition stop) {
    const uint32_t button = delta > 0 ? kXWheelUp : kXWheelDown;
    // X11 knows whole notches only. A smaller turn is one notch, so that it is not lost.
    const int64_t size = std::abs(static_cast<int64_t>(delta));
    const int64_t notches = (size + kWheelNotch - 1) / kWheelNotch;
    for (int64_t sent = 0; sent < notches; ++sent) {
        if (sent > 0 && stop != nullptr && stop()) {
            return;
        }
        if (sent >= kNotchesAtOnce && sent % kNotchesPerMillisecond == 0) {
            SleepMilliseconds(1);
        }
        SendFakeButton(display, button, true);
        SendFakeButton(display, button, false);
    }
}

void SendKey(Display* display, const InputAction& action) {
    if (action.scanCode == 0) {
        return;
    }
    const uint32_t prefix = action.extended ? kPrefixE0 : 0;
    if (const KeyInfo* key = FindKeyByScanCode(action.scanCode | prefix)) {
        SendFakeKey(display, KeycodeOf(*key), action.down);
    }
}

// An integer of the desktop's settings, as their manager publishes them; false if there is none.
bool ReadDesktopSetting(Display* display, const char* name, uint32_t* value) {
    const std::string selection = "_XSETTINGS_S" + std::to_string(DefaultScreen(display));
    const Atom manager = XInternAtom(display, selection.c_str(), True);
    const Atom property = XInternAtom(display, "_XSETTINGS_SETTINGS", True);
    const Window owner = manager == None ? None : XGetSelectionOwner(display, manager);
    if (owner == None || property == None) {
        return false;
    }
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    constexpr long kMostWords = 64 * 1024 / 4;
    if (XGetWindowProperty(display, owner, property, 0, kMostWords, False, AnyPropertyType, &type, &format,
                           &count, &left, &data) != Success ||
        data == nullptr) {
        return false;
    }
    // Header: byte order, 3 unused, serial (4), number of settings (4). Each setting: type, unused, name length (2),
    // name padded to 4, serial (4), then an integer (4), a padded text behind its length (4) or a colour (8).
    bool found = false;
    if (format == 8 && count >= 12) {
        const bool bigEndian = data[0] == MSBFirst;
        const auto number = [&](size_t at, size_t bytes) {
            uint32_t result = 0;
            for (size_t each = 0; each < bytes; ++each) {
                result |= static_cast<uint32_t>(data[at + (bigEndian ? bytes - 1 - each : each)])
                          << (8 * each);
            }
            return result;
        };
        const auto padded = [](size_t size) { return (size + 3) & ~size_t{3}; };
        const size_t wanted = std::strlen(name);
        size_t at = 12;
        for (uint32_t setting = number(8, 4); setting > 0 && at + 4 <= count; --setting) {
            const unsigned char kind = data[at];
            const size_t nameLength = number(at + 2, 2);
            const size_t valueAt = at + 4 + padded(nameLength) + 4;
            if (valueAt + 4 > count) {
                break;
            }
            if (kind == 0 && nameLength == wanted && std::memcmp(data + at + 4, name, wanted) == 0) {
                *value = number(valueAt, 4);
                found = true;
                break;
            }
            at = valueAt + (kind == 1 ? 4 + padded(number(valueAt, 4)) : kind == 2 ? 8 : 4);
        }
    }
    XFree(data);
    return found;
}

}  // namespace

void SendInputAction(const InputAction& action, StopCondition stop) {
    Display* display = ThreadDisplay();
    if (display == nullptr) {
        return;
    }
    switch (action.kind) {
    case InputKind::MoveTo: {
        const ScreenArea screen = PrimaryScreen();
        SendFakePosition(display, screen.x + PixelOfAbsolute(action.x, screen.width),
                         screen.y + PixelOfAbsolute(action.y, screen.height));
        break;
    }
    case InputKind::MoveBy:
        SendFakeMotion(display, action.x, action.y);
        break;
    case InputKind::Button:
        // A side button without a name is none: nothing is sent, as on Windows.
        if (const int xButton = XButtonOf(action.button)) {
            SendFakeButton(display, static_cast<uint32_t>(xButton), action.down);
        }
        break;
    case InputKind::ButtonFlags:
        break;
    case InputKind::Wheel:
        SendWheel(display, action.wheelDelta, stop);
        break;
    case InputKind::Key:
        SendKey(display, action);
        break;
    }
}

int32_t PrimaryScreenWidth() {
    return PrimaryScreen().width;
}

int32_t PrimaryScreenHeight() {
    return PrimaryScreen().height;
}

bool ReadPointerPosition(int32_t* x, int32_t* y) {
    Display* display = ThreadDisplay();
    if (display == nullptr) {
        return false;
    }
    const ScreenArea screen = PrimaryScreen();
    Window root = None;
    Window child = None;
    int rootX = 0;
    int rootY = 0;
    int inWindowX = 0;
    int inWindowY = 0;
    unsigned mask = 0;
    if (XQueryPointer(display, DefaultRootWindow(display), &root, &child, &rootX, &rootY, &inWindowX,
                      &inWindowY, &mask) == 0) {
        return false;
    }
    *x = rootX - screen.x;
    *y = rootY - screen.y;
    return true;
}

// NOTE: Windows returns the code without prefix, so that it sends and names a right Ctrl or a volume key as another key.
// HACK: the prefix stays in the code, where sending and naming find it again. Only the keys that the sender marks as
// extended lose it.
uint32_t ScanCodeOfKey(uint32_t virtualKey) {
    const KeyInfo* key = FindKeyByVirtualKey(virtualKey);
    if (key == nullptr) {
        return 0;
    }
    return IsExtendedKey(virtualKey) ? key->scanCode & 0xFFU : key->scanCode;
}

std::string SystemKeyName(uint32_t scanCode, bool extended) {
    const KeyInfo* key = FindKeyByScanCode(extended ? scanCode | kPrefixE0 : scanCode);
    return key == nullptr ? std::string() : std::string(key->name);
}

uint32_t DoubleClickMilliseconds() {
    Display* display = ThreadDisplay();
    uint32_t value = 0;
    if (display != nullptr && ReadDesktopSetting(display, "Net/DoubleClickTime", &value) && value > 0) {
        return value;
    }
    return kDefaultDoubleClick;
}
