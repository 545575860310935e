#include "windows/main_window.h"

#include "base/numbers.h"
#include "base/text.h"
#include "platform/window_frame.h"
#include "storage/app_settings.h"
#include "windows/main_page.h"

#include <algorithm>

namespace {

constexpr int32_t kClearMargin = 20;  // pixels of the work area's height that a fitted window leaves free
constexpr int kMostTries = 8;         // a page 30 times as high as the screen needs five

void StorePlacement(const WindowPlacement& placement) {
    appSettings.windowX = placement.normal.left;
    appSettings.windowY = placement.normal.top;
    appSettings.windowWidth = placement.normal.right - placement.normal.left;
    appSettings.windowHeight = placement.normal.bottom - placement.normal.top;
    appSettings.windowMaximized = placement.maximised;
    appSettings.windowPositionKnown = true;
    SaveAppSettings();
}

}  // namespace

// Accepts more than this version's title: the window of another version is a main window too.
bool IsMainWindowTitle(std::string_view title) {
    if (title == "Varnelle Desk (Grand Web Edition)") {
        return true;
    }
    return StartsWith(title, "Varnelle (") && title.find(" Version ") != std::string_view::npos;
}

WindowRef FindMainWindow() {
    for (const TitledWindow& candidate : ListTopLevelWindows()) {
        if (IsMainWindowTitle(candidate.title)) {
            return candidate.window;
        }
    }
    return 0;
}

void FitWindowToContent(PageHost* host, int32_t width, int32_t height) {
    const WindowRef window = PageHostWindow(host);
    if (window == 0 || width < 1 || height < 1) {
        return;
    }
    const ScreenRectangle area = MonitorWorkArea(window);
    const int32_t limit = area.bottom - area.top - kClearMargin;
    if (limit <= 0) {
        return;
    }
    SetPageSize(host, width, height);
    ScreenRectangle outer;
    if (!ReadPageWindowRectangle(host, &outer)) {
        return;
    }
    if (outer.bottom - outer.top > limit) {
        // Scales the height: a page pixel is larger than a screen pixel on a scaled desktop. One try is nearly always
        // enough. It takes more if the frame is higher than the margin, or if the system limits the window to the
        // screen and so hides its real height.
        int32_t asked = height;
        for (int tries = 0;
             tries == 0 || (outer.bottom - outer.top > area.bottom - area.top && tries < kMostTries);
             ++tries) {
            asked = static_cast<int32_t>(static_cast<double>(limit) / (outer.bottom - outer.top) * asked);
            if (asked <= 0) {
                break;
            }
            SetPageSize(host, width, asked);
            if (!ReadPageWindowRectangle(host, &outer)) {
                return;
            }
        }
    }
    if (outer.bottom > area.bottom) {
        MoveWindowTo(window, outer.left, std::max(outer.top - outer.bottom + area.bottom, area.top));
    }
}

void ResizeMainWindow(std::string_view sizeText) {
    const std::vector<std::string_view> parts = SplitParts(sizeText, ',');
    int32_t width = 0;
    int32_t height = 0;
    PageHost* host = MainPage();
    if (host != nullptr && parts.size() >= 2 && ParseInt(parts[0], &width) && ParseInt(parts[1], &height)) {
        FitWindowToContent(host, width, height);
    }
}

void RestoreMainWindowPlacement(PageHost* host) {
    const WindowRef window = PageHostWindow(host);
    ScreenRectangle area;
    if (window == 0 || !appSettings.windowPositionKnown ||
        !WorkAreaAtPoint(appSettings.windowX, appSettings.windowY, &area)) {
        return;
    }
    // Keeps the saved corner even if the window then extends beyond the work area.
    PlaceWindow(window, appSettings.windowX, appSettings.windowY,
                std::min(area.right - area.left, appSettings.windowWidth),
                std::min(area.bottom - area.top, appSettings.windowHeight));
}

void SetUpMainWindow(PageHost* host, void (*sessionEnding)()) {
    const WindowRef window = PageHostWindow(host);
    RestoreMainWindowPlacement(host);
    WatchPageWindow(host, WindowHandlers{.placementChanged = StorePlacement,
                                         .filesDropped = nullptr,
                                         .sessionEnding = sessionEnding});
    if (appSettings.windowMaximized && !appSettings.startMinimized) {
        MaximiseWindow(window);
    }
    if (appSettings.alwaysOnTop) {
        SetWindowOnTop(window, true);
    }
    if (appSettings.startMinimized) {
        MinimiseWindow(window);
    } else {
        ForceForeground(window);
    }
}
