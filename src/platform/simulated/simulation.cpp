#include "platform/simulated/simulation.h"

void SimBegin(const SimOptions& options) {
    SimResetScheduler(options);
    SimResetClock();
    SimResetSession();
    SimResetHooks();
    SimResetInput();
    SimResetDesktop();
    SimResetDialogs();
    SimResetPage();
    SimResetFiles();
    SimResetProcess();
    SimResetShell();
}
