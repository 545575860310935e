// The part of the page host that all backends with the web-view library share: queue, bindings, loop. A backend adds
// loading the library, the native window, the guard of the documents and the browser settings.
#pragma once

#include "base/mutex.h"
#include "platform/page_host.h"
#include "platform/shared/web_view_library.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct PageBinding {
    PageHost* host;
    PageFunction function;
};

// Which documents of the view are the program's own. UI thread.
struct PageDocuments {
    int expected = 0;      // texts of SetPageHtml whose document has not arrived
    bool foreign = false;  // another document got into the view
};

struct PageHost {
    // Constant after CreatePageHost.
    WebViewLibrary library;
    WebView view = nullptr;
    void* module = nullptr;  // the loaded library; never unloaded, its threads may outlive the view

    // UI thread only. Bindings stay where they are: the library keeps their addresses.
    std::vector<std::unique_ptr<PageBinding>> bindings;
    int askedWidth = 0;  // the size last asked for; 0 before the first
    int askedHeight = 0;
    PageDocuments documents;

    // Any thread.
    Mutex mutex;
    std::vector<std::function<void()>> work GUARDED_BY(mutex);
    bool workScheduled GUARDED_BY(mutex) = false;  // the library was asked to run the queue and has not yet
    bool terminating GUARDED_BY(mutex) = false;
    bool ended GUARDED_BY(mutex) =
        false;  // the loop is over: later work is dropped, page calls are not answered
};

// Counts a document that the view has accepted: an expected one is ours, any other is foreign. UI thread.
void DocumentArrived(PageDocuments* documents);
// Whether the document in the view is one of ours. Any other gets no answers and runs no script of ours. UI thread.
bool ShowsOwnDocument(PageHost* host);
// Whether the native window still exists. A window that was closed before the loop began would leave it without an
// end.
bool PageWindowIsOpen(PageHost* host);
// Called when the page was given a size, which shows the window the first time.
void PageWindowShown(PageHost* host);
// Returns a text for the page in UTF-8. What is no UTF-8 in it is read in the system's own 8-bit encoding where there is
// one, and is replaced by U+FFFD elsewhere. Any thread.
std::string PageText(std::string_view text);
