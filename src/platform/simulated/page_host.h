// The simulated page: no browser, only the bound functions and what was evaluated.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct SimPage {
    bool alive = false;    // created and not destroyed
    bool running = false;  // inside RunPage
    bool browserFeaturesOff = false;
    std::string title;
    int width = 0;
    int height = 0;
    std::string html;
    std::vector<std::string> bound;  // names in binding order
    std::vector<std::string> evals;
    int created = 0;  // number of hosts created since SimBegin
};
SimPage& SimGetPage();
struct SimPageAnswer {
    bool resolved = false;  // false: the promise was rejected with `text`, or nothing of that name is bound
    std::string text;
};
// The page calls a bound function on the UI thread. Waits for the result unless this is the UI thread.
SimPageAnswer SimPageCall(const std::string& name, const std::string& request);
// The user closes the window.
void SimClosePage();
// Called on the UI thread inside RunPage, which returns afterwards. For tests that run the main process on the driver.
void SimOnPageRun(std::function<void()> call);
// The next CreatePageHost fails with this sentence.
void SimFailPageHost(const std::string& sentence);
void SimResetPage();
