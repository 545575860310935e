#include "model/button_flags.h"

#include "platform/key_table.h"

namespace {

struct Row {
    uint32_t flags;
    ButtonAction action;
};

// The first row of a value gives its meaning.
constexpr Row kRows[] = {
    {2, {kLeftButton, true}},          {4, {kLeftButton, false}},       {8, {kRightButton, true}},
    {16, {kRightButton, false}},       {32, {kMiddleButton, true}},     {64, {kMiddleButton, false}},
    {128, {kUnnamedSideButton, true}}, {128, {kFirstSideButton, true}}, {128, {kSecondSideButton, true}},
};

}  // namespace

uint32_t ButtonFlagsOf(ButtonAction action) {
    for (const Row& row : kRows) {
        if (row.action == action) {
            return row.flags;
        }
    }
    return 0;
}

std::optional<ButtonAction> ButtonActionOf(uint32_t flags) {
    for (const Row& row : kRows) {
        if (row.flags == flags) {
            return row.action;
        }
    }
    return std::nullopt;
}
