// Any bytes as a recovery file, and a whole recovery file with some bytes changed: only an unchanged one is accepted.
#include "fuzz_input.h"

#include "platform/files.h"
#include "storage/data_folder.h"
#include "storage/session_file.h"

#include <cstdint>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const FuzzFolder folder;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    std::string_view text;
    const RecoveryState state = ParseRecovery(bytes, &text);
    Require(state == RecoveryState::None || text.size() < bytes.size());

    // The first byte says how many of the following pairs of bytes change the file: a position and a mask.
    static std::string whole;
    if (whole.empty()) {
        Require(WriteSessionFile("SETTINGS:\nCURRENT:0\nPROFILE:Fuzz\n") == FileResult::Done);
        Require(ReadFileBytes(DataFilePath("session-recovery.dat"), &whole));
        Require(ParseRecovery(whole, &text) == RecoveryState::Done);
    }
    std::string changed = whole;
    for (size_t i = 1; i + 1 < size && i < 2 * size_t{data[0]}; i += 2) {
        changed[data[i] % changed.size()] ^= static_cast<char>(data[i + 1]);
    }
    const RecoveryState changedState = ParseRecovery(changed, &text);
    // 'D' becomes 'P' by one mask; every other change is found.
    Require((changedState == RecoveryState::Done) == (changed == whole));
    return 0;
}
