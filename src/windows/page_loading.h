// Reads a page from the folder ui beside the program and folds its scripts into it.
#pragma once

#include <cstddef>
#include <string>

constexpr size_t kPageSizeLimit = 0x200000;  // what the web view takes as one text

// False if the page could not be read; *path is where it was looked for in any case.
bool ReadPage(const std::string& programDirectory, const char* name, std::string* page, std::string* path);
// Replaces the first <script src="..."></script> of each known script by its text, where it fits and can be read.
std::string InlineScripts(std::string page, const std::string& programDirectory);
