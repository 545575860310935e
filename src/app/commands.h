// The functions that the page can call, in binding order.
#pragma once

#include "platform/page_host.h"

#include <string>
#include <string_view>

// Any thread. Returns the arguments of a call: its JSON array text with every `[`, `]` and `"` removed.
std::string ArgText(std::string_view request);

struct PageCommand {
    const char* name;
    const char* arguments;  // for docs/commands.md
    const char* action;     // one line for docs/commands.md
    PageFunction function;
    bool additional = false;  // bound after the commands that every page of the program knows
};

// Returns the main page's commands in binding order, and their number in *count.
const PageCommand* MainProcessCommands(int* count);
// UI thread. Binds them into the page.
void BindMainProcessCommands(PageHost* host);
