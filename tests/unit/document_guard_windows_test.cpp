// What the guard of the WebView2 view adds and how its handlers decide, on objects with the runtime's function tables.
#ifdef _WIN32
#include "platform/shared/page_host_state.h"
#include "platform/win32/document_guard.h"
#include "unit/fake_com_object.h"

#include <gtest/gtest.h>
#include <objbase.h>
#include <windows.h>

#include <cstring>
#include <cwchar>
#include <map>
#include <string>
#include <vector>

namespace {

FakeComObject controller;
FakeComObject controller4;
FakeComObject view;
FakeComObject view4;
FakeComObject arguments;
std::map<std::string, void*> added;  // the handlers that the view holds
const wchar_t* address = nullptr;    // of the navigation, or of the document in the view

ULONG STDMETHODCALLTYPE ReleaseNothing(void*) {
    return 1;
}

HRESULT STDMETHODCALLTYPE GetView(void*, void** object) {
    const HRESULT result = RecordComCall("view");
    *object = SUCCEEDED(result) ? &view : nullptr;
    return result;
}

HRESULT STDMETHODCALLTYPE QueryInterface(void* from, const GUID* id, void** object) {
    const GUID controller4Id = {0x97d418d5, 0xa426, 0x4e49, {0xa1, 0x51, 0xe1, 0xa1, 0x0f, 0x32, 0x7d, 0x9e}};
    const GUID view4Id = {0x20d02d59, 0x6df2, 0x42dc, {0xbd, 0x06, 0xf9, 0x8a, 0x69, 0x4b, 0x13, 0x02}};
    *object = nullptr;
    if (from == &controller && IsEqualGUID(*id, controller4Id) && RecordComCall("controller 4") == S_OK) {
        *object = &controller4;
    } else if (from == &view && IsEqualGUID(*id, view4Id) && RecordComCall("view 4") == S_OK) {
        *object = &view4;
    }
    return *object ? S_OK : E_NOINTERFACE;
}

// Adds a handler as the runtime does: it asks for the handler's own interface.
HRESULT AddHandler(const std::string& name, const GUID& id, void* handler, INT64* token) {
    if (RecordComCall(name) != S_OK) {
        return E_FAIL;
    }
    *token = 7;
    void* own = nullptr;
    EXPECT_EQ(static_cast<IUnknown*>(handler)->QueryInterface(id, &own), S_OK);
    added[name] = own;
    void* other = handler;
    EXPECT_EQ(static_cast<IUnknown*>(handler)->QueryInterface(IID_IStream, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
    return S_OK;
}

constexpr GUID kNavigationId = {0x9adbe429, 0xf36d, 0x432b, {0x9d, 0xdc, 0xf8, 0x88, 0x1f, 0xbd, 0x76, 0xe3}};
constexpr GUID kWindowId = {0xd4c185fe, 0xc81c, 0x4989, {0x97, 0xaf, 0x2d, 0x3f, 0xa7, 0xab, 0x56, 0x51}};
constexpr GUID kPermissionId = {0x15e1c6a3, 0xc72a, 0x4df3, {0x91, 0xd7, 0xd0, 0x97, 0xfb, 0xec, 0x6b, 0xfd}};
constexpr GUID kDownloadId = {0xefedc989, 0xc396, 0x41ca, {0x83, 0xf7, 0x07, 0xf8, 0x45, 0xa5, 0x57, 0x24}};

HRESULT STDMETHODCALLTYPE AddNavigation(void*, void* handler, INT64* token) {
    return AddHandler("navigation", kNavigationId, handler, token);
}
HRESULT STDMETHODCALLTYPE AddFrame(void*, void* handler, INT64* token) {
    return AddHandler("frame", kNavigationId, handler, token);
}
HRESULT STDMETHODCALLTYPE AddWindow(void*, void* handler, INT64* token) {
    return AddHandler("window", kWindowId, handler, token);
}
HRESULT STDMETHODCALLTYPE AddPermission(void*, void* handler, INT64* token) {
    return AddHandler("permission", kPermissionId, handler, token);
}
HRESULT STDMETHODCALLTYPE AddDownload(void*, void* handler, INT64* token) {
    return AddHandler("download", kDownloadId, handler, token);
}
HRESULT STDMETHODCALLTYPE PutExternalDrop(void*, BOOL on) {
    return RecordComCall(on ? "drops on" : "drops off");
}

HRESULT STDMETHODCALLTYPE GetAddress(void*, wchar_t** text) {
    *text = nullptr;
    if (!address) {
        return E_FAIL;
    }
    const size_t bytes = (std::wcslen(address) + 1) * sizeof(wchar_t);
    *text = static_cast<wchar_t*>(CoTaskMemAlloc(bytes));
    std::memcpy(*text, address, bytes);
    return S_OK;
}
template <int slot> HRESULT STDMETHODCALLTYPE PutNumber(void*, int number) {
    return RecordComCall("slot " + std::to_string(slot) + " = " + std::to_string(number));
}

class DocumentGuardTest : public ::testing::Test {
  protected:
    DocumentGuardTest() {
        ResetComObjects({&controller, &controller4, &view, &view4, &arguments});
        added.clear();
        address = L"about:blank";
        for (FakeComObject* object : {&controller, &controller4, &view, &view4, &arguments}) {
            PutComMethod(*object, 0, QueryInterface);
            PutComMethod(*object, 2, ReleaseNothing);
        }
        PutComMethod(controller, 25, GetView);
        PutComMethod(controller4, 37, PutExternalDrop);
        PutComMethod(view, 4, GetAddress);
        PutComMethod(view, 7, AddNavigation);
        PutComMethod(view, 17, AddFrame);
        PutComMethod(view, 23, AddPermission);
        PutComMethod(view, 44, AddWindow);
        PutComMethod(view4, 75, AddDownload);
        host_.library.getNativeHandle = [](WebView, int kind) -> void* {
            return kind == 2 ? &controller : nullptr;
        };
        host_.library.setHtml = [](WebView, const char*) { return 0; };
    }
    ~DocumentGuardTest() override {
        for (const auto& [name, handler] : added) {
            EXPECT_EQ(static_cast<IUnknown*>(handler)->Release(), 0U) << name;  // ours was the last but one
        }
    }

    // What the handler does with an event; `slot` is that of its one answer.
    template <int slot> std::vector<std::string> Raise(const std::string& name) {
        PutComMethod(arguments, slot, PutNumber<slot>);
        comCalls.clear();
        using Invoke = HRESULT(STDMETHODCALLTYPE*)(void*, void*, void*);
        void* handler = added.at(name);
        reinterpret_cast<Invoke>((*static_cast<void***>(handler))[3])(handler, &view, &arguments);
        return comCalls;
    }
    std::vector<std::string> Navigate(const wchar_t* to) {
        PutComMethod(arguments, 3, GetAddress);
        address = to;
        return Raise<8>("navigation");
    }

    PageHost host_;
    const std::vector<std::string> refused_ = {"slot 8 = 1"};
    const std::vector<std::string> allowed_ = {};
};

TEST_F(DocumentGuardTest, AddsEveryHandlerAndTurnsDropsOff) {
    EXPECT_TRUE(GuardDocuments(&host_));
    EXPECT_EQ(comCalls, (std::vector<std::string>{"view", "navigation", "frame", "window", "permission",
                                                  "view 4", "download", "controller 4", "drops off"}));
}

TEST_F(DocumentGuardTest, FailsWithoutAHandlerThatEveryRuntimeTakes) {
    for (const char* step : {"view", "navigation", "frame", "window", "permission"}) {
        failingComCall = step;
        EXPECT_FALSE(GuardDocuments(&host_)) << step;
        for (const auto& [name, handler] : added) {
            static_cast<IUnknown*>(handler)->Release();
        }
        added.clear();
    }
}

TEST_F(DocumentGuardTest, AnOldRuntimeIsGuardedAgainstWhatItKnows) {
    failingComCall = "view 4";
    EXPECT_TRUE(GuardDocuments(&host_));
    EXPECT_EQ(added.count("download"), 0U);
    EXPECT_EQ(comCalls.back(), "drops off");
}

TEST_F(DocumentGuardTest, WithoutAControllerThereIsNothingToGuard) {
    host_.library.getNativeHandle = [](WebView, int) -> void* { return nullptr; };
    EXPECT_TRUE(GuardDocuments(&host_));
    EXPECT_TRUE(ShowsOwnDocument(&host_));
    EXPECT_TRUE(comCalls.empty());
}

TEST_F(DocumentGuardTest, AllowsOneNavigationForEachOwnDocument) {
    GuardDocuments(&host_);
    EXPECT_EQ(Navigate(L"about:blank"), refused_);
    SetPageHtml(&host_, "<p>");
    EXPECT_EQ(Navigate(L"data:text/html;charset=utf-8,<a href=https://example.org/>"), allowed_);
    EXPECT_EQ(Navigate(L"about:blank"), refused_);
    EXPECT_EQ(Navigate(L"https://example.org/"), refused_);
    SetPageHtml(&host_, "<p>");
    EXPECT_EQ(Navigate(L"about:blank"), allowed_);
    EXPECT_EQ(Navigate(L"about:blank"), refused_);
}

TEST_F(DocumentGuardTest, AForeignNavigationDoesNotTakeThePlaceOfTheExpectedOne) {
    GuardDocuments(&host_);
    SetPageHtml(&host_, "<p>");
    for (const wchar_t* to : {L"https://example.org/", L"http://127.0.0.1/", L"file:///C:/page.html",
                              L"edge://settings", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(Navigate(to), refused_);
    }
    EXPECT_EQ(Navigate(L"about:blank"), allowed_);
}

TEST_F(DocumentGuardTest, RefusesFramesWindowsPermissionsAndDownloads) {
    GuardDocuments(&host_);
    SetPageHtml(&host_, "<p>");
    EXPECT_EQ(Raise<8>("frame"), refused_);
    EXPECT_EQ(Raise<6>("window"), (std::vector<std::string>{"slot 6 = 1"}));
    EXPECT_EQ(Raise<7>("permission"), (std::vector<std::string>{"slot 7 = 2"}));
    EXPECT_EQ(Raise<5>("download"), (std::vector<std::string>{"slot 5 = 1"}));
}

TEST_F(DocumentGuardTest, ANavigationThatCannotBeRefusedMakesTheDocumentForeign) {
    GuardDocuments(&host_);
    EXPECT_TRUE(ShowsOwnDocument(&host_));
    failingComCall = "slot 8 = 1";
    Navigate(L"about:blank");
    EXPECT_FALSE(ShowsOwnDocument(&host_));
    SetPageHtml(&host_, "<p>");
    Navigate(L"about:blank");
    EXPECT_TRUE(ShowsOwnDocument(&host_));
}

TEST_F(DocumentGuardTest, ADocumentFromSomewhereIsForeign) {
    GuardDocuments(&host_);
    for (const wchar_t* from : {L"about:blank", L"data:text/html,<p>://"}) {
        address = from;
        EXPECT_TRUE(ShowsOwnDocument(&host_));
    }
    for (const wchar_t* from :
         {L"https://example.org/", L"file:///C:/page.html", static_cast<const wchar_t*>(nullptr)}) {
        address = from;
        EXPECT_FALSE(ShowsOwnDocument(&host_));
    }
}

}  // namespace
#endif
