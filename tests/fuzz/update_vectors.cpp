// Reads any bytes as a vectors file of the update self-check.
#include "fuzz_input.h"

#include "platform/files.h"
#include "update/self_check.h"

#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const FuzzFolder folder;
    static const std::string path = folder.File("vectors.jsonl");
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    Require(WriteFileBytes(path, bytes));

    std::string report = "before\n";
    const bool passed = RunUpdateSelfCheck(path, &report);
    Require(report.compare(0, 7, "before\n") == 0 && report.back() == '\n');
    Require(report.find("\nPASS host: look-alike subdomain rejected\n") != std::string::npos);
    Require(report.find("\nFAIL host: ") == std::string::npos ||
            bytes.find("FAIL") != std::string_view::npos);
    if (passed) {
        Require(report.find("\nPASS test key loads as a valid P-256 public key\n") != std::string::npos);
    }
    // A name may contain anything, line ends included.
    if (bytes.find("FAIL") == std::string_view::npos && bytes.find('\\') == std::string_view::npos) {
        Require(passed == (report.find("FAIL ") == std::string::npos));
    }
    return 0;
}
