// Reads any text as a settings line. The settings must be the same after they are written and read again, and the profile
// settings of an import must have twenty fields.
#include "fuzz_input.h"

#include "base/text.h"
#include "model/engine_state.h"
#include "storage/settings_table.h"
#include "storage/settings_text.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    ResetEngineState();
    const std::string imported = ProfileSettingsFromLine(text);
    Require(SplitParts(imported, ',').size() == 20);
    ApplyProfileSettings(imported);

    ApplySettingsLine(text);
    const std::string line = BuildSettingsLine();
    const std::string profile = BuildProfileSettings();
    Require(SplitParts(line, ',').size() == 36);
    Require(ProfileSettingsFromLine(line) == profile);

    ResetEngineState();
    ApplySettingsLine(line);
    Require(BuildSettingsLine() == line);

    ResetEngineState();
    ApplyProfileSettings(profile);
    Require(BuildProfileSettings() == profile);

    ApplyProfileSettings(text);
    ParseKeyTargets(text);
    const int32_t count = keySpammerSettings.targetCount;
    Require(count >= 0 && count <= kMaxKeySpammerTargets);
    return 0;
}
