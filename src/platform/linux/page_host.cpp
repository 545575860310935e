// The web view on X11: the library brings GTK and WebKitGTK with it. What we need of GTK beyond the library's own
// interface is looked up by name, so that the program starts without GTK for its console modes.
#include "platform/page_host.h"

#include "platform/linux/document_guard.h"
#include "platform/linux/frame_watch.h"
#include "platform/process.h"
#include "platform/shared/page_host_state.h"
#include "platform/shared/valid_utf8.h"

#include <X11/Xlib.h>
#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>

namespace {

void* FindExport(void* module, const char* name) {
    return dlsym(module, name);
}

template <typename Function> Function* FindFunction(void* module, const char* name) {
    return reinterpret_cast<Function*>(dlsym(module, name));
}

bool DisplayAnswers() {
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        return false;
    }
    XCloseDisplay(display);
    return true;
}

std::string NoDisplayMessage() {
    const char* name = std::getenv("DISPLAY");
    const std::string cause = name && *name ? "the X11 display " + std::string(name) + " does not answer"
                                            : "DISPLAY names no X11 display";
    return "Varnelle cannot show its window because " + cause +
           "; start it from a desktop session, or on a virtual display such as Xvfb.";
}

// Loads the library from the program's own folder and nowhere else. Empty on success.
std::string LoadLibraryOfPage(PageHost* host) {
    const std::string path = ProgramDirectory() + "/libwebview.so";
    if (access(path.c_str(), R_OK) != 0) {
        return "Varnelle cannot show its window because " + path +
               " is missing; put it back beside the program, or install Varnelle again.";
    }
    host->module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!host->module) {
        const char* cause = dlerror();
        return "Varnelle cannot show its window because its web view does not load (" +
               std::string(cause ? cause : "unknown cause") +
               "); install the packages libwebkitgtk-6.0-4, libgtk-4-1 and libvulkan1 and start it again.";
    }
    if (const char* missing = ResolveWebViewLibrary(&host->library, FindExport, host->module)) {
        return "Varnelle cannot show its window because " + path + " lacks " + missing +
               "; install Varnelle again to get the matching file.";
    }
    return "";
}

}  // namespace

std::string CreatePageHost(PageHost** host) {
    *host = nullptr;
    if (!DisplayAnswers()) {
        return NoDisplayMessage();
    }
    auto created = std::make_unique<PageHost>();
    std::string failure = LoadLibraryOfPage(created.get());
    if (!failure.empty()) {
        return failure;
    }
    // By function and not by GDK_BACKEND: other threads are running, and the environment has no lock.
    if (auto* allowBackends = FindFunction<void(const char*)>(created->module, "gdk_set_allowed_backends")) {
        allowBackends("x11");
    }
    // Becomes WM_CLASS, by which a desktop groups windows and finds their icon.
    if (auto* setProgramName = FindFunction<void(const char*)>(created->module, "g_set_prgname")) {
        setProgramName("varnelle");
    }
    created->view = created->library.create(0, nullptr);
    if (!created->view) {
        return "Varnelle cannot show its window because the web view did not start; check that "
               "libwebkitgtk-6.0-4 is "
               "installed completely, and start Varnelle again.";
    }
    // The tests' library has no GTK and no browser of its own.
    if (FindExport(created->module, "gtk_init_check")) {
        if (const char* missing = GuardDocuments(created.get(), FindExport)) {
            created->library.destroy(created->view);
            return "Varnelle cannot show its window because the installed WebKitGTK lacks " +
                   std::string(missing) + "; update the package libwebkitgtk-6.0-4 and start Varnelle again.";
        }
    }
    *host = created.release();
    return "";
}

void DisableBrowserFeatures(PageHost* /*host*/) {
    // NOTE: WebKitGTK has no browser keys of its own, and its context menu can be refused only from inside the page.
    // HACK: the page prevents "contextmenu" and Ctrl+wheel itself, so nothing is left to switch off here.
}

WindowRef PageHostWindow(PageHost* host) {
    auto* getSurface = FindFunction<void*(void*)>(host->module, "gtk_native_get_surface");
    auto* getXid = FindFunction<unsigned long(void*)>(host->module, "gdk_x11_surface_get_xid");
    void* window = host->library.getWindow(host->view);
    if (!getSurface || !getXid || !window) {
        return 0;
    }
    void* surface = getSurface(window);  // null until the window is shown for the first time
    return surface ? static_cast<WindowRef>(getXid(surface)) : 0;
}

bool PageWindowIsOpen(PageHost* /*host*/) {
    return true;  // GTK handles a close request only inside the loop, so it cannot have been lost before it
}

bool ShowsOwnDocument(PageHost* host) {
    return !host->documents.foreign;
}

void PageWindowShown(PageHost* host) {
    StartFrameThread(host, static_cast<Window>(PageHostWindow(host)));
}

std::string PageText(std::string_view text) {
    return ValidUtf8(text);
}
