// Notifies the page about imports. Does nothing before the page exists, and on a page without the functions. Any
// thread.
#pragma once

#include <string>
#include <string_view>

void NotifyPageProfileImported();
void NotifyPageMacroPending(const std::string& pendingDocument);
void AlertPage(std::string_view text);
