// The master's page, as the threads of the program reach it.
#pragma once

#include "platform/page_host.h"

#include <string>

// The page's host once the web view exists, null again before it is destroyed. Either way file dialogs may be shown
// again that TerminateMainPage has forbidden. UI thread.
void SetMainPage(PageHost* host);
// The same host, null when there is none. UI thread.
PageHost* MainPage();

// Any thread, all of these.
bool HasMainPage();
// Runs a script in the main page soon; nothing before the web view exists and after it is gone. Scripts are written so
// that they do nothing on a page that lacks the function they call.
void PageEval(const std::string& script);
// Ends the main loop, if there is a page. An open file dialog closes: it would keep the loop from ending.
void TerminateMainPage();

// One message for the page to show, kept until the page fetches it. A later one replaces it.
void SetPendingThemeAlert(const std::string& text);
// The message, which is empty from then on.
std::string TakePendingThemeAlert();
