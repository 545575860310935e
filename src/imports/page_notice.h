// What the import flow says to the page. Harmless before the page exists and on a page without the functions. Any
// thread.
#pragma once

#include <string>
#include <string_view>

void TellPageProfileImported();
void TellPageMacroPending(const std::string& pendingDocument);
void AlertPage(std::string_view text);
