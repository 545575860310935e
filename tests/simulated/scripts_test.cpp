// One test a script of tests/simulated/scripts. UPDATE_EXPECTED=1 writes what came of each script into its file, so that
// the difference can be reviewed before it is kept.
#include "simulated/script.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

// The tests run from the project's folder or from a folder below it.
std::string ScriptFolder() {
    std::filesystem::path folder = std::filesystem::current_path();
    while (!std::filesystem::exists(folder / "tests/simulated/scripts") && folder != folder.parent_path()) {
        folder = folder.parent_path();
    }
    return (folder / "tests/simulated/scripts").string();
}

std::vector<std::string> ScriptNames() {
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(ScriptFolder(), error)) {
        if (entry.path().extension() == ".txt") {
            names.push_back(entry.path().stem().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

class Scripts : public testing::TestWithParam<std::string> {};

TEST_P(Scripts, GivesWhatIsExpected) {
    const std::string path = ScriptFolder() + "/" + GetParam() + ".txt";
    const Script script = ReadScript(path);
    const std::vector<std::string> lines = RunScript(script.steps);
    if (std::getenv("UPDATE_EXPECTED") != nullptr) {
        std::ofstream(path, std::ios::binary) << script.head << JoinLines(lines);
        return;
    }
    ASSERT_FALSE(script.expected.empty()) << path << " expects nothing";
    EXPECT_EQ(JoinLines(lines), JoinLines(script.expected)) << path;
    for (uint64_t seed = 2; seed <= 6; ++seed) {
        EXPECT_EQ(JoinLines(RunScript(script.steps, seed)), JoinLines(script.expected))
            << path << ", seed " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(All, Scripts, testing::ValuesIn(ScriptNames()), [](const auto& script) {
    std::string name = script.param;
    std::replace_if(
        name.begin(), name.end(),
        [](char letter) { return !std::isalnum(static_cast<unsigned char>(letter)); }, '_');
    return name;
});

TEST(ScriptFolder, HoldsScripts) {
    EXPECT_GT(ScriptNames().size(), 150U);
}

TEST(ScriptRunner, SaysWhatItDoesNotUnderstand) {
    EXPECT_EQ(JoinLines(RunScript({"dwon F6", "set nonsense 1", "macro x"})),
              "not understood: dwon F6\nnot understood: set nonsense 1\nnot understood: macro x\n");
}

TEST(ScriptRunner, SameSeedSameRun) {
    const std::vector<std::string> steps = {"page startSpammer", "wait 20", "page startKeySpam", "wait 20",
                                            "page stopSpammer"};
    EXPECT_EQ(RunScript(steps), RunScript(steps));
}

}  // namespace
