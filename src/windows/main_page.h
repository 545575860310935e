// The page of the main process, as other threads reach it.
#pragma once

#include "platform/page_host.h"

#include <string>

// Sets the page's host once the web view exists, and null again before it is destroyed. Allows file dialogs again, which
// TerminateMainPage forbids. UI thread.
void SetMainPage(PageHost* host);
// Returns the host, or null if there is none. UI thread.
PageHost* MainPage();

// The functions below may be called from any thread.

bool HasMainPage();
// Queues a script for the page. Does nothing before the web view exists and after it is gone. A script must do nothing on
// a page that lacks the function it calls.
void PageEval(const std::string& script);
// Ends the main loop if there is a page. Closes an open file dialog, which would keep the loop running.
void TerminateMainPage();

// Keeps one message for the page to show until the page fetches it. A later message replaces it.
void SetPendingThemeAlert(const std::string& text);
// Returns the message and clears it.
std::string TakePendingThemeAlert();
