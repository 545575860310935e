// Saves a growing session again and again, for tests that kill it: session_writer save EVENTS | load
//
// save: loads what is there, then prints "saving N" before and "saved N" after the save of each next number N.
// load: prints "loaded N EVENTS", with the number and the count of events that were found, or "damaged".
#include "model/engine_state.h"
#include "platform/process.h"
#include "storage/data_folder.h"
#include "storage/session.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void SetNumber(int number, size_t events) {
    MutexLock lock(macroMutex);
    macroState.profiles = {{std::to_string(number), "",
                            std::vector<UnifiedEvent>(events + static_cast<size_t>(number % 7),
                                                      {EvKey, number * 1.0, 0, 0, 0, 65, true, 0})}};
    macroState.currentProfile = 0;
}

int LoadedNumber() {
    MutexLock lock(macroMutex);
    const Profile* profile = CurrentProfile();
    return profile == nullptr ? 0 : std::atoi(profile->name.c_str());
}

// Whether every event belongs to one save: the number stands in each of them.
bool IsOfOneSave(int number) {
    MutexLock lock(macroMutex);
    for (const UnifiedEvent& event : CurrentProfile()->events) {
        if (event.time != number) {
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    PrepareProcess();
    SetCrashHandler(SaveSessionAfterCrash);
    MigrateSessionFile();
    const SessionLoad load = LoadSession();
    if (argc == 2 && std::strcmp(argv[1], "load") == 0) {
        if (load.damaged || (load.loaded && !IsOfOneSave(LoadedNumber()))) {
            std::printf("damaged\n");
        } else {
            size_t events = 0;
            if (load.loaded) {
                MutexLock lock(macroMutex);
                events = CurrentProfile()->events.size();
            }
            std::printf("loaded %d %zu\n", LoadedNumber(), events);
        }
        return 0;
    }
    if (argc != 3 || std::strcmp(argv[1], "save") != 0) {
        return 2;
    }
    const auto events = static_cast<size_t>(std::atoi(argv[2]));
    for (int number = LoadedNumber() + 1;; ++number) {
        SetNumber(number, events);
        std::printf("saving %d\n", number);
        SaveSession();
        if (LastSaveProblem() == SaveProblem::None) {
            std::printf("saved %d\n", number);
        }
    }
}
