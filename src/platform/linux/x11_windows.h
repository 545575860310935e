// Windows, their properties and the messages to the window manager. Linux home only. A window that is gone gives nothing.
#pragma once

#include <X11/Xlib.h>
#include <cstdint>
#include <initializer_list>
#include <vector>

// A property's bytes, freed with it.
struct Property {
    Property() = default;
    ~Property() {
        if (data != nullptr) {
            XFree(data);
        }
    }
    Property(const Property&) = delete;
    Property& operator=(const Property&) = delete;

    // Items of format 32 arrive as longs, whatever their width.
    unsigned long Long(unsigned long index) const;

    Atom type = None;
    int format = 0;
    unsigned long count = 0;  // items of `format` bits
    unsigned char* data = nullptr;
};

bool ReadProperty(Display* display, Window window, const char* name, Property* property);
bool HasProperty(Display* display, Window window, const char* name);
// The items of a property of format 32 as signed numbers of 32 bits; empty if there is none.
std::vector<int32_t> ReadNumbers(Display* display, Window window, const char* name);
// Whether a property of format 32 has this atom among its items.
bool HasAtom(Display* display, Window window, const char* property, const char* atom);

std::vector<Window> ChildrenOf(Display* display, Window window);
// Bottom to top: as the window manager lists them, or all windows below the root without one.
std::vector<Window> TopLevelWindows(Display* display);

// Whether a window manager runs that one can talk to.
bool HasWindowManager(Display* display);
// Who asks, where a request has a place for it. A pager asks in the person's name, and window managers obey it also when
// the person is busy elsewhere.
constexpr long kAskedByApplication = 1;
constexpr long kAskedByPager = 2;
// A request about a window to the window manager: at most five numbers.
void SendRootMessage(Display* display, Window window, const char* message,
                     std::initializer_list<long> numbers);

// The server's time of now, by which window managers tell a recent wish from an old one. For the calling thread's own
// connection.
Time ServerTime(Display* display);
