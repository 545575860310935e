// The scanner's patterns: key presses with the modifiers held before them, predicates on one press, and three ways to
// find presses that belong together. Pure functions; any thread. They fail only with std::bad_alloc.
//
// Times are seconds into the macro, as its events hold them. An edited macro may run backwards. A time that is not a
// number never exceeds the limit of a sequence.
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

// Returns the modifier family of a virtual-key code.
ModFamily FamilyOfKey(uint32_t vk);

// The left and right keys of a family count as one: the last press or release of either decides.
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

// Tests one press and the modifiers held before it. Must return the same for the same press each time.
using KeyPredicate = std::function<bool(const UnifiedEvent& event, const HeldMods& held)>;

struct SeqResult {
    bool matched = false;
    double atSec = 0.0;  // time of the first press of the pattern; 0 without a match
};

struct TypingBurst {
    bool found = false;
    double atSec = 0.0;    // time of the burst's first key
    size_t lastIndex = 0;  // index of the burst's last key in the list of keys
};

// Returns the presses among the events, in their order. The result refers to `events`, which must outlive it.
std::vector<KeyEv> NormaliseKeys(const std::vector<UnifiedEvent>& events);

// Returns a predicate for key `vk` with exactly these families held.
KeyPredicate Combo(std::initializer_list<ModFamily> families, int32_t vk);
// Returns a predicate that holds if any of `predicates` holds. It never holds for an empty list.
KeyPredicate AnyOf(std::vector<KeyPredicate> predicates);
// Returns whether the press can produce text: a character key with at most Shift held.
bool IsTypingKey(const UnifiedEvent& event, const HeldMods& held);
// Returns whether the press is a Windows key with no other family held. The other Windows key may be held.
bool IsBareWinKey(const UnifiedEvent& event, const HeldMods& held);

// How many presses of the first step MatchSequence starts from before it gives up.
constexpr int kMaxAttempts = 500;

// Finds the first sequence of presses that match `steps` in order, with any presses between them. It starts from each
// press of the first step in turn. No press up to the last step may be more than `maxSpan` seconds after the first.
// Never matches an empty list of steps. Takes one pass over the keys for each step.
SeqResult MatchSequence(const std::vector<KeyEv>& keys, const std::vector<KeyPredicate>& steps,
                        std::optional<double> maxSpan = std::nullopt);
// Finds the first `count` matching presses in a row with at most `span` seconds from first to last. Never matches a count
// of 0.
SeqResult CountWithin(const std::vector<KeyEv>& keys, const KeyPredicate& predicate, size_t count,
                      double span);
// Finds the first eight typing keys in a row within 5 seconds.
TypingBurst FindTypingBurst(const std::vector<KeyEv>& keys);

}  // namespace MacroScan
