#include "editing/event_list.h"

#include "base/mutex.h"
#include "base/numbers.h"
#include "model/engine_state.h"
#include "platform/files.h"
#include "storage/data_folder.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace {

// Holds the longest single event: a time of 309 digits before the point, and some 110 other characters.
constexpr size_t kLongestEventJson = 512;
// The usual length of an event, so that the text grows only once.
constexpr size_t kUsualEventJson = 72;
// Up to this size the mirror is written at every poll. A longer one is written only if it has changed or its file is
// missing, and of a list that has grown only the new end: tens of megabytes eight times a second would wear out the disk.
constexpr size_t kAlwaysMirroredSize = 0x20000;
constexpr const char* kEventsMirror = "macroevents.txt";

// Writes the event list by hand in place of JsonWriter: measured 7.5 times as fast on a million events (storage_bench,
// "event list JSON, beside JsonWriter"). The page polls the list. The caller's buffer holds kLongestEventJson bytes.
struct Writer {
    char* at;

    template <size_t Size> void Text(const char (&literal)[Size]) {
        std::memcpy(at, literal, Size - 1);
        at += Size - 1;
    }
    template <typename Integer> void Int(Integer value) { at = WriteInt(at, value); }
    void FixedDouble(double value) { at = WriteFixedDouble(at, value); }
};

void WriteDescription(Writer& out, const UnifiedEvent& event) {
    switch (event.type) {
    case EvAbsMove:
        out.Text("Abs Move to X:");
        out.Int(event.x);
        out.Text(" Y:");
        out.Int(event.y);
        break;
    case EvRelMove:
        out.Text("Rel Move dX:");
        out.Int(event.x);
        out.Text(" dY:");
        out.Int(event.y);
        break;
    case EvMouseButton:
        out.Text("Mouse Click at X:");
        out.Int(event.x);
        out.Text(" Y:");
        out.Int(event.y);
        break;
    case EvKey:
        out.Text("Keyboard VK: ");
        out.Int(event.virtualKey);
        event.down ? out.Text(" (DOWN)") : out.Text(" (UP)");
        break;
    case EvScroll:
        out.Text("Mouse Scroll Delta: ");
        out.Int(event.wheel);
        break;
    case EvToolState:
        event.virtualKey == kToolKeySpammer ? out.Text("Key Spammer ") : out.Text("Autoclicker ");
        event.down ? out.Text("ON") : out.Text("OFF");
        break;
    default:
        break;
    }
}

struct EventList {
    uint64_t rewrittenRevision = 0;  // of the macro that `text` was built from; 0: none, macros start at 1
    size_t count = 0;                // number of events in `text`
    std::string text;
    bool mirrored = false;             // this text is in macroevents.txt
    size_t mirroredBytes = 0;          // number of leading bytes of `text` that are there
    FileStamp mirrorStamp;             // of the file after the last write
    std::vector<UnifiedEvent> newest;  // copy of the events that are added next
};

// Held while the list is built and while its file is written, so that an older text never replaces a newer one.
// Lock order: eventListMutex, then macroMutex.
Mutex eventListMutex;
EventList eventList GUARDED_BY(eventListMutex);

enum class Copied { Nothing, Rest, Part };

// Copies the events that follow those in the list. Sets *first to the position of the first one, 0 to begin again, and
// *total to the number of events of the macro.
Copied CopyNewest(EventList& list, size_t* first, size_t* total) {
    list.newest.resize(kEventsPerHold);  // before the lock is taken
    MutexLock lock(macroMutex);
    const Profile* profile = CurrentProfile();
    *total = profile == nullptr ? 0 : profile->events.size();
    const bool isOther = list.rewrittenRevision != macroState.rewrittenRevision || list.count > *total;
    *first = isOther ? 0 : list.count;
    const size_t left = *total - *first;
    const size_t count = std::min(left, kEventsPerHold);
    if (count > 0) {
        std::copy_n(profile->events.begin() + static_cast<std::ptrdiff_t>(*first), count,
                    list.newest.begin());
    }
    list.newest.resize(count);
    list.rewrittenRevision = macroState.rewrittenRevision;
    if (!isOther && count == 0) {
        return Copied::Nothing;
    }
    return count == left ? Copied::Rest : Copied::Part;
}

// Adds what is new in the macro to the text. An edit while this runs makes it begin again.
void Refresh(EventList& list) REQUIRES(eventListMutex) {
    Copied copied = Copied::Part;
    while (copied == Copied::Part) {
        size_t first = 0;
        size_t total = 0;
        copied = CopyNewest(list, &first, &total);
        if (copied == Copied::Nothing) {
            return;
        }
        list.mirrored = false;
        // The text changes from its closing bracket on.
        list.mirroredBytes = first == 0 ? 0 : std::min(list.mirroredBytes, list.text.size() - 1);
        // Without memory the text is left incomplete, and the next call begins again.
        const uint64_t edits = std::exchange(list.rewrittenRevision, 0);
        if (first == 0) {
            ReserveMacroEventsJson(total, list.text);
        }
        AppendMacroEventsJson(list.newest, first, list.text);
        list.count = first + list.newest.size();
        list.rewrittenRevision = edits;
    }
}

// Writes the whole text to the mirror file.
void WriteMirror(EventList& list) REQUIRES(eventListMutex) {
    list.mirrored = WriteEventsMirror(list.text);
    list.mirroredBytes = list.mirrored ? list.text.size() : 0;
    if (list.mirrored && !ReadFileStamp(DataFilePath(kEventsMirror), &list.mirrorStamp)) {
        list.mirroredBytes = 0;
    }
}

// Writes what is new to the mirror file. Returns false if that is not possible because the file is not the last one
// written.
bool ExtendMirror(EventList& list) REQUIRES(eventListMutex) {
    const std::string path = DataFilePath(kEventsMirror);
    FileStamp stamp;
    if (list.mirroredBytes <= kAlwaysMirroredSize || !ReadFileStamp(path, &stamp) ||
        stamp != list.mirrorStamp) {
        return false;
    }
    const std::string_view added = std::string_view(list.text).substr(list.mirroredBytes);
    if (PatchStateFile(path, list.mirroredBytes, added) != FileResult::Done ||
        !ReadFileStamp(path, &list.mirrorStamp)) {
        return false;
    }
    list.mirrored = true;
    list.mirroredBytes = list.text.size();
    return true;
}

}  // namespace

std::string MacroEventsJson(const std::vector<UnifiedEvent>& events) {
    std::string json;
    ReserveMacroEventsJson(events.size(), json);
    AppendMacroEventsJson(events, 0, json);
    return json;
}

void ReserveMacroEventsJson(size_t count, std::string& json) {
    json.reserve(count * kUsualEventJson + 2);
}

void AppendMacroEventsJson(std::span<const UnifiedEvent> events, size_t first, std::string& json) {
    if (first == 0) {
        json.assign(1, '[');
    } else {
        json.pop_back();  // the closing bracket
    }
    char buffer[kLongestEventJson];
    for (size_t i = 0; i < events.size(); ++i) {
        const size_t id = first + i;
        Writer out{buffer};
        id == 0 ? out.Text("{\"id\":") : out.Text(",{\"id\":");
        out.Int(id);
        out.Text(",\"time\":");
        out.FixedDouble(events[i].time);
        out.Text(",\"desc\":\"");
        WriteDescription(out, events[i]);
        out.Text("\"}");
        json.append(buffer, out.at);
    }
    json += ']';
}

std::string EventDescription(const UnifiedEvent& event) {
    char buffer[kLongestEventJson];
    Writer out{buffer};
    WriteDescription(out, event);
    return std::string(buffer, out.at);
}

std::string ReportEventList() {
    MutexLock lock(eventListMutex);
    Refresh(eventList);
    WriteMirror(eventList);
    return eventList.text;
}

void RewriteEventMirror() {
    MutexLock lock(eventListMutex);
    Refresh(eventList);
    WriteMirror(eventList);
}

void UpdateEventMirror() {
    MutexLock lock(eventListMutex);
    Refresh(eventList);
    const bool isLong = eventList.text.size() > kAlwaysMirroredSize;
    if (isLong && eventList.mirrored && FileExists(DataFilePath(kEventsMirror))) {
        return;
    }
    if (eventList.mirrored || !ExtendMirror(eventList)) {
        WriteMirror(eventList);
    }
}
