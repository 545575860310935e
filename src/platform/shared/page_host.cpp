#include "platform/page_host.h"

#include "base/json_writer.h"
#include "platform/shared/page_host_state.h"
#include "platform/window_frame.h"

#include <exception>
#include <utility>

namespace {

bool HasEnded(PageHost* host) {
    MutexLock lock(host->mutex);
    return host->ended;
}

void EndHost(PageHost* host) {
    std::vector<std::function<void()>> dropped;
    MutexLock lock(host->mutex);
    host->ended = true;
    dropped.swap(host->work);
}

// Runs all work that was queued when it was called, in order. Work that is queued meanwhile gets a turn of its own, so
// that the window stays alive however fast it comes.
void RunQueuedWork(WebView /*view*/, void* context) noexcept {
    auto* host = static_cast<PageHost*>(context);
    std::vector<std::function<void()>> work;
    {
        MutexLock lock(host->mutex);
        host->workScheduled = false;
        work.swap(host->work);
    }
    for (std::function<void()>& step : work) {
        if (HasEnded(host)) {
            return;
        }
        try {
            step();
        } catch (...) {
            // One piece of work failed; the rest and the program go on.
        }
    }
}

void AnswerPageCall(const char* id, const char* request, void* context) noexcept {
    const auto* binding = static_cast<PageBinding*>(context);
    PageHost* host = binding->host;
    if (HasEnded(host) || !ShowsOwnDocument(host)) {
        return;
    }
    try {
        int status = 0;
        std::string answer;
        try {
            answer = binding->function(request);
        } catch (const std::exception& error) {
            status = 1;
            answer = JsonText(error.what());
        } catch (...) {
            status = 1;
            answer = JsonText("The command failed.");
        }
        // A command may run a message loop of its own, in which the document can change.
        if (!ShowsOwnDocument(host)) {
            return;
        }
        // NOTE: an answer that is no UTF-8 never arrives, and the page waits for ever.
        host->library.answer(host->view, id, status, PageText(answer).c_str());
    } catch (...) {
        host->library.answer(host->view, id, 1, "\"Out of memory.\"");
    }
}

}  // namespace

void DestroyPageHost(PageHost* host) {
    if (!host) {
        return;
    }
    // The library turns its message loop while it closes the view; nothing of ours may run from there any more.
    EndHost(host);
    EndWindowWatch(host);
    host->library.destroy(host->view);
    delete host;
}

void SetPageTitle(PageHost* host, const char* title) {
    host->library.setTitle(host->view, title);
}

void SetPageSize(PageHost* host, int width, int height) {
    host->askedWidth = width;
    host->askedHeight = height;
    host->library.setSize(host->view, width, height, kWebViewSizeHintNone);
    PageWindowShown(host);
}

void DocumentArrived(PageDocuments* documents) {
    documents->foreign = documents->expected == 0;
    if (documents->expected > 0) {
        --documents->expected;
    }
}

void SetPageHtml(PageHost* host, const std::string& html) {
    ++host->documents.expected;
    host->library.setHtml(host->view, PageText(html).c_str());
}

void BindPageFunction(PageHost* host, const char* name, PageFunction function) {
    host->bindings.push_back(std::make_unique<PageBinding>(PageBinding{host, function}));
    host->library.bind(host->view, name, AnswerPageCall, host->bindings.back().get());
}

void EvalInPage(PageHost* host, const std::string& script) {
    if (!ShowsOwnDocument(host)) {
        return;
    }
    host->library.eval(host->view, PageText(script).c_str());
}

void DispatchToPage(PageHost* host, std::function<void()> work) {
    {
        MutexLock lock(host->mutex);
        if (host->ended) {
            return;
        }
        host->work.push_back(std::move(work));
        if (host->workScheduled) {
            return;
        }
        host->workScheduled = true;
    }
    if (host->library.dispatch(host->view, RunQueuedWork, host) != 0) {
        MutexLock lock(host->mutex);
        host->workScheduled = false;  // the next call asks again; the work keeps its place
    }
}

void RunPage(PageHost* host) {
    bool terminating = false;
    {
        MutexLock lock(host->mutex);
        terminating = host->terminating;
    }
    if (!terminating && PageWindowIsOpen(host)) {
        host->library.run(host->view);
    }
    EndHost(host);
}

void TerminatePage(PageHost* host) {
    {
        MutexLock lock(host->mutex);
        host->terminating = true;
    }
    DispatchToPage(host, [host] { host->library.terminate(host->view); });
}
