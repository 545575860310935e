#include "platform/simulated/process.h"

#include "platform/process.h"

#include <set>

namespace {

constexpr uint32_t kOwnProcessId = 1000;

struct ProcessState {
    std::string programPath = "/program/varnelle";
    std::set<uint32_t> ownImageProcesses{kOwnProcessId};
    std::set<std::string> namesOfOthers;
    std::set<std::string> ownNames;
    void (*crashHandler)() = nullptr;
    bool endedAtOnce = false;
};

ProcessState state;

}  // namespace

void PrepareProcess() {}

void EndProcess() {}

void EndProcessAtOnce(int /*exitCode*/) {
    state.endedAtOnce = true;
}

void EnsureConsole() {}

std::string ProgramPath() {
    return state.programPath;
}

std::string ProgramDirectory() {
    return state.programPath.substr(0, state.programPath.rfind(kPathSeparator));
}

uint32_t OwnProcessId() {
    return kOwnProcessId;
}

bool IsOwnImage(uint32_t processId) {
    return state.ownImageProcesses.count(processId) != 0;
}

InstanceResult ClaimSingleInstance(const char* name) {
    if (state.namesOfOthers.count(name) != 0) {
        return InstanceResult::AlreadyRunning;
    }
    state.ownNames.insert(name);
    return InstanceResult::First;
}

uint32_t RunningInstanceProcessId() {
    return 0;
}

void ReleaseSingleInstance() {
    state.ownNames.clear();
}

void SetCrashHandler(void (*save)()) {
    state.crashHandler = save;
}

void SimSetProgramPath(const std::string& path) {
    state.programPath = path;
}

void SimAddOwnImageProcess(uint32_t processId) {
    state.ownImageProcesses.insert(processId);
}

void SimTakeInstanceName(const std::string& name) {
    state.namesOfOthers.insert(name);
}

bool SimOwnsInstanceName(const std::string& name) {
    return state.ownNames.count(name) != 0;
}

bool SimProcessEndedAtOnce() {
    return state.endedAtOnce;
}

void SimCrash() {
    if (state.crashHandler != nullptr) {
        state.crashHandler();
    }
}

void SimResetProcess() {
    state = ProcessState();
}
