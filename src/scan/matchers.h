// The scanner's pattern language: key presses with the modifiers held before them, predicates on one press, and the
// three ways of finding presses that belong together. Pure functions of their arguments; any thread.
//
// Times are seconds into the macro as they stand in its events: edited macros may run backwards, and a time that is
// not a number is never outside a limit of a sequence.
#pragma once

#include "model/event.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <vector>

namespace MacroScan {

enum ModFamily {
    ModNone = 0,  // every other key
    ModCtrl = 1,
    ModAlt = 2,
    ModShift = 3,
    ModWin = 4,
};

ModFamily FamilyOfKey(uint32_t vk);

// Left and right keys of a family are one: the last press or release of either decides.
struct HeldMods {
    bool ctrl = false;
    bool alt = false;
    bool shift = false;
    bool win = false;
};

struct KeyEv {
    const UnifiedEvent& event;  // the press, in the caller's list, which outlives this
    HeldMods held;              // before this press
};

// The same answer for the same press, however often it is asked.
using KeyPredicate = std::function<bool(const UnifiedEvent& event, const HeldMods& held)>;

struct SeqResult {
    bool matched = false;
    double atSec = 0.0;  // where the pattern begins; 0 when nothing matched
};

struct TypingBurst {
    bool found = false;
    double atSec = 0.0;    // time of the burst's first key
    size_t lastIndex = 0;  // of the burst's last key, in the list of keys
};

// The presses among the events, in their order. The result points into `events`.
std::vector<KeyEv> NormaliseKeys(const std::vector<UnifiedEvent>& events);

// `vk` with exactly these families held and no other.
KeyPredicate Combo(std::initializer_list<ModFamily> families, int32_t vk);
// True when one of them is, asked in order; never true for an empty list.
KeyPredicate AnyOf(std::vector<KeyPredicate> predicates);
// A key that can produce text, with at most Shift held.
bool IsTypingKey(const UnifiedEvent& event, const HeldMods& held);
// A Windows key with no other family held. Whether another Windows key is held does not matter.
bool IsBareWinKey(const UnifiedEvent& event, const HeldMods& held);

// How many presses of its first step a sequence is tried from before it gives up.
constexpr int kMaxAttempts = 500;

// The steps in order with any keys between them, tried from each press of the first step in turn; no key up to the
// last step more than maxSpan seconds after the first. One pass over the keys. No steps never match.
SeqResult MatchSequence(const std::vector<KeyEv>& keys, const std::vector<KeyPredicate>& steps,
                        std::optional<double> maxSpan = std::nullopt);
// The first `count` hits in a row, no more than `span` seconds from first to last. A count of 0 never matches.
SeqResult CountWithin(const std::vector<KeyEv>& keys, const KeyPredicate& predicate, size_t count,
                      double span);
// The first eight typing keys in a row within 5 seconds.
TypingBurst FindTypingBurst(const std::vector<KeyEv>& keys);

}  // namespace MacroScan
