// Preloaded into the program by the tests that look into its real web view: the inspector's variable stays, so the view
// can be inspected. The program itself has no way to leave it there.
#include <dlfcn.h>

#include <cstring>

extern "C" __attribute__((visibility("default"))) int unsetenv(const char* name) noexcept {
    if (std::strcmp(name, "WEBKIT_INSPECTOR_HTTP_SERVER") == 0) {
        return 0;
    }
    static const auto original = reinterpret_cast<int (*)(const char*)>(dlsym(RTLD_NEXT, "unsetenv"));
    return original(name);
}
