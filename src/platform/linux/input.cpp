#include "platform/input.h"

#include "platform/linux/hook_injection.h"
#include "platform/linux/keys.h"
#include "platform/linux/x11_display.h"

#include <X11/Xatom.h>
#include <X11/extensions/XTest.h>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int32_t kWheelNotch = 120;
constexpr uint32_t kDefaultDoubleClick = 500;

// Pixel of an absolute coordinate: the least one whose coordinate is not below it, so that every pixel that was scaled
// with (x << 16) / size comes back exactly. Values outside 0..65535 lie outside the screen and stay outside.
int32_t PixelOfAbsolute(int32_t coordinate, int32_t size) {
    const int64_t scaled = static_cast<int64_t>(std::abs(static_cast<int64_t>(coordinate))) * size;
    const int64_t pixel = (scaled + 65535) / 65536;
    return static_cast<int32_t>(coordinate < 0 ? -pixel : pixel);
}

// The X button of one of the button flags, and whether the flag is its press. 128 names no side button without
// mouseData and has none, as on Windows.
struct ButtonFlag {
    uint32_t flag;
    uint32_t button;
    bool press;
};
constexpr ButtonFlag kButtonFlags[] = {
    {kMouseLeftDown, 1, true}, {kMouseLeftUp, 1, false},    {kMouseRightDown, 3, true},
    {kMouseRightUp, 3, false}, {kMouseMiddleDown, 2, true}, {kMouseMiddleUp, 2, false},
};

void SendWheel(Display* display, int32_t delta) {
    const uint32_t button = delta > 0 ? 4 : 5;
    // X11 knows whole notches only. A smaller turn is one notch, so that it is not lost.
    const int64_t size = std::abs(static_cast<int64_t>(delta));
    int64_t notches = delta == 0 ? 0 : (size + kWheelNotch - 1) / kWheelNotch;
    for (; notches > 0; --notches) {
        SendFakeButton(display, button, true);
        SendFakeButton(display, button, false);
    }
}

void SendMouse(Display* display, const InputRecord& record) {
    if ((record.dwFlags & kMouseMove) != 0) {
        if ((record.dwFlags & kMouseAbsolute) != 0) {
            const ScreenArea screen = PrimaryScreen();
            SendFakePosition(display, screen.x + PixelOfAbsolute(record.dx, screen.width),
                             screen.y + PixelOfAbsolute(record.dy, screen.height));
        } else {
            SendFakeMotion(display, record.dx, record.dy);
        }
    }
    for (const ButtonFlag& each : kButtonFlags) {
        if ((record.dwFlags & each.flag) != 0) {
            SendFakeButton(display, each.button, each.press);
        }
    }
    if ((record.dwFlags & kMouseWheel) != 0) {
        SendWheel(display, static_cast<int32_t>(record.mouseData));
    }
}

void SendKeyboard(Display* display, const InputRecord& record) {
    if ((record.dwFlags & kKeyScanCode) == 0 || record.wScan == 0) {
        return;
    }
    const bool extended = (record.dwFlags & kKeyExtended) != 0;
    const KeyPlace* place = KeyPlaceOfScanCode(extended ? record.wScan | kPrefixE0 : record.wScan);
    if (place != nullptr) {
        SendFakeKey(display, KeycodeOf(*place), (record.dwFlags & kKeyUp) == 0);
    }
}

// The keys that the sender itself marks as extended; see IsExtendedKey of the engines.
bool MarkedBySender(uint32_t virtualKey) {
    return (virtualKey >= 33 && virtualKey <= 40) || virtualKey == 45 || virtualKey == 46;
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

void SendInputRecord(const InputRecord& record) {
    Display* display = ThreadDisplay();
    if (display == nullptr) {
        return;
    }
    if (record.type == kInputMouse) {
        SendMouse(display, record);
    } else if (record.type == kInputKeyboard) {
        SendKeyboard(display, record);
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

// NOTE: Windows gives a right-hand Ctrl or a volume key the bare code of another key here, so that it is sent and named
// as that one.
// HACK: the prefix stays in the code, where the key's name and its sending find it again; only the keys that the sender
// marks by itself come without.
uint32_t ScanCodeOfKey(uint32_t virtualKey) {
    const KeyPlace* place = KeyPlaceOfVirtualKey(virtualKey);
    if (place == nullptr) {
        return 0;
    }
    return MarkedBySender(virtualKey) ? place->scanCode & 0xFFU : place->scanCode;
}

std::string SystemKeyName(int32_t keyParameter) {
    const KeyPlace* place = KeyPlaceOfScanCode((static_cast<uint32_t>(keyParameter) >> 16) & 0x3FFU);
    return place == nullptr ? std::string() : std::string(place->name);
}

uint32_t DoubleClickMilliseconds() {
    Display* display = ThreadDisplay();
    uint32_t value = 0;
    if (display != nullptr && ReadDesktopSetting(display, "Net/DoubleClickTime", &value) && value > 0) {
        return value;
    }
    return kDefaultDoubleClick;
}
