// docs/commands.md as it has to be: made from the table that binds the commands.
#pragma once

#include <string>

std::string CommandsDocument();
