#include "simulated/engine_rig.h"

#include "app/commands.h"
#include "base/json_writer.h"
#include "engines/autoclicker.h"
#include "engines/dispatcher.h"
#include "engines/key_spammer.h"
#include "engines/playback.h"
#include "engines/recorder.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/threads.h"
#include "platform/wake.h"
#include "temp_folder.h"

#include <cstring>
#include <exception>
#include <future>
#include <thread>

namespace {

std::vector<std::thread> threads;

void CloseEvent(std::atomic<WakeEvent*>& event) {
    CloseWakeEvent(event.exchange(nullptr));
}

}  // namespace

std::string RigFolder() {
    static const TempFolder folder;
    return folder.Path();
}

void BeginRig(const SimOptions& options, bool hooks) {
    ResetEngineState();
    SimBegin(options);
    SimRefuseHooks(!hooks);
    SimSetDataFolderRoot(RigFolder());
    {
        MutexLock lock(macroMutex);
        macroState.profiles.push_back(Profile{DefaultProfileName, "", {}});
    }
    engineState.counterFrequency = ReadPerformanceFrequency();
    engineState.quitEvent = CreateWakeEvent(WakeReset::Manual);
    engineState.dispatchEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.autoclickerWakeEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.keySpammerWakeEvent = CreateWakeEvent(WakeReset::Automatic);
    engineState.playWakeEvent = CreateWakeEvent(WakeReset::Automatic);
    threads.clear();
    threads.push_back(StartThread("autoclicker", AutoclickerThreadMain));
    threads.push_back(StartThread("key spammer", KeySpammerThreadMain));
    threads.push_back(StartThread("hooks", InputThreadMain));
    threads.push_back(StartThread("playback", PlaybackThreadMain));
    threads.push_back(StartThread("dispatcher", DispatcherThreadMain));
    SimSettle();
}

std::string EndRig() {
    engineState.running = false;
    StopInputThread();
    SignalWake(engineState.quitEvent);
    std::string waiting = SimEnd();
    if (!waiting.empty()) {
        std::fprintf(stderr, "the engines do not end: %s\n", waiting.c_str());
        std::abort();
    }
    for (std::thread& thread : threads) {
        JoinThread(thread);
    }
    threads.clear();
    for (std::atomic<WakeEvent*>* event :
         {&engineState.quitEvent, &engineState.dispatchEvent, &engineState.autoclickerWakeEvent,
          &engineState.keySpammerWakeEvent, &engineState.playWakeEvent}) {
        CloseEvent(*event);
    }
    editorBusyNotice = nullptr;
    return waiting;
}

std::vector<UnifiedEvent> RigMacro() {
    MutexLock lock(macroMutex);
    return CurrentProfile()->events;
}

void SetRigMacro(const std::vector<UnifiedEvent>& events) {
    MutexLock lock(macroMutex);
    CurrentProfile()->events = events;
    MarkMacroChanged();
}

bool RigCanUndo() {
    MutexLock lock(macroMutex);
    return CanUndoContinue();
}

std::string RigPage(const std::string& name, const std::string& argument) {
    int count = 0;
    const PageCommand* commands = MainProcessCommands(&count);
    for (int index = 0; index < count; ++index) {
        if (name != commands[index].name) {
            continue;
        }
        try {
            return commands[index].function(argument.empty() ? "[]" : "[" + JsonText(argument) + "]");
        } catch (const std::exception& error) {
            return std::string("!") + error.what();
        }
    }
    return "!no such command: " + name;
}

void RigRequest(const std::vector<std::atomic<bool>*>& requests) {
    for (std::atomic<bool>* request : requests) {
        *request = true;
    }
    SignalWake(engineState.dispatchEvent);
}

void SetRigTargets(const std::vector<uint32_t>& targets) {
    for (size_t index = 0; index < targets.size(); ++index) {
        keySpammerSettings.targets[index] = targets[index];
    }
    keySpammerSettings.targetCount = static_cast<int32_t>(targets.size());
    if (!targets.empty()) {
        keySpammerSettings.singleKey = targets[0];
    }
}

void WithMacroMutexHeld(const std::function<void()>& call) {
    std::promise<void> held;
    std::promise<void> release;
    std::thread holder([&] {
        MutexLock lock(macroMutex);
        held.set_value();
        release.get_future().wait();
    });
    held.get_future().wait();
    call();
    release.set_value();
    holder.join();
}

UnifiedEvent KeyEvent(double time, uint32_t virtualKey, bool down) {
    return {.type = EvKey, .time = time, .virtualKey = virtualKey, .down = down};
}

UnifiedEvent ButtonEvent(double time, uint32_t flags, int32_t x, int32_t y) {
    return {.type = EvMouseButton, .time = time, .x = x, .y = y, .flags = flags};
}

UnifiedEvent MoveEvent(double time, int32_t x, int32_t y) {
    return {.type = EvAbsMove, .time = time, .x = x, .y = y};
}
