// Messages for the user about the session file.
#pragma once

#include "storage/session.h"

#include <string>

// Autosave thread, after each save. Shows the problem of the last save on the page while there is one, and takes the
// message away after a save that succeeded. Nothing without a page.
void ShowSaveProblemOnPage();
// The sentence for a problem; empty for None.
std::string SaveProblemText(SaveProblem problem);
// The sentence for a session that was damaged when it was loaded; empty if it was not.
std::string DamagedSessionText(const SessionLoad& load);
