#include "platform/linux/document_guard.h"

#include "platform/shared/page_host_state.h"

#include <cstring>

namespace {

// Values of WebKitGTK 6.0.
constexpr int kNavigationAction = 0;  // WebKitPolicyDecisionType
constexpr int kResponse = 2;
constexpr int kLoadCommitted = 2;  // WebKitLoadEvent

// SetPageHtml gives no base address, and the document then has this one.
constexpr const char* kOwnAddress = "about:blank";

struct WebKitFunctions {
    unsigned long (*connectSignal)(void* object, const char* signal, void (*handler)(), void* context,
                                   void (*release)(void*, void*), int flags);
    void* (*getSettings)(void* view);
    void (*setClipboardAccess)(void* settings, int on);
    void* (*getNetworkSession)(void* view);
    void (*cancelDownload)(void* download);
    void (*denyPermission)(void* request);
    void (*useDecision)(void* decision);
    void (*ignoreDecision)(void* decision);
    void* (*getNavigationAction)(void* decision);
    void* (*getActionRequest)(void* action);
    void* (*getResponseRequest)(void* decision);
    const char* (*getRequestAddress)(void* request);
};

WebKitFunctions webKit;  // UI thread

// The name of the first function that is missing, or null.
const char* FindFunctions(void* (*find)(void*, const char*), void* module) {
    const char* name = nullptr;
    auto resolve = [&](auto* slot, const char* exported) {
        name = exported;
        void* address = find(module, exported);
        std::memcpy(slot, &address, sizeof address);
        return address != nullptr;
    };
    const bool complete =
        resolve(&webKit.connectSignal, "g_signal_connect_data") &&
        resolve(&webKit.getSettings, "webkit_web_view_get_settings") &&
        resolve(&webKit.setClipboardAccess, "webkit_settings_set_javascript_can_access_clipboard") &&
        resolve(&webKit.getNetworkSession, "webkit_web_view_get_network_session") &&
        resolve(&webKit.cancelDownload, "webkit_download_cancel") &&
        resolve(&webKit.denyPermission, "webkit_permission_request_deny") &&
        resolve(&webKit.useDecision, "webkit_policy_decision_use") &&
        resolve(&webKit.ignoreDecision, "webkit_policy_decision_ignore") &&
        resolve(&webKit.getNavigationAction, "webkit_navigation_policy_decision_get_navigation_action") &&
        resolve(&webKit.getActionRequest, "webkit_navigation_action_get_request") &&
        resolve(&webKit.getResponseRequest, "webkit_response_policy_decision_get_request") &&
        resolve(&webKit.getRequestAddress, "webkit_uri_request_get_uri");
    return complete ? nullptr : name;
}

// The address that a decision is about, or null for a new window, which is never ours.
const char* AddressOf(void* decision, int type) {
    if (type == kNavigationAction) {
        return webKit.getRequestAddress(webKit.getActionRequest(webKit.getNavigationAction(decision)));
    }
    if (type == kResponse) {
        return webKit.getRequestAddress(webKit.getResponseRequest(decision));
    }
    return nullptr;
}

// Signal "decide-policy" of the view. A decision that is left alone would be taken for a yes.
int DecidePolicy(void* /*view*/, void* decision, int type, void* context) noexcept {
    const auto* documents = static_cast<const PageDocuments*>(context);
    const char* address = documents->expected > 0 ? AddressOf(decision, type) : nullptr;
    if (address && std::strcmp(address, kOwnAddress) == 0) {
        webKit.useDecision(decision);
    } else {
        webKit.ignoreDecision(decision);
    }
    return 1;  // decided
}

// Signal "load-changed" of the view. A document is committed before its first script runs, and its calls come on the
// same connection, so they are behind this.
void LoadChanged(void* /*view*/, int event, void* context) noexcept {
    if (event == kLoadCommitted) {
        DocumentArrived(static_cast<PageDocuments*>(context));
    }
}

// Signal "permission-request" of the view.
int DenyPermission(void* /*view*/, void* request, void* /*context*/) noexcept {
    webKit.denyPermission(request);
    return 1;
}

// Signal "download-started" of the network session.
void CancelDownload(void* /*session*/, void* download, void* /*context*/) noexcept {
    webKit.cancelDownload(download);
}

template <typename Handler> void Connect(void* object, const char* signal, Handler* handler, void* context) {
    webKit.connectSignal(object, signal, reinterpret_cast<void (*)()>(handler), context, nullptr, 0);
}

}  // namespace

const char* GuardDocuments(PageHost* host, void* (*find)(void* module, const char* name)) {
    if (const char* missing = FindFunctions(find, host->module)) {
        return missing;
    }
    void* view = host->library.getNativeHandle(host->view, kWebViewHandleBrowserController);
    Connect(view, "decide-policy", DecidePolicy, &host->documents);
    Connect(view, "load-changed", LoadChanged, &host->documents);
    Connect(view, "permission-request", DenyPermission, nullptr);
    Connect(webKit.getNetworkSession(view), "download-started", CancelDownload, nullptr);
    // The library switches it on. The page has no use for it.
    webKit.setClipboardAccess(webKit.getSettings(view), 0);
    return nullptr;
}
