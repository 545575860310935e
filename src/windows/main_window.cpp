#include "windows/main_window.h"

#include "base/text.h"

// Looser than the title that the program itself shows: the window of another version is the master's window too.
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
