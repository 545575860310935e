#include "editing/profiles.h"

#include "base/json_writer.h"
#include "base/numbers.h"
#include "editing/macro_history.h"
#include "model/engine_state.h"
#include "storage/settings_text.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace {

// Returns the name with the first number that no profile has, without a number if the name is free or all are taken.
std::string FreeProfileName(std::string name) REQUIRES(macroMutex) {
    constexpr int kLastNumber = 999;
    std::unordered_set<std::string_view> taken;
    for (const Profile& profile : macroState.profiles) {
        taken.insert(profile.name);
    }
    if (taken.count(name) == 0) {
        return name;
    }
    for (int number = 2; number <= kLastNumber; ++number) {
        std::string numbered = name + " (" + std::to_string(number) + ")";
        if (taken.count(numbered) == 0) {
            return numbered;
        }
    }
    return name;
}

bool IsProfileIndex(int32_t index) REQUIRES(macroMutex) {
    return index >= 0 && static_cast<size_t>(index) < macroState.profiles.size();
}

// Returns the index that a profile has after the one at `from` has moved to `to`.
int32_t IndexAfterMove(int32_t index, int32_t from, int32_t to) {
    if (index == from) {
        return to;
    }
    if (index > from && index <= to) {
        return index - 1;
    }
    if (index < from && index >= to) {
        return index + 1;
    }
    return index;
}

// Returns memory for a copy of a profile's events, allocated without the lock: a recording waits for it.
std::vector<UnifiedEvent> MemoryForCopy(int32_t index) {
    size_t needed = 0;
    {
        MutexLock lock(macroMutex);
        if (IsProfileIndex(index)) {
            needed = macroState.profiles[static_cast<size_t>(index)].events.size();
        }
    }
    std::vector<UnifiedEvent> memory;
    memory.reserve(needed);
    return memory;
}

// Returns whether another profile is current now: *settings are the ones to apply.
bool RemoveCurrentProfile(std::string* settings) {
    std::string before = BuildProfileSettings();
    DroppedSteps dropped;
    MutexLock lock(macroMutex);
    Profile* current = CurrentProfile();
    if (current == nullptr) {
        return false;
    }
    if (current->name == DefaultProfileName) {
        ResetToolSettings();
        KeepClearedProfile(*current, std::move(before), &dropped);
        current->settings = BuildProfileSettings();
        MarkMacroChanged();
        return false;
    }
    if (macroState.profiles.size() < 2) {
        return false;
    }
    KeepDeletedProfile(std::move(before), &dropped);
    macroState.profiles.erase(macroState.profiles.begin() + macroState.currentProfile);
    const auto last = static_cast<int32_t>(macroState.profiles.size()) - 1;
    if (macroState.currentProfile > last) {
        macroState.currentProfile = last;
    }
    MarkMacroChanged();
    *settings = macroState.profiles[static_cast<size_t>(macroState.currentProfile)].settings;
    return true;
}

}  // namespace

void AddProfile(std::string_view name) {
    if (name.empty() || engineState.recording) {
        return;
    }
    Profile profile{std::string(name), BuildProfileSettings(), {}};
    MutexLock lock(macroMutex);
    macroState.profiles.push_back(std::move(profile));
    macroState.currentProfile = static_cast<int32_t>(macroState.profiles.size()) - 1;
    MarkMacroChanged();
}

void DeleteProfile() {
    if (engineState.recording) {
        return;
    }
    std::string settings;
    if (RemoveCurrentProfile(&settings)) {
        ApplyStoredSettings(settings);
    }
}

void SwitchProfile(std::string_view index) {
    int32_t wanted = 0;
    if (engineState.recording || !ParseInt(index, &wanted)) {
        return;
    }
    std::string settings;
    {
        MutexLock lock(macroMutex);
        if (wanted < 0 || static_cast<size_t>(wanted) >= macroState.profiles.size()) {
            return;
        }
        macroState.currentProfile = wanted;
        MarkMacroChanged();
        settings = macroState.profiles[static_cast<size_t>(wanted)].settings;
    }
    ApplyStoredSettings(settings);
}

void ClearProfile() {
    if (engineState.recording) {
        return;
    }
    std::string before = BuildProfileSettings();
    ResetToolSettings();
    std::string settings = BuildProfileSettings();
    DroppedSteps dropped;
    MutexLock lock(macroMutex);
    if (Profile* current = CurrentProfile()) {
        KeepClearedProfile(*current, std::move(before), &dropped);
        current->settings = std::move(settings);
        MarkMacroChanged();
    }
}

Refusal RenameProfile(int32_t index, std::string_view name) {
    MutexLock lock(macroMutex);
    if (!IsProfileIndex(index) || name.empty()) {
        return Refusal::Argument;
    }
    Profile& profile = macroState.profiles[static_cast<size_t>(index)];
    if (profile.name == DefaultProfileName || name == DefaultProfileName) {
        return Refusal::Default;
    }
    profile.name = name;
    return Refusal::None;
}

Refusal DuplicateProfile(int32_t index) {
    Profile copy;
    copy.events = MemoryForCopy(index);
    std::string settings;
    {
        MutexLock lock(macroMutex);
        if (engineState.recording) {
            return Refusal::Recording;
        }
        if (!IsProfileIndex(index)) {
            return Refusal::Argument;
        }
        const Profile& source = macroState.profiles[static_cast<size_t>(index)];
        copy.name = FreeProfileName(source.name);
        copy.settings = settings = source.settings;
        copy.events.assign(source.events.begin(), source.events.end());
        macroState.profiles.insert(macroState.profiles.begin() + index + 1, std::move(copy));
        if (macroState.continueProfile > index) {
            ++macroState.continueProfile;
        }
        macroState.currentProfile = index + 1;
        MarkMacroChanged();
    }
    ApplyStoredSettings(settings);
    return Refusal::None;
}

Refusal MoveProfile(int32_t from, int32_t to) {
    MutexLock lock(macroMutex);
    if (engineState.recording) {
        return Refusal::Recording;
    }
    if (!IsProfileIndex(from) || !IsProfileIndex(to)) {
        return Refusal::Argument;
    }
    const auto begin = macroState.profiles.begin();
    if (from < to) {
        std::rotate(begin + from, begin + from + 1, begin + to + 1);
    } else {
        std::rotate(begin + to, begin + from, begin + from + 1);
    }
    macroState.currentProfile = IndexAfterMove(macroState.currentProfile, from, to);
    macroState.continueProfile = IndexAfterMove(macroState.continueProfile, from, to);
    return Refusal::None;
}

void AppendProfile(ParsedMacro macro) {
    Profile profile{FreeProfileName(std::move(macro.name)), std::move(macro.settings),
                    std::move(macro.events)};
    macroState.profiles.reserve(macroState.profiles.size() + 1);
    if (profile.settings.empty()) {
        ResetToolSettings();
        profile.settings = BuildProfileSettings();
    }
    macroState.profiles.push_back(std::move(profile));
    macroState.currentProfile = static_cast<int32_t>(macroState.profiles.size()) - 1;
    MarkMacroChanged();
}

std::string GetProfiles() {
    std::string report;
    JsonWriter json(report);
    MutexLock lock(macroMutex);
    json.BeginObject();
    json.IntField("current", macroState.currentProfile);
    json.BeginArrayField("names");
    for (const Profile& profile : macroState.profiles) {
        json.Text(profile.name);
    }
    json.EndArray();
    json.IntField("cap", -1);  // no limit
    json.TextField("defaultName", DefaultProfileName);
    json.EndObject();
    return report;
}

void SyncProfileSettings() {
    std::string settings = BuildProfileSettings();
    MutexLock lock(macroMutex);
    if (Profile* current = CurrentProfile()) {
        current->settings = std::move(settings);
    }
}

void EnsureDefaultProfile() {
    MutexLock lock(macroMutex);
    for (const Profile& profile : macroState.profiles) {
        if (profile.name == DefaultProfileName) {
            return;
        }
    }
    const bool wasEmpty = macroState.profiles.empty();
    macroState.profiles.insert(macroState.profiles.begin(), Profile{DefaultProfileName, {}, {}});
    if (!wasEmpty) {
        ++macroState.currentProfile;
    }
    MarkMacroChanged();
}
