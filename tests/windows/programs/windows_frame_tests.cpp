// The watched window of the Windows backend, its frame and its monitors, against the system itself.
#include "platform/shared/page_host_state.h"
#include "platform/window_frame.h"

#include <gtest/gtest.h>

#include <windows.h>
// windows.h comes first.
#include <shellapi.h>
#include <shlobj.h>

#include <algorithm>
#include <cstring>

#include <stdexcept>

namespace {

std::vector<UINT> passedOn;  // messages that reached the window's own procedure
std::vector<WindowPlacement> placements;
std::vector<std::string> dropped;

LRESULT CALLBACK OwnProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    passedOn.push_back(message);
    return DefWindowProcW(window, message, wParam, lParam);
}

void NotePlacement(const WindowPlacement& placement) {
    placements.push_back(placement);
}

void NoteDrop(const std::vector<std::string>& paths) {
    dropped = paths;
}

HWND shown = nullptr;

class WindowFrame : public ::testing::Test {
  protected:
    WindowFrame() {
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = OwnProcedure;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = L"WatchedWindow";
        RegisterClassW(&windowClass);
        shown = CreateWindowExW(0, L"WatchedWindow", L"Watched", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 60,
                                400, 300, nullptr, nullptr, windowClass.hInstance, nullptr);
        host_.library.getWindow = [](WebView) -> void* { return shown; };
        placements.clear();
        dropped.clear();
        passedOn.clear();
    }
    ~WindowFrame() override {
        EndWindowWatch(&host_);
        if (IsWindow(shown)) {
            DestroyWindow(shown);
        }
    }

    static bool GotThrough(UINT message) {
        return std::find(passedOn.begin(), passedOn.end(), message) != passedOn.end();
    }
    static WindowRef Ref() { return reinterpret_cast<WindowRef>(shown); }
    static RECT Place() {
        RECT place = {};
        GetWindowRect(shown, &place);
        return place;
    }

    PageHost host_;
};

TEST_F(WindowFrame, TheEndOfAMoveIsReported) {
    WatchPageWindow(&host_, {.placementChanged = NotePlacement, .filesDropped = nullptr});
    PlaceWindow(Ref(), 120, 90, 500, 350);
    EXPECT_TRUE(placements.empty()) << "the program's own moves are not";
    SendMessageW(shown, WM_EXITSIZEMOVE, 0, 0);
    ASSERT_EQ(placements.size(), 1U);
    EXPECT_EQ(placements[0].normal.left, 120);
    EXPECT_EQ(placements[0].normal.top, 90);
    EXPECT_EQ(placements[0].normal.right, 620);
    EXPECT_EQ(placements[0].normal.bottom, 440);
    EXPECT_FALSE(placements[0].maximised);
    EXPECT_TRUE(GotThrough(WM_EXITSIZEMOVE));
}

TEST_F(WindowFrame, AMaximisedOrMinimisedWindowKeepsItsNormalPlace) {
    WatchPageWindow(&host_, {.placementChanged = NotePlacement, .filesDropped = nullptr});
    PlaceWindow(Ref(), 120, 90, 500, 350);
    MaximiseWindow(Ref());
    SendMessageW(shown, WM_EXITSIZEMOVE, 0, 0);
    MinimiseWindow(Ref());
    DestroyWindow(shown);
    ASSERT_EQ(placements.size(), 2U);
    EXPECT_TRUE(placements[0].maximised);
    EXPECT_FALSE(placements[1].maximised) << "a minimised one is not maximised";
    for (const WindowPlacement& placement : placements) {
        EXPECT_EQ(placement.normal.left, 120);
        EXPECT_EQ(placement.normal.bottom, 440);
    }
    EXPECT_TRUE(GotThrough(WM_DESTROY));
    EXPECT_TRUE(GotThrough(WM_NCDESTROY));
    EndWindowWatch(&host_);
    EXPECT_EQ(placements.size(), 2U) << "its end was reported";
}

TEST_F(WindowFrame, AWindowThatOutlivesTheLoopIsReportedAtTheEnd) {
    WatchPageWindow(&host_, {.placementChanged = NotePlacement, .filesDropped = nullptr});
    PlaceWindow(Ref(), 20, 30, 300, 200);
    EndWindowWatch(&host_);
    ASSERT_EQ(placements.size(), 1U);
    EXPECT_EQ(placements[0].normal.left, 20);
    SendMessageW(shown, WM_EXITSIZEMOVE, 0, 0);
    EXPECT_EQ(placements.size(), 1U) << "its own procedure is back";
}

TEST_F(WindowFrame, AnExceptionOfTheHandlerIsCaught) {
    WatchPageWindow(&host_,
                    {.placementChanged = [](const WindowPlacement&) { throw std::runtime_error("full"); },
                     .filesDropped = nullptr});
    SendMessageW(shown, WM_EXITSIZEMOVE, 0, 0);
    EXPECT_TRUE(GotThrough(WM_EXITSIZEMOVE));
}

// Builds a drop as the shell does: a record, then the names, each with its closing zero, then one more zero.
HDROP MakeDrop(const std::string& names) {
    HGLOBAL memory = GlobalAlloc(GHND, sizeof(DROPFILES) + names.size() + 1);
    auto* drop = static_cast<DROPFILES*>(GlobalLock(memory));
    drop->pFiles = sizeof(DROPFILES);
    std::memcpy(drop + 1, names.data(), names.size());
    GlobalUnlock(memory);
    return static_cast<HDROP>(memory);
}

TEST_F(WindowFrame, DroppedFilesReachTheHandlerOnly) {
    WatchPageWindow(&host_, {.placementChanged = nullptr, .filesDropped = NoteDrop});
    EXPECT_NE(GetWindowLongW(shown, GWL_EXSTYLE) & WS_EX_ACCEPTFILES, 0);
    const char names[] = "C:\\one.vrltheme\0C:\\a folder\\two.txt\0";
    HDROP drop = MakeDrop(std::string(names, sizeof names - 1));
    EXPECT_EQ(SendMessageW(shown, WM_DROPFILES, reinterpret_cast<WPARAM>(drop), 0), 0);
    EXPECT_EQ(dropped, (std::vector<std::string>{"C:\\one.vrltheme", "C:\\a folder\\two.txt"}));
    EXPECT_FALSE(GotThrough(WM_DROPFILES));
    SendMessageW(shown, WM_EXITSIZEMOVE, 0, 0);  // no handler is set
}

TEST_F(WindowFrame, WithoutAHandlerNothingCanBeDropped) {
    WatchPageWindow(&host_, {.placementChanged = NotePlacement, .filesDropped = nullptr});
    EXPECT_EQ(GetWindowLongW(shown, GWL_EXSTYLE) & WS_EX_ACCEPTFILES, 0);
}

TEST_F(WindowFrame, WorkAreasAreThoseOfTheSystem) {
    RECT work = {};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    for (const WindowRef window : {WindowRef{0}, Ref()}) {
        const ScreenRectangle area = MonitorWorkArea(window);
        EXPECT_EQ(area.left, work.left);
        EXPECT_EQ(area.top, work.top);
        EXPECT_EQ(area.right, work.right);
        EXPECT_EQ(area.bottom, work.bottom);
    }
    ScreenRectangle area = {1, 2, 3, 4};
    EXPECT_FALSE(WorkAreaAtPoint(-100000, 10, &area));
    EXPECT_EQ(area.right, 3);
    ASSERT_TRUE(WorkAreaAtPoint(10, 10, &area));
    EXPECT_EQ(area.right, work.right);
}

TEST_F(WindowFrame, PlacedMovedAndRead) {
    PlaceWindow(Ref(), 33, 44, 410, 320);
    ScreenRectangle outer;
    ASSERT_TRUE(ReadPageWindowRectangle(&host_, &outer));
    EXPECT_EQ(outer.left, 33);
    EXPECT_EQ(outer.bottom, 364);
    MoveWindowTo(Ref(), -20, 70);
    EXPECT_EQ(Place().left, -20);
    EXPECT_EQ(Place().right, 390);
    shown = nullptr;
    EXPECT_FALSE(ReadPageWindowRectangle(&host_, &outer));
}

}  // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
