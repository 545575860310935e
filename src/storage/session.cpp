#include "storage/session.h"

#include "base/numbers.h"
#include "base/text.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "storage/data_folder.h"
#include "storage/macro_file.h"
#include "storage/session_file.h"
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

std::atomic<SaveProblem> saveProblem{SaveProblem::None};

// The session file at the start was damaged and could not be moved: no save may overwrite it. Set before the threads
// start, then belongs to the save under way.
bool damagedFileInTheWay = false;

// The thread runs a save. A crash inside a save must not wait for that save.
thread_local bool isSaving = false;

SaveProblem ProblemOfResult(FileResult result) {
    switch (result) {
    case FileResult::Done:
        return SaveProblem::None;
    case FileResult::DiskFull:
        return SaveProblem::DiskFull;
    default:
        return SaveProblem::Failed;
    }
}

FileResult WriteText(const std::string& text) {
    if (damagedFileInTheWay && FileExists(SessionPath()) && KeepDamagedSession().empty()) {
        return FileResult::Failed;
    }
    damagedFileInTheWay = false;
    return WriteSessionFile(text);
}

void SaveOnce() {
    try {
        const std::string settingsLine = BuildSettingsLine();
        if (CopyStore(&saveBuffers)) {
            std::string& text = saveBuffers.text;
            text.clear();
            AppendSession(text, settingsLine, saveBuffers);
            saveProblem = ProblemOfResult(WriteText(text));
            FreeIfOversized(text, text.size());
        }
    } catch (const std::bad_alloc&) {
        saveProblem = SaveProblem::Failed;  // the file keeps the last good state
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

struct ParsedSession {
    bool begins = false;  // the first line is the settings line
    std::string_view settingsLine;
    int32_t currentProfile = 0;  // as written; may be out of range
    std::vector<Profile> profiles;
    bool whole = false;  // every line was understood, and the last one is complete
};

// Reads what follows the second line. False if an event line was dropped.
bool ReadProfiles(TextLines& lines, std::vector<Profile>* profiles) {
    // A usual line has 16 bytes or more. With shorter lines the list grows while they are read.
    constexpr size_t kUsualLineLength = 16;
    bool complete = true;
    std::string_view line;
    while (lines.Next(&line)) {
        if (StartsWith(line, kProfilePrefix)) {
            Profile& profile = profiles->emplace_back();
            profile.name = line.substr(kProfilePrefix.size());
            profile.events.reserve(BytesToNextProfile(lines.Rest()) / kUsualLineLength);
        } else if (profiles->empty() || line.empty()) {
            continue;
        } else if (StartsWith(line, kProfileSettingsPrefix)) {
            profiles->back().settings = line.substr(kProfileSettingsPrefix.size());
        } else if (UnifiedEvent event; ParseSessionEventLine(line, &event)) {
            profiles->back().events.push_back(event);
        } else {
            complete = false;
        }
    }
    return complete;
}

ParsedSession ParseSession(std::string_view bytes) {
    ParsedSession session;
    TextLines lines(bytes);
    std::string_view line;
    if (!lines.Next(&line) || !StartsWith(line, kSettingsPrefix)) {
        return session;
    }
    session.begins = true;
    session.settingsLine = line.substr(kSettingsPrefix.size());
    if (lines.Next(&line) && StartsWith(line, kCurrentPrefix)) {
        ParseInt(line.substr(kCurrentPrefix.size()), &session.currentProfile);
    }
    const bool complete = ReadProfiles(lines, &session.profiles);
    session.whole = complete && !session.profiles.empty() && bytes.back() == '\n';
    return session;
}

// False: no profile, and the store is untouched. The settings of a session without profiles are applied all the same.
bool ApplySession(ParsedSession session) {
    if (!session.begins) {
        return false;
    }
    ApplySettingsLine(session.settingsLine);
    if (session.profiles.empty()) {
        return false;
    }
    const std::string settings = BuildProfileSettings();
    MutexLock lock(macroMutex);
    macroState.profiles = std::move(session.profiles);
    const int32_t wanted = session.currentProfile;
    const bool inRange = wanted >= 0 && static_cast<size_t>(wanted) < macroState.profiles.size();
    macroState.currentProfile = inRange ? wanted : 0;
    Profile& current = macroState.profiles[static_cast<size_t>(macroState.currentProfile)];
    if (current.settings.empty()) {
        current.settings = settings;
    }
    MarkMacroChanged();
    return true;
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
    isSaving = true;
    do {
        saveStage = SaveStage::Saving;
        SaveOnce();
        stage = SaveStage::Saving;
    } while (!saveStage.compare_exchange_strong(stage, SaveStage::Idle));
    isSaving = false;
}

void SaveSessionAfterCrash() {
    constexpr int kRounds = 200;
    constexpr uint32_t kRoundMilliseconds = 10;
    if (isSaving) {
        return;  // the recovery file or the session file is whole
    }
    for (int round = 0; round < kRounds && saveStage != SaveStage::Idle; ++round) {
        SleepMilliseconds(kRoundMilliseconds);
    }
    SaveSession();
}

SaveProblem LastSaveProblem() {
    return saveProblem;
}

SessionLoad LoadSession() {
    SessionLoad load;
    damagedFileInTheWay = false;
    // After a complete save the recovery file is as large as the session and not needed, so only its head is read.
    if (std::string recovered; ReadRecoveryState() == RecoveryState::Pending &&
                               ReadRecoveryFile(&recovered) == RecoveryState::Pending &&
                               LoadSessionText(recovered)) {
        load.loaded = true;
        return load;
    }
    std::string bytes;
    const FileResult result = ReadFileLimited(SessionPath(), kLargestFile, FileLinks::Refuse, &bytes);
    if (result == FileResult::Missing) {
        return load;
    }
    ParsedSession session;
    if (result == FileResult::Done) {
        session = ParseSession(bytes);
    }
    if (session.whole) {
        load.loaded = ApplySession(std::move(session));
        return load;
    }
    load.damaged = true;
    if (result != FileResult::Failed) {
        load.keptAs = KeepDamagedSession();
    }
    // A file that could not be read may be whole, and readable at the next start. The next save moves it.
    damagedFileInTheWay = load.keptAs.empty();
    std::string recovered;
    load.loaded = (ReadRecoveryFile(&recovered) == RecoveryState::Done && LoadSessionText(recovered)) ||
                  ApplySession(std::move(session));
    return load;
}

bool LoadSessionText(std::string_view bytes) {
    return ApplySession(ParseSession(bytes));
}
