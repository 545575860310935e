#include "app/session_notices.h"

#include "base/json_writer.h"
#include "windows/main_page.h"

std::string SaveProblemText(SaveProblem problem) {
    switch (problem) {
    case SaveProblem::DiskFull:
        return "Your work cannot be saved: the disk is full.";
    case SaveProblem::Failed:
        return "Your work cannot be saved: the session file cannot be written.";
    default:
        return {};
    }
}

void ShowSaveProblemOnPage() {
    // Autosave thread only. The page may have been loaded after the first report, so a problem is repeated.
    static bool isShown = false;
    const SaveProblem problem = LastSaveProblem();
    if (problem == SaveProblem::None && !isShown) {
        return;
    }
    isShown = problem != SaveProblem::None;
    PageEval("if (window.onSaveProblem) window.onSaveProblem(" + JsonText(SaveProblemText(problem)) + ");");
}

std::string DamagedSessionText(const SessionLoad& load) {
    if (!load.damaged) {
        return {};
    }
    const std::string kept = load.keptAs.empty() ? "The file is moved aside before anything is saved."
                                                 : "The file is kept as " + load.keptAs + ".";
    return "The last session could not be read completely. " +
           std::string(load.loaded ? "Everything that could be read is here. " : "Nothing could be read. ") +
           kept;
}
