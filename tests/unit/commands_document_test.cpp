#include "docs/commands_document.h"

#include "app/commands.h"
#include "base/build_settings.h"
#include "unit/test_support.h"
#include "windows/main_window.h"

// The version of the packages is the version that the program shows.
static_assert(kProgramVersion == VARNELLE_PROJECT_VERSION,
              "CMakeLists.txt and build_settings.h name two versions");

TEST(CommandsDocument, MatchesTheCommandTable) {
    const std::string committed = ReadFile("docs/commands.md");
    EXPECT_EQ(committed, CommandsDocument()) << "write it again with: ./dev docs";
}

TEST(CommandsDocument, NamesEveryCommandInItsOrder) {
    const std::string document = CommandsDocument();
    int count = 0;
    const PageCommand* commands = MainProcessCommands(&count);
    size_t at = 0;
    for (int i = 0; i < count; ++i) {
        at = document.find("\n| `" + std::string(commands[i].name) + "` | ", at);
        ASSERT_NE(at, std::string::npos) << commands[i].name;
        // Three cells, even if a text contains a bar.
        const std::string row = document.substr(at + 1, document.find('\n', at + 1) - at - 1);
        int bars = 0;
        for (size_t c = 0; c < row.size(); ++c) {
            bars += row[c] == '|' && (c == 0 || row[c - 1] != '\\') ? 1 : 0;
        }
        EXPECT_EQ(bars, 4) << row;
    }
}

TEST(Version, TheWindowsTitleNamesIt) {
    EXPECT_NE(std::string_view(kMainWindowTitle).find(" Version " + std::string(kProgramVersion) + ")"),
              std::string_view::npos);
}
