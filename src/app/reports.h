// The reports that the page fetches. UI thread. A mirror file that cannot be written is not reported.
#pragma once

#include <string>

// Returns the status report, after writing it to status.txt and the event list to macroevents.txt.
std::string PollStatus();
// Returns the settings report.
std::string SettingsReport();
// Returns the event list as JSON, after writing it to macroevents.txt.
std::string ReportMacroEvents();
