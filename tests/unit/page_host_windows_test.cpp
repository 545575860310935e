// Turning off the browser's features goes through interfaces that are called by their place in a table: here are
// objects of such tables that tell what was called.
#ifdef _WIN32
#include "platform/page_host.h"
#include "platform/shared/page_host_state.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace {

constexpr size_t kSlots = 40;

struct FakeObject {
    void** table;
    std::array<void*, kSlots> slots;
};

std::vector<std::string> calls;
FakeObject controller;
FakeObject webView;
FakeObject settings;
FakeObject settings3;
std::string failing;  // the call that fails

HRESULT Tell(const std::string& call) {
    calls.push_back(call);
    return call == failing ? E_FAIL : S_OK;
}

HRESULT STDMETHODCALLTYPE Unexpected(void*) {
    calls.push_back("unexpected");
    return E_FAIL;
}

template <int id> ULONG STDMETHODCALLTYPE Release(void*) {
    static constexpr const char* kNames[] = {"release controller", "release view", "release settings",
                                             "release settings3"};
    calls.push_back(kNames[id]);
    return 1;
}

HRESULT STDMETHODCALLTYPE GetCoreWebView2(void*, void** object) {
    const HRESULT result = Tell("get view");
    *object = SUCCEEDED(result) ? &webView : nullptr;
    return result;
}

HRESULT STDMETHODCALLTYPE GetSettings(void*, void** object) {
    const HRESULT result = Tell("get settings");
    *object = SUCCEEDED(result) ? &settings : nullptr;
    return result;
}

HRESULT STDMETHODCALLTYPE QueryInterface(void*, const GUID* id, void** object) {
    constexpr GUID kSettings3 = {
        0xfdb5ab74, 0xaf33, 0x4854, {0x84, 0xf0, 0x0a, 0x63, 0x1d, 0xeb, 0x5e, 0xba}};
    const HRESULT result =
        Tell(std::memcmp(id, &kSettings3, sizeof *id) == 0 ? "query settings3" : "query another");
    *object = SUCCEEDED(result) ? &settings3 : nullptr;
    return result;
}

HRESULT STDMETHODCALLTYPE PutContextMenus(void*, BOOL on) {
    return Tell(on ? "menus on" : "menus off");
}
HRESULT STDMETHODCALLTYPE PutZoomControl(void*, BOOL on) {
    return Tell(on ? "zoom on" : "zoom off");
}
HRESULT STDMETHODCALLTYPE PutAcceleratorKeys(void*, BOOL on) {
    return Tell(on ? "keys on" : "keys off");
}

template <typename Method> void Put(FakeObject& object, size_t slot, Method method) {
    object.slots[slot] = reinterpret_cast<void*>(method);
}

void* GiveController(WebView, int kind) {
    return kind == 2 ? &controller : nullptr;
}

class BrowserFeaturesTest : public ::testing::Test {
  protected:
    BrowserFeaturesTest() {
        calls.clear();
        failing.clear();
        for (FakeObject* object : {&controller, &webView, &settings, &settings3}) {
            object->table = object->slots.data();
            for (size_t slot = 0; slot < kSlots; ++slot) {
                Put(*object, slot, Unexpected);
            }
        }
        Put(controller, 2, Release<0>);
        Put(webView, 2, Release<1>);
        Put(settings, 2, Release<2>);
        Put(settings3, 2, Release<3>);
        Put(controller, 25, GetCoreWebView2);
        Put(webView, 3, GetSettings);
        Put(settings, 0, QueryInterface);
        Put(settings, 14, PutContextMenus);
        Put(settings, 18, PutZoomControl);
        Put(settings3, 24, PutAcceleratorKeys);
        host_.library.getNativeHandle = GiveController;
    }
    PageHost host_;
};

TEST_F(BrowserFeaturesTest, AllThreeAreTurnedOffAndEverythingIsReleasedButTheController) {
    DisableBrowserFeatures(&host_);
    EXPECT_EQ(calls, (std::vector<std::string>{"get view", "get settings", "menus off", "zoom off",
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
        calls.clear();
        failing = step;
        DisableBrowserFeatures(&host_);
        EXPECT_EQ(calls, expected) << step;
    }
}

TEST_F(BrowserFeaturesTest, WithoutAControllerNothingHappens) {
    host_.library.getNativeHandle = [](WebView, int) -> void* { return nullptr; };
    DisableBrowserFeatures(&host_);
    EXPECT_TRUE(calls.empty());
}

}  // namespace
#endif
