#include "platform/win32/document_guard.h"

#include "platform/shared/page_host_state.h"
#include "platform/win32/web_view2.h"

#include <objbase.h>

#include <atomic>
#include <cwchar>
#include <new>

namespace {

using Decision = HRESULT (*)(PageDocuments* documents, void* arguments);

// Runs a decision for each event. Counted by its holders.
class EventHandler final : public IUnknown {
  public:
    EventHandler(const GUID& id, Decision decision, PageDocuments* documents)
        : id_(id), decision_(decision), documents_(documents) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (!object) {
            return E_POINTER;
        }
        const bool known = IsEqualGUID(id, id_) || IsEqualGUID(id, IID_IUnknown);
        *object = known ? this : nullptr;
        if (!known) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }
    virtual HRESULT STDMETHODCALLTYPE Invoke(void* /*sender*/, void* arguments) {
        return decision_(documents_, arguments);
    }

  private:
    // Only Release ends it.
    ~EventHandler() = default;

    const GUID id_;
    const Decision decision_;
    PageDocuments* const documents_;
    std::atomic<ULONG> references_ = 1;
};

// Whether the address that `slot` of `object` returns has the form scheme://, so that its document came from somewhere.
// A document of SetPageHtml has about:blank or, in some versions of the runtime, a data address. An address that cannot
// be read counts as one from somewhere.
bool NamesAPlace(void* object, int slot) {
    wchar_t* address = nullptr;
    if (FAILED(CallSlot(object, slot, &address)) || !address) {
        return true;
    }
    const wchar_t* colon = std::wcschr(address, L':');
    const bool named = colon && colon[1] == L'/' && colon[2] == L'/';
    CoTaskMemFree(address);
    return named;
}

// NOTE: the runtime raises this event for our own documents too, and names them differently from version to version.
// HACK: the first navigation that follows each SetPageHtml is taken for ours, unless its address names a place.
HRESULT DecideNavigation(PageDocuments* documents, void* arguments) {
    if (documents->expected > 0 && !NamesAPlace(arguments, kNavigationGetUri)) {
        DocumentArrived(documents);
        return S_OK;
    }
    const HRESULT result = CallSlot(arguments, kNavigationPutCancel, TRUE);
    if (FAILED(result)) {
        documents->foreign = true;
    }
    return result;
}

HRESULT RefuseFrame(PageDocuments* /*documents*/, void* arguments) {
    return CallSlot(arguments, kNavigationPutCancel, TRUE);
}

// Handled and without a window of ours: there is none.
HRESULT RefuseWindow(PageDocuments* /*documents*/, void* arguments) {
    return CallSlot(arguments, kNewWindowPutHandled, TRUE);
}

// The library allows pages to read the clipboard. Handlers run in the order of their adding, so this one decides.
HRESULT DenyPermission(PageDocuments* /*documents*/, void* arguments) {
    return CallSlot(arguments, kPermissionPutState, kPermissionDeny);
}

HRESULT RefuseDownload(PageDocuments* /*documents*/, void* arguments) {
    return CallSlot(arguments, kDownloadPutCancel, TRUE);
}

bool AddHandler(void* view, int slot, const GUID& id, Decision decision, PageDocuments* documents) {
    auto* handler = new (std::nothrow) EventHandler(id, decision, documents);
    if (!handler) {
        return false;
    }
    EventToken token = {};
    const HRESULT result = CallSlot(view, slot, static_cast<IUnknown*>(handler), &token);
    handler->Release();
    return SUCCEEDED(result);
}

// Null for the tests' library, which has no browser of its own. Not ours to release.
void* Controller(PageHost* host) {
    return host->library.getNativeHandle(host->view, kWebViewHandleBrowserController);
}

}  // namespace

bool GuardDocuments(PageHost* host) {
    void* controller = Controller(host);
    if (!controller) {
        return true;
    }
    ComReference view;
    if (!GetInterface(controller, kControllerGetCoreWebView2, &view)) {
        return false;
    }
    PageDocuments* documents = &host->documents;
    if (!AddHandler(view.object, kWebViewAddNavigationStarting, kNavigationStartingHandlerId,
                    DecideNavigation, documents) ||
        !AddHandler(view.object, kWebViewAddFrameNavigationStarting, kNavigationStartingHandlerId,
                    RefuseFrame, documents) ||
        !AddHandler(view.object, kWebViewAddNewWindowRequested, kNewWindowRequestedHandlerId, RefuseWindow,
                    documents) ||
        !AddHandler(view.object, kWebViewAddPermissionRequested, kPermissionRequestedHandlerId,
                    DenyPermission, documents)) {
        return false;
    }
    ComReference view4;
    if (GetInterface(view.object, kQueryInterface, &view4, &kWebView4Id)) {
        AddHandler(view4.object, kWebView4AddDownloadStarting, kDownloadStartingHandlerId, RefuseDownload,
                   documents);
    }
    // Drops then reach the window below, which takes files itself.
    ComReference controller4;
    if (GetInterface(controller, kQueryInterface, &controller4, &kController4Id)) {
        CallSlot(controller4.object, kController4PutAllowExternalDrop, FALSE);
    }
    return true;
}

bool HasOwnAddress(PageHost* host) {
    void* controller = Controller(host);
    if (!controller) {
        return true;
    }
    ComReference view;
    return GetInterface(controller, kControllerGetCoreWebView2, &view) &&
           !NamesAPlace(view.object, kWebViewGetSource);
}
