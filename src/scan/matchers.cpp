#include "scan/matchers.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <utility>

namespace MacroScan {

namespace {

constexpr size_t kBurstKeys = 8;
constexpr double kBurstSeconds = 5.0;

bool* FlagOf(HeldMods* held, ModFamily family) {
    switch (family) {
    case ModCtrl:
        return &held->ctrl;
    case ModAlt:
        return &held->alt;
    case ModShift:
        return &held->shift;
    case ModWin:
        return &held->win;
    case ModNone:
        break;
    }
    return nullptr;
}

// Finds the end of the greedy match from one start after another. The starts only move forward, so the position of each
// step only moves forward too: all starts together cost one pass for each step.
class StepCursors {
  public:
    StepCursors(const std::vector<KeyEv>& keys, const std::vector<KeyPredicate>& steps)
        : keys_(keys), steps_(steps), positions_(steps.size(), 0) {}

    // Returns the index of the last step's key, or the number of keys if the steps do not all follow `start`.
    size_t EndFrom(size_t start) {
        size_t position = start;
        for (size_t step = 1; step < steps_.size() && position < keys_.size(); ++step) {
            position = Advance(step, position + 1);
        }
        return position;
    }

  private:
    // Returns the first key from `from` on that the step matches.
    size_t Advance(size_t step, size_t from) {
        size_t& position = positions_[step];
        if (started_ <= step) {
            started_ = step + 1;
        } else if (position >= from) {
            return position;
        }
        position = from;
        while (position < keys_.size() && !steps_[step](keys_[position].event, keys_[position].held)) {
            ++position;
        }
        return position;
    }

    const std::vector<KeyEv>& keys_;
    const std::vector<KeyPredicate>& steps_;
    std::vector<size_t> positions_;
    size_t started_ = 1;  // steps below this have a position
};

// The latest time in a range of keys whose two ends only move forward. Ignores times that are not numbers.
class LatestTime {
  public:
    explicit LatestTime(const std::vector<KeyEv>& keys) : keys_(keys) {}

    // Returns whether any key after `start`, up to `end`, is more than `span` later than the key at `start`. Rounded
    // differences keep the order of the times, so checking the latest time is enough.
    bool IsBeyond(size_t start, size_t end, double span) {
        for (next_ = std::max(next_, start + 1); next_ <= end; ++next_) {
            const double time = keys_[next_].event.time;
            if (std::isnan(time)) {
                continue;
            }
            while (!falling_.empty() && keys_[falling_.back()].event.time <= time) {
                falling_.pop_back();
            }
            falling_.push_back(next_);
        }
        while (!falling_.empty() && falling_.front() <= start) {
            falling_.pop_front();
        }
        return !falling_.empty() && keys_[falling_.front()].event.time - keys_[start].event.time > span;
    }

  private:
    const std::vector<KeyEv>& keys_;
    size_t next_ = 0;             // first key not yet seen
    std::deque<size_t> falling_;  // keys later than every key after them in the range; latest time first
};

}  // namespace

ModFamily FamilyOfKey(uint32_t vk) {
    switch (vk) {
    case 17:
    case 162:
    case 163:
        return ModCtrl;
    case 18:
    case 164:
    case 165:
        return ModAlt;
    case 16:
    case 160:
    case 161:
        return ModShift;
    case 91:
    case 92:
        return ModWin;
    default:
        return ModNone;
    }
}

std::vector<KeyEv> NormaliseKeys(const std::vector<UnifiedEvent>& events) {
    std::vector<KeyEv> keys;
    HeldMods held;
    for (const UnifiedEvent& event : events) {
        if (event.type != EvKey) {
            continue;
        }
        if (event.down) {
            keys.push_back(KeyEv{event, held});
        }
        if (bool* flag = FlagOf(&held, FamilyOfKey(event.virtualKey))) {
            *flag = event.down;
        }
    }
    return keys;
}

KeyPredicate Combo(std::initializer_list<ModFamily> families, int32_t vk) {
    HeldMods wanted;
    for (const ModFamily family : families) {
        if (bool* flag = FlagOf(&wanted, family)) {
            *flag = true;
        }
    }
    return [wanted, key = static_cast<uint32_t>(vk)](const UnifiedEvent& event, const HeldMods& held) {
        return event.virtualKey == key && held.ctrl == wanted.ctrl && held.alt == wanted.alt &&
               held.shift == wanted.shift && held.win == wanted.win;
    };
}

KeyPredicate AnyOf(std::vector<KeyPredicate> predicates) {
    return [predicates = std::move(predicates)](const UnifiedEvent& event, const HeldMods& held) {
        return std::any_of(predicates.begin(), predicates.end(),
                           [&](const KeyPredicate& predicate) { return predicate(event, held); });
    };
}

bool IsTypingKey(const UnifiedEvent& event, const HeldMods& held) {
    const uint32_t vk = event.virtualKey;
    const bool text = (vk >= 48 && vk <= 57) || (vk >= 65 && vk <= 90) || vk == 32 ||
                      (vk >= 96 && vk <= 105) || (vk >= 186 && vk <= 192) || (vk >= 219 && vk <= 223);
    return text && !held.ctrl && !held.alt && !held.win;
}

bool IsBareWinKey(const UnifiedEvent& event, const HeldMods& held) {
    return FamilyOfKey(event.virtualKey) == ModWin && !held.ctrl && !held.alt && !held.shift;
}

SeqResult MatchSequence(const std::vector<KeyEv>& keys, const std::vector<KeyPredicate>& steps,
                        std::optional<double> maxSpan) {
    if (steps.empty()) {
        return {};
    }
    StepCursors cursors(keys, steps);
    LatestTime latest(keys);
    int attempts = 0;
    for (size_t i = 0; i < keys.size() && attempts < kMaxAttempts; ++i) {
        if (!steps.front()(keys[i].event, keys[i].held)) {
            continue;
        }
        const size_t end = cursors.EndFrom(i);
        if (end == keys.size()) {
            return {};  // later starts have no more keys after them
        }
        if (!maxSpan || !latest.IsBeyond(i, end, *maxSpan)) {
            return {true, keys[i].event.time};
        }
        ++attempts;
    }
    return {};
}

SeqResult CountWithin(const std::vector<KeyEv>& keys, const KeyPredicate& predicate, size_t count,
                      double span) {
    if (count == 0) {
        return {};
    }
    std::deque<double> window;
    for (const KeyEv& key : keys) {
        if (!predicate(key.event, key.held)) {
            continue;
        }
        window.push_back(key.event.time);
        if (window.size() < count) {
            continue;
        }
        if (window.back() - window.front() <= span) {
            return {true, window.front()};
        }
        window.pop_front();
    }
    return {};
}

TypingBurst FindTypingBurst(const std::vector<KeyEv>& keys) {
    std::deque<size_t> window;
    for (size_t i = 0; i < keys.size(); ++i) {
        if (!IsTypingKey(keys[i].event, keys[i].held)) {
            continue;
        }
        window.push_back(i);
        if (window.size() < kBurstKeys) {
            continue;
        }
        const double begin = keys[window.front()].event.time;
        if (keys[i].event.time - begin <= kBurstSeconds) {
            return {true, begin, i};
        }
        window.pop_front();
    }
    return {};
}

}  // namespace MacroScan
