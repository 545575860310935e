#include "storage/session_file.h"

#include "base/text.h"
#include "platform/crypto.h"
#include "storage/data_folder.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace {

constexpr const char* kRecoveryFile = "session-recovery.dat";
constexpr const char* kRecoveryTemporaryFile = "session-recovery.tmp";

// The head of a recovery file has a fixed length: name, state, length of the text in decimal, SHA-256 of the text in
// hex, line end. The text follows.
constexpr std::string_view kHeadName = "VRLRECOVERY1 ";
constexpr size_t kStateOffset = kHeadName.size();
constexpr size_t kLengthOffset = kStateOffset + 2;
constexpr size_t kLengthDigits = 12;
constexpr size_t kChecksumOffset = kLengthOffset + kLengthDigits + 1;
constexpr size_t kHeadSize = kChecksumOffset + 64 + 1;
constexpr char kPending = 'P';
constexpr char kDone = 'D';

// What the last successful write left on the disk. Belongs to the save under way.
struct LastWrite {
    bool known = false;
    Sha256Digest checksum{};
    FileStamp stamp;
};
LastWrite lastWrite;

bool Checksum(std::string_view text, Sha256Digest* digest) {
    Sha256 hash;
    return hash.Add(text) && hash.Finish(digest);
}

std::string HexText(const Sha256Digest& digest) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const uint8_t byte : digest) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

std::string RecoveryHead(size_t length, const Sha256Digest& checksum) {
    std::array<char, kLengthDigits + 1> digits{};
    std::snprintf(digits.data(), digits.size(), "%012zu", length);
    std::string head(kHeadName);
    head += kPending;
    head += ' ';
    head.append(digits.data(), kLengthDigits);
    head += ' ';
    head += HexText(checksum);
    head += '\n';
    return head;
}

RecoveryState StateOfMark(char mark) {
    switch (mark) {
    case kPending:
        return RecoveryState::Pending;
    case kDone:
        return RecoveryState::Done;
    default:
        return RecoveryState::None;
    }
}

FileResult WriteRecoveryFile(const std::string& text, const Sha256Digest& checksum) {
    const std::string temporary = DataFilePath(kRecoveryTemporaryFile);
    std::string bytes = RecoveryHead(text.size(), checksum);
    bytes += text;
    FileResult result = WriteStateFileToDisk(temporary, bytes);
    if (result == FileResult::Done) {
        result = ReplaceStateFile(temporary, DataFilePath(kRecoveryFile));
    }
    if (result != FileResult::Done) {
        // It would take space that the next attempt needs.
        RemoveFile(temporary);
    }
    return result;
}

std::string UtcTimeText() {
    using namespace std::chrono;
    const auto now = time_point_cast<seconds>(system_clock::now());
    const auto today = time_point_cast<days>(now);
    const year_month_day date{today};
    const hh_mm_ss time{now - today};
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02u-%02d%02d%02d", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text.data();
}

}  // namespace

FileResult WriteSessionFile(const std::string& text) {
    Sha256Digest checksum{};
    if (!Checksum(text, &checksum)) {
        return FileResult::Failed;
    }
    const std::string path = SessionPath();
    FileStamp stamp;
    if (lastWrite.known && checksum == lastWrite.checksum && ReadFileStamp(path, &stamp) &&
        stamp == lastWrite.stamp) {
        return FileResult::Done;
    }
    lastWrite.known = false;
    CreateDataFolder();
    FileResult result = WriteRecoveryFile(text, checksum);
    if (result != FileResult::Done) {
        return result;
    }
    result = WriteStateFileToDisk(path, text);
    if (result != FileResult::Done) {
        return result;
    }
    // Without this mark the next start reads the same text from the recovery file.
    PatchStateFile(DataFilePath(kRecoveryFile), kStateOffset, std::string_view(&kDone, 1));
    lastWrite.checksum = checksum;
    lastWrite.known = ReadFileStamp(path, &lastWrite.stamp);
    return FileResult::Done;
}

RecoveryState ReadRecoveryState() {
    std::string head;
    if (ReadStateFileStart(DataFilePath(kRecoveryFile), kHeadSize, &head) != FileResult::Done ||
        head.size() != kHeadSize || !StartsWith(head, kHeadName)) {
        return RecoveryState::None;
    }
    return StateOfMark(head[kStateOffset]);
}

RecoveryState ReadRecoveryFile(std::string* text) {
    std::string_view content;
    if (ReadFileLimited(DataFilePath(kRecoveryFile), kLargestFile, FileLinks::Refuse, text) !=
        FileResult::Done) {
        return RecoveryState::None;
    }
    const RecoveryState state = ParseRecovery(*text, &content);
    if (state != RecoveryState::None) {
        text->erase(0, kHeadSize);
    }
    return state;
}

RecoveryState ParseRecovery(std::string_view bytes, std::string_view* text) {
    if (bytes.size() < kHeadSize) {
        return RecoveryState::None;
    }
    const char mark = bytes[kStateOffset];
    *text = bytes.substr(kHeadSize);
    Sha256Digest checksum{};
    if (StateOfMark(mark) == RecoveryState::None || !Checksum(*text, &checksum)) {
        return RecoveryState::None;
    }
    std::string head = RecoveryHead(text->size(), checksum);
    head[kStateOffset] = mark;
    if (bytes.substr(0, kHeadSize) != head) {
        return RecoveryState::None;
    }
    return StateOfMark(mark);
}

std::string KeepDamagedSession() {
    constexpr int kAttempts = 9;
    const std::string name = "session-damaged-" + UtcTimeText();
    for (int attempt = 1; attempt <= kAttempts; ++attempt) {
        const std::string suffix = attempt == 1 ? "" : "-" + std::to_string(attempt);
        std::string path = DataFilePath(name + suffix + ".dat");
        if (!FileExists(path) && MoveFileNoReplace(SessionPath(), path)) {
            return path;
        }
    }
    return {};
}
