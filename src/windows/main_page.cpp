#include "windows/main_page.h"

#include "base/mutex.h"
#include "platform/dialogs.h"

#include <utility>

namespace {

// Held while a thread queues work for the host, so that the host is not destroyed meanwhile.
Mutex pageMutex;
PageHost* mainPage GUARDED_BY(pageMutex) = nullptr;  // null without a web view

Mutex alertMutex;
std::string pendingThemeAlert GUARDED_BY(alertMutex);

}  // namespace

void SetMainPage(PageHost* host) {
    AllowFileDialogs(true);
    MutexLock lock(pageMutex);
    mainPage = host;
}

PageHost* MainPage() {
    MutexLock lock(pageMutex);
    return mainPage;
}

bool HasMainPage() {
    MutexLock lock(pageMutex);
    return mainPage != nullptr;
}

void PageEval(const std::string& script) {
    MutexLock lock(pageMutex);
    if (PageHost* host = mainPage) {
        DispatchToPage(host, [host, script] { EvalInPage(host, script); });
    }
}

void TerminateMainPage() {
    AllowFileDialogs(false);
    MutexLock lock(pageMutex);
    if (mainPage != nullptr) {
        TerminatePage(mainPage);
    }
}

void SetPendingThemeAlert(const std::string& text) {
    MutexLock lock(alertMutex);
    pendingThemeAlert = text;
}

std::string TakePendingThemeAlert() {
    MutexLock lock(alertMutex);
    return std::exchange(pendingThemeAlert, {});
}
