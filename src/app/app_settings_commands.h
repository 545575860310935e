// The page's commands that change how the program behaves outside its page. UI thread.
#pragma once

#include <string_view>

// Takes "key,value"; a value is on only if it is "1". Stores the setting, applies it at once and saves, even for an
// unknown key. Does nothing unless there are exactly two parts.
void SetAppSetting(std::string_view text);

// Opens one of the program's pages in the user's browser: "docs" or "discord". Ignores any other word.
void OpenLink(std::string_view word);
