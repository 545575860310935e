// Windows of other programs under a window manager. Run by tests/linux/run.sh.
#include "managed_window.h"
#include "test_desktop.h"

#include "platform/desktop.h"

#include <X11/Xatom.h>
#include <string>

namespace {

TEST(Desktop, WindowsByTitle) {
    ManagedWindow one("Varnelle ünï", 50, 50, 1);
    ManagedWindow two("Varnelle two", 500, 50, 1);
    ManagedWindow three(std::string(300, 't'), 50, 500, 1);
    ASSERT_TRUE(WaitFor([&] { return ListTopLevelWindows().size() == 3; }));
    EXPECT_EQ(FindWindowByTitle("Varnelle ünï"), one.Id());
    EXPECT_EQ(FindWindowByTitle("Varnelle two"), two.Id());
    EXPECT_EQ(FindWindowByTitle("Varnelle"), 0U);
    EXPECT_EQ(FindWindowByTitle("an older name"), 0U);
    EXPECT_EQ(FindWindowByTitle(std::string(255, 't').c_str()), three.Id());
    for (ManagedWindow* window : {&one, &two, &three, &one}) {
        ForceForeground(window->Id());
        EXPECT_TRUE(WaitFor(
            [&] { return ListTopLevelWindows().front().window == window->Id() && window->HasFocus(); }));
    }
}

TEST(Desktop, MinimisedAndRestored) {
    ManagedWindow window("Small", 50, 50, 1);
    ASSERT_TRUE(WaitFor([&] { return FindWindowByTitle("Small") != 0; }));
    EXPECT_FALSE(IsWindowMinimised(window.Id()));
    window.Minimise();
    ASSERT_TRUE(WaitFor([&] { return IsWindowMinimised(window.Id()); }));
    EXPECT_EQ(FindWindowByTitle("Small"), window.Id());
    RestoreWindow(window.Id());
    EXPECT_TRUE(WaitFor([&] { return !IsWindowMinimised(window.Id()); }));
}

TEST(Desktop, StaysOnTopOfRaisedWindows) {
    ManagedWindow low("Low", 100, 100, 1);
    ManagedWindow other("Other", 150, 120, 1);
    ASSERT_TRUE(WaitFor([&] { return ListTopLevelWindows().size() == 2; }));
    ForceForeground(other.Id());
    ASSERT_TRUE(WaitFor([&] { return other.HasFocus(); }));
    const auto place = low.Place();
    EXPECT_FALSE(low.IsOnTop());

    SetWindowOnTop(low.Id(), true);
    ASSERT_TRUE(WaitFor([&] { return low.IsOnTop(); }));
    EXPECT_TRUE(WaitFor([&] { return ListTopLevelWindows().front().window == low.Id(); }));
    EXPECT_TRUE(other.HasFocus()) << "it takes no keyboard";
    EXPECT_EQ(low.Place(), place);
    ForceForeground(low.Id());
    ASSERT_TRUE(WaitFor([&] { return low.HasFocus(); }));
    ForceForeground(other.Id());
    ASSERT_TRUE(WaitFor([&] { return other.HasFocus(); }));
    EXPECT_EQ(ListTopLevelWindows().front().window, low.Id()) << "raised is not above";
    SetWindowOnTop(low.Id(), true);  // again

    SetWindowOnTop(low.Id(), false);
    ASSERT_TRUE(WaitFor([&] { return !low.IsOnTop(); }));
    ForceForeground(low.Id());
    ASSERT_TRUE(WaitFor([&] { return low.HasFocus(); }));
    ForceForeground(other.Id());
    EXPECT_TRUE(WaitFor([&] { return ListTopLevelWindows().front().window == other.Id(); }));
    EXPECT_EQ(low.Place(), place);
}

TEST(Desktop, OnTopWhileMinimisedAndBeforeItIsShown) {
    ManagedWindow window("Small", 50, 50, 1);
    ASSERT_TRUE(WaitFor([&] { return FindWindowByTitle("Small") != 0; }));
    window.Minimise();
    ASSERT_TRUE(WaitFor([&] { return IsWindowMinimised(window.Id()); }));
    SetWindowOnTop(window.Id(), true);
    EXPECT_TRUE(WaitFor([&] { return window.IsOnTop(); }));
    EXPECT_TRUE(IsWindowMinimised(window.Id()));
    RestoreWindow(window.Id());
    ASSERT_TRUE(WaitFor([&] { return !IsWindowMinimised(window.Id()); }));
    EXPECT_TRUE(window.IsOnTop());

    ManagedWindow later("Later", 400, 50, 1, false);
    SetWindowOnTop(later.Id(), true);
    EXPECT_TRUE(WaitFor([&] { return later.IsOnTop(); }));
    SetWindowOnTop(later.Id(), true);
    SetWindowOnTop(later.Id(), false);
    EXPECT_TRUE(WaitFor([&] { return !later.IsOnTop(); }));
    SetWindowOnTop(later.Id(), true);
    later.Show();
    ASSERT_TRUE(WaitFor([&] { return FindWindowByTitle("Later") != 0; }));
    EXPECT_TRUE(WaitFor([&] { return later.IsOnTop(); }));
    ManagedWindow over("Over", 420, 70, 1);
    ASSERT_TRUE(WaitFor([&] { return FindWindowByTitle("Over") != 0; }));
    ForceForeground(over.Id());
    ASSERT_TRUE(WaitFor([&] { return over.HasFocus(); }));
    EXPECT_NE(ListTopLevelWindows().front().window, over.Id());
}

TEST(Desktop, Icons) {
    ManagedWindow window("Icons", 50, 50, 1);
    // The window manager first gives a new window its own icon.
    ASSERT_TRUE(WaitFor([&] { return FindWindowByTitle("Icons") != 0; }));
    SetWindowIcons(window.Id());
    Atom type = None;
    int format = 0;
    unsigned long count = 0;
    unsigned long left = 0;
    unsigned char* data = nullptr;
    ASSERT_TRUE(WaitFor([&] {
        return XGetWindowProperty(window.Connection(), window.Id(),
                                  XInternAtom(window.Connection(), "_NET_WM_ICON", False), 0, 100000, False,
                                  XA_CARDINAL, &type, &format, &count, &left, &data) == Success &&
               count > 10'000;
    }));
    const unsigned long* pixels = reinterpret_cast<const unsigned long*>(data);
    unsigned long at = 0;
    int pictures = 0;
    while (at + 2 < count) {
        const unsigned long size = pixels[at];
        EXPECT_EQ(pixels[at + 1], size);
        const unsigned long* picture = pixels + at + 2;
        EXPECT_EQ(picture[0] >> 24 & 0xFF, 0U) << "the corner is clear";
        EXPECT_EQ(picture[size / 2 * size + size / 16] >> 24 & 0xFF, 255U) << "the ground is solid";
        const unsigned long dot = picture[size * 17 / 64 * size + size * 48 / 64];
        EXPECT_GT(dot >> 16 & 0xFF, 200U) << "the dot is orange";
        EXPECT_LT(dot & 0xFF, 120U);
        at += 2 + size * size;
        ++pictures;
    }
    EXPECT_EQ(at, count);
    EXPECT_EQ(pictures, 4);
    XFree(data);
}

TEST(Desktop, MissingWindowsDoNothing) {
    OtherProgram other;
    const Window gone =
        XCreateSimpleWindow(other.Connection(), DefaultRootWindow(other.Connection()), 0, 0, 9, 9, 0, 0, 0);
    XDestroyWindow(other.Connection(), gone);
    XSync(other.Connection(), False);
    for (const WindowRef window : {WindowRef{0}, WindowRef{gone}}) {
        EXPECT_FALSE(IsWindowMinimised(window));
        RestoreWindow(window);
        ForceForeground(window);
        SetWindowIcons(window);
        SetWindowOnTop(window, true);
        SetWindowOnTop(window, false);
    }
    EXPECT_EQ(FindWindowByTitle("no such window"), 0U);
}

TEST(Desktop, ProcessUnderAPoint) {
    uint32_t process = 0;
    EXPECT_FALSE(ProcessAtPoint(1500, 900, &process)) << "the bare root";
    ManagedWindow window("Here", 200, 200, 4242);
    ASSERT_TRUE(WaitFor([&] { return ProcessAtPoint(300, 300, &process); }));
    EXPECT_EQ(process, 4242U);
    // Also on its frame, above the window.
    EXPECT_TRUE(WaitFor([&] {
        for (int y = 150; y < 230; ++y) {
            process = 0;
            if (ProcessAtPoint(300, y, &process)) {
                return process == 4242U;
            }
        }
        return false;
    }));
    TargetWindow bare(700, 700, 50, 50);
    EXPECT_FALSE(ProcessAtPoint(720, 720, &process)) << "a window that tells no process";
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
