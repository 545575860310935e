#include "storage/macro_file.h"

#include "base/numbers.h"
#include "base/text.h"
#include "platform/files.h"
#include "storage/settings_text.h"

#include <algorithm>
#include <ios>
#include <utility>

namespace {

constexpr std::string_view kSettingsPrefix = "SETTINGS:";

// The longest event line: seven integers of at most 11 characters, a time, seven commas.
constexpr size_t kEventLineLength = 7 * 11 + kStreamDoubleLength + 7;
constexpr size_t kLongestLineEnd = 2;

// One event at `out`, which has room for kEventLineLength bytes; gives the end.
char* PutEventLine(char* out, const UnifiedEvent& event) {
    out = WriteInt(out, static_cast<int32_t>(event.type));
    *out++ = ',';
    out = WriteStreamDouble(out, event.time);
    *out++ = ',';
    out = WriteInt(out, event.x);
    *out++ = ',';
    out = WriteInt(out, event.y);
    *out++ = ',';
    out = WriteInt(out, event.flags);
    *out++ = ',';
    out = WriteInt(out, static_cast<int32_t>(event.virtualKey));
    *out++ = ',';
    *out++ = event.down ? '1' : '0';
    *out++ = ',';
    return WriteInt(out, event.wheel);
}

// Reads the comma-separated fields of one line in order. Past the last one it reads the last one again.
class FieldWalk {
  public:
    explicit FieldWalk(std::string_view line) : next_(line.data()), end_(line.data() + line.size()) {}

    // Reads the next field with `scan`. Returns false for a malformed number.
    template <typename Number>
    bool Read(const char* (*scan)(const char*, const char*, Number*), Number* value) {
        if (next_ != end_) {
            field_ = next_;
            const char* after = scan(field_, end_, value);
            if (after == nullptr) {
                return false;
            }
            // Ignore what follows the number in the field. No number contains a comma.
            while (after != end_ && *after != ',') {
                ++after;
            }
            next_ = after == end_ ? end_ : after + 1;
            return true;
        }
        return field_ != nullptr && scan(field_, end_, value) != nullptr;
    }
    // Returns whether the line has a further field. A comma at the end of the line begins none.
    bool More() const { return next_ != end_; }

  private:
    const char* field_ = nullptr;  // the last field that was read; null before the first
    const char* next_;
    const char* end_;
};

// Reads the first seven fields, which repeat the last one present if they are missing.
bool ReadSevenFields(FieldWalk& fields, UnifiedEvent* event) {
    int32_t type = 0;
    int32_t vk = 0;
    int32_t down = 0;
    if (!fields.Read(ScanInt, &type) || !fields.Read(ScanDouble, &event->time) ||
        !fields.Read(ScanInt, &event->x) || !fields.Read(ScanInt, &event->y) ||
        !fields.Read(ScanUnsignedLong, &event->flags) || !fields.Read(ScanInt, &vk) ||
        !fields.Read(ScanInt, &down)) {
        return false;
    }
    event->type = static_cast<uint32_t>(type);
    event->virtualKey = static_cast<uint32_t>(vk);
    event->down = down != 0;
    return true;
}

std::string MacroFileText(const Profile& profile) {
    const std::string_view lineEnd = TextLineEnd();
    std::string text = profile.name;
    text += lineEnd;
    text += kSettingsPrefix;
    text += BuildSettingsLine();
    text += lineEnd;
    AppendEventLines(text, profile.events);
    return text;
}

}  // namespace

void AppendEventLine(std::string& out, const UnifiedEvent& event) {
    char line[kEventLineLength];
    out.append(line, PutEventLine(line, event));
}

void AppendEventLines(std::string& out, const std::vector<UnifiedEvent>& events) {
    constexpr size_t kUsualLineLength = 32;
    const std::string_view lineEnd = TextLineEnd();
    out.reserve(out.size() + events.size() * kUsualLineLength);
    // Collect lines in a buffer that fits the processor's cache.
    char buffer[8192];
    const char* const full = buffer + sizeof(buffer) - kEventLineLength - kLongestLineEnd;
    char* at = buffer;
    for (const UnifiedEvent& event : events) {
        at = PutEventLine(at, event);
        at = std::copy(lineEnd.begin(), lineEnd.end(), at);
        if (at > full) {
            out.append(buffer, at);
            at = buffer;
        }
    }
    out.append(buffer, at);
}

bool ParseEventLine(std::string_view line, UnifiedEvent* event) {
    FieldWalk fields(line);
    UnifiedEvent read;
    if (!ReadSevenFields(fields, &read) || (fields.More() && !fields.Read(ScanInt, &read.wheel))) {
        return false;
    }
    *event = read;
    return true;
}

bool ParseSessionEventLine(std::string_view line, UnifiedEvent* event) {
    FieldWalk fields(line);
    UnifiedEvent read;
    if (!ReadSevenFields(fields, &read) || !fields.Read(ScanInt, &read.wheel)) {
        return false;
    }
    *event = read;
    return true;
}

std::string ParseMacroText(std::string_view bytes, ParsedMacro* out) {
    TextLines lines(bytes);
    std::string_view line;
    if (!lines.Next(&line) || line.empty()) {
        return "That macro file is missing its profile name.";
    }
    ParsedMacro macro;
    macro.name = line;
    // A usual line has 16 bytes or more. With shorter lines the list grows while they are read.
    constexpr size_t kUsualLineLength = 16;
    macro.events.reserve(bytes.size() / kUsualLineLength);
    bool secondLine = true;
    while (lines.Next(&line)) {
        if (secondLine && StartsWith(line, kSettingsPrefix)) {
            macro.settings = ProfileSettingsFromLine(line.substr(kSettingsPrefix.size()));
        } else if (UnifiedEvent event; ParseEventLine(line, &event)) {
            macro.events.push_back(event);
        } else if (!line.empty()) {
            ++macro.skippedLines;
        }
        secondLine = false;
    }
    *out = std::move(macro);
    return {};
}

std::string ReadMacroFile(const std::string& path, ParsedMacro* out) {
    std::string bytes;
    switch (ReadFileLimited(path, kLargestFile, FileLinks::Follow, &bytes)) {
    case FileResult::Done:
        return ParseMacroText(bytes, out);
    case FileResult::TooLarge:
        return std::string(kMacroFileTooLarge);
    default:
        return std::string(kMacroFileNotOpened);
    }
}

bool TryWriteMacroFile(const std::string& path, const Profile& profile) {
    return WriteFileBytes(path, MacroFileText(profile));
}

void WriteMacroFile(const std::string& path, const Profile& profile) {
    const std::string text = MacroFileText(profile);
    // Write nothing first: a file that cannot be opened is not reported, a full disk is.
    if (!WriteFileBytes(path, {})) {
        return;
    }
    if (!WriteFileBytes(path, text)) {
        throw std::ios_base::failure("the macro file could not be written");
    }
}
