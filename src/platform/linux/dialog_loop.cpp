#include "platform/linux/dialog_loop.h"

#include <dlfcn.h>

#include <atomic>
#include <cctype>
#include <string_view>

namespace {

// Short enough for a responsive window, long enough to cost nothing while the user thinks.
constexpr int kTurnMilliseconds = 15;
constexpr int kMostEventsATurn = 100;

std::atomic<bool> dialogsAllowed{true};

template <typename Function> bool Find(void* module, const char* name, Function& function) {
    function = module == nullptr ? nullptr : reinterpret_cast<Function>(dlsym(module, name));
    return function != nullptr;
}

// Finds the function only if the page's library has loaded its library.
void* LoadedLibrary(const char* name) {
    return dlopen(name, RTLD_NOW | RTLD_NOLOAD);
}

}  // namespace

std::string DialogGlob(const char* pattern) {
    if (std::string_view(pattern) == "*.*") {
        return "*";
    }
    std::string glob;
    for (const char* at = pattern; *at != '\0'; ++at) {
        const auto letter = static_cast<unsigned char>(*at);
        if (std::isalpha(letter) != 0) {
            glob += '[';
            glob += static_cast<char>(std::tolower(letter));
            glob += static_cast<char>(std::toupper(letter));
            glob += ']';
        } else {
            glob += *at;
        }
    }
    return glob;
}

DialogLoop OpenDialogLoop() {
    DialogLoop loop;
    if (void* glib = LoadedLibrary("libglib-2.0.so.0")) {
        int (*isOwner)(void* context) = nullptr;
        void* (*defaultContext)() = nullptr;
        // Only inside the loop of this thread: other threads handle their own events.
        if (!Find(glib, "g_main_context_is_owner", isOwner) ||
            !Find(glib, "g_main_context_default", defaultContext) || isOwner(defaultContext()) == 0 ||
            !Find(glib, "g_main_context_pending", loop.pending) ||
            !Find(glib, "g_main_context_iteration", loop.iterate)) {
            loop.pending = nullptr;
        }
        dlclose(glib);
    }
    void* gtk = LoadedLibrary("libgtk-4.so.1");
    void* gio = LoadedLibrary("libgio-2.0.so.0");
    if (!Find(gtk, "gtk_window_get_toplevels", loop.listWindows) ||
        !Find(gio, "g_list_model_get_n_items", loop.countItems) || loop.countItems(loop.listWindows()) == 0) {
        loop.listWindows = nullptr;
    }
    for (void* module : {gtk, gio}) {
        if (module != nullptr) {
            dlclose(module);
        }
    }
    return loop;
}

bool TakeDialogTurn(const DialogLoop& loop, pollfd* files, nfds_t count) {
    poll(files, count, kTurnMilliseconds);
    if (loop.pending != nullptr) {
        for (int i = 0; i < kMostEventsATurn && loop.pending(nullptr) != 0; ++i) {
            loop.iterate(nullptr, 0);
        }
    }
    const bool windowClosed = loop.listWindows != nullptr && loop.countItems(loop.listWindows()) == 0;
    return dialogsAllowed && !windowClosed;
}

bool FileDialogsAllowed() {
    return dialogsAllowed;
}

void AllowFileDialogs(bool allowed) {
    dialogsAllowed = allowed;
}
