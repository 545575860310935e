#include "platform/simulated/keys.h"

#include "platform/input.h"
#include "platform/key_table.h"

#include <charconv>

namespace {

std::string WithoutSpaces(const char* name) {
    std::string text;
    for (; *name != '\0'; ++name) {
        if (*name != ' ') {
            text += *name;
        }
    }
    return text;
}

// Returns null unless a key has exactly this code. Windows knows no key by a code without its prefix.
const KeyInfo* FindExactKey(uint32_t scanCode, bool extended) {
    const uint32_t code = extended ? scanCode | kPrefixE0 : scanCode;
    const KeyInfo* key = FindKeyByScanCode(code);
    return key != nullptr && key->scanCode == code ? key : nullptr;
}

const KeyInfo* FindKeyByName(std::string_view name) {
    for (const KeyInfo& key : AllKeys()) {
        if (WithoutSpaces(key.name) == name) {
            return &key;
        }
    }
    return nullptr;
}

}  // namespace

// As on Windows: without prefix, so that the right Ctrl has the code of the left one. Pause has a code of its own kind.
uint32_t ScanCodeOfKey(uint32_t virtualKey) {
    const KeyInfo* key = FindKeyByVirtualKey(virtualKey);
    return key == nullptr || (key->scanCode & kPrefixE1) != 0 ? 0 : key->scanCode & 0xFFU;
}

std::string SystemKeyName(uint32_t scanCode, bool extended) {
    const KeyInfo* key = FindExactKey(scanCode, extended);
    return key == nullptr ? "" : key->name;
}

uint32_t SimKeyFromName(std::string_view name) {
    if (const KeyInfo* key = FindKeyByName(name)) {
        return key->virtualKey;
    }
    uint32_t code = 0;
    if (name.size() > 1 && name[0] == '#' &&
        std::from_chars(name.data() + 1, name.data() + name.size(), code).ec == std::errc()) {
        return code;
    }
    return 0;
}

std::string SimNameOfKey(uint32_t virtualKey) {
    for (const KeyInfo& key : AllKeys()) {
        if (key.virtualKey == virtualKey) {
            const std::string name = WithoutSpaces(key.name);
            // Two keys are called "\\": the name stands for the first of them.
            if (FindKeyByName(name)->virtualKey == virtualKey) {
                return name;
            }
        }
    }
    return "#" + std::to_string(virtualKey);
}

uint32_t SimKeyOfScanCode(uint32_t scanCode, bool extended) {
    const KeyInfo* key = FindExactKey(scanCode, extended);
    return key == nullptr ? 0 : key->virtualKey;
}
