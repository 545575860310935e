// Prints docs/commands.md; see ./dev docs.
#include "docs/commands_document.h"

#include <cstdio>

int main() {
    const std::string document = CommandsDocument();
    return std::fwrite(document.data(), 1, document.size(), stdout) == document.size() ? 0 : 1;
}
