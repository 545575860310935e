// The page of the main process, for all threads of the program.
#pragma once

#include "platform/page_host.h"

#include <string>

// Sets the page's host once the web view exists, and null before it is destroyed. Either call allows file dialogs
// again after TerminateMainPage has forbidden them. UI thread.
void SetMainPage(PageHost* host);
// Returns that host, or null if there is none. UI thread.
PageHost* MainPage();

// Any thread, for all of these.
bool HasMainPage();
// Runs a script in the main page soon. Does nothing while there is no web view. A script must do nothing on a page that
// lacks the function it calls.
void PageEval(const std::string& script);
// Ends the main loop, if there is a page. Closes an open file dialog, which would prevent the end of the loop.
void TerminateMainPage();

// Sets the one message that the page is to show, kept until the page fetches it. A later one replaces it.
void SetPendingThemeAlert(const std::string& text);
// Returns the message and clears it.
std::string TakePendingThemeAlert();
