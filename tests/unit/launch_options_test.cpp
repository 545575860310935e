#include "app/launch_options.h"

#include "base/text.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {

// Both forms of a command line, as a shell passes them.
ProcessArguments Line(std::initializer_list<const char*> words) {
    ProcessArguments arguments;
    arguments.wideViewValid = true;
    for (const char* word : words) {
        if (!arguments.line.empty()) {
            arguments.line += ' ';
        }
        arguments.line += word;
        arguments.arguments.push_back(WidenBytes(word));
    }
    return arguments;
}

// The form as one string only.
ProcessArguments Narrow(const char* line) {
    ProcessArguments arguments;
    arguments.wideViewValid = true;
    arguments.line = line;
    return arguments;
}

LaunchMode ModeOf(std::initializer_list<const char*> words) {
    return ParseCommandLine(Line(words)).mode;
}

}  // namespace

TEST(LaunchOptions, AnEmptyLineIsTheMainProcess) {
    const LaunchOptions options = ParseCommandLine({});
    EXPECT_EQ(options.mode, LaunchMode::MainProcess);
    EXPECT_EQ(options.openThemePath, "");
    EXPECT_EQ(options.openMacroPath, "");
    EXPECT_EQ(options.childLine, "");
}

TEST(LaunchOptions, EachValueOptionSelectsItsMode) {
    LaunchOptions options = ParseCommandLine(Line({"--selftest-update=a b"}));
    EXPECT_EQ(options.mode, LaunchMode::SelfTestUpdate);
    EXPECT_EQ(options.selftestUpdateArg, "a b");
    options = ParseCommandLine(Line({"--validate-theme=t.vrltheme"}));
    EXPECT_EQ(options.mode, LaunchMode::ValidateTheme);
    EXPECT_EQ(options.validateThemePath, "t.vrltheme");
    options = ParseCommandLine(Line({"--validate-macro=m.vrlmacro"}));
    EXPECT_EQ(options.mode, LaunchMode::ValidateMacro);
    EXPECT_EQ(options.validateMacroPath, "m.vrlmacro");
    options = ParseCommandLine(Line({"--scan-macro=m.vrlmacro"}));
    EXPECT_EQ(options.mode, LaunchMode::ScanMacro);
    EXPECT_EQ(options.scanMacroPath, "m.vrlmacro");
}

TEST(LaunchOptions, TheModeWithTheHighestPriorityRunsInAnyOrder) {
    EXPECT_EQ(ModeOf({"--validate-macro=a.vrlmacro", "--validate-theme=b.vrltheme"}),
              LaunchMode::ValidateTheme);
    EXPECT_EQ(ModeOf({"--scan-macro=a", "--validate-macro=b"}), LaunchMode::ValidateMacro);
    EXPECT_EQ(ModeOf({"--scan-macro=a", "--validate-macro=b", "--validate-theme=c", "--selftest-update=d"}),
              LaunchMode::SelfTestUpdate);
    EXPECT_EQ(ModeOf({"--selftest", "--scan-macro=a"}), LaunchMode::ScanMacro);
    EXPECT_EQ(ModeOf({"--child", "x", "--validate-macro=a"}), LaunchMode::ValidateMacro);
}

TEST(LaunchOptions, ALaterValueOfTheSameOptionCounts) {
    const LaunchOptions options = ParseCommandLine(Line({"--validate-theme=a", "--validate-theme=b"}));
    EXPECT_EQ(options.mode, LaunchMode::ValidateTheme);
    EXPECT_EQ(options.validateThemePath, "b");
}

TEST(LaunchOptions, AnEmptyValueStillSelectsItsMode) {
    const LaunchOptions options = ParseCommandLine(Line({"--validate-macro="}));
    EXPECT_EQ(options.mode, LaunchMode::ValidateMacro);
    EXPECT_TRUE(options.validateMacro);
    EXPECT_EQ(options.validateMacroPath, "");
}

TEST(LaunchOptions, AValueIsEverythingAfterTheFirstEqualsSign) {
    EXPECT_EQ(ParseCommandLine(Line({"--scan-macro=--validate-theme=x=y"})).scanMacroPath,
              "--validate-theme=x=y");
    EXPECT_EQ(ParseCommandLine(Line({"--scan-macro=--validate-theme=x"})).mode, LaunchMode::ScanMacro);
}

TEST(LaunchOptions, OptionsAreCaseSensitive) {
    const LaunchOptions options = ParseCommandLine(Line({"--VALIDATE-THEME=a"}));
    EXPECT_EQ(options.mode, LaunchMode::MainProcess);
    EXPECT_FALSE(options.validateTheme);
    EXPECT_EQ(options.openThemePath, "");
}

TEST(LaunchOptions, IgnoresAValueOptionWithoutItsEqualsSign) {
    EXPECT_EQ(ModeOf({"--validate-macro", "a.txt"}), LaunchMode::MainProcess);
    EXPECT_EQ(ModeOf({"x--validate-macro=a"}), LaunchMode::MainProcess);
}

TEST(LaunchOptions, ComparesArgumentsBeforeTheyAreNarrowed) {
    ProcessArguments arguments;
    arguments.wideViewValid = true;
    arguments.arguments = {u"\u012D\u012Dvalidate-macro=a"};  // the low bytes of U+012D are a hyphen's
    EXPECT_EQ(ParseCommandLine(arguments).mode, LaunchMode::MainProcess);
    arguments.arguments = {u"--validate-macro=\u0141\u20AC.vrlmacro"};
    EXPECT_EQ(ParseCommandLine(arguments).validateMacroPath, "\x41\xAC.vrlmacro");
    arguments.arguments = {u"--validate-macr\u016F=a"};
    EXPECT_EQ(ParseCommandLine(arguments).mode, LaunchMode::MainProcess);
}

TEST(LaunchOptions, TheManifestOverrideSelectsNoMode) {
    LaunchOptions options = ParseCommandLine(Line({"--update-manifest=x"}));
    EXPECT_EQ(options.mode, LaunchMode::MainProcess);
    EXPECT_EQ(options.updateManifestOverride, "x");
    options = ParseCommandLine(Line({"--update-manifest=x", "--validate-macro=m"}));
    EXPECT_EQ(options.mode, LaunchMode::ValidateMacro);
    EXPECT_EQ(options.updateManifestOverride, "x");
}

TEST(LaunchOptions, IgnoresUnknownArguments) {
    EXPECT_EQ(ModeOf({"--what", "--validate-macro=m", "/?"}), LaunchMode::ValidateMacro);
    EXPECT_EQ(ModeOf({"--what", "/?"}), LaunchMode::MainProcess);
}

TEST(LaunchOptions, ALineThatCannotBeSplitSkipsTheValueOptions) {
    ProcessArguments arguments = Line({"--validate-macro=a.vrlmacro"});
    arguments.wideViewValid = false;
    const LaunchOptions options = ParseCommandLine(arguments);
    EXPECT_EQ(options.mode, LaunchMode::MainProcess);
    EXPECT_FALSE(options.validateMacro);
    EXPECT_EQ(options.openMacroPath, "--validate-macro=a.vrlmacro");

    arguments = Line({"--selftest-update=a"});
    arguments.wideViewValid = false;
    EXPECT_EQ(ParseCommandLine(arguments).mode, LaunchMode::SelfTest);
}

TEST(LaunchOptions, SelfTestIsFoundAnywhereInTheLine) {
    EXPECT_EQ(ModeOf({"--selftest"}), LaunchMode::SelfTest);
    EXPECT_EQ(ModeOf({"x", "y--selftesting"}), LaunchMode::SelfTest);
    EXPECT_EQ(ModeOf({"--child", "--selftest"}), LaunchMode::SelfTest);
    EXPECT_EQ(ModeOf({"/home/me/--selftest/a.vrlmacro"}), LaunchMode::SelfTest);
}

TEST(LaunchOptions, ChildIsFoundAnywhereInTheLineAndKeepsIt) {
    const LaunchOptions options = ParseCommandLine(Narrow(" --child \"Auto|panel-spammer|10|20\" "));
    EXPECT_EQ(options.mode, LaunchMode::Child);
    EXPECT_EQ(options.childLine, " --child \"Auto|panel-spammer|10|20\" ");
    const LaunchOptions path = ParseCommandLine(Narrow("/tmp/--child/a.vrlmacro"));
    EXPECT_EQ(path.mode, LaunchMode::Child);
    EXPECT_EQ(path.openMacroPath, "");
}

TEST(LaunchOptions, TimelineMustStandAlone) {
    EXPECT_EQ(ModeOf({"--timeline"}), LaunchMode::Timeline);
    EXPECT_EQ(ParseCommandLine(Narrow(" \t--timeline\t ")).mode, LaunchMode::Timeline);
    EXPECT_EQ(ModeOf({"--timeline", "x"}), LaunchMode::MainProcess);
    EXPECT_EQ(ModeOf({"x", "--timeline"}), LaunchMode::MainProcess);
    EXPECT_EQ(ModeOf({"--timelines"}), LaunchMode::MainProcess);
    EXPECT_EQ(ParseCommandLine(Narrow("\"--timeline\"")).mode, LaunchMode::MainProcess);
    EXPECT_EQ(ModeOf({"--update-manifest=x", "--timeline"}), LaunchMode::MainProcess);
}

TEST(LaunchOptions, ALineOfSpacesIsTheMainProcess) {
    const LaunchOptions options = ParseCommandLine(Narrow(" \t  "));
    EXPECT_EQ(options.mode, LaunchMode::MainProcess);
    EXPECT_EQ(options.openMacroPath, "");
}

TEST(LaunchOptions, APathMayBeQuotedAndItsExtensionInAnyCase) {
    const LaunchOptions options = ParseCommandLine(Narrow(R"(  "C:\my files\a.VRLMACRO" )"));
    EXPECT_EQ(options.mode, LaunchMode::MainProcess);
    EXPECT_EQ(options.openMacroPath, R"(C:\my files\a.VRLMACRO)");
    EXPECT_EQ(options.openThemePath, "");
    EXPECT_EQ(ParseCommandLine(Narrow("dark.VrlTheme\t")).openThemePath, "dark.VrlTheme");
}

TEST(LaunchOptions, TheWholeLineIsOnePath) {
    const LaunchOptions options = ParseCommandLine(Narrow(R"(C:\a.vrlmacro C:\b.vrlmacro)"));
    EXPECT_EQ(options.openMacroPath, R"(C:\a.vrlmacro C:\b.vrlmacro)");
}

TEST(LaunchOptions, RemovesOnlyAPairOfQuotes) {
    EXPECT_EQ(ParseCommandLine(Narrow("\"a.vrlmacro")).openMacroPath, "\"a.vrlmacro");
    EXPECT_EQ(ParseCommandLine(Narrow("a.vrlmacro\"")).openMacroPath, "");
    EXPECT_EQ(ParseCommandLine(Narrow("\"\"a.vrlmacro\"\"")).openMacroPath, "");
    EXPECT_EQ(ParseCommandLine(Narrow("\"")).openMacroPath, "");
    EXPECT_EQ(ParseCommandLine(Narrow("\"\"")).openMacroPath, "");
    EXPECT_EQ(ParseCommandLine(Narrow("\" a.vrlmacro\"")).openMacroPath, " a.vrlmacro");
}

TEST(LaunchOptions, IgnoresOtherFiles) {
    const LaunchOptions options = ParseCommandLine(Narrow("notes.txt"));
    EXPECT_EQ(options.mode, LaunchMode::MainProcess);
    EXPECT_EQ(options.openThemePath, "");
    EXPECT_EQ(options.openMacroPath, "");
    EXPECT_EQ(ParseCommandLine(Narrow("a.vrlmacro.bak")).openMacroPath, "");
    EXPECT_EQ(ParseCommandLine(Narrow(".vrlmacro")).openMacroPath, ".vrlmacro");
}
