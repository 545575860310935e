#include "model/engine_state.h"

#include "platform/wake.h"

#include <memory>

AutoclickerSettings autoclickerSettings;
KeySpammerSettings keySpammerSettings;
MacroSettings macroSettings;
HotkeyTable hotkeyTable;
EngineState engineState;
Mutex macroMutex;
MacroState macroState;
std::atomic<void (*)(bool wait)> editorBusyNotice{nullptr};

Profile* CurrentProfile() {
    if (macroState.currentProfile < 0) {
        return nullptr;
    }
    const auto index = static_cast<size_t>(macroState.currentProfile);
    return index < macroState.profiles.size() ? &macroState.profiles[index] : nullptr;
}

void MarkMacroChanged() {
    MarkEventAppended();
    macroState.rewrittenRevision = macroState.revision;
    engineState.macroRewrittenRevision = macroState.revision;
}

void MarkEventAppended() {
    ++macroState.revision;
    engineState.macroRevision = macroState.revision;
}

void RaiseRequest(std::atomic<bool>& flag) {
    flag.store(true);
    SignalWake(engineState.dispatchEvent.load());
}

void NotifyEditorBusy(bool wait) {
    if (auto notice = editorBusyNotice.load()) {
        notice(wait);
    }
}

namespace {

// A record of atomics cannot be assigned: it is destroyed and constructed in its place.
template <typename Record> void Reconstruct(Record& record) {
    std::destroy_at(&record);
    std::construct_at(&record);
}

}  // namespace

void ResetEngineState() {
    Reconstruct(autoclickerSettings);
    Reconstruct(keySpammerSettings);
    Reconstruct(macroSettings);
    Reconstruct(hotkeyTable);
    Reconstruct(engineState);
    MutexLock lock(macroMutex);
    const uint64_t revision = macroState.revision;
    macroState = MacroState{};
    macroState.revision = revision;
    MarkMacroChanged();  // a report of the old macro is out of date
}
