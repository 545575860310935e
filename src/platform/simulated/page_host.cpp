#include "platform/page_host.h"

#include "platform/process.h"
#include "platform/simulated/desktop.h"
#include "platform/simulated/page_host.h"
#include "platform/wake.h"
#include "platform/window_frame.h"

#include <algorithm>
#include <deque>
#include <exception>
#include <map>
#include <thread>
#include <utility>

struct PageHost {
    std::map<std::string, PageFunction> functions;
    std::deque<std::function<void()>> work;
    bool closed = false;
    WakeEvent* wake = nullptr;
    WindowRef window = 0;
    std::thread::id uiThread;
};

namespace {

SimPage page;
PageHost* currentHost = nullptr;
std::string failure;
std::function<void()> onRun;

SimPageAnswer Answer(const std::string& name, const std::string& request) {
    SimPageAnswer answer;
    const auto found = currentHost->functions.find(name);
    if (found == currentHost->functions.end()) {
        answer.text = "not bound: " + name;
        return answer;
    }
    try {
        answer.text = found->second(request);
        answer.resolved = true;
    } catch (const std::exception& error) {
        answer.text = error.what();
    }
    return answer;
}

void DoWork(PageHost* host) {
    while (!host->work.empty()) {
        const std::function<void()> work = std::move(host->work.front());
        host->work.pop_front();
        work();
    }
}

SimWindow* HostWindow(const PageHost* host) {
    for (SimWindow& window : SimGetDesktop().windows) {
        if (window.window == host->window) {
            return &window;
        }
    }
    return nullptr;
}

}  // namespace

std::string CreatePageHost(PageHost** host) {
    *host = nullptr;
    if (!failure.empty()) {
        return std::exchange(failure, "");
    }
    auto* created = new PageHost;
    created->wake = CreateWakeEvent(WakeReset::Automatic);
    created->uiThread = std::this_thread::get_id();
    created->window = SimAddWindow("", OwnProcessId(), 0, 0, 0, 0);
    HostWindow(created)->hidden = true;
    const int count = page.created + 1;
    page = SimPage();
    page.created = count;
    page.alive = true;
    currentHost = created;
    *host = created;
    return "";
}

void DestroyPageHost(PageHost* host) {
    EndWindowWatch(host);
    std::erase_if(SimGetDesktop().windows,
                  [host](const SimWindow& window) { return window.window == host->window; });
    CloseWakeEvent(host->wake);
    delete host;
    currentHost = nullptr;
    page.alive = false;
}

void SetPageTitle(PageHost* host, const char* title) {
    page.title = title;
    if (SimWindow* window = HostWindow(host)) {
        window->title = title;
    }
}

void SetPageSize(PageHost* host, int width, int height) {
    page.width = width;
    page.height = height;
    SimDesktop& desktop = SimGetDesktop();
    desktop.frameCalls.push_back("size " + std::to_string(width) + " " + std::to_string(height));
    if (SimWindow* window = HostWindow(host)) {
        window->right = window->left + width * desktop.pageScale + desktop.frameWidth;
        window->bottom = window->top + height * desktop.pageScale + desktop.frameHeight;
        window->hidden = false;
    }
}

void SetPageHtml(PageHost* /*host*/, const std::string& html) {
    page.html = html;
}

void BindPageFunction(PageHost* host, const char* name, PageFunction function) {
    host->functions[name] = function;
    page.bound.emplace_back(name);
}

void EvalInPage(PageHost* /*host*/, const std::string& script) {
    page.evals.push_back(script);
}

void DisableBrowserFeatures(PageHost* /*host*/) {
    page.browserFeaturesOff = true;
}

WindowRef PageHostWindow(PageHost* host) {
    return host->window;
}

void DispatchToPage(PageHost* host, std::function<void()> work) {
    host->work.push_back(std::move(work));
    SignalWake(host->wake);
}

void RunPage(PageHost* host) {
    page.running = true;
    if (onRun) {
        DoWork(host);
        onRun();
        DoWork(host);
    } else {
        while (!host->closed) {
            DoWork(host);
            if (!host->closed) {
                WaitForAny(&host->wake, 1, kNoLimit);
            }
        }
    }
    page.running = false;
}

void TerminatePage(PageHost* host) {
    host->closed = true;
    SignalWake(host->wake);
}

SimPage& SimGetPage() {
    return page;
}

SimPageAnswer SimPageCall(const std::string& name, const std::string& request) {
    if (currentHost == nullptr) {
        return {false, "no page"};
    }
    if (std::this_thread::get_id() == currentHost->uiThread) {
        DoWork(currentHost);
        return Answer(name, request);
    }
    SimPageAnswer answer;
    WakeEvent* done = CreateWakeEvent(WakeReset::Automatic);
    DispatchToPage(currentHost, [&] {
        answer = Answer(name, request);
        SignalWake(done);
    });
    WaitForAny(&done, 1, kNoLimit);
    CloseWakeEvent(done);
    return answer;
}

void SimClosePage() {
    if (currentHost != nullptr) {
        TerminatePage(currentHost);
    }
}

void SimOnPageRun(std::function<void()> call) {
    onRun = std::move(call);
}

void SimFailPageHost(const std::string& sentence) {
    failure = sentence;
}

void SimResetPage() {
    page = SimPage();
    currentHost = nullptr;
    failure.clear();
    onRun = nullptr;
}
