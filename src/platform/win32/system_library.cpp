#include "platform/win32/system_library.h"

#include <windows.h>

SystemLibrary::SystemLibrary(const wchar_t* name)
    : module_(LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32)) {}

FoundFunction SystemLibrary::Find(const char* function) const {
    FARPROC address = module_ ? GetProcAddress(static_cast<HMODULE>(module_), function) : nullptr;
    return FoundFunction(reinterpret_cast<void*>(address));
}
