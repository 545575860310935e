// Any bytes as a macro file, scanned by the program and by the plain form of the scanner.
#include "../unit/scan_literal.cpp"

#include "storage/macro_file.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ParsedMacro macro;
    if (!ParseMacroText({reinterpret_cast<const char*>(data), size}, &macro).empty()) {
        return 0;
    }
    if (MacroScan::ScanReportJson(MacroScan::ScanMacro(macro.events)) !=
        LiteralScan::ReportJson(macro.events)) {
        std::abort();
    }
    return 0;
}
