// The main window on the simulated desktop: fitting it to its page, and its position from start to start.
#include "windows/main_window.h"

#include "app/main_process.h"
#include "model/engine_state.h"
#include "platform/simulated/simulation.h"
#include "storage/app_settings.h"
#include "storage/data_folder.h"
#include "temp_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

namespace {

using Calls = std::vector<std::string>;

class MainWindowTest : public ::testing::Test {
  protected:
    MainWindowTest() {
        std::filesystem::create_directories(root_ / "Varnelle");
        Begin();
    }

    ~MainWindowTest() override {
        SimEnd();
        appSettings = AppSettings();
    }

    void Begin() {
        ResetEngineState();
        SetSessionPath("");
        appSettings = AppSettings();
        SimBegin();
        SimSetDataFolderRoot(root_.string());
        SimSetProgramPath((root_ / "varnelle").string());
    }

    // Puts the window there before each call, and gives what the call did to it.
    static Calls Resize(const ScreenRectangle& from, const std::string& request) {
        SimMovePageWindow(from);
        SimGetDesktop().frameCalls.clear();
        const SimPageAnswer answer = SimPageCall("resizeWindow", request);
        EXPECT_TRUE(answer.resolved) << request;
        EXPECT_EQ(answer.text, "") << request;
        return SimGetDesktop().frameCalls;
    }

    static SimWindow& Window() {
        for (SimWindow& window : SimGetDesktop().windows) {
            if (window.window == SimGetDesktop().watched) {
                return window;
            }
        }
        throw std::logic_error("no window is watched");
    }

    static std::vector<int32_t> Place() {
        return {Window().left, Window().top, Window().right - Window().left, Window().bottom - Window().top};
    }

    std::string SettingsFile() const { return (root_ / "Varnelle" / "appsettings.txt").string(); }
    std::string ReadSettings() const { return ReadFile(SettingsFile()); }

    // What happened to the window while the program started with these settings.
    Calls Start(
        const std::string& lines, const std::function<void()>& serve = [] {}) {
        Begin();
        WriteFile(SettingsFile(), lines);
        return Run(serve);
    }
    Calls Run(const std::function<void()>& serve) {
        Calls calls;
        SimOnPageRun([&] {
            calls = SimGetDesktop().frameCalls;
            serve();
        });
        EXPECT_EQ(RunMainProcess({}), 0);
        return calls;
    }

    TempFolder folder_;
    const std::filesystem::path root_ = folder_.Path();
};

// The work area of the simulated primary monitor is 1920 by 1040.
constexpr ScreenRectangle kSomewhere = {100, 100, 520, 660};

}  // namespace

TEST_F(MainWindowTest, APageGetsTheSizeThatItAsksFor) {
    Run([] {
        EXPECT_EQ(Resize(kSomewhere, "[500,300]"), (Calls{"size 500 300"}));
        EXPECT_EQ(Resize(kSomewhere, "[\"500,300\"]"), (Calls{"size 500 300"}));
        EXPECT_EQ(Resize(kSomewhere, "[\" 500.9,300px,7\"]"), (Calls{"size 500 300"}));
        EXPECT_EQ(Place(), (std::vector<int32_t>{100, 100, 500, 300}));
    });
}

TEST_F(MainWindowTest, AskingForNoSizeOrNoNumberDoesNothing) {
    Run([] {
        for (const char* request : {"[0,300]", "[300,0]", "[-1,300]", "[300,-2147483648]", "[\"wide,300\"]",
                                    "[\"300\"]", "[\"300,\"]", "[\",\"]", "[]", "[\"99999999999,300\"]"}) {
            EXPECT_EQ(Resize(kSomewhere, request), Calls{}) << request;
        }
    });
}

TEST_F(MainWindowTest, APageHigherThanTheWorkAreaIsScaledOnce) {
    SimGetDesktop().frameHeight = 30;
    Run([] {
        // The limit is 1020: 1020 / 2030 * 2000 = 1004.9, and with its frame 1034.
        EXPECT_EQ(Resize(kSomewhere, "[500,2000]"), (Calls{"size 500 2000", "size 500 1004", "move 100 6"}));
        EXPECT_EQ(Place(), (std::vector<int32_t>{100, 6, 500, 1034}));
        // Exactly at the limit nothing is scaled.
        EXPECT_EQ(Resize(kSomewhere, "[500,990]"), (Calls{"size 500 990", "move 100 20"}));
        EXPECT_EQ(Resize(kSomewhere, "[500,991]"), (Calls{"size 500 991", "size 500 990", "move 100 20"}));
    });
}

TEST_F(MainWindowTest, AHighFrameOrAScaledDesktopStillEndsWithinTheWorkArea) {
    for (const int32_t scale : {1, 2, 3}) {
        for (const int32_t frame : {0, 8, 31, 39, 90}) {
            for (const int32_t height : {200, 341, 500, 990, 1041, 2000, 30000}) {
                SCOPED_TRACE(std::to_string(scale) + " " + std::to_string(frame) + " " +
                             std::to_string(height));
                Begin();
                SimGetDesktop().pageScale = scale;
                SimGetDesktop().frameHeight = frame;
                Run([&] {
                    Resize(kSomewhere, "[400," + std::to_string(height) + "]");
                    EXPECT_GE(Window().top, 0);
                    EXPECT_LE(Window().bottom, 1040);
                    EXPECT_EQ(SimGetPage().width, 400);
                    if (height * scale + frame <= 1020) {
                        EXPECT_EQ(SimGetPage().height, height);
                    } else {
                        EXPECT_GT(Window().bottom - Window().top, 1020 - 100)
                            << "no smaller than it needs to be";
                    }
                });
            }
        }
    }
}

TEST_F(MainWindowTest, AWindowPartlyBelowTheScreenMovesUp) {
    Run([] {
        EXPECT_EQ(Resize({700, 900, 1120, 1460}, "[420,560]"), (Calls{"size 420 560", "move 700 480"}));
        EXPECT_EQ(Resize({700, 480, 1120, 1040}, "[420,560]"), (Calls{"size 420 560"}))
            << "touching the edge";
        EXPECT_EQ(Resize({-300, 900, 120, 1460}, "[420,100]"), (Calls{"size 420 100"}))
            << "to the side it may hang";
    });
}

TEST_F(MainWindowTest, NeverAboveTheTopOfTheWorkArea) {
    SimGetDesktop().monitors = {{{0, 0, 1920, 1080}, {0, 40, 1920, 1080}}};
    SimGetDesktop().frameHeight = 39;
    Run([] {
        EXPECT_EQ(Resize({100, 300, 520, 860}, "[420,1040]").back(), "move 100 58");
        EXPECT_EQ(Window().bottom, 1080);
        // Reaching above it already, the bottom inside: nothing to mend.
        EXPECT_EQ(Resize({100, -50, 520, 510}, "[420,560]"), (Calls{"size 420 560"}));
    });
}

TEST_F(MainWindowTest, TheMonitorOfTheWindowCounts) {
    SimGetDesktop().monitors.push_back({{1920, 0, 2944, 768}, {1920, 0, 2944, 728}});
    Run([] {
        EXPECT_EQ(Resize({2000, 100, 2420, 660}, "[420,700]"), (Calls{"size 420 700", "move 2000 28"}));
        EXPECT_EQ(Resize({2000, 100, 2420, 660}, "[420,800]"),
                  (Calls{"size 420 800", "size 420 708", "move 2000 20"}));
    });
}

TEST_F(MainWindowTest, AMonitorWithoutRoomIsLeftAlone) {
    SimGetDesktop().monitors = {{{0, 0, 1920, 1080}, {0, 1060, 1920, 1080}}};
    Run([] { EXPECT_EQ(Resize(kSomewhere, "[420,560]"), Calls{}); });
}

TEST_F(MainWindowTest, AFirstStartStandsWhereTheSystemPutsIt) {
    EXPECT_EQ(Start(""), (Calls{"size 420 560", "watch", "front"}));
    EXPECT_EQ(Start("windowWidth=900\nwindowHeight=700\n"), (Calls{"size 420 560", "watch", "front"}))
        << "a size alone is no place";
    EXPECT_EQ(Start("windowX=abc\nwindowY=10\n"), (Calls{"size 420 560", "watch", "front"}));
}

TEST_F(MainWindowTest, AKnownPlaceIsTakenUpBeforeTheWindowShowsAndKept) {
    EXPECT_EQ(Start("windowX=10\nwindowY=20\nwindowWidth=500\nwindowHeight=300\n"),
              (Calls{"place 10 20 500 300", "size 420 560", "place 10 20 500 300", "place 10 20 500 300",
                     "watch", "front"}));
}

TEST_F(MainWindowTest, ASizeIsCutToTheWorkAreaAndTheCornerIsNot) {
    EXPECT_EQ(Start("windowX=1900\nwindowY=1070\nwindowWidth=5000\nwindowHeight=5000\n").front(),
              "place 1900 1070 1920 1040");
    EXPECT_EQ(Start("windowX=5\nwindowY=6\nwindowWidth=-7\nwindowHeight=0\n").front(), "place 5 6 -7 0");
}

TEST_F(MainWindowTest, AMonitorThatIsGoneTakesPlaceAndSizeWithIt) {
    for (const char* corner : {"windowX=1920\nwindowY=20\n", "windowX=-1\nwindowY=20\n",
                               "windowX=10\nwindowY=1080\n", "windowX=2147483647\nwindowY=-2147483648\n"}) {
        EXPECT_EQ(Start(std::string(corner) + "windowWidth=900\nwindowHeight=300\n"),
                  (Calls{"size 420 560", "watch", "front"}))
            << corner;
    }
}

TEST_F(MainWindowTest, MaximisedOnTopAndFrontComeInThisOrder) {
    EXPECT_EQ(Start("alwaysOnTop=1\nwindowMaximized=1\n"),
              (Calls{"size 420 560", "watch", "maximise", "top 1", "front"}));
}

TEST_F(MainWindowTest, StartedMinimisedItIsNeitherMaximisedNorInFront) {
    EXPECT_EQ(Start("startMinimized=1\nalwaysOnTop=1\nwindowMaximized=1\n"),
              (Calls{"size 420 560", "watch", "top 1", "minimise"}));
}

TEST_F(MainWindowTest, WhatThePersonDoesToItIsSavedAtOnceAndAtTheEnd) {
    Start("", [this] {
        EXPECT_FALSE(appSettings.windowPositionKnown);
        SimMovePageWindow({-30, 40, 470, 340});
        EXPECT_NE(ReadSettings().find("windowX=-30\nwindowY=40\nwindowWidth=500\nwindowHeight=300\n"
                                      "windowMaximized=0\n"),
                  std::string::npos);
        EXPECT_TRUE(appSettings.windowPositionKnown);
        SimMaximisePageWindow(true);
        EXPECT_NE(ReadSettings().find("windowMaximized=0\n"), std::string::npos);
    });
    EXPECT_NE(ReadSettings().find(
                  "windowX=-30\nwindowY=40\nwindowWidth=500\nwindowHeight=300\nwindowMaximized=1\n"),
              std::string::npos);
    EXPECT_EQ(SimGetDesktop().watched, 0U);
}

TEST_F(MainWindowTest, APlaceThatCannotBeSavedIsNoReasonToStop) {
    Start("", [this] {
        SimFailPath(SettingsFile());
        SimMovePageWindow({30, 40, 470, 340});
        EXPECT_EQ(appSettings.windowX, 30);
    });
}

TEST_F(MainWindowTest, DroppedFilesGoNowhereYet) {
    Start("", [] {
        EXPECT_EQ(SimGetDesktop().handlers.filesDropped, nullptr);
        SimDropFiles({"a.vrltheme"});
    });
}

TEST_F(MainWindowTest, ResizingWithoutAPageDoesNothing) {
    ResizeMainWindow("420,560");
    EXPECT_TRUE(SimGetDesktop().frameCalls.empty());
}
