// What the buttons of an X pointer mean. X numbers the wheel's directions as buttons too.
#pragma once

#include "platform/hooks.h"
#include "platform/key_table.h"

#include <cstdint>
#include <iterator>

struct XButtonMeaning {
    PointerEvent kind = PointerEvent::Press;  // of a press; a wheel's release means nothing
    uint32_t button = kNoButton;              // Press: a button code of key_table.h
    int32_t wheelDelta = 0;
};

constexpr int32_t kWheelNotch = 120;
constexpr int kXWheelUp = 4;
constexpr int kXWheelDown = 5;

// X buttons from 1 on.
constexpr XButtonMeaning kXButtonMeanings[] = {
    {PointerEvent::Press, kLeftButton, 0},
    {PointerEvent::Press, kMiddleButton, 0},
    {PointerEvent::Press, kRightButton, 0},
    {PointerEvent::Wheel, kNoButton, kWheelNotch},
    {PointerEvent::Wheel, kNoButton, -kWheelNotch},
    {PointerEvent::HorizontalWheel, kNoButton, -kWheelNotch},
    {PointerEvent::HorizontalWheel, kNoButton, kWheelNotch},
    {PointerEvent::Press, kFirstSideButton, 0},
    {PointerEvent::Press, kSecondSideButton, 0},
};

// Returns null for an X button that means nothing here.
constexpr const XButtonMeaning* MeaningOfXButton(int xButton) {
    return xButton >= 1 && xButton <= static_cast<int>(std::size(kXButtonMeanings))
               ? &kXButtonMeanings[xButton - 1]
               : nullptr;
}

// Returns the X button of a button code, or 0 if it has none.
constexpr int XButtonOf(uint32_t button) {
    for (int xButton = 1; button != kNoButton && xButton <= static_cast<int>(std::size(kXButtonMeanings));
         ++xButton) {
        if (kXButtonMeanings[xButton - 1].button == button) {
            return xButton;
        }
    }
    return 0;
}
