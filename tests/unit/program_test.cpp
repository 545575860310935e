#include "platform/program.h"

#include "test_support.h"

namespace {

struct Outcome {
    int exitCode;
    std::string printed;
};

Outcome RunWith(const std::string& argument) {
    ProcessArguments arguments;
    arguments.wideViewValid = true;
    arguments.arguments = {argument};
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

TEST(Program, RejectsWhatIsNoMacro) {
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

TEST(Program, RejectsAScanOfWhatIsNoMacro) {
    TempFolder folder;
    const Outcome missing = RunWith("--scan-macro=" + folder.File("none.vrlmacro"));
    EXPECT_EQ(missing.printed, RunWith("--validate-macro=" + folder.File("none.vrlmacro")).printed);
    EXPECT_EQ(missing.printed.substr(0, 7), "REJECT ");
    EXPECT_EQ(missing.exitCode, 1);
}

TEST(Program, AModeItDoesNotHaveSaysNothingOnStandardOutput) {
    for (const char* argument : {"--validate-theme=x", "--selftest", "--child a|b|1|2", "--timeline"}) {
        ::testing::internal::CaptureStderr();
        const Outcome outcome = RunWith(argument);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(),
                  "Varnelle: this version does not have what the command line asks for.\n");
        EXPECT_EQ(outcome.printed, "") << argument;
        EXPECT_EQ(outcome.exitCode, 1) << argument;
    }
}
