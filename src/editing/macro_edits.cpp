#include "editing/macro_edits.h"

#include "base/text.h"
#include "model/engine_state.h"
#include "storage/data_folder.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

// Holds the longest single event: a time of 309 digits before the point, and some 110 other characters.
constexpr size_t kLongestEventJson = 512;
// The usual length of an event, so that the text grows only once.
constexpr size_t kUsualEventJson = 72;
// Squared pixels within which a move adds nothing to the path: up to 10 pixels.
constexpr int32_t kNearSquared = 101;

// "00" to "99" in a row: digits are written two at a time.
constexpr std::array<char, 200> kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

// Writes the event list by hand in place of JsonWriter, which takes several times as long on a million events: the page
// polls the list. The caller's buffer holds kLongestEventJson bytes.
struct Writer {
    char* at;

    template <size_t Size> void Text(const char (&literal)[Size]) {
        std::memcpy(at, literal, Size - 1);
        at += Size - 1;
    }
    void Unsigned(uint64_t value) {
        char* end = at + DigitCount(value);
        at = end;
        for (; value >= 100; value /= 100) {
            end -= 2;
            std::memcpy(end, &kDigitPairs[2 * (value % 100)], 2);
        }
        if (value >= 10) {
            std::memcpy(end - 2, &kDigitPairs[2 * value], 2);
        } else {
            end[-1] = static_cast<char>('0' + value);
        }
    }
    void Signed(int64_t value) {
        if (value < 0) {
            *at++ = '-';
        }
        Unsigned(value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value));
    }
    // The decimal point and six digits of a value below 1,000,000.
    void Millionths(uint32_t value) {
        *at = '.';
        std::memcpy(at + 1, &kDigitPairs[2 * (value / 10000)], 2);
        std::memcpy(at + 3, &kDigitPairs[2 * (value / 100 % 100)], 2);
        std::memcpy(at + 5, &kDigitPairs[2 * (value % 100)], 2);
        at += 7;
    }

  private:
    static size_t DigitCount(uint64_t value) {
        size_t count = 1;
        for (; value >= 10000; value /= 10000) {
            count += 4;
        }
        return count + (value >= 10 ? 1 : 0) + (value >= 100 ? 1 : 0) + (value >= 1000 ? 1 : 0);
    }
};

// Writes `value` as printf does with "%f" in the C locale. Times of macros are far below 2^52 seconds and have a
// fraction: for them the exact value in millionths is an integer product and a shift, rounded half to even.
void WriteSixDecimals(Writer& out, double value) {
    constexpr uint64_t kFractionMask = (uint64_t{1} << 52) - 1;
    const auto bits = std::bit_cast<uint64_t>(value);
    const auto exponent = static_cast<int>((bits >> 52) & 0x7FF);
    const int shift = 1075 - exponent;  // the value is significand / 2^shift
    if (exponent == 0 || shift < 1 || shift > 63) {
        out.at = std::to_chars(out.at, out.at + 400, value, std::chars_format::fixed, 6).ptr;
        return;
    }
    if (std::signbit(value)) {
        out.Text("-");
    }
    const uint64_t significand = (bits & kFractionMask) | (uint64_t{1} << 52);
    const uint64_t whole = significand >> shift;
    // The fraction has up to 53 bits, its product with 10^6 up to 73.
    const uint64_t fraction = significand & ((uint64_t{1} << shift) - 1);
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide>(fraction) * 1000000;
    auto millionths = static_cast<uint32_t>(product >> shift);
    const auto rest = static_cast<uint64_t>(product & ((Wide{1} << shift) - 1));
    const uint64_t half = uint64_t{1} << (shift - 1);
    if (rest > half || (rest == half && (millionths & 1) != 0)) {
        ++millionths;
    }
    out.Unsigned(millionths == 1000000 ? whole + 1 : whole);
    out.Millionths(millionths == 1000000 ? 0 : millionths);
}

void WriteDescription(Writer& out, const UnifiedEvent& event) {
    switch (event.type) {
    case EvAbsMove:
        out.Text("Abs Move to X:");
        out.Signed(event.x);
        out.Text(" Y:");
        out.Signed(event.y);
        break;
    case EvRelMove:
        out.Text("Rel Move dX:");
        out.Signed(event.x);
        out.Text(" dY:");
        out.Signed(event.y);
        break;
    case EvMouseButton:
        out.Text("Mouse Click at X:");
        out.Signed(event.x);
        out.Text(" Y:");
        out.Signed(event.y);
        break;
    case EvKey:
        out.Text("Keyboard VK: ");
        out.Unsigned(event.virtualKey);
        event.down ? out.Text(" (DOWN)") : out.Text(" (UP)");
        break;
    case EvScroll:
        out.Text("Mouse Scroll Delta: ");
        out.Signed(event.wheel);
        break;
    case EvToolState:
        event.virtualKey == kToolKeySpammer ? out.Text("Key Spammer ") : out.Text("Autoclicker ");
        event.down ? out.Text("ON") : out.Text("OFF");
        break;
    default:
        break;
    }
}

void MirrorEvents() {
    WriteEventsMirror(CurrentMacroEventsJson());
}

// Returns the event at an index of the current macro, or null.
UnifiedEvent* EventAt(int32_t index) REQUIRES(macroMutex) {
    Profile* profile = CurrentProfile();
    if (profile == nullptr || index < 0 || static_cast<size_t>(index) >= profile->events.size()) {
        return nullptr;
    }
    return &profile->events[static_cast<size_t>(index)];
}

// Returns whether two points are within 10 pixels, in 32-bit arithmetic that wraps around.
bool IsNear(const UnifiedEvent& a, const UnifiedEvent& b) {
    const uint32_t dx = static_cast<uint32_t>(a.x) - static_cast<uint32_t>(b.x);
    const uint32_t dy = static_cast<uint32_t>(a.y) - static_cast<uint32_t>(b.y);
    return static_cast<int32_t>(dx * dx + dy * dy) < kNearSquared;
}

}  // namespace

std::string MacroEventsJson(const std::vector<UnifiedEvent>& events) {
    std::string json;
    BuildMacroEventsJson(events, json);
    return json;
}

void BuildMacroEventsJson(const std::vector<UnifiedEvent>& events, std::string& json) {
    json.clear();
    json.reserve(events.size() * kUsualEventJson + 2);
    json += '[';
    char buffer[kLongestEventJson];
    for (size_t i = 0; i < events.size(); ++i) {
        Writer out{buffer};
        i == 0 ? out.Text("{\"id\":") : out.Text(",{\"id\":");
        out.Unsigned(i);
        out.Text(",\"time\":");
        WriteSixDecimals(out, events[i].time);
        out.Text(",\"desc\":\"");
        WriteDescription(out, events[i]);
        out.Text("\"}");
        json.append(buffer, out.at);
    }
    json += ']';
}

std::string CurrentMacroEventsJson() {
    std::vector<UnifiedEvent> events;
    {
        MutexLock lock(macroMutex);
        if (const Profile* profile = CurrentProfile()) {
            events = profile->events;
        }
    }
    return MacroEventsJson(events);
}

std::string EventDescription(const UnifiedEvent& event) {
    char buffer[kLongestEventJson];
    Writer out{buffer};
    WriteDescription(out, event);
    return std::string(buffer, out.at);
}

void DeleteEvent(std::string_view indexText) {
    const int32_t index = ReadInt(indexText);
    {
        MutexLock lock(macroMutex);
        if (EventAt(index) != nullptr) {
            std::vector<UnifiedEvent>& events = CurrentProfile()->events;
            events.erase(events.begin() + index);
            MarkMacroChanged();
        }
    }
    MirrorEvents();
}

void UpdateEventTime(std::string_view arguments) {
    const std::vector<std::string_view> fields = SplitParts(arguments, ',');
    if (fields.size() == 2) {
        const int32_t index = ReadInt(fields[0]);
        const double time = ReadDouble(fields[1]);
        MutexLock lock(macroMutex);
        if (UnifiedEvent* event = EventAt(index)) {
            event->time = time;
            MarkMacroChanged();
        }
    }
    MirrorEvents();
}

void OptimizeMacro() {
    {
        MutexLock lock(macroMutex);
        if (Profile* profile = CurrentProfile()) {
            profile->events = OptimizedEvents(profile->events);
            MarkMacroChanged();
        }
    }
    MirrorEvents();
}

std::vector<UnifiedEvent> OptimizedEvents(const std::vector<UnifiedEvent>& events) {
    std::vector<UnifiedEvent> kept;
    kept.reserve(events.size());
    for (size_t i = 0; i < events.size(); ++i) {
        const bool betweenMoves = i > 0 && i + 1 < events.size() && events[i].type == EvAbsMove &&
                                  events[i + 1].type == EvAbsMove && kept.back().type == EvAbsMove;
        if (!betweenMoves || !IsNear(events[i], kept.back())) {
            kept.push_back(events[i]);
        }
    }
    return kept;
}
