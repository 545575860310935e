#include "imports/page_notice.h"

#include "base/json_writer.h"
#include "windows/main_page.h"

void NotifyPageProfileImported() {
    PageEval("if (window.onProfileImported) window.onProfileImported();");
}

void NotifyPageMacroPending(const std::string& pendingDocument) {
    PageEval("if (window.onPendingMacroImport) window.onPendingMacroImport(" + pendingDocument + ");");
}

void AlertPage(std::string_view text) {
    PageEval("alert(" + JsonText(text) + ");");
}
