// The reports that the page polls. UI thread.
#pragma once

#include <string>

// Builds and returns the status report, and rewrites status.txt and macroevents.txt.
std::string PollStatus();
std::string SettingsReport();
// Returns the events JSON and writes it to macroevents.txt.
std::string ReportMacroEvents();
