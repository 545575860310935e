// The native window with the web view in it. One a process; UI thread unless said otherwise. The web-view library is
// loaded from the program's own folder when the first host is created, so that the console modes run without it.
#pragma once

#include "platform/desktop.h"

#include <functional>
#include <string>

struct PageHost;

// Takes the request, a JSON array text, and returns a JSON text or an empty one. A thrown std::exception rejects the
// page's promise with its text.
using PageFunction = std::string (*)(const std::string& request);

// Creates the window, hidden until SetPageSize. Its view loads no document except those of SetPageHtml, and no other
// document is answered. Returns an empty text on success; otherwise one sentence for the user that says what is missing
// and what to do, and *host is null.
std::string CreatePageHost(PageHost** host);
void DestroyPageHost(PageHost* host);

void SetPageTitle(PageHost* host, const char* title);
void SetPageSize(PageHost* host, int width, int height);  // client size, no hint
void SetPageHtml(PageHost* host, const std::string& html);
void BindPageFunction(PageHost* host, const char* name, PageFunction function);
void EvalInPage(PageHost* host, const std::string& script);
// Turns off what makes a window behave like a browser: context menu, zoom, browser keys. Silent where it cannot.
void DisableBrowserFeatures(PageHost* host);
WindowRef PageHostWindow(PageHost* host);

// Any thread. Runs `work` on the UI thread, in the order of the calls.
void DispatchToPage(PageHost* host, std::function<void()> work);

// The main loop; returns when the window was closed or TerminatePage was called.
void RunPage(PageHost* host);
// Any thread.
void TerminatePage(PageHost* host);
