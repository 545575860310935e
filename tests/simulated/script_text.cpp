#include "simulated/script_text.h"

#include <cstdio>

namespace {

// The pixel that an absolute coordinate stands for; exact for what the engines compute from a pixel of the screen.
int64_t PixelOf(int32_t absolute, int32_t size) {
    const int64_t scaled = static_cast<int64_t>(absolute) * size;
    return absolute >= 0 ? (scaled + 65535) / 65536 : (scaled - 65535) / 65536;
}

}  // namespace

const std::map<std::string, uint32_t>& Buttons() {
    static const std::map<std::string, uint32_t> buttons = {
        {"left", 1}, {"right", 2}, {"middle", 4}, {"side1", 5}, {"side2", 6}};
    return buttons;
}

std::string NameOfButton(uint32_t code) {
    for (const auto& [name, button] : Buttons()) {
        if (button == code) {
            return name;
        }
    }
    return "button" + std::to_string(code);
}

uint32_t CodeFromName(const std::string& name) {
    const auto button = Buttons().find(name);
    return button != Buttons().end() ? button->second : SimKeyFromName(name);
}

std::string NameOfCode(uint32_t code) {
    return code < 7 && code != 3 ? NameOfButton(code) : SimNameOfKey(code);
}

std::string TimeText(int64_t ticks) {
    char text[40];
    std::snprintf(text, sizeof text, "%.4f", static_cast<double>(ticks) / 10000.0);
    std::string trimmed = text;
    while (trimmed.back() == '0' && trimmed[trimmed.size() - 2] != '.') {
        trimmed.pop_back();
    }
    return trimmed;
}

std::string ActionOfFlags(uint32_t flags) {
    switch (flags) {
    case 0:
        return "no button";
    case 2:
        return "left down";
    case 4:
        return "left up";
    case 8:
        return "right down";
    case 16:
        return "right up";
    case 32:
        return "middle down";
    case 64:
        return "middle up";
    case 128:
        return "side down";
    default:
        return "flags " + std::to_string(flags);
    }
}

uint32_t FlagsOfAction(const std::string& button, const std::string& action) {
    for (uint32_t flags = 2; flags <= 128; flags *= 2) {
        if (ActionOfFlags(flags) == button + " " + action) {
            return flags;
        }
    }
    return 0;
}

std::string SentText(const InputRecord& record) {
    if (record.type == kInputKeyboard) {
        for (uint32_t key = 255; key > 0; --key) {
            const bool extended = (record.dwFlags & kKeyExtended) != 0;
            const bool usesExtended = (key >= 33 && key <= 40) || key == 45 || key == 46;
            if (record.wScan != 0 && ScanCodeOfKey(key) == record.wScan && usesExtended == extended &&
                SimNameOfKey(key)[0] != '#' && key != 163 && key != 165 && key != 111) {
                return SimNameOfKey(key) + ((record.dwFlags & kKeyUp) != 0 ? " up" : " down");
            }
        }
        return "scan " + std::to_string(record.wScan) + " flags " + std::to_string(record.dwFlags);
    }
    if (record.dwFlags == (kMouseMove | kMouseAbsolute)) {
        return "move " + std::to_string(PixelOf(record.dx, PrimaryScreenWidth())) + " " +
               std::to_string(PixelOf(record.dy, PrimaryScreenHeight()));
    }
    if (record.dwFlags == kMouseMove) {
        return "relative " + std::to_string(record.dx) + " " + std::to_string(record.dy);
    }
    if (record.dwFlags == kMouseWheel) {
        return "wheel " + std::to_string(static_cast<int32_t>(record.mouseData));
    }
    return ActionOfFlags(record.dwFlags);
}

std::string SeenText(const SimSeen& seen) {
    const std::string point = std::to_string(seen.x) + " " + std::to_string(seen.y);
    switch (seen.kind) {
    case SimSeenKind::Key:
        return SimNameOfKey(seen.code) + (seen.down ? " down" : " up");
    case SimSeenKind::Button:
        return NameOfButton(seen.code) + (seen.down ? " down at " : " up at ") + point;
    case SimSeenKind::Move:
        return "move " + point;
    case SimSeenKind::Wheel:
        return "wheel " + std::to_string(seen.wheel);
    case SimSeenKind::HorizontalWheel:
        return "hwheel " + std::to_string(seen.wheel);
    }
    return "";
}

std::string EventText(const UnifiedEvent& event) {
    char time[40];
    std::snprintf(time, sizeof time, "%.6f ", event.time);
    const std::string point = std::to_string(event.x) + " " + std::to_string(event.y);
    std::string text = time;
    switch (event.type) {
    case EvAbsMove:
        return text + "move " + point;
    case EvRelMove:
        return text + "relative " + point;
    case EvMouseButton:
        return text + ActionOfFlags(event.flags) + " at " + point;
    case EvKey:
        return text + SimNameOfKey(event.virtualKey) + (event.down ? " down" : " up");
    case EvScroll:
        return text + "wheel " + std::to_string(event.wheel);
    case EvToolState:
        return text + "tool " + std::to_string(event.virtualKey) + (event.down ? " on" : " off");
    default:
        return text + "type " + std::to_string(event.type);
    }
}
