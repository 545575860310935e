// The functions that the page can call, in binding order.
#pragma once

#include "platform/page_host.h"

#include <string>
#include <string_view>

// The arguments of a call: its JSON array text with every `[`, `]` and `"` removed.
std::string ArgText(std::string_view request);

struct PageCommand {
    const char* name;
    const char* arguments;  // for the list of commands
    const char* action;     // one line, for the list of commands
    PageFunction function;
};

// The master's commands in the order in which they are bound.
const PageCommand* MainProcessCommands(int* count);
void BindMainProcessCommands(PageHost* host);
