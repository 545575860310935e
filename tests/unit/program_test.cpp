#include "platform/program.h"

#include "base/text.h"

#include "test_support.h"

namespace {

struct Outcome {
    int exitCode;
    std::string printed;
};

Outcome RunWith(const std::string& argument) {
    ProcessArguments arguments;
    arguments.wideViewValid = true;
    arguments.arguments = {WidenBytes(argument)};
    arguments.line = argument;
    ::testing::internal::CaptureStdout();
    const int exitCode = RunProgram(arguments);
    return {exitCode, ::testing::internal::GetCapturedStdout()};
}

}  // namespace

TEST(Program, ValidatesAMacro) {
    TempFolder folder;
    const std::string path = folder.File("a macro.vrlmacro");
    WriteFile(path, "Farm\n0,0,1,2,0,0,0,0\n3,0.5,0,0,0,65,1,0\nbroken\n");
    const Outcome outcome = RunWith("--validate-macro=" + path);
    EXPECT_EQ(outcome.printed, "OK 2 events\n");
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST(Program, RejectsAFileThatIsNotAMacro) {
    TempFolder folder;
    const Outcome missing = RunWith("--validate-macro=" + folder.File("none.vrlmacro"));
    EXPECT_EQ(missing.printed.substr(0, 7), "REJECT ");
    EXPECT_EQ(missing.printed.find('\n'), missing.printed.size() - 1);
    EXPECT_EQ(missing.exitCode, 1);
    const Outcome empty = RunWith("--validate-macro=");
    EXPECT_EQ(empty.printed, missing.printed);
    EXPECT_EQ(empty.exitCode, 1);
}

TEST(Program, ChecksTheUpdateRules) {
    const Outcome good = RunWith("--selftest-update=" + FixturePath("update/vectors.jsonl"));
    const std::string verdict = "\nSELFTEST-UPDATE: ALL PASS\n";
    EXPECT_EQ(good.printed.substr(0, 5), "PASS ");
    EXPECT_EQ(good.printed.find("FAIL"), std::string::npos);
    ASSERT_GT(good.printed.size(), verdict.size());
    EXPECT_EQ(good.printed.substr(good.printed.size() - verdict.size()), verdict);
    EXPECT_EQ(good.exitCode, 0);
}

TEST(Program, AnUpdateCheckWithoutAFileFails) {
    const Outcome empty = RunWith("--selftest-update=");
    EXPECT_EQ(empty.printed, "FAIL could not open vectors file: \nSELFTEST-UPDATE: FAILURES ABOVE\n");
    EXPECT_EQ(empty.exitCode, 1);
}

TEST(Program, ScansAMacro) {
    TempFolder folder;
    const std::string path = folder.File("a macro.vrlmacro");
    WriteFile(path, "Farm\nSETTINGS:\n3,1.25,0,0,0,91,1,0\n3,1.5,0,0,0,82,1,0\n3,1.75,0,0,0,91,0,0\n");
    const Outcome caution = RunWith("--scan-macro=" + path);
    EXPECT_EQ(caution.printed, "{\"level\":\"caution\",\"matches\":[{\"id\":\"system-keys\","
                               "\"severity\":\"CAUTION\",\"atSec\":1.5}]}\n");
    EXPECT_EQ(caution.exitCode, 0);
    WriteFile(path, "Farm\n0,0,1,2,0,0,0,0\n");
    const Outcome none = RunWith("--scan-macro=" + path);
    EXPECT_EQ(none.printed, "{\"level\":\"none\",\"matches\":[]}\n");
    EXPECT_EQ(none.exitCode, 0);
}

TEST(Program, RejectsAScanOfAFileThatIsNotAMacro) {
    TempFolder folder;
    const Outcome missing = RunWith("--scan-macro=" + folder.File("none.vrlmacro"));
    EXPECT_EQ(missing.printed, RunWith("--validate-macro=" + folder.File("none.vrlmacro")).printed);
    EXPECT_EQ(missing.printed.substr(0, 7), "REJECT ");
    EXPECT_EQ(missing.exitCode, 1);
}

TEST(Program, ValidatesATheme) {
    const Outcome colours = RunWith("--validate-theme=" + FixturePath("themes/colours.vrltheme"));
    EXPECT_EQ(colours.printed, "OK colours\n");
    EXPECT_EQ(colours.exitCode, 0);

    TempFolder folder;
    const std::string path = folder.File("a theme.vrltheme");
    const std::string before = ReadFile(FixturePath("themes/colours.vrltheme"));
    const std::string open = before.substr(0, before.rfind('}'));
    const std::string font(1368, 'A');  // decodes to 1026 bytes
    WriteFile(path,
              open + R"(, "format": 2, "skin": {"template": 1, "font": "T1RUTw)" + font.substr(6) + "\"}}");
    EXPECT_EQ(RunWith("--validate-theme=" + path).printed, "OK skin 0 pieces +font\n");

    // The head of a PNG of 28 by 28.
    const std::string knob = "iVBORw0KGgoAAAANSUhEUgAAABwAAAAc";
    WriteFile(path, open + R"(, "format": 2, "skin": {"template": 1, "pieces": {"switch-knob": ")" + knob +
                        "\"}}}");
    const Outcome skin = RunWith("--validate-theme=" + path);
    EXPECT_EQ(skin.printed, "OK skin 1 pieces\n");
    EXPECT_EQ(skin.exitCode, 0);

    WriteFile(path, open + R"(, "format": 2, "skin": {"template": 1, "pieces": {}}})");
    EXPECT_EQ(RunWith("--validate-theme=" + path).printed, "OK colours\n");
}

TEST(Program, RejectsAFileThatIsNotATheme) {
    TempFolder folder;
    for (const std::string& path : {folder.File("none.vrltheme"), std::string()}) {
        const Outcome outcome = RunWith("--validate-theme=" + path);
        EXPECT_EQ(outcome.printed, "REJECT could not open file\n");
        EXPECT_EQ(outcome.exitCode, 1);
    }
    WriteFile(folder.File("empty.vrltheme"), "");
    EXPECT_EQ(RunWith("--validate-theme=" + folder.File("empty.vrltheme")).printed, "REJECT file is empty\n");
}

TEST(Program, AModeThatIsNotBuiltPrintsNothingOnStandardOutput) {
    for (const char* argument : {"--child a|b|1|2", "--timeline"}) {
        ::testing::internal::CaptureStderr();
        const Outcome outcome = RunWith(argument);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(),
                  "Varnelle: this version does not have what the command line asks for.\n");
        EXPECT_EQ(outcome.printed, "") << argument;
        EXPECT_EQ(outcome.exitCode, 1) << argument;
    }
}

TEST(Program, ChecksTheMacroImport) {
    const Outcome outcome = RunWith("--selftest");
    EXPECT_EQ(outcome.printed.substr(0, 45), "PASS import: current-format macro parses\nPASS");
    EXPECT_EQ(outcome.printed.find("FAIL"), std::string::npos);
    const std::string verdict = "\nSELFTEST: ALL PASS\n";
    ASSERT_GT(outcome.printed.size(), verdict.size());
    EXPECT_EQ(outcome.printed.substr(outcome.printed.size() - verdict.size()), verdict);
    EXPECT_EQ(outcome.exitCode, 0);
}
