#include "platform/win32/text_encoding.h"

#include "platform/shared/valid_utf8.h"

#include <windows.h>

#include <cstdint>

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

bool IsAscii(char byte) {
    return static_cast<uint8_t>(byte) < 0x80;
}

// Returns the first index from `at` on that holds an ASCII byte, or the size of the text if none does.
size_t EndOfRun(std::string_view text, size_t at) {
    while (at < text.size() && !IsAscii(text[at])) {
        ++at;
    }
    return at;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const size_t length = Utf8SequenceLength(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

// Appends the one character that `bytes` are in the code page. False if they are none.
bool AppendCharacter(std::string_view bytes, unsigned codePage, std::string* utf8) {
    wchar_t wide[4];
    const int length = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(),
                                           static_cast<int>(bytes.size()), wide, 4);
    if (length <= 0) {
        return false;
    }
    *utf8 += Utf8OfWide({wide, static_cast<size_t>(length)});
    return true;
}

// Appends the character of the code page at the start of `text`. Returns the number of its bytes.
size_t ReadCharacter(std::string_view text, unsigned codePage, std::string* utf8) {
    constexpr char kLowestSecondByte = 0x40;
    if (text.size() >= 2 && IsDBCSLeadByteEx(codePage, static_cast<BYTE>(text[0])) &&
        (!IsAscii(text[1]) || text[1] >= kLowestSecondByte)) {
        // A single backslash after the byte is the begin of an escape, so that the byte is alone.
        const bool isEscape = text[1] == '\\';
        const bool isPair = !isEscape || (text.size() >= 3 && text[2] == '\\');
        if (isPair && AppendCharacter(text.substr(0, 2), codePage, utf8)) {
            return isEscape ? 3 : 2;
        }
    }
    if (!AppendCharacter(text.substr(0, 1), codePage, utf8)) {
        *utf8 += kReplacement;
    }
    return 1;
}

}  // namespace

std::string Utf8OfWide(std::wstring_view text) {
    const int size = static_cast<int>(text.size());
    std::string utf8;
    utf8.resize(static_cast<size_t>(
        WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr)));
    WideCharToMultiByte(CP_UTF8, 0, text.data(), size, utf8.data(), static_cast<int>(utf8.size()), nullptr,
                        nullptr);
    return utf8;
}

std::wstring WideOfUtf8(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide;
    wide.resize(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0)));
    MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

std::string Utf8OfMixedText(std::string_view text, unsigned codePage) {
    if (codePage == CP_UTF8) {
        return ValidUtf8(text);
    }
    std::string utf8;
    utf8.reserve(text.size());
    size_t kept = 0;  // everything before this index is in `utf8`
    size_t at = 0;
    while (at < text.size()) {
        if (IsAscii(text[at])) {
            ++at;
            continue;
        }
        const size_t end = EndOfRun(text, at);
        if (IsUtf8(text.substr(at, end - at))) {
            at = end;
            continue;
        }
        utf8.append(text.substr(kept, at - kept));
        while (at < text.size() && !IsAscii(text[at])) {
            at += ReadCharacter(text.substr(at), codePage, &utf8);
        }
        kept = at;
    }
    return utf8.append(text.substr(kept));
}
