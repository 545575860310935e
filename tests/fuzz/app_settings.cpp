// Reads any bytes as "appsettings.txt". The settings must be valid for the page and the window, and the same after they
// are written and read again.
#include "fuzz_input.h"

#include "base/text.h"
#include "model/engine_state.h"
#include "storage/app_settings.h"

#include <cstdint>
#include <set>
#include <string>
#include <string_view>

namespace {

void Reset() {
    ResetEngineState();
    appSettings = AppSettings();
}

int LineCount(std::string_view text) {
    TextLines lines(text);
    std::string_view line;
    int count = 0;
    while (lines.Next(&line)) {
        ++count;
    }
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Reset();
    ApplyAppSettingsText(text);
    for (const std::string& id : appSettings.seenWarnings) {
        Require(!id.empty() && id.find_first_of(",\n") == std::string::npos);
    }
    for (const std::string& panel : appSettings.minimizedPanels) {
        Require(IsPanelId(panel));
    }
    std::set<std::string> ordered;
    for (const std::string& panel : appSettings.panelOrder) {
        Require(IsPanelId(panel) && ordered.insert(panel).second);
    }

    const std::string written = BuildAppSettingsText();
    const std::string report = AppSettingsReport();
    const bool positionKnown = appSettings.windowPositionKnown;
    const bool hasCountdown = appSettings.countdownSeconds != AppSettings().countdownSeconds;
    const int lines = hasCountdown ? 17 : 16;
    Require(appSettings.countdownSeconds >= 0 && appSettings.countdownSeconds <= 10);
    Require(LineCount(written) == lines);
    // A line that ends in several CRs loses one in each round.
    if (text.find('\r') == std::string_view::npos) {
        Reset();
        ApplyAppSettingsText(written);
        Require(BuildAppSettingsText() == written);
        Require(AppSettingsReport() == report);
        Require(positionKnown ? appSettings.windowPositionKnown : appSettings.windowX == 0);
    }

    StoreAppSetting(text, true);
    StoreAppSetting(text, false);
    Require(LineCount(BuildAppSettingsText()) == lines);
    ParsePanelOrder(text, &appSettings.panelOrder);
    Require(appSettings.panelOrder.size() <= 5);
    return 0;
}
