// The few interfaces of the WebView2 runtime that we use, called by their place in the function table, as published:
// no header of them is available here. Every table begins with the three functions of IUnknown.
#pragma once

#include <windows.h>
// windows.h comes first.
#include <eventtoken.h>

constexpr int kQueryInterface = 0;
constexpr int kRelease = 2;

// ICoreWebView2Controller
constexpr int kControllerGetCoreWebView2 = 25;
// ICoreWebView2Controller4
constexpr GUID kController4Id = {
    0x97d418d5, 0xa426, 0x4e49, {0xa1, 0x51, 0xe1, 0xa1, 0x0f, 0x32, 0x7d, 0x9e}};
constexpr int kController4PutAllowExternalDrop = 37;

// ICoreWebView2. An add_ takes a handler and the address of an EventToken.
using EventToken = EventRegistrationToken;
static_assert(sizeof(EventToken) == sizeof(INT64));
constexpr int kWebViewGetSettings = 3;
constexpr int kWebViewGetSource = 4;
constexpr int kWebViewAddNavigationStarting = 7;
constexpr int kWebViewAddFrameNavigationStarting = 17;
constexpr int kWebViewAddPermissionRequested = 23;
constexpr int kWebViewAddNewWindowRequested = 44;
// ICoreWebView2_4
constexpr GUID kWebView4Id = {0x20d02d59, 0x6df2, 0x42dc, {0xbd, 0x06, 0xf9, 0x8a, 0x69, 0x4b, 0x13, 0x02}};
constexpr int kWebView4AddDownloadStarting = 75;

// ICoreWebView2Settings, ICoreWebView2Settings3
constexpr int kSettingsPutDefaultContextMenus = 14;
constexpr int kSettingsPutZoomControl = 18;
constexpr GUID kSettings3Id = {0xfdb5ab74, 0xaf33, 0x4854, {0x84, 0xf0, 0x0a, 0x63, 0x1d, 0xeb, 0x5e, 0xba}};
constexpr int kSettings3PutBrowserAcceleratorKeys = 24;

// Handlers, which are objects of ours with one more function: Invoke(sender, arguments).
constexpr GUID kNavigationStartingHandlerId = {  // also of frames
    0x9adbe429,
    0xf36d,
    0x432b,
    {0x9d, 0xdc, 0xf8, 0x88, 0x1f, 0xbd, 0x76, 0xe3}};
constexpr GUID kNewWindowRequestedHandlerId = {
    0xd4c185fe, 0xc81c, 0x4989, {0x97, 0xaf, 0x2d, 0x3f, 0xa7, 0xab, 0x56, 0x51}};
constexpr GUID kPermissionRequestedHandlerId = {
    0x15e1c6a3, 0xc72a, 0x4df3, {0x91, 0xd7, 0xd0, 0x97, 0xfb, 0xec, 0x6b, 0xfd}};
constexpr GUID kDownloadStartingHandlerId = {
    0xefedc989, 0xc396, 0x41ca, {0x83, 0xf7, 0x07, 0xf8, 0x45, 0xa5, 0x57, 0x24}};

// Their arguments
constexpr int kNavigationGetUri = 3;
constexpr int kNavigationPutCancel = 8;
constexpr int kNewWindowPutHandled = 6;
constexpr int kPermissionPutState = 7;
constexpr int kPermissionDeny = 2;  // COREWEBVIEW2_PERMISSION_STATE
constexpr int kDownloadPutCancel = 5;

template <typename... Arguments> HRESULT CallSlot(void* object, int slot, Arguments... arguments) {
    using Method = HRESULT(STDMETHODCALLTYPE*)(void*, Arguments...);
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<Method>(table[slot])(object, arguments...);
}

// A counted reference that we own.
struct ComReference {
    void* object = nullptr;
    ComReference() = default;
    ComReference(const ComReference&) = delete;
    ComReference& operator=(const ComReference&) = delete;
    ~ComReference() {
        if (object) {
            using Method = ULONG(STDMETHODCALLTYPE*)(void*);
            void** table = *static_cast<void***>(object);
            reinterpret_cast<Method>(table[kRelease])(object);
        }
    }
};

// Fills the reference by a function that returns an interface. False if there is none.
template <typename... Arguments>
bool GetInterface(void* from, int slot, ComReference* reference, Arguments... arguments) {
    return SUCCEEDED(CallSlot(from, slot, arguments..., &reference->object)) && reference->object;
}
