#include "windows/page_loading.h"

#include "platform/process.h"
#include "test_support.h"

namespace {

const std::string kSortableTag = R"(<script src="vendor/Sortable.min.js"></script>)";
const std::string kTimelineTag = R"(<script src="timeline.js"></script>)";

class PageLoadingTest : public ::testing::Test {
  protected:
    PageLoadingTest() { std::filesystem::create_directories(folder_.File("ui/vendor")); }

    void PutUiFile(const std::string& name, std::string_view text) {
        WriteFile(folder_.File("ui/" + name), text);
    }
    std::string Inlined(const std::string& page) { return InlineScripts(page, folder_.Path()); }

    TempFolder folder_;
};

}  // namespace

TEST_F(PageLoadingTest, ReadsThePageBesideTheProgram) {
    PutUiFile("index.html", "<p>\xC3\xA4</p>\n");
    std::string page;
    std::string path;
    EXPECT_TRUE(ReadPage(folder_.Path(), "index.html", &page, &path));
    EXPECT_EQ(page, "<p>\xC3\xA4</p>\n");
    EXPECT_EQ(path, folder_.Path() + kPathSeparator + "ui" + kPathSeparator + "index.html");
}

TEST_F(PageLoadingTest, LineEndsOfBothSystemsCountAsOneCharacter) {
    PutUiFile("index.html", "a\r\nb\nc\rd\r\r\n\r");
    std::string page;
    std::string path;
    ASSERT_TRUE(ReadPage(folder_.Path(), "index.html", &page, &path));
    EXPECT_EQ(page, "a\nb\nc\rd\r\n\r");
}

TEST_F(PageLoadingTest, AMissingPageStillNamesItsPath) {
    std::string page;
    std::string path;
    EXPECT_FALSE(ReadPage(folder_.Path(), "index.html", &page, &path));
    EXPECT_EQ(path, folder_.Path() + kPathSeparator + "ui" + kPathSeparator + "index.html");
}

TEST_F(PageLoadingTest, AnEmptyPageIsAPage) {
    PutUiFile("index.html", "");
    std::string page = "before";
    std::string path;
    EXPECT_TRUE(ReadPage(folder_.Path(), "index.html", &page, &path));
    EXPECT_EQ(page, "");
}

TEST_F(PageLoadingTest, BothScriptsAreInlined) {
    PutUiFile("vendor/Sortable.min.js", "var a = \"<b>\";\r\n");
    PutUiFile("timeline.js", "var b;");
    EXPECT_EQ(Inlined("<head>" + kTimelineTag + "</head>" + kSortableTag + "<p>"),
              "<head><script>var b;</script></head><script>var a = \"<b>\";\r\n</script><p>");
}

TEST_F(PageLoadingTest, APageWithoutTheTagsIsUnchanged) {
    PutUiFile("vendor/Sortable.min.js", "var a;");
    PutUiFile("timeline.js", "var b;");
    const std::string page = "<script src=\"other.js\"></script><script src='timeline.js'></script>"
                             "<script  src=\"timeline.js\"></script><script src=\"timeline.js\" ></script>";
    EXPECT_EQ(Inlined(page), page);
    EXPECT_EQ(Inlined(""), "");
}

TEST_F(PageLoadingTest, OnlyTheFirstOfATagIsReplaced) {
    PutUiFile("timeline.js", "var b;");
    EXPECT_EQ(Inlined(kTimelineTag + kTimelineTag), "<script>var b;</script>" + kTimelineTag);
}

TEST_F(PageLoadingTest, AMissingScriptLeavesItsTag) {
    PutUiFile("timeline.js", "var b;");
    EXPECT_EQ(Inlined(kSortableTag + kTimelineTag), kSortableTag + "<script>var b;</script>");
}

TEST_F(PageLoadingTest, AScriptThatWouldEndItsElementLeavesItsTag) {
    PutUiFile("timeline.js", "var b = '</script>';");
    EXPECT_EQ(Inlined(kTimelineTag), kTimelineTag);
    PutUiFile("timeline.js", "var b = '</SCRIPT>';");
    EXPECT_EQ(Inlined(kTimelineTag), "<script>var b = '</SCRIPT>';</script>");
}

TEST_F(PageLoadingTest, AnEmptyScriptIsInlined) {
    PutUiFile("timeline.js", "");
    EXPECT_EQ(Inlined(kTimelineTag), "<script></script>");
}

TEST_F(PageLoadingTest, TheSecondTagIsSearchedAfterTheFirstIsReplaced) {
    PutUiFile("vendor/Sortable.min.js", "// <script src=\"timeline.js\">");
    PutUiFile("timeline.js", "var b;");
    EXPECT_EQ(Inlined(kSortableTag + kTimelineTag), "<script>// <script>var b;</script>" + kTimelineTag);
}

TEST_F(PageLoadingTest, APageOfExactlyTheLimitIsTheLargest) {
    const std::string around = "<head></head>";
    const size_t room = 0x200000 - around.size() - 17;
    PutUiFile("timeline.js", std::string(room, 'x'));
    const std::string page = "<head>" + kTimelineTag + "</head>";
    EXPECT_EQ(Inlined(page).size(), 2097152U);
    PutUiFile("timeline.js", std::string(room + 1, 'x'));
    EXPECT_EQ(Inlined(page), page);
}

TEST_F(PageLoadingTest, TheLimitIncludesTheFirstScript) {
    PutUiFile("vendor/Sortable.min.js", std::string(0x100000, 's'));
    PutUiFile("timeline.js", std::string(0x100000, 't'));
    EXPECT_EQ(Inlined(kSortableTag + kTimelineTag),
              "<script>" + std::string(0x100000, 's') + "</script>" + kTimelineTag);
}

namespace {

// A page with a policy, whose scripts so far are `allowed`.
std::string PageWithPolicy(const std::string& allowed, const std::string& body) {
    return "<meta\n http-equiv=\"Content-Security-Policy\"\n content=\"default-src 'none'; script-src " +
           allowed + "; base-uri 'none'\">" + body;
}
// As `printf 'var b;' | openssl dgst -sha256 -binary | base64` prints them.
const std::string kHashOfA = "'sha256-voeURch9fnIFmtccQajw9ITRIDLpHRT5ltHavH2xrh4='";
const std::string kHashOfB = "'sha256-Z0/DP5C+3N8tYtTWepXZWiYCEMp64RrwxJT4X7uik78='";
const std::string kHashOfLines = "'sha256-e+u+kS9w5OgX+D483rXxH5vFVjNNl4lIT2ZbY907FNw='";

}  // namespace

TEST_F(PageLoadingTest, AnInlinedScriptIsAllowedByThePolicyOfThePage) {
    PutUiFile("vendor/Sortable.min.js", "var a;");
    PutUiFile("timeline.js", "var b;");
    EXPECT_EQ(Inlined(PageWithPolicy("'self'", kSortableTag + kTimelineTag)),
              PageWithPolicy(kHashOfB + " " + kHashOfA + " 'self'",
                             "<script>var a;</script><script>var b;</script>"));
}

TEST_F(PageLoadingTest, AScriptIsHashedAsTheBrowserParsesIt) {
    for (const char* script : {"a\nb\n\nc\n", "a\r\nb\r\n\r\nc\r\n", "a\rb\r\rc\r", "a\nb\r\n\nc\r"}) {
        std::string page = PageWithPolicy("'self'", "");
        AllowScript(&page, script);
        EXPECT_EQ(page, PageWithPolicy(kHashOfLines + " 'self'", ""));
    }
}

TEST_F(PageLoadingTest, APageWithoutAPolicyForScriptsStaysAsItIs) {
    for (const char* text :
         {"", "script-src 'self'",
          "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'\"><p>script-src 'self'",
          "<meta http-equiv=\"Content-Security-Policy\""}) {
        std::string page = text;
        AllowScript(&page, "var a;");
        EXPECT_EQ(page, text);
    }
}

TEST_F(PageLoadingTest, TheLimitCountsTheHashToo) {
    const std::string around = PageWithPolicy("'self'", "");
    const size_t room = 0x200000 - around.size() - 17 - kHashOfA.size() - 1;
    PutUiFile("timeline.js", std::string(room, 'x'));
    EXPECT_EQ(Inlined(around + kTimelineTag).size(), 2097152U);
    PutUiFile("timeline.js", std::string(room + 1, 'x'));
    EXPECT_EQ(Inlined(around + kTimelineTag), around + kTimelineTag);
}
