// Reports beside those of reports.h, for a page that shows what runs and the macro event by event. UI thread.
#pragma once

#include <string>
#include <string_view>

// Returns what runs and how far it is, as one JSON object. Takes no lock: the page asks several times a second.
std::string ProgressReport();

// Returns the names of all keys as JSON: {"8":"Backspace",...}, keys are virtual keys in decimal.
std::string KeyNamesReport();

// "", "first" or "first,count": returns the events of the current macro from the index `first` on, `count` or all of them,
// as JSON: {"revision":N,"rewritten":N,"first":N,"total":N,"rows":[[type,time,x,y,flags,vk,down,wheel],...]}. A time
// that JSON has no number for is null. A malformed number counts as left out.
std::string MacroRowsReport(std::string_view arguments);
