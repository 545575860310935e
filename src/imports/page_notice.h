// Notifies the page of imports. Does nothing before the page exists or if the page lacks the function. Any thread.
#pragma once

#include <string>
#include <string_view>

void NotifyPageProfileImported();
// Hands the page the pending document of an import.
void NotifyPageMacroPending(const std::string& pendingDocument);
// Shows `text` as the page's alert.
void AlertPage(std::string_view text);
