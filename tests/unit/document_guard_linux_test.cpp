// How the guard of the WebKitGTK view decides, over functions of our own making.
#ifndef _WIN32
#include "platform/linux/document_guard.h"
#include "platform/shared/page_host_state.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

struct Connection {
    void* object;
    void (*handler)();
    void* context;
};

int view = 0;
int session = 0;
int settings = 0;
std::map<std::string, Connection> connections;
std::vector<std::string> calls;
std::string missing;  // the function that the library lacks

unsigned long Connect(void* object, const char* signal, void (*handler)(), void* context,
                      void (*)(void*, void*), int) {
    connections[signal] = {object, handler, context};
    return 1;
}

void* Find(void*, const char* exported) {
    const std::string name = exported;
    const std::map<std::string, void*> functions = {
        {"g_signal_connect_data", reinterpret_cast<void*>(Connect)},
        {"webkit_web_view_get_settings", reinterpret_cast<void*>(+[](void*) -> void* { return &settings; })},
        {"webkit_settings_set_javascript_can_access_clipboard",
         reinterpret_cast<void*>(+[](void* object, int on) {
             calls.push_back(object == &settings && !on ? "clipboard off" : "clipboard?");
         })},
        {"webkit_web_view_get_network_session",
         reinterpret_cast<void*>(+[](void*) -> void* { return &session; })},
        {"webkit_download_cancel", reinterpret_cast<void*>(+[](void*) { calls.push_back("cancel"); })},
        {"webkit_permission_request_deny", reinterpret_cast<void*>(+[](void*) { calls.push_back("deny"); })},
        {"webkit_policy_decision_use", reinterpret_cast<void*>(+[](void*) { calls.push_back("use"); })},
        {"webkit_policy_decision_ignore", reinterpret_cast<void*>(+[](void*) { calls.push_back("ignore"); })},
        // A decision is its own action and request here, and an address.
        {"webkit_navigation_policy_decision_get_navigation_action",
         reinterpret_cast<void*>(+[](void* decision) { return decision; })},
        {"webkit_navigation_action_get_request",
         reinterpret_cast<void*>(+[](void* action) { return action; })},
        {"webkit_response_policy_decision_get_request",
         reinterpret_cast<void*>(+[](void* decision) { return decision; })},
        {"webkit_uri_request_get_uri",
         reinterpret_cast<void*>(+[](void* request) { return static_cast<const char*>(request); })},
    };
    return name == missing ? nullptr : functions.at(name);
}

constexpr int kNavigation = 0;
constexpr int kNewWindow = 1;
constexpr int kResponse = 2;

class DocumentGuardTest : public ::testing::Test {
  protected:
    DocumentGuardTest() {
        connections.clear();
        calls.clear();
        missing.clear();
        host_.library.getNativeHandle = [](WebView, int kind) -> void* {
            return kind == 2 ? &view : nullptr;
        };
        host_.library.setHtml = [](WebView, const char*) { return 0; };
    }

    std::string Decide(int type, const char* address) {
        calls.clear();
        const Connection& signal = connections.at("decide-policy");
        const auto handler = reinterpret_cast<int (*)(void*, void*, int, void*)>(signal.handler);
        EXPECT_EQ(handler(&view, const_cast<char*>(address), type, signal.context), 1);
        EXPECT_EQ(calls.size(), 1U);
        return calls.back();
    }
    void Load(int event) {
        const Connection& signal = connections.at("load-changed");
        reinterpret_cast<void (*)(void*, int, void*)>(signal.handler)(&view, event, signal.context);
    }

    PageHost host_;
};

TEST_F(DocumentGuardTest, ConnectsToTheViewAndItsSession) {
    EXPECT_EQ(GuardDocuments(&host_, Find), nullptr);
    EXPECT_EQ(connections.at("decide-policy").object, &view);
    EXPECT_EQ(connections.at("load-changed").object, &view);
    EXPECT_EQ(connections.at("permission-request").object, &view);
    EXPECT_EQ(connections.at("download-started").object, &session);
    EXPECT_EQ(calls, (std::vector<std::string>{"clipboard off"}));
}

TEST_F(DocumentGuardTest, NamesAFunctionThatIsMissing) {
    for (const char* name :
         {"g_signal_connect_data", "webkit_policy_decision_ignore", "webkit_uri_request_get_uri"}) {
        missing = name;
        EXPECT_STREQ(GuardDocuments(&host_, Find), name);
        EXPECT_TRUE(connections.empty());
    }
}

TEST_F(DocumentGuardTest, AllowsTheOwnDocumentUntilItIsThere) {
    GuardDocuments(&host_, Find);
    EXPECT_EQ(Decide(kNavigation, "about:blank"), "ignore");
    SetPageHtml(&host_, "<p>");
    EXPECT_EQ(Decide(kNavigation, "about:blank"), "use");
    EXPECT_EQ(Decide(kResponse, "about:blank"), "use");
    for (const int event : {0, 1, 2, 3}) {
        Load(event);
    }
    EXPECT_TRUE(ShowsOwnDocument(&host_));
    EXPECT_EQ(Decide(kNavigation, "about:blank"), "ignore");
    EXPECT_EQ(Decide(kResponse, "about:blank"), "ignore");
}

TEST_F(DocumentGuardTest, RefusesOtherAddressesAndWindowsAtAnyTime) {
    GuardDocuments(&host_, Find);
    SetPageHtml(&host_, "<p>");
    for (const char* address : {"https://example.org/", "file:///tmp/page.html", "data:text/html,<p>",
                                "about:srcdoc", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Decide(kNavigation, address), "ignore");
        EXPECT_EQ(Decide(kResponse, address), "ignore");
    }
    EXPECT_EQ(Decide(kNewWindow, "about:blank"), "ignore");
    EXPECT_EQ(Decide(kNavigation, "about:blank"), "use");
}

TEST_F(DocumentGuardTest, DeniesPermissionsAndCancelsDownloads) {
    GuardDocuments(&host_, Find);
    calls.clear();
    const auto permission =
        reinterpret_cast<int (*)(void*, void*, void*)>(connections.at("permission-request").handler);
    EXPECT_EQ(permission(&view, nullptr, nullptr), 1);
    reinterpret_cast<void (*)(void*, void*, void*)>(connections.at("download-started").handler)(
        &session, nullptr, nullptr);
    EXPECT_EQ(calls, (std::vector<std::string>{"deny", "cancel"}));
}

TEST_F(DocumentGuardTest, ADocumentThatNobodyExpectedIsForeignUntilAnOwnOneComes) {
    GuardDocuments(&host_, Find);
    SetPageHtml(&host_, "<p>");
    Load(2);
    Load(2);
    EXPECT_FALSE(ShowsOwnDocument(&host_));
    SetPageHtml(&host_, "<p>");
    EXPECT_FALSE(ShowsOwnDocument(&host_));
    Load(2);
    EXPECT_TRUE(ShowsOwnDocument(&host_));
}

}  // namespace
#endif
