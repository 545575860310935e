// The scanner's pattern language: key presses with the modifiers held before them, predicates on one press, and three
// ways to find presses that belong together. Pure functions of their arguments; any thread.
//
// Times are the events' seconds into the macro. The times of an edited macro may run backwards. A time that is not a
// number is never outside a limit of a sequence.
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

// Returns the same result for the same press, however often it is called.
using KeyPredicate = std::function<bool(const UnifiedEvent& event, const HeldMods& held)>;

struct SeqResult {
    bool matched = false;
    double atSec = 0.0;  // start of the pattern; 0 if nothing matched
};

struct TypingBurst {
    bool found = false;
    double atSec = 0.0;    // time of the burst's first key
    size_t lastIndex = 0;  // of the burst's last key, in the list of keys
};

// Returns the presses among the events, in their order. The result points into `events`.
std::vector<KeyEv> NormaliseKeys(const std::vector<UnifiedEvent>& events);

// True for `vk` with exactly these families held and no other.
KeyPredicate Combo(std::initializer_list<ModFamily> families, int32_t vk);
// True if one of them is true, called in order; never true for an empty list.
KeyPredicate AnyOf(std::vector<KeyPredicate> predicates);
// True for a key that can produce text, with at most Shift held.
bool IsTypingKey(const UnifiedEvent& event, const HeldMods& held);
// True for a Windows key with no other family held. Another held Windows key does not matter.
bool IsBareWinKey(const UnifiedEvent& event, const HeldMods& held);

// The number of presses of its first step from which a sequence is tried.
constexpr int kMaxAttempts = 500;

// Finds the steps in order, with any keys between them, from each press of the first step in turn. No key up to the
// last step is more than maxSpan seconds after the first. One pass over the keys. An empty list never matches.
SeqResult MatchSequence(const std::vector<KeyEv>& keys, const std::vector<KeyPredicate>& steps,
                        std::optional<double> maxSpan = std::nullopt);
// Finds the first `count` hits in a row, no more than `span` seconds from first to last. A count of 0 never matches.
SeqResult CountWithin(const std::vector<KeyEv>& keys, const KeyPredicate& predicate, size_t count,
                      double span);
// Finds the first eight typing keys in a row within 5 seconds.
TypingBurst FindTypingBurst(const std::vector<KeyEv>& keys);

}  // namespace MacroScan
