#include "reference_scanner.h"

#include <algorithm>
#include <set>
#include <sstream>

namespace ReferenceScanner {

namespace {

using MacroScan::HeldMods;
using MacroScan::KeyPredicate;
using MacroScan::SeqResult;

// Returns a predicate for key `vk` with modifiers in the order Ctrl, Alt, Shift, Win, such as "c-s-".
KeyPredicate Press(const std::string& mods, uint32_t vk) {
    return [mods, vk](const UnifiedEvent& event, const HeldMods& held) {
        std::string now;
        now += held.ctrl ? 'c' : '-';
        now += held.alt ? 'a' : '-';
        now += held.shift ? 's' : '-';
        now += held.win ? 'w' : '-';
        return event.virtualKey == vk && now == mods;
    };
}

KeyPredicate Either(const KeyPredicate& a, const KeyPredicate& b) {
    return
        [a, b](const UnifiedEvent& event, const HeldMods& held) { return a(event, held) || b(event, held); };
}

bool Typing(const UnifiedEvent& event, const HeldMods& held) {
    static const std::set<uint32_t> text = [] {
        std::set<uint32_t> all = {32};
        const uint32_t ranges[][2] = {{48, 57}, {65, 90}, {96, 105}, {186, 192}, {219, 223}};
        for (const auto& range : ranges) {
            for (uint32_t vk = range[0]; vk <= range[1]; ++vk) {
                all.insert(vk);
            }
        }
        return all;
    }();
    return !held.ctrl && !held.alt && !held.win && text.count(event.virtualKey) != 0;
}

bool BareWin(const UnifiedEvent& event, const HeldMods& held) {
    return (event.virtualKey == 91 || event.virtualKey == 92) && !held.ctrl && !held.alt && !held.shift;
}

std::function<SeqResult(const std::vector<Key>&)> Steps(const std::vector<KeyPredicate>& steps) {
    return [steps](const std::vector<Key>& keys) { return Sequence(keys, steps, nullptr); };
}

std::function<SeqResult(const std::vector<Key>&)> StepsWithin(const std::vector<KeyPredicate>& steps,
                                                              double span) {
    return [steps, span](const std::vector<Key>& keys) { return Sequence(keys, steps, &span); };
}

SeqResult Send(const std::vector<Key>& keys) {
    std::vector<size_t> typed;
    for (size_t i = 0; i < keys.size(); ++i) {
        if (Typing(keys[i].event, keys[i].held)) {
            typed.push_back(i);
        }
    }
    for (size_t first = 0; first + 8 <= typed.size(); ++first) {
        const double begin = keys[typed[first]].event.time;
        if (keys[typed[first + 7]].event.time - begin <= 5.0) {
            for (size_t i = typed[first + 7] + 1; i < keys.size(); ++i) {
                if (keys[i].event.time - begin > 10.0) {
                    return {};
                }
                if (Press("----", 13)(keys[i].event, keys[i].held)) {
                    return {true, begin};
                }
            }
            return {};
        }
    }
    return {};
}

SeqResult WinHeld(const std::vector<Key>& keys) {
    const std::set<uint32_t> modifiers = {16, 17, 18, 91, 92, 160, 161, 162, 163, 164, 165};
    for (const Key& key : keys) {
        if (key.held.win && modifiers.count(key.event.virtualKey) == 0) {
            return {true, key.event.time};
        }
    }
    return {};
}

}  // namespace

std::vector<Key> Normalise(const std::vector<UnifiedEvent>& events) {
    std::vector<Key> keys;
    HeldMods held;
    for (const UnifiedEvent& event : events) {
        if (event.type != 3) {
            continue;
        }
        if (event.down) {
            keys.push_back({event, held});
        }
        const uint32_t vk = event.virtualKey;
        if (vk == 17 || vk == 162 || vk == 163) {
            held.ctrl = event.down;
        }
        if (vk == 18 || vk == 164 || vk == 165) {
            held.alt = event.down;
        }
        if (vk == 16 || vk == 160 || vk == 161) {
            held.shift = event.down;
        }
        if (vk == 91 || vk == 92) {
            held.win = event.down;
        }
    }
    return keys;
}

SeqResult Sequence(const std::vector<Key>& keys, const std::vector<KeyPredicate>& steps,
                   const double* maxSpan) {
    int attempts = 0;
    for (size_t i = 0; i < keys.size(); ++i) {
        if (attempts == 500) {
            return {};
        }
        if (!steps[0](keys[i].event, keys[i].held)) {
            continue;
        }
        const double t0 = keys[i].event.time;
        size_t k = 1;
        size_t j = i + 1;
        while (j < keys.size() && k < steps.size()) {
            if (maxSpan != nullptr && keys[j].event.time - t0 > *maxSpan) {
                break;
            }
            if (steps[k](keys[j].event, keys[j].held)) {
                ++k;
            }
            ++j;
        }
        ++attempts;
        if (k == steps.size()) {
            return {true, t0};
        }
    }
    return {};
}

SeqResult Within(const std::vector<Key>& keys, const KeyPredicate& predicate, size_t count, double span) {
    std::vector<double> times;
    for (const Key& key : keys) {
        if (predicate(key.event, key.held)) {
            times.push_back(key.event.time);
        }
    }
    for (size_t first = 0; first + count <= times.size(); ++first) {
        if (times[first + count - 1] - times[first] <= span) {
            return {true, times[first]};
        }
    }
    return {};
}

const std::vector<Scenario>& Scenarios() {
    static const std::vector<Scenario> scenarios = [] {
        const KeyPredicate enter = Press("----", 13);
        const KeyPredicate winR = Press("---w", 82);
        const KeyPredicate approve = Either(Press("c-s-", 13), Press("-a--", 89));
        const KeyPredicate copy = Either(Press("c---", 67), Press("c---", 88));
        const KeyPredicate paste = Press("c---", 86);
        const KeyPredicate all = Press("c---", 65);
        const KeyPredicate erase = Either(Press("----", 46), Press("----", 8));
        const KeyPredicate menuItem = Either(Either(Press("----", 73), Press("----", 65)),
                                             Either(Press("----", 84), Press("----", 71)));
        const KeyPredicate screenshot =
            Either(Press("----", 44), Either(Press("--sw", 83), Press("-a--", 44)));
        const auto admin = [=](const std::vector<Key>& keys) {
            const SeqResult first = Sequence(keys, {winR, approve}, nullptr);
            return first.matched ? first : Sequence(keys, {BareWin, Typing, approve}, nullptr);
        };
        const auto close = [](const std::vector<Key>& keys) {
            return Within(keys, Either(Press("-a--", 115), Press("c---", 87)), 2, 30.0);
        };
        const auto switchWindows = [](const std::vector<Key>& keys) {
            return Within(keys, Press("-a--", 9), 3, 10.0);
        };
        return std::vector<Scenario>{
            {"run-command", "DANGER", Steps({winR, Typing, enter})},
            {"admin-approve", "DANGER", admin},
            {"power-menu", "DANGER", Steps({Press("---w", 88), menuItem})},
            {"start-launch", "DANGER", Steps({BareWin, Typing, enter})},
            {"copy-paste-send", "DANGER", Steps({copy, paste, enter})},
            {"screenshot-paste", "DANGER", Steps({screenshot, paste})},
            {"select-all-delete", "DANGER", Steps({all, erase})},
            {"permanent-delete", "DANGER", Steps({Press("--s-", 46)})},
            {"wipe-and-save", "DANGER", Steps({all, Either(erase, Typing), Press("c---", 83)})},
            {"open-address", "CAUTION",
             StepsWithin({Either(Press("c---", 76), Press("----", 117)), Typing, enter}, 30.0)},
            {"copy-paste", "CAUTION", StepsWithin({copy, paste}, 60.0)},
            {"type-and-send", "CAUTION", Send},
            {"close-windows", "CAUTION", close},
            {"task-manager", "CAUTION", Steps({Either(Press("c-s-", 27), Press("ca--", 46))})},
            {"switch-windows", "CAUTION", switchWindows},
            {"system-keys", "CAUTION", WinHeld},
        };
    }();
    return scenarios;
}

std::string ReportJson(const std::vector<UnifiedEvent>& events) {
    const std::vector<Key> keys = Normalise(events);
    struct Found {
        std::string id;
        std::string severity;
        double atSec;
    };
    std::vector<Found> found;
    std::set<std::string> ids;
    for (const Scenario& scenario : Scenarios()) {
        const SeqResult result = scenario.match(keys);
        if (result.matched) {
            found.push_back({scenario.id, scenario.severity, result.atSec});
            ids.insert(scenario.id);
        }
    }
    std::erase_if(found, [&](const Found& match) {
        return (match.id == "copy-paste" && ids.count("copy-paste-send") != 0) ||
               (match.id == "system-keys" &&
                (ids.count("run-command") != 0 || ids.count("start-launch") != 0));
    });
    std::sort(found.begin(), found.end(), [](const Found& a, const Found& b) { return a.id < b.id; });
    // Insertion sort, one match after another.
    std::vector<Found> sorted;
    for (const Found& match : found) {
        size_t position = sorted.size();
        while (position > 0 &&
               (match.severity == sorted[position - 1].severity ? match.atSec < sorted[position - 1].atSec
                                                                : match.severity == "DANGER")) {
            --position;
        }
        sorted.insert(sorted.begin() + static_cast<std::ptrdiff_t>(position), match);
    }
    std::ostringstream json;
    json << "{\"level\":\""
         << (sorted.empty()                   ? "none"
             : sorted[0].severity == "DANGER" ? "danger"
                                              : "caution")
         << "\",\"matches\":[";
    for (size_t i = 0; i < sorted.size(); ++i) {
        json << (i == 0 ? "" : ",") << "{\"id\":\"" << sorted[i].id << "\",\"severity\":\""
             << sorted[i].severity << "\",\"atSec\":" << sorted[i].atSec << "}";
    }
    json << "]}";
    return json.str();
}

}  // namespace ReferenceScanner
