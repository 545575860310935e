#include "docs/commands_document.h"

#include "app/commands.h"

#include <string_view>

namespace {

constexpr std::string_view kIntroduction =
    "# Commands of the page\n"
    "\n"
    "Every function that the program binds into its page, in binding order. `./dev docs` writes this page "
    "from the\n"
    "table in `src/app/commands.cpp`. A test fails if the two differ.\n"
    "\n"
    "The page calls `window.<name>(...)` and gets a promise. It passes one string or several, which makes "
    "no\n"
    "difference: the program removes brackets and double quotes from the request, and the command splits the "
    "rest.\n"
    "A command without a result resolves with `undefined`.\n"
    "\n"
    "An additional command is newer than the others: a page that finds no such function works without it. "
    "If it does\n"
    "something, it resolves with `{\"done\":true}`, or with `{\"done\":false,\"reason\":WORD}` and has "
    "changed nothing. The\n"
    "words: `recording` and `playing` (not while one runs), `revision` (the macro has changed since), "
    "`argument`, `default`\n"
    "(the default profile keeps its name) and `unknown` (no such id).\n"
    "\n"
    "| Name | Arguments | Action |\n"
    "|---|---|---|\n";

// Escapes vertical bars, because a bar would end the cell.
void AppendCell(std::string& out, std::string_view text) {
    for (const char c : text) {
        if (c == '|') {
            out += '\\';
        }
        out += c;
    }
}

}  // namespace

std::string CommandsDocument() {
    std::string document(kIntroduction);
    int count = 0;
    const PageCommand* commands = MainProcessCommands(&count);
    for (int i = 0; i < count; ++i) {
        document += "| `";
        document += commands[i].name;
        document += "` | ";
        AppendCell(document, commands[i].arguments[0] == '\0' ? "none" : commands[i].arguments);
        document += " | ";
        AppendCell(document, commands[i].action);
        document += commands[i].additional ? " (additional)" : "";
        document += " |\n";
    }
    return document;
}
