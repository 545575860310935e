// The page's commands that change how the program behaves outside its page. UI thread.
#pragma once

#include <string_view>

// "key,value", the value on only as "1". Stores the setting, carries out what it means at once, and saves, also for a
// key that there is not. Anything but two pieces does nothing at all.
void SetAppSetting(std::string_view text);

// Opens one of the program's pages in the person's browser: "docs" or "discord". Another word does nothing.
void OpenLink(std::string_view word);
