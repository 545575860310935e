// The web view on Windows: the library drives the WebView2 runtime.
#include "platform/page_host.h"

#include "platform/process.h"
#include "platform/shared/page_host_state.h"
#include "platform/win32/document_guard.h"
#include "platform/win32/text_encoding.h"
#include "platform/win32/web_view2.h"

#include <windows.h>

#include <memory>

namespace {

void* FindExport(void* module, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}

bool IsFile(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// Loads the library from the program's own folder and nowhere else, and what it needs from the system's folder. Other
// files in the program's folder, perhaps a folder of downloads, are never loaded. Empty on success.
std::string LoadLibraryOfPage(PageHost* host) {
    const std::string path = ProgramDirectory() + "\\libwebview.dll";
    if (!IsFile(path)) {
        return "Varnelle cannot show its window because " + path +
               " is missing; put it back beside the program, or install Varnelle again.";
    }
    HMODULE module = LoadLibraryExA(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!module) {
        const DWORD error = GetLastError();
        if (error == ERROR_MOD_NOT_FOUND) {
            return "Varnelle cannot show its window because the Microsoft Visual C++ runtime (x64) is "
                   "missing; install "
                   "it from https://aka.ms/vs/17/release/vc_redist.x64.exe and start Varnelle again.";
        }
        return "Varnelle cannot show its window because " + path + " does not load (error " +
               std::to_string(error) + "); install Varnelle again.";
    }
    host->module = module;
    if (const char* missing = ResolveWebViewLibrary(&host->library, FindExport, host->module)) {
        return "Varnelle cannot show its window because " + path + " lacks " + missing +
               "; install Varnelle again to get the matching file.";
    }
    return "";
}

// The folder of the installed WebView2 runtime as the registry names it, empty if it names none.
std::string RegisteredRuntimeFolder() {
    constexpr const char* kKey =
        "SOFTWARE\\Microsoft\\EdgeUpdate\\ClientState\\{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5}";
    for (HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        HKEY key = nullptr;
        if (RegOpenKeyExA(root, kKey, 0, KEY_QUERY_VALUE | KEY_WOW64_32KEY, &key) != ERROR_SUCCESS) {
            continue;
        }
        char folder[1024] = {};
        DWORD size = sizeof folder;
        const LSTATUS status = RegGetValueA(key, nullptr, "EBWebView", RRF_RT_REG_SZ, nullptr, folder, &size);
        RegCloseKey(key);
        if (status == ERROR_SUCCESS && folder[0] != '\0') {
            return folder;
        }
    }
    return "";
}

std::string NoRuntimeMessage() {
    return "Varnelle cannot show its window because the Microsoft Edge WebView2 runtime is missing or "
           "damaged; install "
           "it from https://developer.microsoft.com/microsoft-edge/webview2 and start Varnelle again.";
}

}  // namespace

std::string CreatePageHost(PageHost** host) {
    *host = nullptr;
    // The library looks for another one by its bare name when the view is created.
    SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
    auto created = std::make_unique<PageHost>();
    const std::string failure = LoadLibraryOfPage(created.get());
    if (!failure.empty()) {
        return failure;
    }
    // NOTE: the library waits for ever for a runtime that is registered but not there.
    // HACK: look for the one file that it would load.
    const std::string runtime = RegisteredRuntimeFolder();
    if (!runtime.empty() && !IsFile(runtime + "\\EBWebView\\x64\\EmbeddedBrowserWebView.dll")) {
        return NoRuntimeMessage();
    }
    created->view = created->library.create(0, nullptr);
    if (!created->view) {
        return NoRuntimeMessage();
    }
    if (!GuardDocuments(created.get())) {
        created->library.destroy(created->view);
        return NoRuntimeMessage();
    }
    *host = created.release();
    return "";
}

void DisableBrowserFeatures(PageHost* host) {
    // Not ours to release: the library hands out its own reference.
    void* controller = host->library.getNativeHandle(host->view, kWebViewHandleBrowserController);
    if (!controller) {
        return;
    }
    ComReference webView;
    ComReference settings;
    if (!GetInterface(controller, kControllerGetCoreWebView2, &webView) ||
        !GetInterface(webView.object, kWebViewGetSettings, &settings) ||
        FAILED(CallSlot(settings.object, kSettingsPutDefaultContextMenus, FALSE)) ||
        FAILED(CallSlot(settings.object, kSettingsPutZoomControl, FALSE))) {
        return;
    }
    ComReference settings3;
    if (!GetInterface(settings.object, kQueryInterface, &settings3, &kSettings3Id)) {
        return;
    }
    CallSlot(settings3.object, kSettings3PutBrowserAcceleratorKeys, FALSE);
}

WindowRef PageHostWindow(PageHost* host) {
    return reinterpret_cast<WindowRef>(host->library.getWindow(host->view));
}

bool PageWindowIsOpen(PageHost* host) {
    // The library turns its message loop inside every bind, and a close that arrives there is not seen by the loop.
    return IsWindow(reinterpret_cast<HWND>(PageHostWindow(host))) != FALSE;
}

bool ShowsOwnDocument(PageHost* host) {
    return !host->documents.foreign && HasOwnAddress(host);
}

void PageWindowShown(PageHost* /*host*/) {
    // The window has been there since the web view was made.
}

std::string PageText(std::string_view text) {
    return Utf8OfMixedText(text, GetACP());
}
