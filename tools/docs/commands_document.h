// The expected docs/commands.md, built from the table that binds the commands.
#pragma once

#include <string>

std::string CommandsDocument();
