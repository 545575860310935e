#include "platform/shell.h"

#include "platform/process.h"
#include "platform/win32/text_encoding.h"

#include <windows.h>

#include <shellapi.h>

constexpr const char* kRunKey = "Software\\Microsoft\\Windows\\CurrentVersion\\Run";
constexpr const char* kRunValue = "Varnelle";

void OpenTarget(const std::string& target) {
    ShellExecuteW(nullptr, L"open", WideOfUtf8(target).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

void OpenFolder(const std::string& path) {
    ShellExecuteA(nullptr, "open", path.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

SessionKind ReadSessionKind() {
    return SessionKind::Windows;
}

void SetLaunchAtStartup(bool enabled) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, kRunKey, 0, KEY_SET_VALUE, &key) != ERROR_SUCCESS) {
        return;
    }
    if (enabled) {
        // In quotes: a path would end at its first space.
        const std::string command = "\"" + ProgramPath() + "\"";
        RegSetValueExA(key, kRunValue, 0, REG_SZ, reinterpret_cast<const BYTE*>(command.c_str()),
                       static_cast<DWORD>(command.size() + 1));
    } else {
        RegDeleteValueA(key, kRunValue);
    }
    RegCloseKey(key);
}
