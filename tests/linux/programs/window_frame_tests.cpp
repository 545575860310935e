// Frames, monitors and work areas under a window manager. Run by tests/linux/run.sh, under each one that it knows.
#include "managed_window.h"
#include "test_desktop.h"

#include "platform/linux/frame_watch.h"
#include "platform/linux/x11_display.h"
#include "platform/linux/x11_frame.h"
#include "platform/linux/x11_windows.h"
#include "platform/window_frame.h"

#include <X11/extensions/Xrandr.h>
#include <optional>
#include <sstream>

namespace {

std::string Text(const ScreenRectangle& rectangle) {
    std::ostringstream text;
    text << rectangle.left << "," << rectangle.top << " to " << rectangle.right << "," << rectangle.bottom;
    return text.str();
}

std::string OuterText(const ManagedWindow& window) {
    ScreenRectangle outer;
    return ReadOuterRectangle(ThreadDisplay(), window.Id(), &outer) ? Text(outer) : "gone";
}

// The last result, for the message of a wait that times out.
testing::AssertionResult Becomes(const std::string& expected, const std::function<std::string()>& ask) {
    std::string last;
    if (WaitFor([&] { return (last = ask()) == expected; })) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "expected " << expected << ", was " << last;
}

bool IsShown(const ManagedWindow& window) {
    return IsManaged(ThreadDisplay(), window.Id());
}

// A strip along the lower edge of the root window that a dock reserves.
class Dock {
  public:
    Dock(long depth, long first, long last) : display_(OpenTestDisplay(nullptr)) {
        const Window root = DefaultRootWindow(display_);
        const int y = DisplayHeight(display_, 0) - static_cast<int>(depth);
        window_ = XCreateSimpleWindow(display_, root, static_cast<int>(first), y,
                                      static_cast<unsigned>(last - first + 1), static_cast<unsigned>(depth),
                                      0, 0, 0);
        const Atom dock = XInternAtom(display_, "_NET_WM_WINDOW_TYPE_DOCK", False);
        XChangeProperty(display_, window_, XInternAtom(display_, "_NET_WM_WINDOW_TYPE", False), XA_ATOM, 32,
                        PropModeReplace, reinterpret_cast<const unsigned char*>(&dock), 1);
        const long strut[12] = {0, 0, 0, depth, 0, 0, 0, 0, 0, 0, first, last};
        XChangeProperty(display_, window_, XInternAtom(display_, "_NET_WM_STRUT_PARTIAL", False), XA_CARDINAL,
                        32, PropModeReplace, reinterpret_cast<const unsigned char*>(strut), 12);
        XMapWindow(display_, window_);
        XSync(display_, False);
    }
    ~Dock() { XCloseDisplay(display_); }
    Dock(const Dock&) = delete;
    Dock& operator=(const Dock&) = delete;

  private:
    Display* display_;
    Window window_;
};

// Splits the screen into monitors side by side; the first one is the primary one.
class SplitScreen {
  public:
    explicit SplitScreen(const std::vector<ScreenRectangle>& parts) : display_(OpenTestDisplay(nullptr)) {
        const Window root = DefaultRootWindow(display_);
        XRRScreenResources* resources = XRRGetScreenResources(display_, root);
        for (size_t index = 0; index < parts.size(); ++index) {
            XRRMonitorInfo* monitor = XRRAllocateMonitor(display_, index == 0 ? 1 : 0);
            const std::string name = "part" + std::to_string(index);
            monitor->name = XInternAtom(display_, name.c_str(), False);
            monitor->primary = index == 0;
            monitor->x = parts[index].left;
            monitor->y = parts[index].top;
            monitor->width = parts[index].right - parts[index].left;
            monitor->height = parts[index].bottom - parts[index].top;
            if (index == 0) {
                monitor->outputs[0] = resources->outputs[0];
            }
            XRRSetMonitor(display_, root, monitor);
            names_.push_back(monitor->name);
            XRRFreeMonitors(monitor);
        }
        XRRFreeScreenResources(resources);
        XSync(display_, False);
    }
    ~SplitScreen() {
        for (const Atom name : names_) {
            XRRDeleteMonitor(display_, DefaultRootWindow(display_), name);
        }
        XSync(display_, False);
        XCloseDisplay(display_);
    }
    SplitScreen(const SplitScreen&) = delete;
    SplitScreen& operator=(const SplitScreen&) = delete;

  private:
    Display* display_;
    std::vector<Atom> names_;
};

TEST(WindowFrame, PlacedWithItsFrameAndNoDrift) {
    ManagedWindow window("Placed", 300, 300, 1);
    ASSERT_TRUE(WaitFor([&] { return IsShown(window); }));
    for (int round = 0; round < 5; ++round) {
        PlaceWindow(window.Id(), 140, 90, 500, 400);
        EXPECT_TRUE(Becomes("140,90 to 640,490", [&] { return OuterText(window); }));
    }
    // The frame's corner stays when the application resizes itself.
    const FrameExtents frame = ReadFrameExtents(ThreadDisplay(), window.Id());
    XResizeWindow(window.Connection(), window.Id(), 320, 240);
    XSync(window.Connection(), False);
    const ScreenRectangle resized = {140, 90, 140 + 320 + frame.left + frame.right,
                                     90 + 240 + frame.top + frame.bottom};
    EXPECT_TRUE(Becomes(Text(resized), [&] { return OuterText(window); }));
    MoveWindowTo(window.Id(), 700, 60);
    EXPECT_TRUE(Becomes(Text(Moved(resized, 560, -30)), [&] { return OuterText(window); }));
    // An empty size becomes the smallest one that the window manager allows.
    PlaceWindow(window.Id(), 100, 200, -5, 0);
    EXPECT_TRUE(WaitFor([&] {
        ScreenRectangle client;
        return ReadClientRectangle(ThreadDisplay(), window.Id(), &client) && client.right - client.left < 200;
    })) << OuterText(window);
}

TEST(WindowFrame, MaximisedAndMinimised) {
    ManagedWindow window("Large", 300, 300, 1);
    ASSERT_TRUE(WaitFor([&] { return IsShown(window); }));
    EXPECT_FALSE(IsMaximised(ThreadDisplay(), window.Id()));
    MaximiseWindow(window.Id());
    EXPECT_TRUE(WaitFor([&] { return IsMaximised(ThreadDisplay(), window.Id()); }));
    EXPECT_FALSE(IsIconic(ThreadDisplay(), window.Id()));
    MinimiseWindow(window.Id());
    EXPECT_TRUE(WaitFor([&] { return IsIconic(ThreadDisplay(), window.Id()); }));
}

TEST(WindowFrame, TheWorkAreaExcludesDocks) {
    ScreenRectangle area = MonitorWorkArea(0);
    EXPECT_EQ(Text(area), "0,0 to 1600,1000");
    {
        Dock dock(40, 0, 1599);
        EXPECT_TRUE(Becomes("0,0 to 1600,960", [] { return Text(MonitorWorkArea(0)); }));
        EXPECT_TRUE(Becomes("0,0 to 1600,960", [&] {
            return WorkAreaAtPoint(10, 990, &area) ? Text(area) : "no monitor";
        })) << "under the dock is on the monitor";
    }
    EXPECT_TRUE(Becomes("0,0 to 1600,1000", [] { return Text(MonitorWorkArea(0)); }));
    for (const auto& [x, y] :
         {std::pair{-1, 5}, std::pair{1600, 5}, std::pair{5, 1000}, std::pair{INT32_MAX, INT32_MIN}}) {
        area = {1, 2, 3, 4};
        EXPECT_FALSE(WorkAreaAtPoint(x, y, &area)) << x << "," << y;
        EXPECT_EQ(Text(area), "1,2 to 3,4");
    }
}

// Sets a property of the root window to other numbers for its lifetime.
class RootNumbers {
  public:
    RootNumbers(const char* name, const std::vector<int32_t>& numbers)
        : name_(name), before_(ReadNumbers(ThreadDisplay(), DefaultRootWindow(ThreadDisplay()), name)) {
        Write(numbers);
    }
    ~RootNumbers() { Write(before_); }
    RootNumbers(const RootNumbers&) = delete;
    RootNumbers& operator=(const RootNumbers&) = delete;

  private:
    void Write(const std::vector<int32_t>& numbers) const {
        Display* display = ThreadDisplay();
        const std::vector<long> items(numbers.begin(), numbers.end());
        XChangeProperty(display, DefaultRootWindow(display), XInternAtom(display, name_, False), XA_CARDINAL,
                        32, PropModeReplace, reinterpret_cast<const unsigned char*>(items.data()),
                        static_cast<int>(items.size()));
        XSync(display, False);
    }

    const char* name_;
    std::vector<int32_t> before_;
};

TEST(WindowFrame, ADesktopWithoutAWorkAreaUsesTheFirstOne) {
    const RootNumbers areas("_NET_WORKAREA", {0, 50, 1600, 900, 10, 0, 1500, 1000, 7, 7, 7});
    for (const int32_t none : {-1, 2, 1000, INT32_MAX, INT32_MIN, 0x40000000}) {
        const RootNumbers desktop("_NET_CURRENT_DESKTOP", {none});
        EXPECT_EQ(Text(MonitorWorkArea(0)), "0,50 to 1600,950") << none;
    }
    const RootNumbers desktop("_NET_CURRENT_DESKTOP", {1});
    EXPECT_EQ(Text(MonitorWorkArea(0)), "10,0 to 1510,1000");
    const RootNumbers few("_NET_WORKAREA", {0, 50, 1600});
    EXPECT_EQ(Text(MonitorWorkArea(0)), "0,0 to 1600,1000");
}

TEST(WindowFrame, EachMonitorHasItsOwnWorkArea) {
    ManagedWindow window("On the right", 900, 100, 1);
    ASSERT_TRUE(WaitFor([&] { return IsShown(window); }));
    // The primary one is on the right, so that the left one has negative positions.
    SplitScreen split({{600, 0, 1600, 1000}, {0, 100, 600, 900}});
    ASSERT_TRUE(Becomes("0,0 to 1000,1000", [] { return Text(MonitorWorkArea(0)); }));
    Dock dock(30, 600, 1599);
    EXPECT_TRUE(Becomes("0,0 to 1000,970", [&] { return Text(MonitorWorkArea(window.Id())); }));
    ScreenRectangle area;
    ASSERT_TRUE(WorkAreaAtPoint(-1, 500, &area));
    EXPECT_EQ(Text(area), "-600,100 to 0,900") << "the dock is not on it";
    EXPECT_FALSE(WorkAreaAtPoint(-1, 50, &area)) << "above the left monitor";
    PlaceWindow(window.Id(), -500, 200, 400, 300);
    EXPECT_TRUE(Becomes("100,200 to 500,500", [&] { return OuterText(window); }))
        << "counted from the root's corner";
    EXPECT_EQ(Text(MonitorWorkArea(window.Id())), "-600,100 to 0,900");
}

TEST(WindowFrame, TheNearestMonitorOfARectangle) {
    const std::vector<ScreenRectangle> monitors = {{0, 0, 100, 100}, {100, 0, 200, 100}, {0, 100, 100, 300}};
    EXPECT_EQ(NearestMonitor(monitors, {10, 10, 20, 20}), 0U);
    EXPECT_EQ(NearestMonitor(monitors, {60, 10, 160, 20}), 1U) << "most of it";
    EXPECT_EQ(NearestMonitor(monitors, {50, 10, 150, 20}), 0U) << "half and half";
    EXPECT_EQ(NearestMonitor(monitors, {500, 50, 510, 60}), 1U);
    EXPECT_EQ(NearestMonitor(monitors, {20, 900, 30, 910}), 2U);
    EXPECT_EQ(NearestMonitor(monitors, {-50, -50, -40, -40}), 0U);
}

std::optional<WindowPlacement> reported;
void StorePlacement(const WindowPlacement& placement) {
    reported = placement;
}

TEST(WindowFrame, RequestsBeforeTheWindowIsShownAreKept) {
    ManagedWindow other("In front", 800, 500, 1);
    ManagedWindow late("Late", 300, 300, 1, false);
    StartFrameThread(nullptr, late.Id());
    SetPlacementCallback(StorePlacement);
    PlaceWindow(late.Id(), 200, 150, 420, 310);
    SetWindowOnTop(late.Id(), true);
    ForceForeground(late.Id());
    ASSERT_TRUE(WaitFor([&] { return late.IsWatched(); })) << "the thread has looked at it";
    late.Show();
    EXPECT_TRUE(Becomes("200,150 to 620,460", [&] { return OuterText(late); }));
    EXPECT_TRUE(WaitFor([&] { return late.IsOnTop(); }));
    EXPECT_TRUE(WaitFor([&] { return late.HasFocus(); }));
    reported.reset();
    EndFrameThread();
    ASSERT_TRUE(reported.has_value());
    EXPECT_EQ(Text(reported->normal), "200,150 to 620,460");
    EXPECT_FALSE(reported->maximised);
}

TEST(WindowFrame, MaximisedAtOnceItKeepsItsRequestedRectangle) {
    ManagedWindow late("Late and large", 300, 300, 1, false);
    StartFrameThread(nullptr, late.Id());
    SetPlacementCallback(StorePlacement);
    PlaceWindow(late.Id(), 200, 150, 420, 310);
    MaximiseWindow(late.Id());
    late.Show();
    EXPECT_TRUE(WaitFor([&] { return IsMaximised(ThreadDisplay(), late.Id()); }));
    reported.reset();
    EndFrameThread();
    ASSERT_TRUE(reported.has_value());
    EXPECT_EQ(Text(reported->normal), "200,150 to 620,460");
    EXPECT_TRUE(reported->maximised);
}

TEST(WindowFrame, AClosedWindowKeepsItsLastPlacement) {
    auto gone = std::make_unique<ManagedWindow>("Going", 300, 300, 1, false);
    StartFrameThread(nullptr, gone->Id());
    SetPlacementCallback(StorePlacement);
    gone->Show();
    PlaceWindow(gone->Id(), 210, 160, 400, 300);
    EXPECT_TRUE(Becomes("210,160 to 610,460", [&] { return OuterText(*gone); }));
    MinimiseWindow(gone->Id());
    EXPECT_TRUE(WaitFor([&] { return IsIconic(ThreadDisplay(), gone->Id()); }));
    const Window id = gone->Id();
    gone.reset();
    ScreenRectangle ignored;
    EXPECT_TRUE(WaitFor([&] { return !ReadOuterRectangle(ThreadDisplay(), id, &ignored); }));
    reported.reset();
    EndFrameThread();
    ASSERT_TRUE(reported.has_value());
    EXPECT_EQ(Text(reported->normal), "210,160 to 610,460");
    EXPECT_FALSE(reported->maximised);
    EndFrameThread();  // a second call does nothing
}

TEST(WindowFrame, AHiddenWindowKeepsItsLastPlacement) {
    ManagedWindow hidden("Hidden", 300, 300, 1, false);
    StartFrameThread(nullptr, hidden.Id());
    SetPlacementCallback(StorePlacement);
    hidden.Show();
    PlaceWindow(hidden.Id(), 210, 160, 400, 300);
    EXPECT_TRUE(Becomes("210,160 to 610,460", [&] { return OuterText(hidden); }));
    XWithdrawWindow(hidden.Connection(), hidden.Id(), DefaultScreen(hidden.Connection()));
    XSync(hidden.Connection(), False);
    EXPECT_TRUE(WaitFor([&] { return !IsShown(hidden); }));
    XMoveWindow(hidden.Connection(), hidden.Id(), 20, 30);
    XSync(hidden.Connection(), False);
    reported.reset();
    EndFrameThread();
    ASSERT_TRUE(reported.has_value());
    EXPECT_EQ(Text(reported->normal), "210,160 to 610,460");
}

TEST(WindowFrame, NoWindowIsIgnored) {
    PlaceWindow(0, 1, 1, 10, 10);
    MoveWindowTo(0, 1, 1);
    MaximiseWindow(0);
    MinimiseWindow(0);
    StartFrameThread(nullptr, 0);
    EndFrameThread();
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
