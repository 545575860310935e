// The part of the page host that all backends share, with a web view library written for the test.
#include "platform/shared/page_host_state.h"
#include "platform/shared/valid_utf8.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#endif

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

struct Answer {
    std::string id;
    int status;
    std::string text;
    bool operator==(const Answer&) const = default;
};

// The calls of the library, in order. One test at a time.
struct FakeLibrary {
    std::vector<std::pair<void (*)(WebView, void*), void*>> dispatched;
    std::vector<Answer> answers;
    std::vector<std::string> calls;
    void (*bound)(const char*, const char*, void*) = nullptr;
    void* boundContext = nullptr;
    bool refuseDispatch = false;
    std::function<void()> duringRun;
    std::function<void()> duringDestroy;
};
FakeLibrary fake;

int FakeDispatch(WebView, void (*work)(WebView, void*), void* context) {
    if (fake.refuseDispatch) {
        return 1;
    }
    fake.dispatched.emplace_back(work, context);
    return 0;
}

void TurnLoop() {
    auto dispatched = std::exchange(fake.dispatched, {});
    for (auto& [work, context] : dispatched) {
        work(nullptr, context);
    }
}

PageHost* NewHost() {
    fake = {};
    auto* host = new PageHost;
    host->library.dispatch = FakeDispatch;
    host->library.destroy = [](WebView) {
        if (fake.duringDestroy) {
            fake.duringDestroy();
        }
        return 0;
    };
    host->library.run = [](WebView) {
        fake.calls.push_back("run");
        if (fake.duringRun) {
            fake.duringRun();
        }
        return 0;
    };
    host->library.terminate = [](WebView) {
        fake.calls.push_back("terminate");
        return 0;
    };
    // An open window, for the backend that looks at it: that of the desktop.
    host->library.getWindow = [](WebView) -> void* {
#ifdef _WIN32
        return GetDesktopWindow();
#else
        return nullptr;
#endif
    };
    // No browser behind it, whose document would be looked at.
    host->library.getNativeHandle = [](WebView, int) -> void* { return nullptr; };
    host->library.eval = [](WebView, const char* script) {
        fake.calls.push_back(std::string("eval ") + script);
        return 0;
    };
    host->library.setHtml = [](WebView, const char* html) {
        fake.calls.push_back(std::string("html ") + html);
        return 0;
    };
    host->library.bind = [](WebView, const char*, void (*function)(const char*, const char*, void*),
                            void* context) {
        fake.bound = function;
        fake.boundContext = context;
        return 0;
    };
    host->library.answer = [](WebView, const char* id, int status, const char* text) {
        fake.answers.push_back({id, status, text});
        return 0;
    };
    return host;
}

class PageHostTest : public ::testing::Test {
  protected:
    PageHostTest() : host_(NewHost()) {}
    ~PageHostTest() override {
        if (host_) {
            DestroyPageHost(host_);
        }
        fake = {};
    }
    void Call(const char* id, const char* request) { fake.bound(id, request, fake.boundContext); }
    PageHost* host_;
};

TEST_F(PageHostTest, WorkRunsInTheOrderOfTheCallsFromAnyThread) {
    std::vector<int> order;
    DispatchToPage(host_, [&] { order.push_back(1); });
    std::thread([&] { DispatchToPage(host_, [&] { order.push_back(2); }); }).join();
    DispatchToPage(host_, [&] { order.push_back(3); });
    EXPECT_TRUE(order.empty());
    TurnLoop();
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST_F(PageHostTest, WorkQueuedByWorkRunsInALaterTurn) {
    std::vector<int> order;
    DispatchToPage(host_, [&] {
        DispatchToPage(host_, [&] { order.push_back(3); });
        order.push_back(1);
    });
    DispatchToPage(host_, [&] { order.push_back(2); });
    TurnLoop();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    TurnLoop();
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST_F(PageHostTest, FailingWorkDoesNotStopTheRest) {
    bool ran = false;
    DispatchToPage(host_, [] { throw std::runtime_error("no"); });
    DispatchToPage(host_, [] { throw 7; });
    DispatchToPage(host_, [&] { ran = true; });
    TurnLoop();
    EXPECT_TRUE(ran);
}

TEST_F(PageHostTest, WorkThatTheLibraryRefusedRunsWithTheNext) {
    std::vector<int> order;
    fake.refuseDispatch = true;
    DispatchToPage(host_, [&] { order.push_back(1); });
    fake.refuseDispatch = false;
    DispatchToPage(host_, [&] { order.push_back(2); });
    TurnLoop();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST_F(PageHostTest, AnswersResolveWithTheFunctionsText) {
    BindPageFunction(host_, "echo", [](const std::string& request) { return request; });
    Call("7", "[1,\"a\"]");
    EXPECT_EQ(fake.answers, (std::vector<Answer>{{"7", 0, "[1,\"a\"]"}}));
}

TEST_F(PageHostTest, AThrownExceptionRejectsWithItsTextAsJson) {
    BindPageFunction(host_, "fail",
                     [](const std::string&) -> std::string { throw std::runtime_error("no \"number\"\n"); });
    Call("8", "[]");
    EXPECT_EQ(fake.answers, (std::vector<Answer>{{"8", 1, "\"no \\\"number\\\"\\n\""}}));
}

TEST_F(PageHostTest, NoOtherExceptionLeavesTheCallback) {
    BindPageFunction(host_, "fail", [](const std::string&) -> std::string { throw 7; });
    Call("9", "[]");
    EXPECT_EQ(fake.answers, (std::vector<Answer>{{"9", 1, "\"The command failed.\""}}));
}

TEST_F(PageHostTest, AnInvalidUtf8ResultStillArrives) {
    BindPageFunction(host_, "name", [](const std::string&) { return std::string("\"caf\xE9\""); });
    Call("1", "[]");
    EXPECT_EQ(fake.answers, (std::vector<Answer>{{"1", 0, PageText("\"caf\xE9\"")}}));
}

TEST_F(PageHostTest, InvalidUtf8PagesAndScriptsStillArrive) {
    SetPageHtml(host_, "a\xFF");
    EvalInPage(host_, "b\xC3");
    EXPECT_EQ(fake.calls,
              (std::vector<std::string>{"html " + PageText("a\xFF"), "eval " + PageText("b\xC3")}));
}

TEST_F(PageHostTest, AForeignDocumentGetsNoAnswerAndRunsNoScript) {
    int ran = 0;
    static int* count = nullptr;
    count = &ran;
    BindPageFunction(host_, "count", [](const std::string&) { return std::to_string(++*count); });
    SetPageHtml(host_, "<p>");
    DocumentArrived(&host_->documents);
    Call("1", "[]");
    DocumentArrived(&host_->documents);  // one that nobody expected
    Call("2", "[]");
    EvalInPage(host_, "secret()");
    SetPageHtml(host_, "<b>");
    Call("3", "[]");
    DocumentArrived(&host_->documents);
    Call("4", "[]");
    EXPECT_EQ(fake.answers, (std::vector<Answer>{{"1", 0, "1"}, {"4", 0, "2"}}));
    EXPECT_EQ(fake.calls, (std::vector<std::string>{"html <p>", "html <b>"}));
}

// A document may change while its command runs a message loop of its own.
TEST_F(PageHostTest, AnAnswerDoesNotReachALaterDocument) {
    static PageHost* host = nullptr;
    host = host_;
    BindPageFunction(host_, "change", [](const std::string&) {
        DocumentArrived(&host->documents);
        return std::string("1");
    });
    Call("1", "[]");
    EXPECT_TRUE(fake.answers.empty());
}

TEST_F(PageHostTest, TerminateRunsThroughTheLoop) {
    fake.duringRun = [&] {
        std::thread([&] { TerminatePage(host_); }).join();
        EXPECT_EQ(fake.calls, (std::vector<std::string>{"run"}));
        TurnLoop();
    };
    RunPage(host_);
    EXPECT_EQ(fake.calls, (std::vector<std::string>{"run", "terminate"}));
}

TEST_F(PageHostTest, ALoopThatWasTerminatedBeforeItBeganDoesNotBegin) {
    TerminatePage(host_);
    RunPage(host_);
    EXPECT_TRUE(fake.calls.empty());
}

TEST_F(PageHostTest, AfterTheLoopNothingRunsAndNothingIsKept) {
    auto token = std::make_shared<int>(1);
    bool ran = false;
    fake.duringRun = [&] { DispatchToPage(host_, [&ran, token] { ran = true; }); };
    BindPageFunction(host_, "echo", [](const std::string& request) { return request; });
    RunPage(host_);
    EXPECT_EQ(token.use_count(), 1);
    DispatchToPage(host_, [&ran, token] { ran = true; });
    EXPECT_EQ(token.use_count(), 1);
    TurnLoop();
    Call("1", "[]");
    EXPECT_FALSE(ran);
    EXPECT_TRUE(fake.answers.empty());
}

// The real library runs its message loop while it closes the view.
TEST_F(PageHostTest, WorkThatIsLeftDoesNotRunWhileTheViewCloses) {
    bool ran = false;
    DispatchToPage(host_, [&] { ran = true; });
    fake.duringDestroy = TurnLoop;
    DestroyPageHost(std::exchange(host_, nullptr));
    EXPECT_FALSE(ran);
}

TEST(WebViewLibrary, NamesTheFirstFunctionThatIsMissing) {
    WebViewLibrary library;
    auto none = [](void*, const char*) -> void* { return nullptr; };
    EXPECT_STREQ(ResolveWebViewLibrary(&library, none, nullptr), "webview_create");
    auto some = [](void*, const char* name) -> void* {
        static int address;
        return std::string(name) == "webview_eval" ? nullptr : &address;
    };
    EXPECT_STREQ(ResolveWebViewLibrary(&library, some, nullptr), "webview_eval");
    auto all = [](void*, const char*) -> void* {
        static int address;
        return &address;
    };
    EXPECT_EQ(ResolveWebViewLibrary(&library, all, nullptr), nullptr);
}

TEST(ValidUtf8Test, KeepsWhatIsValid) {
    for (const char* text : {"", "plain", "\xC2\x80", "caf\xC3\xA9", "\xE0\xA0\x80", "\xED\x9F\xBF",
                             "\xEE\x80\x80", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
        EXPECT_EQ(ValidUtf8(text), text);
    }
    EXPECT_EQ(ValidUtf8(std::string_view("a\0b", 3)), std::string("a\0b", 3));
}

TEST(ValidUtf8Test, ReplacesEveryByteThatBelongsToNothing) {
    const std::string mark = "\xEF\xBF\xBD";
    EXPECT_EQ(ValidUtf8("\x80"), mark);
    EXPECT_EQ(ValidUtf8("a\xE9z"), "a" + mark + "z");
    EXPECT_EQ(ValidUtf8("\xC0\x80"), mark + mark);                        // longer form than needed
    EXPECT_EQ(ValidUtf8("\xE0\x9F\xBF"), mark + mark + mark);             // the same with three bytes
    EXPECT_EQ(ValidUtf8("\xED\xA0\x80"), mark + mark + mark);             // half of a surrogate pair
    EXPECT_EQ(ValidUtf8("\xF4\x90\x80\x80"), mark + mark + mark + mark);  // above U+10FFFF
    EXPECT_EQ(ValidUtf8("\xC3"), mark);                                   // cut off
    EXPECT_EQ(ValidUtf8("\xE2\x82"
                        "A"),
              mark + mark + "A");
    EXPECT_EQ(ValidUtf8("\xC3\xA9\xFF\xC3\xA9"), "\xC3\xA9" + mark + "\xC3\xA9");
}

}  // namespace
