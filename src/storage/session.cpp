#include "storage/session.h"

#include "base/numbers.h"
#include "base/text.h"
#include "model/engine_state.h"
#include "platform/files.h"
#include "storage/data_folder.h"
#include "storage/macro_file.h"
#include "storage/settings_text.h"

#include <atomic>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

constexpr std::string_view kSettingsPrefix = "SETTINGS:";
constexpr std::string_view kCurrentPrefix = "CURRENT:";
constexpr std::string_view kProfilePrefix = "PROFILE:";
constexpr std::string_view kProfileSettingsPrefix = "PROFILESETTINGS:";

// The autosave thread, the UI thread at shutdown and the crash handler save at any moment, and only one of them may write
// the file. A save that finds another one running sets SavingAndWantedAgain and returns; the running one then saves once
// more, so that the newest state remains. No save waits for another: a thread that crashes during its own save must
// still get through the crash handler.
enum class SaveStage { Idle, Saving, SavingAndWantedAgain };
std::atomic<SaveStage> saveStage{SaveStage::Idle};

// The memory of a save. Kept from one save to the next: for a large macro, getting new memory takes several times as long
// as the copy itself. Only the running save uses it.
struct SaveBuffers {
    std::vector<Profile> profiles;  // copy of the store
    int32_t currentProfile = 0;
    std::string text;  // of the file
};
SaveBuffers saveBuffers;

// Frees the memory of a buffer that was needed for a larger macro.
template <typename Buffer> void FreeIfOversized(Buffer& buffer, size_t needed) {
    constexpr size_t kSpare = 65536;
    if (buffer.capacity() / 4 > needed + kSpare) {
        buffer = Buffer();
    }
}

// Reserves memory for a copy of the store, so that the input thread never waits for memory while the copy is made.
// Returns false if the lock is held.
bool PrepareCopy(SaveBuffers* copy) {
    std::vector<size_t> eventCounts;
    if (!macroMutex.TryLock()) {
        return false;
    }
    try {
        for (const Profile& profile : macroState.profiles) {
            eventCounts.push_back(profile.events.size());
        }
    } catch (const std::bad_alloc&) {
        eventCounts.clear();
    }
    macroMutex.Unlock();
    copy->profiles.resize(eventCounts.size());
    for (size_t i = 0; i < eventCounts.size(); ++i) {
        constexpr size_t kGrowth = 64;  // a recording may be adding events
        std::vector<UnifiedEvent>& events = copy->profiles[i].events;
        FreeIfOversized(events, eventCounts[i]);
        events.reserve(eventCounts[i] + kGrowth);
        events.resize(eventCounts[i]);
    }
    return true;
}

// Returns false if the lock is held or memory has run out.
bool CopyStore(SaveBuffers* copy) {
    if (!PrepareCopy(copy) || !macroMutex.TryLock()) {
        return false;
    }
    bool copied = true;
    try {
        copy->profiles = macroState.profiles;
        copy->currentProfile = macroState.currentProfile;
    } catch (const std::bad_alloc&) {
        copied = false;
    }
    macroMutex.Unlock();
    return copied;
}

void AppendSession(std::string& text, const std::string& settingsLine, const SaveBuffers& store) {
    const std::string_view lineEnd = TextLineEnd();
    text += kSettingsPrefix;
    text += settingsLine;
    text += lineEnd;
    text += kCurrentPrefix;
    AppendInt(text, store.currentProfile);
    text += lineEnd;
    for (const Profile& profile : store.profiles) {
        text += kProfilePrefix;
        text += profile.name;
        text += lineEnd;
        if (!profile.settings.empty()) {
            text += kProfileSettingsPrefix;
            text += profile.settings;
            text += lineEnd;
        }
        AppendEventLines(text, profile.events);
    }
}

void SaveOnce() {
    try {
        const std::string settingsLine = BuildSettingsLine();
        if (CopyStore(&saveBuffers)) {
            std::string& text = saveBuffers.text;
            text.clear();
            AppendSession(text, settingsLine, saveBuffers);
            CreateDataFolder();
            WriteFileBytes(SessionPath(), text);
            FreeIfOversized(text, text.size());
        }
    } catch (const std::bad_alloc&) {
        // The file keeps the last good state.
    }
}

// Returns the number of bytes before the next profile line, for the size of a macro's list. Event lines contain no
// capital letter, which makes this a search for one byte.
size_t BytesToNextProfile(std::string_view text) {
    for (size_t at = text.find('P'); at != std::string_view::npos; at = text.find('P', at + 1)) {
        if (StartsWith(text.substr(at), kProfilePrefix) && (at == 0 || text[at - 1] == '\n')) {
            return at;
        }
    }
    return text.size();
}

// Reads the lines after the second one.
std::vector<Profile> ReadProfiles(TextLines& lines) {
    // A usual line has 16 bytes or more. With shorter lines the list grows while they are read.
    constexpr size_t kUsualLineLength = 16;
    std::vector<Profile> profiles;
    std::string_view line;
    while (lines.Next(&line)) {
        if (StartsWith(line, kProfilePrefix)) {
            Profile& profile = profiles.emplace_back();
            profile.name = line.substr(kProfilePrefix.size());
            profile.events.reserve(BytesToNextProfile(lines.Rest()) / kUsualLineLength);
        } else if (profiles.empty()) {
            continue;
        } else if (StartsWith(line, kProfileSettingsPrefix)) {
            profiles.back().settings = line.substr(kProfileSettingsPrefix.size());
        } else if (UnifiedEvent event; ParseSessionEventLine(line, &event)) {
            profiles.back().events.push_back(event);
        }
    }
    return profiles;
}

}  // namespace

void SaveSession() {
    SaveStage before = SaveStage::Idle;
    while (!saveStage.compare_exchange_weak(
        before, before == SaveStage::Idle ? SaveStage::Saving : SaveStage::SavingAndWantedAgain)) {
    }
    if (before != SaveStage::Idle) {
        return;
    }
    SaveStage stage = SaveStage::Saving;
    do {
        saveStage = SaveStage::Saving;
        SaveOnce();
        stage = SaveStage::Saving;
    } while (!saveStage.compare_exchange_strong(stage, SaveStage::Idle));
}

bool LoadSession() {
    std::string bytes;
    return ReadFileBytes(SessionPath(), &bytes) && LoadSessionText(bytes);
}

bool LoadSessionText(std::string_view bytes) {
    TextLines lines(bytes);
    std::string_view line;
    if (!lines.Next(&line) || !StartsWith(line, kSettingsPrefix)) {
        return false;
    }
    ApplySettingsLine(line.substr(kSettingsPrefix.size()));
    int32_t wanted = 0;
    if (lines.Next(&line) && StartsWith(line, kCurrentPrefix)) {
        ParseInt(line.substr(kCurrentPrefix.size()), &wanted);
    }
    std::vector<Profile> profiles = ReadProfiles(lines);
    if (profiles.empty()) {
        return false;
    }
    const std::string settings = BuildProfileSettings();
    MutexLock lock(macroMutex);
    macroState.profiles = std::move(profiles);
    const bool inRange = wanted >= 0 && static_cast<size_t>(wanted) < macroState.profiles.size();
    macroState.currentProfile = inRange ? wanted : 0;
    Profile& current = macroState.profiles[static_cast<size_t>(macroState.currentProfile)];
    if (current.settings.empty()) {
        current.settings = settings;
    }
    MarkMacroChanged();
    return true;
}
