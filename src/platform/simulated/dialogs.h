// Simulated file dialogs. Each takes the next prepared result; without one the user closes it.
#pragma once

#include "platform/dialogs.h"

#include <functional>
#include <string>
#include <vector>

struct SimDialog {
    bool save = false;
    std::string defaultExtension;
    std::string proposedName;
    std::vector<std::string> filters;  // "name|pattern"
};
void SimAnswerDialog(FileDialogResult answer);
const std::vector<SimDialog>& SimShownDialogs();  // in order
void SimOnDialog(std::function<void()> call);     // called while a dialog is open
void SimResetDialogs();
