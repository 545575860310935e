// The page host on its own: page_host_probe. Prints why there is no host, or shows a small page, answers it, and tells
// in which order dispatched work ran. Ends when its window is closed or the page calls `leave`.
#include "platform/page_host.h"

#include "platform/process.h"

#include <cstdio>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

PageHost* host = nullptr;

std::string Echo(const std::string& request) {
    return request;
}

std::string Nothing(const std::string& /*request*/) {
    return "";
}

std::string Fail(const std::string& /*request*/) {
    throw std::runtime_error("a \"bad\" number");
}

std::string FailOddly(const std::string& /*request*/) {
    throw 7;  // NOLINT(hicpp-exception-baseclass): not even this may get out
}

// Bytes that are no UTF-8 reach an answer from names in foreign files.
std::string Foreign(const std::string& /*request*/) {
    return "\"caf\xE9 \xF0\x9F\x98\x80\"";
}

std::string Print(const std::string& request) {
    printf("page %s\n", request.c_str());
    return "";
}

// From another thread, as an engine would.
std::string Leave(const std::string& /*request*/) {
    std::thread([] { TerminatePage(host); }).detach();
    return "";
}

std::string Count(const std::string& /*request*/) {
    std::thread([] {
        std::vector<int>* order = new std::vector<int>;
        for (int i = 0; i < 5000; ++i) {
            DispatchToPage(host, [order, i] {
                order->push_back(i);
                if (i % 1000 == 7) {
                    throw std::runtime_error("this work fails");
                }
            });
        }
        DispatchToPage(host, [order] {
            bool inOrder = order->size() == 5000;
            for (size_t i = 0; i < order->size(); ++i) {
                inOrder = inOrder && (*order)[i] == static_cast<int>(i);
            }
            delete order;
            EvalInPage(host, inOrder ? "window.counted('in order')" : "window.counted('out of order')");
        });
    }).detach();
    return "";
}

constexpr const char* kPage = R"(<!doctype html><title>probe</title><body style="background:#fff"><script>
window.counted = (text) => printLine('counted ' + text);
const report = (name, promise) => promise.then(
    (value) => printLine(name + ' resolved ' + JSON.stringify(value)),
    (reason) => printLine(name + ' rejected ' + (reason instanceof Error ? 'error' : JSON.stringify(reason))));
(async () => {
  await report('echo', echo('a "quoted" \u00e9', 5));
  await report('nothing', nothing());
  await report('fail', fail());
  await report('failOddly', failOddly());
  await report('foreign', foreign());
  await count();
})();
window.addEventListener('click', () => leave());
</script></body>)";

}  // namespace

int main() {
    setvbuf(stdout, nullptr, _IONBF, 0);
    PrepareProcess();
    const std::string failure = CreatePageHost(&host);
    if (!failure.empty()) {
        printf("failed %s\n", failure.c_str());
        EndProcess();
        return host ? 3 : 1;
    }
    SetPageTitle(host, "Page host probe");
    BindPageFunction(host, "echo", Echo);
    BindPageFunction(host, "nothing", Nothing);
    BindPageFunction(host, "fail", Fail);
    BindPageFunction(host, "failOddly", FailOddly);
    BindPageFunction(host, "foreign", Foreign);
    BindPageFunction(host, "printLine", Print);
    BindPageFunction(host, "count", Count);
    BindPageFunction(host, "leave", Leave);
    DisableBrowserFeatures(host);
    SetPageSize(host, 500, 300);
    SetPageHtml(host, kPage);
    printf("window %d\n", PageHostWindow(host) != 0 ? 1 : 0);
    RunPage(host);
    // The loop is over: what comes now is dropped.
    DispatchToPage(host, [] { printf("ran after the end\n"); });
    DestroyPageHost(host);
    EndProcess();
    printf("ended\n");
    return 0;
}
