// Windows, their properties and the messages to the window manager. A window that no longer exists has no properties.
#pragma once

#include <X11/Xlib.h>
#include <cstdint>
#include <initializer_list>
#include <vector>

// A property's bytes. The destructor frees them.
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
// Returns the items of a property of format 32 as signed 32-bit numbers, empty if there is none.
std::vector<int32_t> ReadNumbers(Display* display, Window window, const char* name);
// Returns whether a property of format 32 has this atom among its items.
bool HasAtom(Display* display, Window window, const char* property, const char* atom);

std::vector<Window> ChildrenOf(Display* display, Window window);
// Returns the windows from bottom to top: as the window manager lists them, or all below the root without one.
std::vector<Window> TopLevelWindows(Display* display);

// Returns whether a window manager runs that accepts messages.
bool HasWindowManager(Display* display);
// The source that some requests name. Window managers obey a pager, which acts for the user, also while the user works in
// another window.
constexpr long kAskedByApplication = 1;
constexpr long kAskedByPager = 2;
// Sends a request about a window to the window manager, with at most five numbers.
void SendRootMessage(Display* display, Window window, const char* message,
                     std::initializer_list<long> numbers);

// Returns the server's current time, by which window managers recognise outdated requests. For the calling thread's own
// connection.
Time ServerTime(Display* display);
