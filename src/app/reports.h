// The two reports from which the page learns everything, and what a status poll does besides. UI thread.
#pragma once

#include <string>

// One poll: builds the status report, rewrites status.txt and macroevents.txt, gives the report.
std::string PollStatus();
std::string SettingsReport();
// The events JSON, also written to macroevents.txt.
std::string ReportMacroEvents();
