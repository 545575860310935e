// Scripts: what the user does and the program is asked, line by line, and after the line `expect` the result.
// tests/simulated/scripts/README.md lists the words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Script {
    std::vector<std::string> steps;
    std::vector<std::string> expected;
    std::string head;  // everything up to and including the line `expect`, byte for byte
};

Script ReadScript(const std::string& path);
// Runs the steps on fresh engines and gives the lines that came of them. An unknown word gives a line that says so.
std::vector<std::string> RunScript(const std::vector<std::string>& steps, uint64_t seed = 1);
// One step on engines that run already. False: not understood.
bool RunScriptStep(const std::string& step);
std::string JoinLines(const std::vector<std::string>& lines);
