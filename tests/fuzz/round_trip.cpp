// Writes any events under any name as a macro file and as session lines, and reads them again. All fields must be equal;
// a time is rounded to six digits as the C library prints it.
#include "fuzz_input.h"

#include "model/engine_state.h"
#include "storage/macro_file.h"
#include "storage/settings_text.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace {

UnifiedEvent TakeEvent(FuzzBytes& input) {
    UnifiedEvent event;
    event.type = input.Take<uint32_t>();
    event.time = input.Take<double>();
    event.x = input.Take<int32_t>();
    event.y = input.Take<int32_t>();
    event.flags = input.Take<uint32_t>();
    event.virtualKey = input.Take<uint32_t>();
    event.down = (input.Take<uint8_t>() & 1) != 0;
    event.wheel = input.Take<int32_t>();
    return event;
}

double SixDigits(double time) {
    char text[64];
    std::snprintf(text, sizeof text, "%g", time);
    return std::strtod(text, nullptr);
}

void RequireRead(const UnifiedEvent& written, UnifiedEvent read) {
    UnifiedEvent expected = written;
    expected.time = SixDigits(written.time);
    if (std::isnan(expected.time) && std::isnan(read.time)) {
        expected.time = read.time = 0;
    }
    Require(std::signbit(expected.time) == std::signbit(read.time));
    Require(expected == read);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const FuzzFolder folder;
    static const std::string path = folder.File("macro.vrlmacro");
    ResetEngineState();
    FuzzBytes input(data, size);

    Profile profile;
    for (size_t length = input.Take<uint8_t>() % 64; length > 0; --length) {
        const char letter = input.Take<char>();
        if (letter != '\n' && letter != '\r') {
            profile.name += letter;
        }
    }
    autoclickerSettings.intervalMilliseconds = input.Take<int32_t>();
    keySpammerSettings.singleKey = input.Take<int32_t>();
    while (input.Left() > 0) {
        profile.events.push_back(TakeEvent(input));
    }

    WriteMacroFile(path, profile);
    ParsedMacro macro;
    const bool accepted = ReadMacroFile(path, &macro).empty();
    Require(accepted == !profile.name.empty());
    if (accepted) {
        Require(macro.name == profile.name && macro.settings == BuildProfileSettings());
        Require(macro.events.size() == profile.events.size());
    }
    for (size_t i = 0; i < profile.events.size(); ++i) {
        if (accepted) {
            RequireRead(profile.events[i], macro.events[i]);
        }
        std::string line;
        AppendEventLine(line, profile.events[i]);
        UnifiedEvent read;
        Require(ParseSessionEventLine(line, &read));
        RequireRead(profile.events[i], read);
    }
    return 0;
}
