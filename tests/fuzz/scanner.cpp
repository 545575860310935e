// Reads any bytes as a macro file and compares the scanner with its reference.
#include "../unit/reference_scanner.cpp"

#include "fuzz_input.h"
#include "storage/macro_file.h"

#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ParsedMacro macro;
    if (!ParseMacroText({reinterpret_cast<const char*>(data), size}, &macro).empty()) {
        return 0;
    }
    Require(MacroScan::ScanReportJson(MacroScan::ScanMacro(macro.events)) ==
            ReferenceScanner::ReportJson(macro.events));
    return 0;
}
