#include "engines/engine_state.h"

#include <memory>

SpammerSettings spammerSettings;
KeySpamSettings keySpamSettings;
TrackerSettings trackerSettings;
HotkeyTable hotkeyTable;
EngineState engineState;
Mutex macroMutex;
MacroState macroState;

Profile* CurrentProfile() {
    if (macroState.currentProfile < 0) {
        return nullptr;
    }
    const auto index = static_cast<size_t>(macroState.currentProfile);
    return index < macroState.profiles.size() ? &macroState.profiles[index] : nullptr;
}

void MarkMacroChanged() {
    ++macroState.revision;
}

namespace {

// Atomics cannot be assigned, so a record is made anew in its place.
template <typename Record> void MakeAnew(Record& record) {
    std::destroy_at(&record);
    std::construct_at(&record);
}

}  // namespace

void ResetEngineState() {
    MakeAnew(spammerSettings);
    MakeAnew(keySpamSettings);
    MakeAnew(trackerSettings);
    MakeAnew(hotkeyTable);
    MakeAnew(engineState);
    MutexLock lock(macroMutex);
    const uint64_t revision = macroState.revision;
    macroState = MacroState{};
    macroState.revision = revision + 1;  // a report of the old macro is not one of the new
}
