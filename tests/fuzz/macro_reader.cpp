// Any bytes as a macro file, compared with a second reader of the same format that uses the library's streams and
// number reads. The result is then written and read again.
#include "fuzz_input.h"

#include "base/text.h"
#include "model/engine_state.h"
#include "storage/macro_file.h"
#include "storage/settings_text.h"

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

int32_t PlainInt(const std::string& text) {
    const long long value = std::stoll(text);
    if (value < std::numeric_limits<int32_t>::min() || value > std::numeric_limits<int32_t>::max()) {
        throw std::out_of_range("int");
    }
    return static_cast<int32_t>(value);
}

uint32_t PlainUnsigned(const std::string& text) {
    const long long value = std::stoll(text);
    if (value < -4294967295LL || value > 4294967295LL) {
        throw std::out_of_range("unsigned");
    }
    return static_cast<uint32_t>(value);
}

double PlainDouble(const std::string& text) {
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(text.c_str(), &end);
    // A subnormal value counts as a number here, although this library reports it.
    if (end == text.c_str() || (errno == ERANGE && (std::isinf(value) || value == 0))) {
        throw std::invalid_argument("double");
    }
    return value;
}

bool PlainEvent(const std::string& line, UnifiedEvent* event) {
    std::stringstream fields(line);
    std::string field;
    const auto next = [&] {
        std::string read;
        const bool there = static_cast<bool>(std::getline(fields, read, ','));
        if (there) {
            field = read;
        }
        return there;
    };
    try {
        next();
        event->type = static_cast<uint32_t>(PlainInt(field));
        next();
        event->time = PlainDouble(field);
        next();
        event->x = PlainInt(field);
        next();
        event->y = PlainInt(field);
        next();
        event->flags = PlainUnsigned(field);
        next();
        event->virtualKey = static_cast<uint32_t>(PlainInt(field));
        next();
        event->down = PlainInt(field) != 0;
        event->wheel = next() ? PlainInt(field) : 0;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool Same(const UnifiedEvent& a, const UnifiedEvent& b) {
    UnifiedEvent c = b;
    if (std::isnan(a.time) && std::isnan(b.time)) {
        c.time = a.time;
    }
    return std::memcmp(&a.time, &c.time, sizeof(a.time)) == 0 && a.type == c.type && a.x == c.x &&
           a.y == c.y && a.flags == c.flags && a.virtualKey == c.virtualKey && a.down == c.down &&
           a.wheel == c.wheel;
}

// Empty: the file is rejected.
bool PlainRead(const std::string& bytes, ParsedMacro* macro) {
    std::istringstream in(bytes);
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (number == 1) {
            macro->name = line;
        } else if (number == 2 && line.rfind("SETTINGS:", 0) == 0) {
            macro->settings = ProfileSettingsFromLine(line.substr(9));
        } else if (UnifiedEvent event; !line.empty() && PlainEvent(line, &event)) {
            macro->events.push_back(event);
        }
    }
    return !macro->name.empty();
}

std::string Written(const ParsedMacro& macro) {
    std::string text = macro.name + "\n";
    AppendEventLines(text, macro.events);
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    ResetEngineState();

    ParsedMacro macro;
    ParsedMacro plain;
    const bool accepted = ParseMacroText(bytes, &macro).empty();
    Require(accepted == PlainRead(bytes, &plain));
    if (!accepted) {
        return 0;
    }
    Require(macro.name == plain.name && macro.settings == plain.settings);
    Require(macro.events.size() == plain.events.size());
    for (size_t i = 0; i < macro.events.size(); ++i) {
        Require(Same(macro.events[i], plain.events[i]));
    }

    // A time loses digits only once. A name that ends in CR loses one CR with each reading.
    if (macro.name.back() == '\r') {
        return 0;
    }
    const std::string written = Written(macro);
    ParsedMacro again;
    Require(ParseMacroText(written, &again).empty());
    if (again.name == macro.name && again.settings.empty()) {
        for (const UnifiedEvent& event : macro.events) {
            if (std::fabs(event.time) > 1.79769e308 && !std::isinf(event.time)) {
                return 0;  // rounding to six digits may leave the range
            }
        }
        Require(again.events.size() == macro.events.size());
        Require(Written(again) == written);
    }
    return 0;
}
