// Page commands that change how the program behaves outside its page. UI thread.
#pragma once

#include <string_view>

// "key,value": stores the setting, applies it and saves, even if the key is unknown. Only the value "1" is on. Another
// number of fields changes nothing.
void SetAppSetting(std::string_view text);

// Opens a web page of the program, "docs" or "discord", in the user's browser. Another word opens nothing.
void OpenLink(std::string_view word);
