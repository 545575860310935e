#include "imports/self_check.h"

#include "base/text.h"
#include "platform/files.h"
#include "storage/macro_file.h"
#include "storage/settings_text.h"

#include <string_view>
#include <vector>

namespace {

constexpr std::string_view kCurrentFormat =
    "Stranger\nSETTINGS:1,2,3,77,1,1,0,9,1,100,200,0,0,0,0,1,3.0,1,500,65,66,0,67,0,0,1,88,0,4,68,69,69|70,1,"
    "1,1\n0,0.5,10,10,0,0,0\n";
constexpr std::string_view kCurrentFormatSettings = "1,2,3,77,1,1,0,9,1,100,200,0,0,1,88,0,4,69,69|70,1";

// From a version whose settings line had 23 fields and no key spammer.
constexpr std::string_view kOldFormat =
    "Old\nSETTINGS:1,2,3,77,1,1,0,9,1,100,200,0,0,0,0,1,3.0,1,500,65,66,0,67\n";

constexpr std::string_view kBare = "Bare\n0,0.5,10,10,0,0,0\n";

// Returns the settings expected from it: the file's autoclicker, and the live key spammer with its one key and no chord.
std::string OldFormatSettings() {
    constexpr size_t kFirstKeySpammerField = 11;
    constexpr size_t kSingleKeyField = 17;
    std::string expected = "1,2,3,77,1,1,0,9,1,100,200";
    const std::string live = BuildProfileSettings();
    const std::vector<std::string_view> fields = SplitParts(live, ',');
    for (size_t i = kFirstKeySpammerField; i <= kSingleKeyField; ++i) {
        expected += ',';
        expected += fields.at(i);
    }
    expected += ',';
    expected += fields.at(kSingleKeyField);
    return expected + ",0";
}

struct Sample {
    bool parsed = false;
    ParsedMacro macro;
};

Sample ReadSample(const std::string& path, std::string_view text) {
    Sample sample;
    sample.parsed = WriteFileBytes(path, text) && ReadMacroFile(path, &sample.macro).empty();
    RemoveFile(path);
    return sample;
}

}  // namespace

bool ImportSelfCheck(const std::string& tempPath, std::string* log) {
    bool allPass = true;
    auto check = [&](const char* name, bool passed) {
        *log += passed ? "PASS " : "FAIL ";
        *log += name;
        *log += '\n';
        allPass = allPass && passed;
    };
    const std::string live = BuildSettingsLine();
    auto untouched = [&live] { return BuildSettingsLine() == live; };

    const Sample current = ReadSample(tempPath, kCurrentFormat);
    check("import: current-format macro parses", current.parsed && current.macro.events.size() == 1);
    check("import: hotkeys, Hold, Tracker and live setup unchanged", untouched());
    check("import: profile gets the file's Spammer + Key Spammer setup",
          current.macro.settings == kCurrentFormatSettings);

    const Sample old = ReadSample(tempPath, kOldFormat);
    check("import: 23-field macro parses, globals unchanged", old.parsed && untouched());
    check("import: 23-field macro keeps the importer's Key Spammer setup",
          old.macro.settings == OldFormatSettings());

    const Sample bare = ReadSample(tempPath, kBare);
    check("import: macro with no SETTINGS line still imports",
          bare.parsed && bare.macro.events.size() == 1 && bare.macro.settings.empty() && untouched());
    return allPass;
}
