// The functions that the page can call, in binding order.
#pragma once

#include "platform/page_host.h"

#include <string>
#include <string_view>

// Returns the arguments of a call: its JSON array text with every `[`, `]` and `"` removed.
std::string ArgText(std::string_view request);

struct PageCommand {
    const char* name;
    const char* arguments;  // for the list of commands
    const char* action;     // one line, for the list of commands
    PageFunction function;
};

// Returns the commands of the main process in binding order.
const PageCommand* MainProcessCommands(int* count);
void BindMainProcessCommands(PageHost* host);
