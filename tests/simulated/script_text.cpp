#include "simulated/script_text.h"

#include "model/button_flags.h"
#include "platform/key_table.h"

#include <cstdio>
#include <optional>

namespace {

// The pixel that an absolute coordinate stands for; exact for what the engines compute from a pixel of the screen.
int64_t PixelOf(int32_t absolute, int32_t size) {
    const int64_t scaled = static_cast<int64_t>(absolute) * size;
    return absolute >= 0 ? (scaled + 65535) / 65536 : (scaled - 65535) / 65536;
}

}  // namespace

const std::map<std::string, uint32_t>& Buttons() {
    static const std::map<std::string, uint32_t> buttons = {
        {"left", kLeftButton},       {"right", kRightButton},      {"middle", kMiddleButton},
        {"side1", kFirstSideButton}, {"side2", kSecondSideButton}, {"side", kUnnamedSideButton}};
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
    if (flags == 0) {
        return "no button";
    }
    if (const std::optional<ButtonAction> action = ButtonActionOf(flags)) {
        return NameOfButton(action->button) + (action->down ? " down" : " up");
    }
    return "flags " + std::to_string(flags);
}

uint32_t FlagsOfAction(const std::string& button, const std::string& action) {
    for (uint32_t flags = 2; flags <= 128; flags *= 2) {
        if (ActionOfFlags(flags) == button + " " + action) {
            return flags;
        }
    }
    return 0;
}

namespace {

// Modifiers of the right hand and the divide key have the scan codes of other keys, which stand for them.
std::string SentKeyText(const InputAction& action) {
    const std::string end = action.down ? " down" : " up";
    if (const uint32_t key = SimKeyOfScanCode(action.scanCode, action.extended)) {
        return SimNameOfKey(key) + end;
    }
    return "scan " + std::to_string(action.scanCode) + (action.extended ? " extended" : "") + end;
}

}  // namespace

std::string SentText(const InputAction& action) {
    switch (action.kind) {
    case InputKind::MoveTo:
        return "move " + std::to_string(PixelOf(action.x, PrimaryScreenWidth())) + " " +
               std::to_string(PixelOf(action.y, PrimaryScreenHeight()));
    case InputKind::MoveBy:
        return "relative " + std::to_string(action.x) + " " + std::to_string(action.y);
    case InputKind::Button:
        if (action.button == kNoButton) {
            return "no button";
        }
        return NameOfButton(action.button) + (action.down ? " down" : " up");
    case InputKind::ButtonFlags:
        return ActionOfFlags(action.buttonFlags);
    case InputKind::Wheel:
        return "wheel " + std::to_string(action.wheelDelta);
    case InputKind::Key:
        return SentKeyText(action);
    }
    return "";
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
