// Reads any bytes as a macro file and compares with a second reader of the format, which uses the library's streams and
// number functions. Then writes the macro and reads it again.
#include "fuzz_input.h"

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

int32_t ReferenceInt(const std::string& text) {
    const long long value = std::stoll(text);
    if (value < std::numeric_limits<int32_t>::min() || value > std::numeric_limits<int32_t>::max()) {
        throw std::out_of_range("int");
    }
    return static_cast<int32_t>(value);
}

uint32_t ReferenceUnsigned(const std::string& text) {
    const long long value = std::stoll(text);
    if (value < -4294967295LL || value > 4294967295LL) {
        throw std::out_of_range("unsigned");
    }
    return static_cast<uint32_t>(value);
}

double ReferenceDouble(const std::string& text) {
    char* end = nullptr;
    errno = 0;
    const double value = std::strtod(text.c_str(), &end);
    // A subnormal value is accepted, although the library reports ERANGE.
    if (end == text.c_str() || (errno == ERANGE && (std::isinf(value) || value == 0))) {
        throw std::invalid_argument("double");
    }
    return value;
}

bool ReferenceEvent(const std::string& line, UnifiedEvent* event) {
    std::stringstream fields(line);
    std::string field;
    const auto next = [&] {
        std::string read;
        const bool isPresent = static_cast<bool>(std::getline(fields, read, ','));
        if (isPresent) {
            field = read;
        }
        return isPresent;
    };
    try {
        next();
        event->type = static_cast<uint32_t>(ReferenceInt(field));
        next();
        event->time = ReferenceDouble(field);
        next();
        event->x = ReferenceInt(field);
        next();
        event->y = ReferenceInt(field);
        next();
        event->flags = ReferenceUnsigned(field);
        next();
        event->virtualKey = static_cast<uint32_t>(ReferenceInt(field));
        next();
        event->down = ReferenceInt(field) != 0;
        event->wheel = next() ? ReferenceInt(field) : 0;
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

// Returns whether the file is accepted.
bool ReferenceRead(const std::string& bytes, ParsedMacro* macro) {
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
        } else if (UnifiedEvent event; !line.empty() && ReferenceEvent(line, &event)) {
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
    ParsedMacro reference;
    const bool accepted = ParseMacroText(bytes, &macro).empty();
    Require(accepted == ReferenceRead(bytes, &reference));
    if (!accepted) {
        return 0;
    }
    Require(macro.name == reference.name && macro.settings == reference.settings);
    Require(macro.events.size() == reference.events.size());
    for (size_t i = 0; i < macro.events.size(); ++i) {
        Require(Same(macro.events[i], reference.events[i]));
    }

    // A time loses digits in the first round only. A name that ends in CR loses one CR in each round.
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
