#include "platform/threads.h"

#include <windows.h>

#include <string>

// The oldest Windows 10 has no SetThreadDescription, so it is looked up at run time.
static void NameThisThread(const std::string& name) {
    using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
    HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    auto setDescription = reinterpret_cast<SetDescription>(
        reinterpret_cast<void*>(GetProcAddress(kernel, "SetThreadDescription")));
    if (setDescription) {
        setDescription(GetCurrentThread(), std::wstring(name.begin(), name.end()).c_str());
    }
}

std::thread StartThread(const char* name, void (*body)()) {
    return std::thread([name = std::string(name), body] {
        NameThisThread(name);
        body();
    });
}

void JoinThread(std::thread& thread) {
    if (thread.joinable()) {
        thread.join();
    }
}
