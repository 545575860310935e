// Reads a page from the folder ui beside the program and folds its scripts into it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

constexpr size_t kPageSizeLimit = 0x200000;  // what the web view takes as one text

// False if the page could not be read; *path is where it was looked for in any case.
bool ReadPage(const std::string& programDirectory, const char* name, std::string* page, std::string* path);
// Replaces the first <script src="..."></script> of each known script by its text, where it fits and can be read. A page
// with a content security policy is made to allow these scripts.
std::string InlineScripts(std::string page, const std::string& programDirectory);
// Adds the hash of `script`, the text of an element <script> of the page, to the scripts that the page's content
// security policy allows. A page without a policy for scripts stays as it is.
void AllowScript(std::string* page, std::string_view script);
