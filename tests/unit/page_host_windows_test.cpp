// The calls that turn off the browser's features, on objects with the runtime's function tables.
#ifdef _WIN32
#include "platform/page_host.h"
#include "platform/shared/page_host_state.h"
#include "unit/fake_com_object.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <string>
#include <vector>

namespace {

FakeComObject controller;
FakeComObject webView;
FakeComObject settings;
FakeComObject settings3;

template <int id> ULONG STDMETHODCALLTYPE Release(void*) {
    static constexpr const char* kNames[] = {"release controller", "release view", "release settings",
                                             "release settings3"};
    comCalls.push_back(kNames[id]);
    return 1;
}

HRESULT STDMETHODCALLTYPE GetCoreWebView2(void*, void** object) {
    const HRESULT result = RecordComCall("get view");
    *object = SUCCEEDED(result) ? &webView : nullptr;
    return result;
}

HRESULT STDMETHODCALLTYPE GetSettings(void*, void** object) {
    const HRESULT result = RecordComCall("get settings");
    *object = SUCCEEDED(result) ? &settings : nullptr;
    return result;
}

HRESULT STDMETHODCALLTYPE QueryInterface(void*, const GUID* id, void** object) {
    constexpr GUID kSettings3 = {
        0xfdb5ab74, 0xaf33, 0x4854, {0x84, 0xf0, 0x0a, 0x63, 0x1d, 0xeb, 0x5e, 0xba}};
    const HRESULT result =
        RecordComCall(std::memcmp(id, &kSettings3, sizeof *id) == 0 ? "query settings3" : "query another");
    *object = SUCCEEDED(result) ? &settings3 : nullptr;
    return result;
}

HRESULT STDMETHODCALLTYPE PutContextMenus(void*, BOOL on) {
    return RecordComCall(on ? "menus on" : "menus off");
}
HRESULT STDMETHODCALLTYPE PutZoomControl(void*, BOOL on) {
    return RecordComCall(on ? "zoom on" : "zoom off");
}
HRESULT STDMETHODCALLTYPE PutAcceleratorKeys(void*, BOOL on) {
    return RecordComCall(on ? "keys on" : "keys off");
}

void* GiveController(WebView, int kind) {
    return kind == 2 ? &controller : nullptr;
}

class BrowserFeaturesTest : public ::testing::Test {
  protected:
    BrowserFeaturesTest() {
        ResetComObjects({&controller, &webView, &settings, &settings3});
        PutComMethod(controller, 2, Release<0>);
        PutComMethod(webView, 2, Release<1>);
        PutComMethod(settings, 2, Release<2>);
        PutComMethod(settings3, 2, Release<3>);
        PutComMethod(controller, 25, GetCoreWebView2);
        PutComMethod(webView, 3, GetSettings);
        PutComMethod(settings, 0, QueryInterface);
        PutComMethod(settings, 14, PutContextMenus);
        PutComMethod(settings, 18, PutZoomControl);
        PutComMethod(settings3, 24, PutAcceleratorKeys);
        host_.library.getNativeHandle = GiveController;
    }
    PageHost host_;
};

TEST_F(BrowserFeaturesTest, AllThreeAreTurnedOffAndEverythingIsReleasedButTheController) {
    DisableBrowserFeatures(&host_);
    EXPECT_EQ(comCalls, (std::vector<std::string>{"get view", "get settings", "menus off", "zoom off",
                                                  "query settings3", "keys off", "release settings3",
                                                  "release settings", "release view"}));
}

TEST_F(BrowserFeaturesTest, AFailingStepEndsTheRest) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
        {"get view", {"get view"}},
        {"get settings", {"get view", "get settings", "release view"}},
        {"menus off", {"get view", "get settings", "menus off", "release settings", "release view"}},
        {"zoom off",
         {"get view", "get settings", "menus off", "zoom off", "release settings", "release view"}},
        {"query settings3",
         {"get view", "get settings", "menus off", "zoom off", "query settings3", "release settings",
          "release view"}},
    };
    for (const auto& [step, expected] : cases) {
        comCalls.clear();
        failingComCall = step;
        DisableBrowserFeatures(&host_);
        EXPECT_EQ(comCalls, expected) << step;
    }
}

TEST_F(BrowserFeaturesTest, WithoutAControllerNothingHappens) {
    host_.library.getNativeHandle = [](WebView, int) -> void* { return nullptr; };
    DisableBrowserFeatures(&host_);
    EXPECT_TRUE(comCalls.empty());
}

}  // namespace
#endif
